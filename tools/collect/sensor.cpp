#include "tools/collect/sensor.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/judge.h"
#include "tools/collect/unit.h"

namespace Tool
{

namespace
{

constexpr uint8_t flagScanning = 0x40, flagUnavailable = 0x20;

std::optional<double> convert(const Ipmi::IpmiSensor& sensor, int raw)
{
    if (raw < 0 || raw > 0xFF || !sensor.isConvertible())
        return std::nullopt;
    const double real = sensor.convertRawValue(static_cast<unsigned>(raw));
    return std::isfinite(real) ? std::optional<double>{real} : std::nullopt;
}

double stepAround(const Ipmi::IpmiSensor& sensor, int raw, double real)
{
    double step = 0;
    for (const int neighbour : {raw - 1, raw + 1}) {
        const auto other = convert(sensor, neighbour);
        const double distance = other ? std::fabs(*other - real) : 0;
        if (distance > 0 && (step == 0 || distance < step))
            step = distance;
    }
    return step;
}

void collectNames(const Ipmi::IpmiSensor& from, Sensor& to)
{
    to.deviceId = from.getDeviceId();
    to.name = from.getName();
    to.idString = from.getIdString();
    to.description = from.getDescription();
    to.typeName = from.getSensorTypeString();
    to.direction = from.getSensorDirectionString();
    const Ipmi::IpmiEntity entity = from.getEntity();
    to.entityName = entity.getName();
    to.entityId = entity.getId();
    to.entityInstance = entity.getInstance();
}

void collectNumbers(const Ipmi::IpmiSensor& from, Sensor& to)
{
    const unsigned char* bytes = nullptr;
    int length = 0;
    from.RawRecord(bytes, length);
    to.record.assign(bytes, bytes + length);
    to.recordId = from.getSensorRecordNumber();
    constexpr size_t typeAt = 3;
    to.recordType = to.record.size() > typeAt ? to.record[typeAt] : uint8_t{0};
    to.number = from.getSensorNumber();
    to.owner = from.getOwnerId();
    to.lun = from.getLun();
    to.channel = from.getChannel();
    to.type = from.getSensorType();
    to.eventReadingType = from.getEventReadingType();
}

void collectCapabilities(const Ipmi::IpmiSensor& from, Sensor& to)
{
    to.discrete = from.isDiscrete();
    to.convertible = from.isConvertible();
    constexpr size_t linearisationAt = 23;
    const bool linear = to.convertible && to.record.size() > linearisationAt &&
                        (to.record[linearisationAt] & 0x7F) == 0;
    if (linear)
        to.rawStep =
            std::fabs(from.convertRawValue(1) - from.convertRawValue(0));
    to.unit = unitOf(from);
    to.hysteresisSupport = from.getHysteresisSupport();
    to.thresholdAccess = from.getThresholdAccessSupport();
    to.eventSupport = from.getEventMessageSupport();
    to.flags = from.getFlags();
    to.assertionMask = from.getAssertionEventMask();
    to.deassertionMask = from.getDeassertionEventMask();
    if (const auto* discrete =
            dynamic_cast<const Ipmi::IpmiDiscreteSensor*>(&from))
        to.readingMask = discrete->getReadingMask();
    if (const auto* threshold =
            dynamic_cast<const Ipmi::IpmiThresholdSensor*>(&from))
    {
        to.readableMask = threshold->getReadableMask();
        to.settableMask = threshold->getSettableMask();
    }
}

// Bytes 30 to 35 of a full record (IPMI v2.0, 43.1).
void collectLimits(const Ipmi::IpmiSensor& from, Sensor& to)
{
    const auto at = [&](size_t byte, bool given) {
        return given && byte < to.record.size()
                   ? std::optional<Value>{valueOf(from, to.record[byte])}
                   : std::nullopt;
    };
    if (!to.convertible)
        return;
    to.limits.nominal = at(31, from.isNominalReadingSet());
    to.limits.normalMaximum = at(32, from.isNormalMaxSet());
    to.limits.normalMinimum = at(33, from.isNormalMinSet());
    to.limits.maximum = at(34, true);
    to.limits.minimum = at(35, true);
}

// Nothing was read of these, or somebody else's: the driver's local form
// reaches the controller at LUN 0 alone.
bool isOutOfReach(const Sensor& sensor, Condition& why)
{
    if (sensor.recordType == record_types::eventOnly)
        why = Condition::eventOnly;
    else if (sensor.owner & 1)
        why = Condition::software;
    else if (sensor.owner == controllersAddress && sensor.lun != 0)
        why = Condition::otherLun;
    else
        return false;
    return true;
}

// An answer without flags says nothing; one without states nothing of a
// discrete sensor.
Condition conditionOf(const Ipmi::IpmiSensorReading& last, bool discrete)
{
    constexpr unsigned flagsEnd = 3, statesEnd = 4;
    switch (last.lastResult) {
    case 0:
        break;
    case 0xCB:
        return Condition::absent;
    case -1:
    case 0xC3:
        return Condition::notAnswering;
    default:
        return Condition::refused;
    }
    if (!last.valid || last.length < flagsEnd)
        return Condition::notAnswering;
    if (!(last.bytes[2] & flagScanning))
        return Condition::scanningOff;
    const bool noStates = discrete && last.length < statesEnd;
    return noStates || last.bytes[2] & flagUnavailable ? Condition::noReading
                                                       : Condition::read;
}

// Discrete sensors often carry factors that mean nothing.
bool hasNumber(const Sensor& sensor)
{
    return sensor.discrete ? sensor.convertible && !sensor.unit.text.empty()
                           : true;
}

void collectReading(const Ipmi::IpmiSensor& from,
                    const Ipmi::IpmiSensorReading& last, Sensor& to)
{
    to.lastResult = last.lastResult;
    if (isOutOfReach(to, to.condition))
        return;
    to.condition = conditionOf(last, to.discrete);
    if (last.valid) {
        to.answer.assign(std::begin(last.bytes), std::end(last.bytes));
        from.getReadingTime(to.time);
    }
    if (to.condition != Condition::read)
        return;
    if (hasNumber(to) && from.isAnalog())
        to.reading = valueOf(from, last.bytes[1]);
    to.stateBits = to.discrete ? (last.bytes[3] | last.bytes[4] << 8) & 0x7FFF
                               : last.bytes[3] & 0x3F;
    to.states = from.getStates();
    std::reverse(to.states.begin(), to.states.end());
}

// Where a full record keeps the default of each (IPMI v2.0, 43.1).
constexpr size_t defaultsAt[Ipmi::THRESHOLD_COUNT] = {41, 40, 39, 38, 37, 36};

void collectThresholds(const Ipmi::IpmiSensor& from,
                       const Ipmi::IpmiSensorReading& last, Sensor& to)
{
    if (to.discrete)
        return;
    const bool known = last.thresholds[0] == 0 &&
                       to.condition != Condition::otherLun &&
                       to.condition != Condition::software;
    for (unsigned i = 0; i < to.thresholds.size(); ++i) {
        Threshold& threshold = to.thresholds[i];
        threshold.readable = to.readableMask >> i & 1;
        threshold.settable = to.settableMask >> i & 1;
        if (known && last.thresholds[1] >> i & 1)
            threshold.value = valueOf(from, last.thresholds[2 + i]);
        if (to.convertible && (threshold.readable || threshold.settable) &&
            defaultsAt[i] < to.record.size())
            threshold.defaultValue = valueOf(from, to.record[defaultsAt[i]]);
    }
}

void collectHysteresis(const Ipmi::IpmiSensorReading& last, Sensor& to)
{
    constexpr uint8_t readable = 1, settable = 2;
    const bool kept =
        to.hysteresisSupport == readable || to.hysteresisSupport == settable;
    // The library asks the controller for it, whoever owns the sensor, and
    // only behind an answer about thresholds.
    const bool asked = last.thresholds[0] == 0 && last.thresholds[1] != 0;
    if (kept && asked && !to.discrete && !to.isSatellite() &&
        last.hysteresis[0] == 0)
        to.hysteresis = Hysteresis{last.hysteresis[1], last.hysteresis[2]};
}

} // namespace

Value valueOf(const Ipmi::IpmiSensor& sensor, uint8_t raw)
{
    Value value;
    value.raw = raw;
    value.real = convert(sensor, raw);
    if (value.real)
        value.step = stepAround(sensor, raw, *value.real);
    return value;
}

Value differenceOf(const Sensor& sensor, uint8_t raw)
{
    Value value;
    value.raw = raw;
    if (sensor.rawStep > 0)
        value.real = raw * sensor.rawStep;
    value.step = sensor.rawStep;
    return value;
}

Sensor collectSensor(const Ipmi::IpmiSensor& sensor)
{
    Sensor to;
    collectNames(sensor, to);
    collectNumbers(sensor, to);
    collectCapabilities(sensor, to);
    collectLimits(sensor, to);
    const Ipmi::IpmiSensorReading last = sensor.lastReading();
    collectReading(sensor, last, to);
    collectThresholds(sensor, last, to);
    collectHysteresis(last, to);
    judge(to);
    return to;
}

std::vector<Sensor> collectSensors()
{
    std::vector<Sensor> sensors;
    for (const auto& sensor : Ipmi::IpmiIfc::getSensors())
        sensors.push_back(collectSensor(*sensor));
    const auto order = [](const Sensor& sensor) {
        return std::tuple(sensor.recordId, sensor.number);
    };
    std::stable_sort(
        sensors.begin(), sensors.end(),
        [&](const Sensor& a, const Sensor& b) { return order(a) < order(b); });
    return sensors;
}

std::shared_ptr<Ipmi::IpmiSensor> objectOf(const Sensor& sensor)
{
    for (const auto& object : Ipmi::IpmiIfc::getSensors())
        if (object->getDeviceId() == sensor.deviceId &&
            object->getSensorRecordNumber() == sensor.recordId)
            return object;
    return nullptr;
}

} // namespace Tool
