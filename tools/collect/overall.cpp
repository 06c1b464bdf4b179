#include "tools/collect/overall.h"

#include <algorithm>

namespace Tool
{

namespace
{

enum class Counts
{
    well,
    unknown,
    degraded,
    critical,
    notJudged,
    absent
};

// A machine that is switched off has no readings of its fans, and CDh, that
// the sensor is none to be read, is an answer for good.
// A state that the table itself calls unknown says nothing about the machine.
bool isSilenceNormal(const Sensor& sensor)
{
    constexpr int illegal = 0xCD;
    return sensor.condition == Condition::read ||
           sensor.condition == Condition::noReading ||
           sensor.condition == Condition::scanningOff ||
           (sensor.condition == Condition::refused &&
            sensor.lastResult == illegal);
}

Counts countsAs(const Sensor& sensor)
{
    switch (sensor.health) {
    case Health::well:
        return Counts::well;
    case Health::degraded:
        return Counts::degraded;
    case Health::critical:
        return Counts::critical;
    case Health::noRule:
        return Counts::notJudged;
    case Health::none:
        return Counts::absent;
    default:
        return isSilenceNormal(sensor) ? Counts::notJudged : Counts::unknown;
    }
}

Health healthFrom(Counts worst, const Overall& overall)
{
    if (worst == Counts::critical)
        return Health::critical;
    if (worst == Counts::degraded)
        return Health::degraded;
    const bool blind = overall.repository.missing() != 0 || overall.judged == 0;
    return worst == Counts::unknown || blind ? Health::unknown : Health::well;
}

} // namespace

Overall overallOf(const std::vector<Sensor>& sensors,
                  const Repository& repository)
{
    Overall overall;
    overall.repository = repository;
    overall.source = loadHealthTable();
    overall.count = sensors.size();
    Counts worst = Counts::well;
    for (const Sensor& sensor : sensors) {
        const Counts counts = countsAs(sensor);
        if (counts == Counts::absent)
            ++overall.absent;
        else if (counts == Counts::notJudged)
            overall.notJudged.push_back(sensor);
        else if (counts != Counts::well)
            overall.notWell.push_back(sensor);
        const bool known = counts == Counts::well ||
                           counts == Counts::degraded ||
                           counts == Counts::critical;
        overall.judged += known ? 1 : 0;
        if (counts <= Counts::critical)
            worst = std::max(worst, counts);
    }
    std::stable_sort(overall.notWell.begin(), overall.notWell.end(),
                     [](const Sensor& a, const Sensor& b) {
                         return countsAs(a) > countsAs(b);
                     });
    overall.health = healthFrom(worst, overall);
    return overall;
}

} // namespace Tool
