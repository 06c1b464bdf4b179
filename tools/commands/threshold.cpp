// vek-ipmi threshold set|restore SENSOR
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

#include "tools/collect/setting.h"
#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/find.h"
#include "tools/print/output.h"
#include "tools/print/sensor.h"
#include "tools/print/state.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string sensor;
    WantedThresholds wanted;
};

constexpr char setNotRead[] = "thresholds were set, but not read back";

using Change = std::function<Status(Device&, Sensor&)>;

void noteDifferences(const Sensor& sensor,
                     const std::vector<PlannedThreshold>& planned)
{
    for (const PlannedThreshold& plan : planned)
        if (!plan.isExact())
            std::cerr << "vek-ipmi: note: " << thresholdName(plan.threshold)
                      << ": the nearest to " << numberText(plan.wanted, 0)
                      << " that can be set is "
                      << valueText(plan.value, sensor.unit) << '\n';
}

Status compare(const Sensor& sensor,
               const std::vector<PlannedThreshold>& planned)
{
    Status status = Status::done;
    for (const PlannedThreshold& plan : planned) {
        const auto& value = sensor.thresholds[plan.threshold].value;
        if (value && value->raw == plan.value.raw)
            continue;
        status = Status::failed;
        complain({status,
                  std::string{thresholdName(plan.threshold)} +
                      (value ? " reads as " + valueText(*value, sensor.unit) +
                                   " after it was set to "
                             : " cannot be read back after it was set to ") +
                      valueText(plan.value, sensor.unit),
                  ""});
    }
    return status;
}

Status set(Device& device, Sensor& sensor, const WantedThresholds& wanted)
{
    const Conversion conversion = conversionOf(*objectOf(sensor));
    // Refused for good before anything is sent, and once more for the order
    // with the thresholds as they are now.
    planThresholds(sensor, conversion, wanted);
    readThresholds(device, sensor, "thresholds not read, and so not set");
    const std::vector<PlannedThreshold> planned =
        planThresholds(sensor, conversion, wanted);
    noteDifferences(sensor, planned);
    writeThresholds(device, sensor, planned);
    readThresholds(device, sensor, setNotRead);
    return compare(sensor, planned);
}

Status restore(Device& device, Sensor& sensor)
{
    checkRestorable(sensor);
    restoreThresholds(device, sensor);
    readThresholds(device, sensor, setNotRead);
    std::vector<PlannedThreshold> planned;
    for (unsigned i = 0; i < sensor.thresholds.size(); ++i) {
        const Threshold& threshold = sensor.thresholds[i];
        if (threshold.settable && threshold.defaultValue)
            planned.push_back({i, 0, *threshold.defaultValue});
    }
    return compare(sensor, planned);
}

std::string inTable(const Sensor& sensor)
{
    Table table;
    table.row("Name", sensor.name);
    table.row("Device id", sensor.deviceId);
    addThresholds(table, sensor);
    return table.text();
}

std::string inJson(const Sensor& sensor)
{
    Json json = document("threshold");
    json["deviceId"] = sensor.deviceId;
    json["name"] = sensor.name;
    json["unit"] = sensor.unit.text;
    json["thresholds"] = thresholdsJson(sensor);
    return toText(json);
}

Status run(const std::string& what, const Change& change,
           const Options& options)
{
    Sensor sensor;
    Status status = Status::done;
    {
        Device device;
        const Discovery discovery = readDiscovery(device);
        sensor = findForWriting(discovery, what);
        refuseSatellite(sensor);
        status = change(device, sensor);
    }
    put(options.json ? inJson(sensor) : inTable(sensor));
    return status;
}

void addSet(CLI::App& threshold, Run& runs)
{
    CLI::App* app = threshold.add_subcommand(
        "set", "Set some thresholds, in the sensor's unit");
    const auto arguments = std::make_shared<Arguments>();
    app->add_option("SENSOR", arguments->sensor, sensorHelp)->required();
    CLI::Option_group* group = app->add_option_group("thresholds");
    using namespace Ipmi;
    for (const unsigned i :
         {LOWER_NON_RECOVERABLE, LOWER_CRITICAL, LOWER_NON_CRITICAL,
          UPPER_NON_CRITICAL, UPPER_CRITICAL, UPPER_NON_RECOVERABLE})
        group->add_option(std::string{"--"} + thresholdKey(i),
                          arguments->wanted[i],
                          std::string{"The "} + thresholdName(i) + " one");
    group->require_option(1, 0);
    addNotes(*app, "What a raw byte cannot say exactly is set to the nearest "
                   "value, which is told.\n\nExample:\n"
                   "  vek-ipmi threshold set \"Inlet Temp\" --unc 38 --uc 42");
    app->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(
                arguments->sensor,
                [&](Device& device, Sensor& sensor) {
                    return set(device, sensor, arguments->wanted);
                },
                options);
        };
    });
}

void addRestore(CLI::App& threshold, Run& runs)
{
    CLI::App* app = threshold.add_subcommand(
        "restore", "Set all settable thresholds to the record's defaults");
    const auto what = std::make_shared<std::string>();
    app->add_option("SENSOR", *what, sensorHelp)->required();
    app->callback([what, &runs] {
        runs = [what](const Options& options) {
            return run(*what, restore, options);
        };
    });
}

} // namespace

void addThreshold(CLI::App& app, Run& runs)
{
    CLI::App* threshold =
        app.add_subcommand("threshold", "Change the thresholds of a sensor");
    threshold->require_subcommand(1);
    addSet(*threshold, runs);
    addRestore(*threshold, runs);
}

} // namespace Tool
