#include "sim/model/sensor.h"

#include <algorithm>

namespace Sim
{
namespace
{

constexpr size_t lowerThresholds = 3;

struct Range
{
    int least, most;
};

Range rangeOf(Sensor::Format format)
{
    switch (format) {
    case Sensor::Format::OnesComplement:
        return {-127, 127};
    case Sensor::Format::TwosComplement:
        return {-128, 127};
    default:
        return {0, 255};
    }
}

} // namespace

int Sensor::toNumber(uint8_t raw) const
{
    const bool negative = raw & 0x80;
    if (negative && format == Format::OnesComplement)
        return raw - 255;
    return negative && format == Format::TwosComplement ? raw - 256 : raw;
}

uint8_t Sensor::toRaw(int value) const
{
    const Range range = rangeOf(format);
    value = std::clamp(value, range.least, range.most);
    const bool ones = format == Format::OnesComplement;
    return uint8_t(value < 0 && ones ? value + 255 : value);
}

void Sensor::update(int64_t seconds)
{
    if (!script.points.empty() && enables & scanning) {
        const int32_t value = script.valueAt(seconds);
        if (hasThresholds())
            reading = toRaw(value);
        else
            states = uint16_t(value & 0x7FFF);
    }
    // Every request asks every sensor, and few have moved.
    if (!hasThresholds() || comparison() == settled_)
        return;
    compare();
    settled_ = comparison();
}

Sensor::Comparison Sensor::comparison() const
{
    return {
        reading,         exceeded,           compared,           falling,
        uint8_t(format), positiveHysteresis, negativeHysteresis, thresholds[0],
        thresholds[1],   thresholds[2],      thresholds[3],      thresholds[4],
        thresholds[5]};
}

void Sensor::compare()
{
    // What is true of readings is the other way round of falling raw values.
    const int sign = falling ? -1 : 1;
    const int now = sign * toNumber(reading);
    uint8_t still = 0;
    for (size_t at = 0; at < thresholds.size(); ++at) {
        const uint8_t bit = uint8_t(1 << at);
        const bool was = exceeded & bit;
        const int threshold = sign * toNumber(thresholds[at]);
        const bool is = at < lowerThresholds
                            ? now <= threshold + (was ? negativeHysteresis : 0)
                            : now >= threshold - (was ? positiveHysteresis : 0);
        if (is && compared & bit)
            still |= bit;
    }
    exceeded = still;
}

uint16_t Sensor::eventsOf(uint16_t condition) const
{
    if (!hasThresholds())
        return condition;
    // IPMI v2.0, table 42-2: going low and going high, of each threshold.
    uint16_t events = 0;
    for (size_t at = 0; at < thresholds.size(); ++at)
        if (condition & 1 << at)
            events |= uint16_t(1 << (2 * at + (at < lowerThresholds ? 0 : 1)));
    return events;
}

} // namespace Sim
