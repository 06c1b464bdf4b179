#include "tools/collect/judge.h"

#include <algorithm>

#include <vek-ipmi/IpmiHealth.h>

namespace Tool
{

namespace
{

constexpr int well = 5, degraded = 10, critical = 25;

// As IpmiThresholdSensor::getSensorState, which would read the sensor again.
int numberOfThresholds(unsigned passed)
{
    using namespace Ipmi;
    constexpr unsigned severe = 1 << LOWER_CRITICAL | 1 << UPPER_CRITICAL |
                                1 << LOWER_NON_RECOVERABLE |
                                1 << UPPER_NON_RECOVERABLE;
    if (passed & severe)
        return critical;
    return passed ? degraded : well;
}

// What is not known (0 and 1) is worse than well.
bool isBetter(int a, int b)
{
    const auto rank = [](int number) {
        return number == well ? -1 : number;
    };
    return rank(a) < rank(b);
}

// The library judges several states by the highest; here the worst counts, so
// that a failed drive which is a hot spare as well is a failed drive.
int numberOfStates(const Sensor& sensor)
{
    const auto numberOf = [&](unsigned bits) {
        return Ipmi::getSensorHealthState(sensor.eventReadingType, sensor.type,
                                          sensor.number,
                                          static_cast<unsigned short>(bits));
    };
    int worst = numberOf(sensor.stateBits);
    for (unsigned bit = 1; bit <= sensor.stateBits; bit <<= 1)
        if (sensor.stateBits & bit)
            worst = std::max(worst, numberOf(bit), isBetter);
    return worst;
}

// Classes for which the table is asked at all: 0 is the answer of a rule there.
bool hasRules(uint8_t eventReadingType)
{
    const bool generic = eventReadingType >= 0x03 && eventReadingType <= 0x0C &&
                         eventReadingType != 0x08;
    return generic || eventReadingType == 0x6F;
}

Health withoutState(Condition condition)
{
    switch (condition) {
    case Condition::noReading:
    case Condition::scanningOff:
    case Condition::notAnswering:
    case Condition::refused:
        return Health::unknown;
    default:
        return Health::none;
    }
}

} // namespace

Health healthOf(int number)
{
    switch (number) {
    case 0: // The class has no rules,
    case 1: // or none fits.
        return Health::noRule;
    case 5:
        return Health::well;
    case 10:
    case 15:
        return Health::degraded;
    case 20:
    case 25:
    case 30:
        return Health::critical;
    default:
        return Health::unknown;
    }
}

void judge(Sensor& sensor)
{
    sensor.healthNumber = 0;
    sensor.health = withoutState(sensor.condition);
    if (sensor.condition != Condition::read)
        return;
    sensor.healthNumber = sensor.discrete
                              ? numberOfStates(sensor)
                              : numberOfThresholds(sensor.stateBits);
    sensor.health = healthOf(sensor.healthNumber);
    if (sensor.healthNumber == 0 && hasRules(sensor.eventReadingType))
        sensor.health = Health::unknown;
}

} // namespace Tool
