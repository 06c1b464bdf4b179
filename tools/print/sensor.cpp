#include "tools/print/sensor.h"

#include "tools/print/state.h"
#include "tools/print/support.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

std::string codeAndName(unsigned code, const std::string& name)
{
    return hexNumber(code) + " " + name;
}

std::string ownerText(const Sensor& sensor)
{
    const std::string owner = hexNumber(sensor.owner);
    const std::string rest = ", LUN " + std::to_string(sensor.lun) +
                             ", channel " + std::to_string(sensor.channel);
    if (sensor.owner & 1)
        return owner + " (software)" + rest;
    return owner +
           (sensor.owner == controllersAddress ? " (the controller)"
                                               : " (a satellite)") +
           rest;
}

std::string textOf(const std::optional<Value>& value, const Sensor& sensor)
{
    return value ? valueText(*value, sensor.unit) + " (raw " +
                       hexNumber(value->raw) + ")"
                 : "";
}

void addIdentity(Table& table, const Sensor& sensor)
{
    table.row("Name", sensor.name);
    table.row("Description", sensor.description);
    table.row("Device id", sensor.deviceId);
    table.row("Number", std::to_string(sensor.number) + " (" +
                            hexNumber(sensor.number) + ")");
    table.row("Owner", ownerText(sensor));
    table.row("Record", hexNumber(sensor.recordId, 4) + ", type " +
                            hexNumber(sensor.recordType));
    table.row("Type", codeAndName(sensor.type, sensor.typeName));
    table.row("Event/reading type", hexNumber(sensor.eventReadingType));
    table.row("Entity", codeAndName(sensor.entityId, sensor.entityName) +
                            ", instance " +
                            std::to_string(sensor.entityInstance));
    table.row("Direction", sensor.direction);
}

void addReading(Table& table, const Sensor& sensor)
{
    const bool read = sensor.condition == Condition::read;
    if (!read)
        table.row("Reading", "none: " + conditionInWords(sensor));
    else if (sensor.reading)
        table.row("Reading", textOf(sensor.reading, sensor));
    table.row("Time", sensor.time);
    if (read)
        table.row("States", sensor.states.empty()
                                ? std::vector<std::string>{stateText(sensor)}
                                : sensor.states);
    table.row("Health",
              healthWord(sensor.health) +
                  (sensor.healthNumber
                       ? " (" + std::to_string(sensor.healthNumber) + ")"
                       : std::string{}));
}

std::string thresholdText(const Threshold& threshold, const Sensor& sensor)
{
    if (!threshold.value)
        return threshold.readable ? "not read" : "-";
    return textOf(threshold.value, sensor) +
           (threshold.settable ? ", settable" : "");
}

void addLimits(Table& table, const Sensor& sensor)
{
    const struct
    {
        const char* name;
        const std::optional<Value>& value;
    } rows[] = {
        {"Least readable", sensor.limits.minimum},
        {"Normal minimum", sensor.limits.normalMinimum},
        {"Nominal reading", sensor.limits.nominal},
        {"Normal maximum", sensor.limits.normalMaximum},
        {"Most readable", sensor.limits.maximum},
    };
    for (const auto& row : rows)
        if (row.value)
            table.row(row.name, textOf(row.value, sensor));
}

} // namespace

void addThresholds(Table& table, const Sensor& sensor)
{
    table.row("Threshold access", supportWord(sensor.thresholdAccess));
    using namespace Ipmi;
    for (const unsigned i :
         {LOWER_NON_RECOVERABLE, LOWER_CRITICAL, LOWER_NON_CRITICAL,
          UPPER_NON_CRITICAL, UPPER_CRITICAL, UPPER_NON_RECOVERABLE})
    {
        std::string name = thresholdName(i);
        name[0] = static_cast<char>(name[0] - 'a' + 'A');
        table.row(name, thresholdText(sensor.thresholds[i], sensor));
    }
}

void addHysteresis(Table& table, const Sensor& sensor)
{
    const char* support = supportWord(sensor.hysteresisSupport);
    if (!sensor.hysteresis) {
        table.row("Hysteresis", support);
        return;
    }
    const auto text = [&](const char* sign, uint8_t raw) {
        return sign + textOf(differenceOf(sensor, raw), sensor);
    };
    table.row("Hysteresis", {text("+", sensor.hysteresis->positive),
                             text("-", sensor.hysteresis->negative), support});
}

std::string toTable(const Sensor& sensor)
{
    Table table;
    addIdentity(table, sensor);
    addReading(table, sensor);
    if (!sensor.discrete) {
        addThresholds(table, sensor);
        addHysteresis(table, sensor);
    }
    addLimits(table, sensor);
    table.row("Event messages", eventSupportWord(sensor.eventSupport));
    table.row("Assertion events", hexNumber(sensor.assertionMask, 4));
    table.row("Deassertion events", hexNumber(sensor.deassertionMask, 4));
    if (sensor.discrete)
        table.row("Possible states", hexNumber(sensor.readingMask, 4));
    table.row("Settings", flagWords(sensor.flags));
    return table.text();
}

} // namespace Tool
