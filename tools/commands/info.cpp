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

Status runInfo(const Options& options)
{
    Device device;
    const Info info = collectInfo(device);
    put(options.json ? toText(toJson(info)) : toTable(info));
    return complainOf(gapsOf(info));
}

} // namespace

void addInfo(CLI::App& app, Run& run)
{
    app.add_subcommand("info", "Who the controller is: device, versions, "
                               "manufacturer, self-test, host OS")
        ->callback([&run] { run = runInfo; });
}

} // namespace Tool
