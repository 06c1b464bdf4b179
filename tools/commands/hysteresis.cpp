// vek-ipmi hysteresis SENSOR
#include <CLI/CLI.hpp>

#include <cmath>
#include <iostream>
#include <memory>

#include "tools/collect/setting.h"
#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/find.h"
#include "tools/print/output.h"
#include "tools/print/sensor.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string sensor;
    std::optional<double> positive, negative;
    bool raw = false;

    bool writes() const { return positive || negative; }
};

[[noreturn]] void refuse(const Sensor& sensor, const std::string& why,
                         const std::string& next = "")
{
    throw Failure{Status::usage, "hysteresis of '" + sensor.name + "': " + why,
                  next};
}

void checkSupport(const Sensor& sensor, bool writes)
{
    constexpr uint8_t none = 0, readableOnly = 1, fixed = 3;
    if (sensor.discrete)
        refuse(sensor, "the sensor has states instead of thresholds");
    if (sensor.hysteresisSupport == none)
        refuse(sensor, "the sensor has none");
    if (sensor.hysteresisSupport == fixed)
        refuse(sensor, "it is fixed in the controller and cannot be read");
    if (writes && sensor.hysteresisSupport == readableOnly)
        refuse(sensor, "it can be read but not set");
}

uint8_t toRaw(const Sensor& sensor, double wanted, bool raw)
{
    if (!raw && sensor.rawStep <= 0)
        refuse(sensor,
               "its values are not linear, so that a difference has no "
               "unit",
               "Give raw values with --raw.");
    const double steps = raw ? wanted : wanted / sensor.rawStep;
    const double rounded = std::round(steps);
    if (!(rounded >= 0 && rounded <= 0xFF) || (raw && rounded != steps))
        refuse(sensor, numberText(wanted, 0) + " is not possible",
               raw ? "Raw values are whole numbers from 0 to 255."
                   : "It goes from 0 to " +
                         valueText(differenceOf(sensor, 0xFF), sensor.unit) +
                         ".");
    const auto byte = static_cast<uint8_t>(rounded);
    if (std::fabs(rounded - steps) > 1e-6)
        std::cerr << "vek-ipmi: note: the nearest to " << numberText(wanted, 0)
                  << " that can be set is "
                  << valueText(differenceOf(sensor, byte), sensor.unit) << '\n';
    return byte;
}

Status change(Device& device, Sensor& sensor, const Arguments& arguments)
{
    Hysteresis wanted = *sensor.hysteresis;
    if (arguments.positive)
        wanted.positive = toRaw(sensor, *arguments.positive, arguments.raw);
    if (arguments.negative)
        wanted.negative = toRaw(sensor, *arguments.negative, arguments.raw);
    writeHysteresis(device, sensor, wanted);
    sensor.hysteresis = readHysteresis(device, sensor);
    if (sensor.hysteresis->positive == wanted.positive &&
        sensor.hysteresis->negative == wanted.negative)
        return Status::done;
    complain({Status::failed,
              "the controller reports another hysteresis than was set", ""});
    return Status::failed;
}

std::string inTable(const Sensor& sensor)
{
    Table table;
    table.row("Name", sensor.name);
    table.row("Device id", sensor.deviceId);
    addHysteresis(table, sensor);
    return table.text();
}

std::string inJson(const Sensor& sensor)
{
    Json json = document("hysteresis");
    json["deviceId"] = sensor.deviceId;
    json["name"] = sensor.name;
    json["unit"] = sensor.unit.text;
    json["hysteresis"] = hysteresisJson(sensor);
    return toText(json);
}

Status run(const Arguments& arguments, const Options& options)
{
    Sensor sensor;
    Status status = Status::done;
    {
        Device device;
        const Discovery discovery = readDiscovery(device);
        sensor = arguments.writes()
                     ? findForWriting(discovery, arguments.sensor)
                     : findSensor(discovery, arguments.sensor);
        refuseSatellite(sensor);
        checkSupport(sensor, arguments.writes());
        sensor.hysteresis = readHysteresis(device, sensor);
        if (arguments.writes())
            status = change(device, sensor, arguments);
    }
    put(options.json ? inJson(sensor) : inTable(sensor));
    return status;
}

constexpr char notes[] =
    "How far a reading must come back before a passed threshold is over. What\n"
    "is not given stays as it is.\n\n"
    "Examples:\n"
    "  vek-ipmi hysteresis \"Inlet Temp\"\n"
    "  vek-ipmi hysteresis \"Inlet Temp\" --positive 2 --negative 2";

} // namespace

void addHysteresis(CLI::App& app, Run& runs)
{
    CLI::App* hysteresis = app.add_subcommand(
        "hysteresis", "Show or change the hysteresis of a sensor");
    const auto arguments = std::make_shared<Arguments>();
    hysteresis->add_option("SENSOR", arguments->sensor, sensorHelp)->required();
    hysteresis->add_option("--positive", arguments->positive,
                           "Of upper thresholds, in the sensor's unit");
    hysteresis->add_option("--negative", arguments->negative,
                           "Of lower thresholds, in the sensor's unit");
    hysteresis->add_flag("--raw", arguments->raw, "Both are raw values");
    addNotes(*hysteresis, notes);
    hysteresis->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
