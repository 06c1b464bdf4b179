// vek-ipmi sensors
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/filter.h"
#include "tools/commands/watch.h"
#include "tools/print/output.h"
#include "tools/print/sensors.h"

namespace Tool
{

namespace
{

struct Arguments
{
    Filter filter;
    bool thresholds = false, all = false, watch = false;
};

Listing listingOf(const Arguments& arguments, const Discovery& discovery)
{
    Listing listing;
    listing.sensors = choose(discovery.sensors, arguments.filter);
    listing.count = discovery.sensors.size();
    listing.records = collectRecords();
    listing.repository = discovery.repository;
    listing.thresholds = arguments.thresholds;
    listing.all = arguments.all;
    return listing;
}

// Nothing came back, not even the driver's time-out: the device is gone or
// the controller hangs.
Status complainOfUnasked(const std::vector<Sensor>& sensors)
{
    const auto count =
        std::count_if(sensors.begin(), sensors.end(), [](const Sensor& sensor) {
            return sensor.condition == Condition::notAnswering &&
                   sensor.lastResult == -1;
        });
    if (count == 0)
        return Status::done;
    complain({Status::failed,
              std::to_string(count) + " sensors could not be asked",
              "Look for the device with: vek-ipmi info"});
    return Status::failed;
}

Status runOnce(const Arguments& arguments, const Options& options)
{
    Listing listing;
    {
        Device device;
        listing = listingOf(arguments, readDiscovery(device));
    }
    put(options.json ? toText(toJson(listing))
                     : toTable(listing, Terminal::ofOutput()));
    const Status unasked = complainOfUnasked(listing.sensors);
    const Status missing = complainOfMissing(listing.repository);
    return missing == Status::done ? unasked : missing;
}

std::string timeOfNow()
{
    const time_t now = time(nullptr);
    char text[32] = "";
    tm fields{};
    strftime(text, sizeof text, "%FT%TZ", gmtime_r(&now, &fields));
    return text;
}

std::string draw(const Arguments& arguments, bool json)
{
    checkRepository();
    const Discovery discovery{repositorySoFar(), collectSensors()};
    const Listing listing = listingOf(arguments, discovery);
    return json ? toJson(listing).dump() + '\n'
                : timeOfNow() + '\n' + toTable(listing, Terminal::ofOutput());
}

Status run(const Arguments& arguments, const Options& options)
{
    if (!arguments.watch)
        return runOnce(arguments, options);
    return watch([&] { return draw(arguments, options.json); }, !options.json);
}

constexpr char examples[] =
    "Examples:\n"
    "  vek-ipmi sensors --type fan\n"
    "  vek-ipmi sensors --entity \"Power Supply 1\" --thresholds\n"
    "  vek-ipmi sensors --state critical\n"
    "  vek-ipmi sensors --watch";

void addOptions(CLI::App& app, Arguments& arguments)
{
    app.add_option("--type", arguments.filter.type,
                   "Only sensors of this type, as the listing has it, or a "
                   "part of its name");
    app.add_option("--entity", arguments.filter.entity,
                   "Only those of this entity: 'Power Supply', 'Power Supply "
                   "1' or 10.1");
    app.add_option("--state", arguments.filter.state,
                   "Only those in this state: one of the listing's, or " +
                       stateWords());
    app.add_flag("--thresholds", arguments.thresholds,
                 "A column for each threshold");
    app.add_flag("--all", arguments.all,
                 "Also records that make no sensor, without readings");
    app.add_flag("--watch", arguments.watch,
                 "Read and show again every 2 seconds at most, until Ctrl-C");
}

} // namespace

void addSensors(CLI::App& app, Run& runs)
{
    CLI::App* sensors = app.add_subcommand(
        "sensors", "All sensors with reading, state and health");
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*sensors, *arguments);
    addNotes(*sensors, examples);
    sensors->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
