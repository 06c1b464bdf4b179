#include "sim/model/sdr_record.h"

#include <algorithm>

namespace Sim
{
namespace
{

/// A record may end anywhere.
class Reader
{
public:
    explicit Reader(const Bytes& bytes) : bytes_{bytes} {}
    uint8_t operator[](size_t at) const
    {
        return at < bytes_.size() ? bytes_[at] : uint8_t{0};
    }
    uint16_t word(size_t at) const
    {
        return uint16_t((*this)[at] | (*this)[at + 1] << 8);
    }

private:
    const Bytes& bytes_;
};

/// Which of both full and compact records have.
Sensor commonPart(const Reader& record)
{
    Sensor sensor;
    sensor.lun = record[6] & 0x03;
    sensor.number = record[7];
    sensor.capabilities = record[11];
    sensor.type = record[12];
    sensor.eventType = record[13];
    sensor.assertions = record.word(14) & 0x0FFF;
    sensor.deassertions = record.word(16) & 0x0FFF;
    if (sensor.hasThresholds()) {
        sensor.readable = record[18] & 0x3F;
        sensor.settable = record[19] & 0x3F;
        sensor.compared =
            uint8_t((record[15] >> 4 & 7) | (record[17] >> 4 & 7) << 3);
    } else {
        sensor.assertions = record.word(14) & 0x7FFF;
        sensor.deassertions = record.word(16) & 0x7FFF;
    }
    sensor.format = Sensor::Format(record[20] >> 6);
    return sensor;
}

/// Neither a negative factor nor 1/x keeps the order of raw values.
bool isFalling(const Reader& record)
{
    constexpr uint8_t inverse = 7;
    const bool negative = record[25] & 0x80;
    return negative != ((record[23] & 0x7F) == inverse);
}

/// The middle of two raw values.
uint8_t middle(const Sensor& sensor, uint8_t a, uint8_t b)
{
    return sensor.toRaw((sensor.toNumber(a) + sensor.toNumber(b)) / 2);
}

/// A reading that the record calls good, or that hurts no threshold.
uint8_t plausibleReading(const Sensor& sensor, const Reader& record)
{
    constexpr uint8_t nominal = 1, normalRange = 6;
    if (record[30] & nominal)
        return record[31];
    if ((record[30] & normalRange) == normalRange)
        return middle(sensor, record[32], record[33]);
    // Between the innermost thresholds of both sides; the ends of the range
    // stand for a side that has none.
    uint8_t low = sensor.toRaw(sensor.falling ? 255 : -128);
    uint8_t high = sensor.toRaw(sensor.falling ? -128 : 255);
    for (size_t at : {2, 1, 0})
        if (sensor.compared >> at & 1)
            low = sensor.thresholds[at];
    for (size_t at : {5, 4, 3})
        if (sensor.compared >> at & 1)
            high = sensor.thresholds[at];
    return middle(sensor, low, high);
}

Sensor fullSensor(const Reader& record)
{
    Sensor sensor = commonPart(record);
    sensor.falling = isFalling(record);
    for (size_t at = 0; at < sensor.factors.size(); ++at)
        sensor.factors[at] = record[24 + at];
    for (size_t at = 0; at < 3; ++at) {
        sensor.thresholds[at] = record[41 - at];
        sensor.thresholds[3 + at] = record[38 - at];
    }
    sensor.positiveHysteresis = record[42];
    sensor.negativeHysteresis = record[43];
    if (sensor.hasThresholds())
        sensor.reading = plausibleReading(sensor, record);
    return sensor;
}

std::vector<Sensor> compactSensors(const Reader& record)
{
    Sensor sensor = commonPart(record);
    sensor.positiveHysteresis = record[25];
    sensor.negativeHysteresis = record[26];
    std::vector<Sensor> sensors;
    const int share = std::max(1, record[23] & 0x0F);
    for (int at = 0; at < share; ++at, ++sensor.number)
        sensors.push_back(sensor);
    return sensors;
}

} // namespace

Owner ownerOf(const Bytes& record)
{
    const Reader reader{record};
    return {uint8_t(reader[6] >> 4), reader[5]};
}

std::vector<Sensor> sensorsOf(const Bytes& record)
{
    constexpr uint8_t software = 0x01;
    const Reader reader{record};
    if (reader[5] & software)
        return {};
    if (reader[3] == sdr::full)
        return {fullSensor(reader)};
    return reader[3] == sdr::compact ? compactSensors(reader)
                                     : std::vector<Sensor>{};
}

} // namespace Sim
