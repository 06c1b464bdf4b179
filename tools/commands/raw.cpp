// vek-ipmi raw NETFN CMD [BYTES...]
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/number.h"
#include "tools/device.h"
#include "tools/print/completion_codes.h"
#include "tools/print/output.h"
#include "tools/print/raw.h"

namespace Tool
{

namespace
{

struct Request
{
    Command command{};
    Bytes data;
};

uint8_t toNetFn(const std::string& text)
{
    const uint8_t netFn = toByte("NETFN", text);
    if (netFn > 0x3F || netFn % 2 != 0)
        throw CLI::ValidationError("NETFN",
                                   "'" + text +
                                       "' is no request's network function (an "
                                       "even number up to 0x3e)");
    return netFn;
}

Request toRequest(const std::string& netFn, const std::string& command,
                  const std::vector<std::string>& bytes)
{
    constexpr size_t most = 270; // the driver's limit
    Request request;
    request.command = {toNetFn(netFn), toByte("CMD", command)};
    for (const std::string& text : bytes)
        request.data.push_back(toByte("BYTES", text));
    if (request.data.size() > most)
        throw CLI::ValidationError("BYTES", "no request holds more than " +
                                                std::to_string(most));
    return request;
}

Status runRaw(const Request& request, const Options& options)
{
    Answer answer;
    {
        Device device;
        answer = device.exchange(request.command, request.data);
    }
    const Completion& completion = answer.completion;
    if (options.json)
        put(toText(rawJson(request.command, request.data, answer)));
    else if (completion.ok())
        put(answer.data.empty() ? "\n" : hexDump(answer.data));
    if (!completion.ok())
        complain(failureOf("request failed", request.command, completion));
    else if (answer.possiblyCut)
        std::cerr << "vek-ipmi: note: the answer fills all of the 32 bytes "
                     "that are kept; it may have been longer\n";
    return completion.status();
}

struct Arguments
{
    std::string netFn, command;
    std::vector<std::string> bytes;
};

} // namespace

void addRaw(CLI::App& app, Run& run)
{
    CLI::App* raw = app.add_subcommand(
        "raw", "Send one request and print the answer's bytes behind its "
               "completion code");
    const auto arguments = std::make_shared<Arguments>();
    raw->add_option("NETFN", arguments->netFn, "Network function, even")
        ->required();
    raw->add_option("CMD", arguments->command, "Command")->required();
    raw->add_option("BYTES", arguments->bytes,
                    "Request data: decimal, or 0x and hexadecimal");
    raw->callback([arguments, &run] {
        run = [request = toRequest(arguments->netFn, arguments->command,
                                   arguments->bytes)](const Options& options) {
            return runRaw(request, options);
        };
    });
}

} // namespace Tool
