// vek-ipmi info
#include <CLI/CLI.hpp>

#include "tools/collect/info.h"
#include "tools/commands/commands.h"
#include "tools/commands/missing.h"
#include "tools/print/info.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

// The library fills up a short answer with zeros; 0.0 is no IPMI version.
Status complainOfShortAnswer(const Info& info)
{
    constexpr size_t ipmiVersion = 5;
    if (info.deviceId[ipmiVersion] != 0)
        return Status::done;
    complain({Status::failed, "Get Device ID's answer was cut",
              "What it lacks is shown as 0. Try again."});
    return Status::failed;
}

Status runInfo(const Options& options)
{
    Device device;
    const Info info = collectInfo(device);
    put(options.json ? toText(toJson(info)) : toTable(info));
    const Status cut = complainOfShortAnswer(info);
    const Status missing = complainOfMissing(
        {{"the self-test result", commands::getSelfTestResults,
          info.selfTest.completion},
         osNamePart(info.os),
         osVersionPart(info.os)});
    return cut != Status::done ? cut : missing;
}

} // namespace

void addInfo(CLI::App& app, Run& run)
{
    app.add_subcommand("info", "Who the controller is: device, versions, "
                               "manufacturer, self-test, host OS")
        ->callback([&run] { run = runInfo; });
}

} // namespace Tool
