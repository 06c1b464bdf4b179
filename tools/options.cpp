#include "tools/options.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string_view>

#include "tools/commands/commands.h"
#include "tools/print/health.h"

namespace Tool
{

namespace
{

// Shown with each subcommand's help too, which lists its own options alone.
constexpr char footer[] =
    "--json, --verbose and --simulate[=PROFILE] go with every subcommand.\n\n"
    "Exit status: 0 done; 1 usage; 2 no device or no permission; 3 refused by\n"
    "the controller; 4 any other failure or a partial result. With --simulate\n"
    "also 125 to 127: the simulated controller did not start.";

void addGlobalOptions(CLI::App& app, Options& options)
{
    app.add_flag("--json", options.json, "Print a JSON document");
    app.add_flag("--verbose", options.verbose,
                 "Show the library's log lines on standard error");
    app.add_flag("--simulate{}", options.profile,
                 "Ask a simulated controller instead of the real one; "
                 "--simulate=PROFILE chooses which");
}

// A monitoring plug-in says "unknown" of a mistake on its command line, which
// may keep the rest from being understood.
bool isMonitoring(int argc, char** argv)
{
    int i = 1;
    while (i < argc && argv[i][0] == '-')
        ++i;
    return i < argc && std::string_view{argv[i]} == "health";
}

Status statusOf(const CLI::App& app, const CLI::ParseError& error,
                bool monitoring)
{
    const bool asked = app.exit(error) == 0; // for help or the version
    if (monitoring && !asked)
        std::cout << unknownLine("mistake on the command line");
    const bool written = static_cast<bool>(std::cout.flush());
    if (asked && written)
        return Status::done;
    return monitoring ? monitoringUnknown
           : asked    ? Status::failed
                      : Status::usage;
}

} // namespace

void addNotes(CLI::App& subcommand, const std::string& text)
{
    // health has statuses of its own, which its text tells.
    const bool own = subcommand.get_name() == "health";
    subcommand.footer(own ? text : text + "\n\n" + footer);
}

bool parse(int argc, char** argv, Options& options, Run& run, Status& status)
{
    CLI::App app{"Asks a server's management controller through the Linux "
                 "OpenIPMI driver.",
                 "vek-ipmi"};
    app.footer(footer);
    app.fallthrough();
    app.set_version_flag("--version", "vek-ipmi " VEK_IPMI_VERSION);
    addGlobalOptions(app, options);
    addInfo(app, run);
    addRaw(app, run);
    addIdentify(app, run);
    addOs(app, run);
    addSensors(app, run);
    addSensor(app, run);
    addThreshold(app, run);
    addHysteresis(app, run);
    addEvents(app, run);
    addSdr(app, run);
    addSel(app, run);
    addEntities(app, run);
    addLan(app, run);
    addInventory(app, run);
    addFru(app, run);
    addHealth(app, run);
    addCapture(app, run);
    app.require_subcommand(1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = statusOf(app, error, isMonitoring(argc, argv));
        return false;
    }
    options.monitoring = app.got_subcommand("health");
    options.simulate = app.count("--simulate") != 0;
    return true;
}

} // namespace Tool
