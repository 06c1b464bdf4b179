// vek-ipmi os get, vek-ipmi os set NAME VERSION
#include <CLI/CLI.hpp>

#include <memory>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/os.h"
#include "tools/commands/commands.h"
#include "tools/commands/missing.h"
#include "tools/print/completion_codes.h"
#include "tools/print/os.h"
#include "tools/print/output.h"
#include "tools/print/text.h"

namespace Tool
{

namespace
{

struct Texts
{
    std::string name, version;
};

std::string inTable(const OsInfo& os)
{
    Table table;
    addRows(table, os);
    return table.text();
}

Json inJson(const OsInfo& os)
{
    Json json = document("os");
    json.update(toJson(os));
    return json;
}

Status runGet(const Options& options)
{
    OsInfo os;
    {
        Device device;
        os = collectOs(device);
    }
    put(options.json ? toText(inJson(os)) : inTable(os));
    Part name = osNamePart(os);
    Part version = osVersionPart(os);
    const bool nothing = !name.completion.ok() && !version.completion.ok();
    if (nothing)
        name.tolerated = version.tolerated = false;
    const Status status = complainOfMissing({name, version});
    return nothing ? name.completion.status() : status;
}

// The library tells only that a write failed. The first block of the text
// that decides, sent as the library sends it, brings the code to light.
Completion refusalOf(Device& device, const Texts& texts)
{
    constexpr size_t size = 18, header = 4;
    const uint8_t parameter = texts.name.empty() ? 5 : 4;
    const std::string& text = texts.name.empty() ? texts.version : texts.name;
    Bytes block = {parameter, 0, 0, static_cast<uint8_t>(text.size())};
    const std::string start = text.substr(0, size - header);
    block.insert(block.end(), start.begin(), start.end());
    block.resize(size);
    return device.exchange(commands::setSystemInfo, block).completion;
}

void write(Device& device, const Texts& texts)
{
    const Completion completion = device.ask([&] {
        return Ipmi::IpmiIfc::SetOSInfo(texts.name, texts.version) ? 0x00
                                                                   : 0xFF;
    });
    if (completion.ok())
        return;
    const Completion refusal =
        completion.answered ? refusalOf(device, texts) : completion;
    if (refusal.ok())
        throw Failure{Status::failed,
                      "the controller did not take all of the text",
                      "Try again; --verbose shows the codes it gave."};
    throw failureOf("not written", commands::setSystemInfo, refusal);
}

// A controller without a place for the version has it behind the name.
bool reportsName(const OsInfo& os, const Texts& texts)
{
    const std::string reported = printable(os.name.bytes);
    return texts.name.empty() || reported == printable(texts.name) ||
           (!os.version.completion.ok() &&
            reported == printable(texts.name + " " + texts.version));
}

bool reportsVersion(const OsInfo& os, const Texts& texts)
{
    return texts.version.empty() ||
           printable(os.version.bytes) == printable(texts.version);
}

Status complainOfDifference(const OsInfo& os, const Texts& texts)
{
    const struct
    {
        const char* what;
        const OsText& text;
        bool same;
    } parts[] = {
        {"the OS name", os.name, reportsName(os, texts)},
        {"the OS version", os.version, reportsVersion(os, texts)},
    };
    Status status = Status::done;
    for (const auto& part : parts) {
        if (!part.text.completion.ok() || part.same)
            continue;
        status = Status::failed;
        complain({status,
                  std::string{"the controller reports another text for "} +
                      part.what + " than was written",
                  "It may hold fewer bytes; try a shorter text, or --verbose "
                  "for the codes it gave."});
    }
    return status;
}

Status runSet(const Texts& texts, const Options& options)
{
    OsInfo os;
    {
        Device device;
        write(device, texts);
        os = collectOs(device);
    }
    if (options.json) {
        Json json = inJson(os);
        json["written"] = {{"name", printable(texts.name)},
                           {"version", printable(texts.version)}};
        put(toText(json));
    } else {
        put(inTable(os));
    }
    const Status missing =
        complainOfMissing({osNamePart(os), osVersionPart(os)});
    const Status difference = complainOfDifference(os, texts);
    return missing != Status::done ? missing : difference;
}

void check(const Texts& texts)
{
    constexpr size_t most = 255; // the length has one byte
    if (texts.name.size() > most)
        throw CLI::ValidationError("NAME", "more than 255 bytes");
    if (texts.version.size() > most)
        throw CLI::ValidationError("VERSION", "more than 255 bytes");
    if (texts.name.empty() && texts.version.empty())
        throw CLI::ValidationError("NAME VERSION", "both are empty");
}

} // namespace

void addOs(CLI::App& app, Run& run)
{
    CLI::App* os = app.add_subcommand(
        "os", "The host operating system as the controller knows it");
    os->require_subcommand(1);
    os->add_subcommand("get", "What the controller reports")->callback([&run] {
        run = runGet;
    });

    const auto texts = std::make_shared<Texts>();
    CLI::App* set = os->add_subcommand(
        "set", "Write both into the controller; an empty one stays as it is");
    set->add_option("NAME", texts->name, "Up to 255 bytes")->required();
    set->add_option("VERSION", texts->version, "Up to 255 bytes")->required();
    set->callback([texts, &run] {
        check(*texts);
        run = [texts](const Options& options) {
            return runSet(*texts, options);
        };
    });
}

} // namespace Tool
