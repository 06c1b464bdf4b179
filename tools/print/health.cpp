#include "tools/print/health.h"

#include "tools/print/columns.h"
#include "tools/print/record.h"
#include "tools/print/sensor.h"
#include "tools/print/state.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

std::string firstLine(const std::string& health, const std::string& what)
{
    std::string capitals = health;
    for (char& c : capitals)
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    // A '|' would begin performance data.
    std::string line = "VEK-IPMI " + capitals + " - " + what;
    for (char& c : line)
        if (c == '|' || c == '\n')
            c = '/';
    return line + '\n';
}

std::string stateAndReading(const Sensor& sensor)
{
    return stateText(sensor) +
           (sensor.reading ? ": " + valueText(*sensor.reading, sensor.unit)
                           : "");
}

std::string summary(const Overall& overall)
{
    constexpr size_t most = 4;
    const std::string all = std::to_string(overall.count) + " sensors";
    const size_t bad = overall.notWell.size();
    if (bad == 0)
        return overall.repository.missing() ? "not all records could be read"
               : overall.count == 0         ? "the controller has no sensors"
               : overall.judged == 0 ? "none of " + all + " could be judged"
                                     : "none of " + all + " is unwell";
    std::string text = std::to_string(bad) + " of " + all +
                       (bad == 1 ? " is" : " are") + " not well: ";
    for (size_t i = 0; i < bad && i < most; ++i)
        text += (i ? ", " : "") + overall.notWell[i].name + " (" +
                stateAndReading(overall.notWell[i]) + ")";
    return bad > most ? text + ", ..." : text;
}

void addRow(Columns& table, const Sensor& sensor, const char* word)
{
    table.row({{word},
               {sensor.name},
               {sensor.description},
               {stateAndReading(sensor)}});
}

std::string withoutTitles(const std::string& table)
{
    return table.substr(table.find('\n') + 1);
}

Json sensorJson(const Sensor& sensor)
{
    return {{"deviceId", sensor.deviceId},
            {"name", sensor.name},
            {"description", sensor.description},
            {"condition", conditionWord(sensor)},
            {"states", sensor.states},
            {"reading", toJson(sensor.reading)},
            {"unit", sensor.unit.text},
            {"health",
             {{"word", healthWord(sensor.health)},
              {"number", sensor.healthNumber}}}};
}

Json listJson(const std::vector<Sensor>& sensors)
{
    Json json = Json::array();
    for (const Sensor& sensor : sensors)
        json.push_back(sensorJson(sensor));
    return json;
}

} // namespace

std::string unknownLine(const std::string& why)
{
    return firstLine("unknown", why);
}

std::string toText(const Overall& overall)
{
    Columns table{{{""}, {""}, {""}, {""}}};
    for (const Sensor& sensor : overall.notWell)
        addRow(table, sensor, healthWord(sensor.health));
    for (const Sensor& sensor : overall.notJudged)
        addRow(table, sensor,
               sensor.health == Health::noRule ? "no rule" : "not judged");
    return firstLine(healthWord(overall.health), summary(overall)) +
           withoutTitles(table.text({}));
}

Json toJson(const Overall& overall)
{
    Json json = document("health");
    json["health"] = healthWord(overall.health);
    json["sensors"] = overall.count;
    json["absent"] = overall.absent;
    json["notWell"] = listJson(overall.notWell);
    json["notJudged"] = listJson(overall.notJudged);
    json["repository"] = toJson(overall.repository);
    json["healthTable"] = overall.source == HealthSource::file
                              ? Json(healthTablePath)
                              : Json(nullptr);
    return json;
}

} // namespace Tool
