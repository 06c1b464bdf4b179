#include "tools/commands/find.h"

#include <functional>

#include "tools/commands/number.h"
#include "tools/print/words.h"
#include "tools/status.h"

namespace Tool
{

namespace
{

using Found = std::vector<const Sensor*>;

Found select(const std::vector<Sensor>& sensors,
             const std::function<bool(const Sensor&)>& fits)
{
    Found found;
    for (const Sensor& sensor : sensors)
        if (fits(sensor))
            found.push_back(&sensor);
    return found;
}

// An event-only record may repeat the number of a sensor that can be read.
Found byDeviceId(const std::vector<Sensor>& sensors, const std::string& what)
{
    const auto isIt = [&](const Sensor& sensor) {
        return sensor.deviceId == what;
    };
    const Found readable = select(sensors, [&](const Sensor& sensor) {
        return isIt(sensor) && sensor.condition != Condition::eventOnly;
    });
    return readable.size() == 1 ? readable : select(sensors, isIt);
}

// A device id is what tells sensors apart, so it goes first; a name in other
// letters is a guess, so it goes last.
Found candidates(const std::vector<Sensor>& sensors, const std::string& what)
{
    uint8_t number = 0;
    const bool isNumber = readByte(what, number);
    Found found = byDeviceId(sensors, what);
    if (found.empty())
        found = select(sensors, [&](const Sensor& sensor) {
            return sensor.name == what || sensor.idString == what ||
                   (isNumber && sensor.number == number);
        });
    if (found.empty())
        found = select(sensors, [&](const Sensor& sensor) {
            return lowered(sensor.name) == lowered(what);
        });
    return found;
}

std::string listOf(const Found& found)
{
    std::string list;
    for (const Sensor* sensor : found)
        list += (list.empty() ? "" : "\n  ") + sensor->deviceId + "  " +
                sensor->name + " (" + sensor->description + ")";
    return list;
}

} // namespace

const Sensor& findSensor(const Discovery& discovery, const std::string& what)
{
    const Found found = candidates(discovery.sensors, what);
    if (found.empty() && discovery.repository.missing() != 0)
        throw Failure{Status::failed,
                      "no sensor '" + what + "' among the records that could " +
                          "be read; " + missingText(discovery.repository),
                      "Try again."};
    if (found.empty())
        throw Failure{Status::usage, "no sensor '" + what + "'",
                      "List them with: vek-ipmi sensors (--all for what is no "
                      "sensor here)"};
    if (found.size() > 1)
        throw Failure{Status::usage,
                      "'" + what + "' fits " + std::to_string(found.size()) +
                          " sensors; name one by its device id:",
                      listOf(found)};
    return *found.front();
}

const Sensor& findForWriting(const Discovery& discovery,
                             const std::string& what)
{
    const Sensor& sensor = findSensor(discovery, what);
    if (discovery.repository.missing() == 0 || sensor.deviceId == what)
        return sensor;
    throw Failure{Status::failed,
                  "'" + what + "' might fit another sensor as well: " +
                      missingText(discovery.repository),
                  "Try again, or name it by its device id: " + sensor.deviceId};
}

void refuseSatellite(const Sensor& sensor)
{
    if (!sensor.isSatellite())
        return;
    throw Failure{Status::usage,
                  "settings of '" + sensor.name + "' cannot be reached: " +
                      (sensor.owner == controllersAddress
                           ? "it is at LUN " + std::to_string(sensor.lun) +
                                 " of the controller"
                           : "it belongs to " + hexNumber(sensor.owner)),
                  "Only those of the controller's own sensors at LUN 0 can."};
}

} // namespace Tool
