// vek-ipmi health: the exit status is that of monitoring plug-ins.
#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <memory>

#include "tools/collect/health_table.h"
#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/print/health.h"
#include "tools/print/health_table.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

Status statusOf(Health health)
{
    switch (health) {
    case Health::well:
        return Status{0};
    case Health::degraded:
        return Status{1};
    case Health::critical:
        return Status{2};
    default:
        return monitoringUnknown;
    }
}

void noteSource(HealthSource source)
{
    if (source == HealthSource::packaged)
        std::cerr
            << "vek-ipmi: note: no rules in " << healthTablePath
            << " (missing, or none that can be read); the packaged table is "
               "used\n";
}

Status judgeAll(const Options& options)
{
    Overall overall;
    {
        Device device;
        const Discovery discovery = readDiscovery(device);
        overall = overallOf(discovery.sensors, discovery.repository);
    }
    noteSource(overall.source);
    put(options.json ? toText(toJson(overall)) : toText(overall));
    complainOfMissing(overall.repository);
    return statusOf(overall.health);
}

// What a plug-in prints on standard error is often lost.
Status judgeGuarded(const Options& options)
{
    try {
        return judgeAll(options);
    } catch (const Failure& failure) {
        if (!options.json)
            put(unknownLine(failure.what));
        throw;
    }
}

Status check(const std::string& path, const Options& options)
{
    std::ifstream file{path};
    if (!file)
        throw Failure{Status::failed,
                      "cannot read " + path + ": " + strerror(errno), ""};
    file.peek(); // a folder opens, too
    if (file.bad())
        throw Failure{Status::failed, "cannot read " + path, "Is it a file?"};
    const HealthTable table = checkHealthTable(file);
    if (table.rules == 0 && table.problems == 0)
        complain({Status::failed, path + " has no rules",
                  "The packaged table is used instead of it."});
    put(options.json ? toText(toJson(table)) : toText(table));
    return table.problems == 0 && table.rules != 0 ? Status::done
                                                   : monitoringUnknown;
}

constexpr char explanation[] =
    "Exit status: 0 well; 1 degraded; 2 critical; 3 unknown, and every\n"
    "failure, a mistake on the command line among them.\n\n"
    "The worst sensor counts. A passed non-critical threshold is degraded, "
    "any\n"
    "other critical; the worst asserted state of a discrete sensor counts, by\n"
    "the table in /etc/sfcb/vek/sensor_health (sensor_health(5)), or the\n"
    "packaged one without that. Sensors that are absent or are never read do\n"
    "not count. Those without a reading, those that are none to be read (CDh)\n"
    "and states without a rule are listed, and do not count either. Sensors "
    "that\n"
    "do not answer, records that could not be read, and nothing that could be\n"
    "judged make it unknown, unless something is degraded or critical.\n\n"
    "Examples:\n"
    "  vek-ipmi health\n"
    "  vek-ipmi health --check /etc/sfcb/vek/sensor_health";

} // namespace

void addHealth(CLI::App& app, Run& run)
{
    CLI::App* health = app.add_subcommand(
        "health", "Sensors that are not well, for monitoring");
    const auto path = std::make_shared<std::string>();
    const CLI::Option* given =
        health->add_option("--check", *path,
                           "Say line by line what a health table means and "
                           "what is wrong in it (status 3)");
    addNotes(*health, explanation);
    health->callback([path, given, &run] {
        if (given->count() == 0)
            run = judgeGuarded;
        else
            run = [path](const Options& options) {
                return check(*path, options);
            };
    });
}

} // namespace Tool
