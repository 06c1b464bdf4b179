#include "tools/print/event.h"

#include <vek-ipmi/IpmiEvent.h>

#include "tools/print/columns.h"
#include "tools/print/state.h"
#include "tools/print/support.h"
#include "tools/print/table.h"

namespace Tool
{

namespace
{

// Threshold events stand in pairs, in an order of their own (IPMI v2.0, table
// 42-2).
using namespace Ipmi;
constexpr unsigned pairs[] = {
    LOWER_NON_CRITICAL, LOWER_CRITICAL, LOWER_NON_RECOVERABLE,
    UPPER_NON_CRITICAL, UPPER_CRITICAL, UPPER_NON_RECOVERABLE,
};

constexpr unsigned discreteCount = 15;

struct Side
{
    unsigned possible;                      ///< As the record says.
    const std::optional<unsigned>& enabled; ///< As the controller says.
};

const char* stateOf(const Side& side, unsigned offset)
{
    if (!(side.possible >> offset & 1))
        return "-";
    if (!side.enabled)
        return "off";
    return *side.enabled >> offset & 1 ? "on" : "off";
}

Json jsonOf(const Side& side, unsigned offset)
{
    return {{"possible", (side.possible >> offset & 1) != 0},
            {"enabled", side.enabled ? Json((*side.enabled >> offset & 1) != 0)
                                     : Json(nullptr)}};
}

} // namespace

unsigned eventCount(const Sensor& sensor)
{
    return sensor.discrete ? discreteCount
                           : static_cast<unsigned>(2 * std::size(pairs));
}

std::string eventKey(const Sensor& sensor, unsigned offset)
{
    if (sensor.discrete)
        return std::to_string(offset);
    return std::string{thresholdKey(pairs[offset / 2])} +
           (offset % 2 ? "-high" : "-low");
}

std::string eventName(const Sensor& sensor, unsigned offset)
{
    if (!sensor.discrete)
        return std::string{thresholdName(pairs[offset / 2])} +
               (offset % 2 ? " going high" : " going low");
    const std::string text =
        Ipmi::DescFromState(sensor.eventReadingType, sensor.type, offset);
    return text.empty() ? "state " + std::to_string(offset) : text;
}

std::string eventsTable(const Sensor& sensor, const EventEnable& enable)
{
    Table table;
    table.row("Name", sensor.name);
    table.row("Device id", sensor.deviceId);
    table.row("Switched by", eventSupportWord(sensor.eventSupport));
    table.row("Event messages", enable.messages ? "on" : "off");
    table.row("Scanning", enable.scanning ? "on" : "off");
    const Side assertion{sensor.assertionMask, enable.assertion},
        deassertion{sensor.deassertionMask, enable.deassertion};
    Columns columns{{{"Event"}, {"Meaning", false, 12}, {"Begins"}, {"Ends"}}};
    for (unsigned i = 0; i < eventCount(sensor); ++i)
        if ((assertion.possible | deassertion.possible) >> i & 1)
            columns.row({{eventKey(sensor, i)},
                         {eventName(sensor, i)},
                         {stateOf(assertion, i)},
                         {stateOf(deassertion, i)}});
    return table.text() + "\n" + columns.text(Terminal::ofOutput());
}

Json eventsJson(const Sensor& sensor, const EventEnable& enable)
{
    const Side assertion{sensor.assertionMask, enable.assertion},
        deassertion{sensor.deassertionMask, enable.deassertion};
    Json json = document("events");
    json["deviceId"] = sensor.deviceId;
    json["name"] = sensor.name;
    json["support"] = eventSupportWord(sensor.eventSupport);
    json["messages"] = enable.messages;
    json["scanning"] = enable.scanning;
    json["events"] = Json::array();
    for (unsigned i = 0; i < eventCount(sensor); ++i)
        json["events"].push_back({{"offset", i},
                                  {"key", eventKey(sensor, i)},
                                  {"name", eventName(sensor, i)},
                                  {"assertion", jsonOf(assertion, i)},
                                  {"deassertion", jsonOf(deassertion, i)}});
    return json;
}

} // namespace Tool
