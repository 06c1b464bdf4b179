#include "sim/model/sensor.h"

#include "sim/profile/describe.h"
#include "sim/profile/sdr_words.h"

namespace Sim
{
namespace
{

constexpr auto decimal = Fields::Base::Decimal;
constexpr auto hexadecimal = Fields::Base::Hexadecimal;

void describe(Fields& io, Script::Point& point)
{
    io.number("at", point.at, decimal);
    io.integer("value", point.value, -128, 0x7FFF);
}

void refuseDisorder(Fields& io, const std::vector<Script::Point>& points)
{
    for (size_t at = 1; at < points.size(); ++at)
        if (points[at].at <= points[at - 1].at)
            io.refuse("points", "point " + std::to_string(at) +
                                    " is no later than the one before it");
}

void describe(Fields& io, Script& script)
{
    constexpr uint32_t longest = 0x7FFFFFFF, mostNoise = 255;
    io.require("points");
    io.list("points", script.points, describe);
    refuseDisorder(io, script.points);
    io.flag("ramp", script.ramp);
    io.number("period", script.period, decimal, longest);
    io.number("noise", script.noise, decimal, mostNoise);
    io.number("seed", script.seed, decimal);
}

struct OddAnswer
{
    uint8_t command = 0;
    Bytes answer;
};

void describe(Fields& io, OddAnswer& row)
{
    io.require("command");
    io.require("answer");
    io.number("command", row.command, hexadecimal);
    io.bytes("answer", row.answer, 0, 270);
}

void describeAnswers(Fields& io, Sensor& sensor)
{
    std::vector<OddAnswer> rows;
    if (!io.reads())
        for (const auto& [command, answer] : sensor.answers)
            rows.push_back({command, answer});
    io.list("answers", rows, describe);
    for (const OddAnswer& row : rows)
        sensor.answers[row.command] = row.answer;
}

/// A flag that is written only where it is not as usual.
void describeFlag(Fields& io, const char* key, bool& flag, bool usual)
{
    if (io.reads() || flag != usual)
        io.flag(key, flag);
}

void describeEnables(Fields& io, Sensor& sensor)
{
    bool scanning = sensor.enables & Sensor::scanning;
    bool events = sensor.enables & Sensor::eventMessages;
    describeFlag(io, "scanning", scanning, true);
    describeFlag(io, "eventMessages", events, true);
    sensor.enables = uint8_t((scanning ? Sensor::scanning : 0) |
                             (events ? Sensor::eventMessages : 0));
    io.number("assertions", sensor.assertions, hexadecimal);
    io.number("deassertions", sensor.deassertions, hexadecimal);
}

void describeThresholds(Fields& io, Sensor& sensor)
{
    Bytes thresholds{sensor.thresholds.begin(), sensor.thresholds.end()};
    Bytes hysteresis{sensor.positiveHysteresis, sensor.negativeHysteresis};
    io.number("reading", sensor.reading, decimal);
    io.bytes("thresholds", thresholds, 6, 6);
    io.bytes("hysteresis", hysteresis, 2, 2);
    std::copy(thresholds.begin(), thresholds.end(), sensor.thresholds.begin());
    sensor.positiveHysteresis = hysteresis[0];
    sensor.negativeHysteresis = hysteresis[1];
}

void describeTraits(Fields& io, Sensor& sensor)
{
    using namespace SdrWords;
    uint32_t type = sensor.type, eventType = sensor.eventType;
    auto format = uint8_t(sensor.format);
    Bytes factors{sensor.factors.begin(), sensor.factors.end()};
    io.require("number");
    io.number("number", sensor.number, decimal);
    io.number("lun", sensor.lun, decimal, 3);
    io.code("sensorType", type, 0xFF, sensorTypes);
    io.code("eventType", eventType, 0xFF, eventTypes);
    io.number("capabilities", sensor.capabilities, hexadecimal);
    io.choice("analogFormat", format, analogFormats);
    io.flag("falling", sensor.falling);
    io.bits("readable", sensor.readable, thresholds);
    io.bits("settable", sensor.settable, thresholds);
    io.bits("compared", sensor.compared, thresholds);
    io.bytes("factors", factors, 6, 6);
    sensor.type = uint8_t(type);
    sensor.eventType = uint8_t(eventType);
    sensor.format = Sensor::Format(format);
    std::copy(factors.begin(), factors.end(), sensor.factors.begin());
}

void describeWhole(Fields& io, Sensor& sensor)
{
    describeTraits(io, sensor);
    describeBehaviour(io, sensor);
}

} // namespace

void describeBehaviour(Fields& io, Sensor& sensor)
{
    describeFlag(io, "present", sensor.present, true);
    describeFlag(io, "unavailable", sensor.unavailable, false);
    describeEnables(io, sensor);
    if (sensor.hasThresholds())
        describeThresholds(io, sensor);
    else
        io.number("states", sensor.states, hexadecimal, 0x7FFF);
    if (io.reads() ? io.has("script") : !sensor.script.points.empty())
        io.object("script", sensor.script, describe);
    describeAnswers(io, sensor);
}

void describeSensors(Fields& io, Sensors& sensors)
{
    std::vector<Sensor> list;
    if (!io.reads())
        for (const auto& [key, sensor] : sensors)
            list.push_back(sensor);
    io.list("sensors", list, describeWhole);
    for (const Sensor& sensor : list)
        if (!sensors.emplace(sensorKey(sensor.lun, sensor.number), sensor)
                 .second &&
            io.reads())
            io.refuse("sensors", "number " + std::to_string(sensor.number) +
                                     " of LUN " + std::to_string(sensor.lun) +
                                     " stands twice");
}

} // namespace Sim
