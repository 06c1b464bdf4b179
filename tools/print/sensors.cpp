#include "tools/print/sensors.h"

#include <algorithm>

#include "tools/print/columns.h"
#include "tools/print/record.h"
#include "tools/print/sensor.h"
#include "tools/print/state.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

struct LeftOutRow
{
    LeftOut rule;
    const char *word, *text;
};

constexpr LeftOutRow leftOutRows[] = {
    {LeftOut::entity, "entity 00h/22h",
     "discrete sensors of entity 00h or 22h"},
    {LeftOut::eventType, "event type",
     "sensors of an event/reading type that IPMI does not define"},
    {LeftOut::tooLong, "too long", "sensor records of more than 64 bytes"},
    {LeftOut::locator, "locator", "device locators"},
    {LeftOut::association, "association", "entity associations"},
    {LeftOut::oem, "OEM", "OEM records"},
    {LeftOut::other, "other", "records of other types"},
};

const LeftOutRow& rowOf(LeftOut rule)
{
    for (const LeftOutRow& row : leftOutRows)
        if (row.rule == rule)
            return row;
    return *(std::end(leftOutRows) - 1);
}

// Upwards, as a person sees them on a scale.
constexpr unsigned scale[] = {
    Ipmi::LOWER_NON_RECOVERABLE, Ipmi::LOWER_CRITICAL,
    Ipmi::LOWER_NON_CRITICAL,    Ipmi::UPPER_NON_CRITICAL,
    Ipmi::UPPER_CRITICAL,        Ipmi::UPPER_NON_RECOVERABLE,
};

std::string inCapitals(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

// Those that may be left out on a narrow terminal first tell least.
std::vector<Column> columnsOf(bool thresholds)
{
    std::vector<Column> columns = {
        {"Name", false, 10, false},  {"Type", false, 7, true},
        {"Entity", false, 10, true}, {"Reading", true, 12, false},
        {"State", false, 8, false},  {"Health", false, 0, false},
    };
    if (thresholds)
        for (const unsigned threshold : scale)
            columns.push_back(
                {inCapitals(thresholdKey(threshold)), true, 0, false});
    return columns;
}

std::string entityText(const Sensor& sensor)
{
    return sensor.entityName + " " + std::to_string(sensor.entityInstance);
}

std::vector<Cell> cellsOf(bool thresholds, const Sensor& sensor)
{
    const Colour colour = colourOf(sensor.health);
    std::vector<Cell> cells = {
        {sensor.name},
        {sensor.typeName},
        {entityText(sensor)},
        {sensor.reading ? valueText(*sensor.reading, sensor.unit) : ""},
        {stateText(sensor), colour},
        {healthWord(sensor.health), colour},
    };
    if (thresholds)
        for (const unsigned threshold : scale) {
            const auto& value = sensor.thresholds[threshold].value;
            cells.push_back({value ? valueText(*value) : ""});
        }
    return cells;
}

std::vector<Cell> cellsOf(bool thresholds, const Record& record)
{
    Sensor sensor;
    if (record.sensor)
        sensor = *record.sensor;
    std::vector<Cell> cells = {
        {record.name},
        {record.sensor ? sensor.typeName : record.typeName},
        {record.sensor ? entityText(sensor) : ""},
        {""},
        {std::string{"not shown: "} + rowOf(record.leftOut).word, Colour::dim},
        {"-"},
    };
    if (thresholds)
        cells.resize(cells.size() + std::size(scale));
    return cells;
}

struct LeftOutCount
{
    const LeftOutRow& row;
    size_t count;
};

std::vector<LeftOutCount> countLeftOut(const std::vector<Record>& records)
{
    std::vector<LeftOutCount> counts;
    for (const LeftOutRow& row : leftOutRows) {
        const auto count = std::count_if(
            records.begin(), records.end(),
            [&](const Record& record) { return record.leftOut == row.rule; });
        if (count != 0)
            counts.push_back({row, static_cast<size_t>(count)});
    }
    return counts;
}

std::string plural(size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// One word in a column does not say why these never have a reading.
std::string reasons(const Listing& listing)
{
    std::string text;
    for (const Condition condition : {Condition::software, Condition::otherLun})
        for (const Sensor& sensor : listing.sensors)
            if (sensor.condition == condition) {
                text += conditionWord(sensor) + ": " +
                        conditionInWords(sensor) + "\n";
                break;
            }
    return text;
}

std::string footer(const Listing& listing)
{
    const size_t shown = listing.sensors.size();
    std::string text =
        "\n" + (shown == listing.count ? "" : std::to_string(shown) + " of ") +
        plural(listing.count, "sensor") + "\n" + reasons(listing);
    size_t sum = 0;
    std::string lines;
    for (const LeftOutCount& left : countLeftOut(listing.records)) {
        sum += left.count;
        lines += "  " + std::to_string(left.count) + " " + left.row.text + "\n";
    }
    if (sum != 0)
        text += plural(sum, "record") +
                (listing.all ? " without a sensor here:\n"
                             : " not shown (--all shows them):\n") +
                lines;
    const size_t missing = listing.repository.missing();
    return missing ? text + plural(missing, "record") + " not read\n" : text;
}

Json leftOutJson(const Record& record)
{
    Json json = toJson(record);
    json["reason"] = leftOutText(record.leftOut);
    return json;
}

// "LC 0, LNC 5, UNC 85"
std::string thresholdsInOneLine(const Sensor& sensor)
{
    std::string text;
    for (const unsigned threshold : scale) {
        const auto& value = sensor.thresholds[threshold].value;
        if (value)
            text += (text.empty() ? "" : ", ") +
                    inCapitals(thresholdKey(threshold)) + " " +
                    valueText(*value);
    }
    return text;
}

Columns tableOf(const Listing& listing, bool columns)
{
    Columns table{columnsOf(columns)};
    const bool below = listing.thresholds && !columns;
    for (const Sensor& sensor : listing.sensors)
        table.row(cellsOf(columns, sensor),
                  below ? thresholdsInOneLine(sensor) : "");
    if (listing.all)
        for (const Record& record : listing.records)
            if (record.leftOut != LeftOut::no)
                table.row(cellsOf(columns, record));
    return table;
}

} // namespace

const char* leftOutText(LeftOut rule)
{
    return rowOf(rule).text;
}

std::string toTable(const Listing& listing, const Terminal& terminal)
{
    Columns table = tableOf(listing, listing.thresholds);
    // Where the columns do not fit, what was asked for goes below each row.
    if (listing.thresholds && !table.fits(terminal))
        table = tableOf(listing, false);
    return table.text(terminal) + footer(listing);
}

Json toJson(const Listing& listing)
{
    Json json = document("sensors");
    json["sensors"] = Json::array();
    for (const Sensor& sensor : listing.sensors)
        json["sensors"].push_back(toJson(sensor));
    json["count"] = listing.count;
    json["repository"] = toJson(listing.repository);
    json["notShown"] = Json::array();
    for (const LeftOutCount& left : countLeftOut(listing.records))
        json["notShown"].push_back(
            {{"reason", left.row.text}, {"count", left.count}});
    if (!listing.all)
        return json;
    json["records"] = Json::array();
    for (const Record& record : listing.records)
        if (record.leftOut != LeftOut::no)
            json["records"].push_back(leftOutJson(record));
    return json;
}

} // namespace Tool
