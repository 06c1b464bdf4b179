#include "sim/program/options.h"

#include <cmath>
#include <cstring>

#include <CLI/CLI.hpp>

#include "sim/program/failure.h"

namespace Sim
{

namespace
{

constexpr char about[] =
    "Runs a command on a simulated management controller: the OpenIPMI device "
    "that the command\nand its children open is answered by a model, not by "
    "the machine.";

constexpr char remarks[] =
    R"(Each process under it has a controller of its own, made when it first
opens the device; a forked child goes on with a copy of its parent's.
The command must be dynamically linked, of this program's word size, and
neither set-uid nor set-gid nor with file capabilities: others are refused.
That is asked of the command alone: do not let it start such a program.

Signals INT, TERM, HUP, QUIT, USR1, USR2, WINCH, TSTP and CONT go on to the
command.

Exit status: the command's own, or 128+N when signal N ended it;
  125  mistake in an option, a profile or a rule, or vek-ipmi-sim fails
  126  the command cannot be run, or not be reached by the simulation
  127  there is no such command)";

class Formatter : public CLI::Formatter
{
    std::string make_usage(const CLI::App*, std::string) const override
    {
        return "Usage: vek-ipmi-sim [OPTIONS] -- COMMAND [ARGUMENTS]\n"
               "       vek-ipmi-sim [OPTIONS] --serve HOST:PORT\n"
               "       vek-ipmi-sim check PROFILE\n"
               "       vek-ipmi-sim import sdr|sel|fru|capture FILE [-o "
               "PROFILE]\n";
    }
};

/// CLI11 counts "nan" as a number in any range.
std::string checkLatency(const std::string& text)
{
    constexpr double longest = 3600e3;
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    const bool good = end != text.c_str() && *end == 0 &&
                      std::isfinite(value) && value >= 0 && value <= longest;
    return good ? "" : "\"" + text + "\" is not a time from 0 to 3600000 ms";
}

void checkWhole(const Options& options, bool hasDashes)
{
    const auto fail = [](const char* text) {
        throw Failure{status::ownFailure, text};
    };
    if (!options.check.empty() || !options.dump.empty()) {
        if (hasDashes)
            fail("check and import take no command");
    } else if (!options.serve.empty()) {
        if (hasDashes)
            fail("--serve takes no command: it serves a virtual machine");
        if (options.realUserId)
            fail("--real-uid is for commands, not for --serve");
    } else if (options.command.empty()) {
        fail("no command: vek-ipmi-sim [OPTIONS] -- COMMAND [ARGUMENTS]; "
             "--help tells more");
    }
}

std::string checkNotEmpty(const std::string& text)
{
    return text.empty() ? "may not be empty" : "";
}

void declareImport(CLI::App& app, Options& options)
{
    CLI::App* import = app.add_subcommand(
        "import", "Make a profile of what a real controller holds");
    import->require_subcommand(1);
    const struct
    {
        const char *name, *help;
        Import import;
    } kinds[] = {
        {"sdr", "Of records as \"ipmitool sdr dump FILE\" writes them",
         importSdr},
        {"sel", "Of events as \"ipmitool sel writeraw FILE\" writes them",
         importSel},
        {"fru", "Of a device's bytes as \"ipmitool fru read ID FILE\" does",
         importFru},
        {"capture",
         "Of what \"vek-ipmi capture FILE\" writes: with fields "
         "that can be edited in place of mere answers",
         importCapture},
    };
    for (const auto& one : kinds) {
        CLI::App* kind = import->add_subcommand(one.name, one.help);
        kind->callback(
            [&options, chosen = one.import] { options.import = chosen; });
        kind->add_option("FILE", options.dump, "What was read")
            ->required()
            ->check(checkNotEmpty);
        kind->add_option("-o,--output", options.output,
                         "The profile; else it is printed")
            ->option_text("PROFILE")
            ->check(checkNotEmpty);
    }
}

void declare(CLI::App& app, Options& options, double& latencyMs)
{
    Setup& setup = options.setup;
    app.formatter(std::make_shared<Formatter>());
    app.footer(remarks);
    app.set_version_flag("--version", VEK_IPMI_VERSION);
    app.add_option("--profile", setup.profile,
                   "Controller: a built-in name or the path of a JSON file")
        ->option_text("PROFILE [two-socket]")
        ->check(checkNotEmpty);
    app.add_option("--latency", latencyMs, "Time of an exchange")
        ->option_text("MS [0]")
        ->check(checkLatency);
    app.add_option("--fault", setup.faults,
                   "What goes wrong, and when; may be given many times")
        ->option_text("RULE")
        ->take_all()
        ->allow_extra_args(false);
    app.add_flag("--count", options.count,
                 "Print at the end how many exchanges there were, by command,"
                 " on standard error");
    app.add_flag("--real-uid", options.realUserId,
                 "Let the command see its user id; else it sees 0, root's");
    app.add_option("--serve", options.serve,
                   "Serve QEMU's ipmi-bmc-extern until SIGTERM instead")
        ->option_text("HOST:PORT")
        ->check(checkNotEmpty);
    app.add_subcommand("check", "Name every mistake in a profile")
        ->add_option("PROFILE", options.check, "Built-in name or path")
        ->required()
        ->check(checkNotEmpty);
    declareImport(app, options);
}

} // namespace

bool readOptions(int argc, char** argv, Options& options)
{
    // What follows "--" is the command's: no option of ours is looked for.
    int own = 1;
    while (own < argc && std::strcmp(argv[own], "--") != 0)
        ++own;
    const bool hasDashes = own < argc;
    if (hasDashes)
        options.command.assign(argv + own + 1, argv + argc);
    CLI::App app(about, "vek-ipmi-sim");
    double latencyMs = 0;
    declare(app, options, latencyMs);
    try {
        app.parse(own, argv);
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return false;
    } catch (const CLI::ParseError& error) {
        throw Failure{status::ownFailure, error.what()};
    }
    checkWhole(options, hasDashes);
    options.setup.latency =
        std::chrono::microseconds(std::llround(latencyMs * 1000));
    return true;
}

} // namespace Sim
