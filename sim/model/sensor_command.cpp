#include <algorithm>

#include "sim/model/bmc.h"
#include "sim/model/record.h"
#include "sim/model/sensor.h"

namespace Sim
{
namespace
{

using Access = Sensor::Access;

/// The command's own part, with the sensor that the first byte names.
using Serve = Bytes (*)(Sensor& sensor, const Bytes& data);

template <uint8_t command, Serve serve>
Bytes onSensor(Bmc& bmc, const Bytes& data)
{
    auto& sensors = bmc.state().sensors;
    const auto found = sensors.find(sensorKey(bmc.lun(), data[0]));
    if (found == sensors.end())
        return {cc::notPresent};
    Sensor& sensor = found->second;
    const auto odd = sensor.answers.find(command);
    if (odd != sensor.answers.end())
        return odd->second;
    if (!sensor.present)
        return {cc::notPresent};
    sensor.update(bmc.uptime());
    return serve(sensor, data);
}

uint8_t readingFlags(const Sensor& sensor)
{
    constexpr uint8_t unavailable = 0x20;
    return uint8_t(sensor.enables | (sensor.unavailable ? unavailable : 0));
}

Bytes getReading(Sensor& sensor, const Bytes&)
{
    if (sensor.hasThresholds()) {
        constexpr uint8_t reserved = 0xC0;
        return {cc::ok, sensor.reading, readingFlags(sensor),
                uint8_t(reserved | sensor.exceeded)};
    }
    constexpr uint8_t reserved = 0x80;
    return {cc::ok, 0, readingFlags(sensor), uint8_t(sensor.states),
            uint8_t(reserved | sensor.states >> 8)};
}

Bytes getFactors(Sensor& sensor, const Bytes& data)
{
    if (!sensor.hasThresholds())
        return {cc::illegalForSensor};
    // The same factors for all readings: the next that differs is this one.
    Bytes answer{cc::ok, data[1]};
    answer.insert(answer.end(), sensor.factors.begin(), sensor.factors.end());
    return answer;
}

bool has(Access access)
{
    return access == Access::Readable || access == Access::Settable;
}

Bytes getHysteresis(Sensor& sensor, const Bytes&)
{
    if (!has(sensor.hysteresisAccess()))
        return {cc::illegalForSensor};
    return {cc::ok, sensor.positiveHysteresis, sensor.negativeHysteresis};
}

Bytes setHysteresis(Sensor& sensor, const Bytes& data)
{
    if (sensor.hysteresisAccess() != Access::Settable)
        return {cc::illegalForSensor};
    sensor.positiveHysteresis = data[2];
    sensor.negativeHysteresis = data[3];
    return {cc::ok};
}

Bytes getThresholds(Sensor& sensor, const Bytes&)
{
    if (!sensor.hasThresholds() || sensor.thresholdAccess() == Access::None)
        return {cc::illegalForSensor};
    const bool fixed = sensor.thresholdAccess() == Access::Fixed;
    const uint8_t readable = fixed ? 0 : sensor.readable;
    Bytes answer{cc::ok, readable};
    for (size_t at = 0; at < sensor.thresholds.size(); ++at)
        answer.push_back(readable >> at & 1 ? sensor.thresholds[at] : 0);
    return answer;
}

Bytes setThresholds(Sensor& sensor, const Bytes& data)
{
    if (!sensor.hasThresholds() || sensor.thresholdAccess() != Access::Settable)
        return {cc::illegalForSensor};
    if (data[1] & ~sensor.settable)
        return {cc::invalidDataField};
    for (size_t at = 0; at < sensor.thresholds.size(); ++at)
        if (data[1] >> at & 1)
            sensor.thresholds[at] = data[2 + at];
    return {cc::ok};
}

Bytes getEventEnable(Sensor& sensor, const Bytes&)
{
    if (!sensor.sendsEvents())
        return {cc::illegalForSensor};
    return {cc::ok,
            sensor.enables,
            uint8_t(sensor.assertions),
            uint8_t(sensor.assertions >> 8),
            uint8_t(sensor.deassertions),
            uint8_t(sensor.deassertions >> 8)};
}

void select(uint16_t& enabled, uint16_t events, uint8_t operation)
{
    constexpr uint8_t enable = 1, disable = 2;
    if (operation == enable)
        enabled |= events;
    else if (operation == disable)
        enabled = uint16_t(enabled & ~events);
}

Bytes setEventEnable(Sensor& sensor, const Bytes& data)
{
    constexpr uint8_t both = 3;
    const uint8_t operation = data[1] >> 4 & 3;
    if (!sensor.sendsEvents())
        return {cc::illegalForSensor};
    if (operation == both)
        return {cc::invalidDataField};
    sensor.enables = data[1] & (Sensor::scanning | Sensor::eventMessages);
    // Masks may be left out; half of one counts as its other half being 0.
    Bytes masks{data.begin() + 2, data.end()};
    masks.resize(4);
    select(sensor.assertions, word(masks, 0), operation);
    select(sensor.deassertions, word(masks, 2), operation);
    return {cc::ok};
}

/// What is still asserted is told anew; a threshold whose reading lies within
/// the hysteresis is well from now on, which is no event.
Bytes rearm(Sensor& sensor, const Bytes& data)
{
    constexpr uint8_t selected = 0x80;
    Bytes masks{data.begin() + 2, data.end()};
    masks.resize(4);
    const uint16_t events = data[1] & selected
                                ? uint16_t(word(masks, 0) | word(masks, 2))
                                : uint16_t{0xFFFF};
    for (size_t at = 0; at < sensor.thresholds.size(); ++at)
        if (events >> 2 * at & 3)
            sensor.exceeded = uint8_t(sensor.exceeded & ~(1u << at));
    if (sensor.told)
        sensor.told = sensor.hasThresholds() ? sensor.exceeded
                                             : uint16_t(*sensor.told & ~events);
    return {cc::ok};
}

Bytes getEventStatus(Sensor& sensor, const Bytes&)
{
    const uint16_t events = sensor.assertedEvents();
    return {
        cc::ok, readingFlags(sensor), uint8_t(events), uint8_t(events >> 8), 0,
        0};
}

Bytes getType(Sensor& sensor, const Bytes&)
{
    return {cc::ok, sensor.type, sensor.eventType};
}

template <uint8_t code, Serve serve>
constexpr Command command(const char* name, size_t minData, size_t maxData)
{
    return {0x04, code, name, minData, maxData, onSensor<code, serve>};
}

constexpr Command commands[] = {
    command<0x23, getFactors>("get-sensor-reading-factors", 2, 2),
    command<0x24, setHysteresis>("set-sensor-hysteresis", 4, 4),
    command<0x25, getHysteresis>("get-sensor-hysteresis", 2, 2),
    command<0x26, setThresholds>("set-sensor-thresholds", 8, 8),
    command<0x27, getThresholds>("get-sensor-thresholds", 1, 1),
    command<0x28, setEventEnable>("set-sensor-event-enable", 2, 6),
    command<0x29, getEventEnable>("get-sensor-event-enable", 1, 1),
    command<0x2A, rearm>("rearm-sensor-events", 2, 6),
    command<0x2B, getEventStatus>("get-sensor-event-status", 1, 1),
    command<0x2D, getReading>("get-sensor-reading", 1, 1),
    command<0x2F, getType>("get-sensor-type", 1, 1),
};

} // namespace

const Family sensorFamily{commands, [](const Bmc& bmc) {
                              return !bmc.state().sensors.empty();
                          }};

} // namespace Sim
