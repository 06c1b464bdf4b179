// vek-ipmi sensor SENSOR
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/discovery.h"
#include "tools/commands/find.h"
#include "tools/print/output.h"
#include "tools/print/sensor.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string sensor;
    bool raw = false;
};

std::string inJson(const Sensor& sensor, bool raw)
{
    Json json = document("sensor");
    json["sensor"] = toJson(sensor);
    if (raw)
        json["sensor"]["record"] = sensor.record;
    return toText(json);
}

std::string inTable(const Sensor& sensor, bool raw)
{
    return raw ? hexDump(sensor.record) : toTable(sensor);
}

Status run(const Arguments& arguments, const Options& options)
{
    Discovery discovery;
    {
        Device device;
        discovery = readDiscovery(device);
    }
    const Status status = complainOfMissing(discovery.repository);
    const Sensor& sensor = findSensor(discovery, arguments.sensor);
    put(options.json ? inJson(sensor, arguments.raw)
                     : inTable(sensor, arguments.raw));
    return status;
}

constexpr char examples[] = "Examples:\n"
                            "  vek-ipmi sensor \"Inlet Temp\"\n"
                            "  vek-ipmi sensor 0x30 --raw";

} // namespace

void addSensor(CLI::App& app, Run& runs)
{
    CLI::App* sensor =
        app.add_subcommand("sensor", "Everything about one sensor");
    const auto arguments = std::make_shared<Arguments>();
    sensor->add_option("SENSOR", arguments->sensor, sensorHelp)->required();
    sensor->add_flag("--raw", arguments->raw, "The bytes of its record");
    addNotes(*sensor, examples);
    sensor->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
