#include "tools/print/sel.h"

#include <iterator>

#include "tools/print/columns.h"
#include "tools/print/time.h"

namespace Tool
{

namespace
{

struct SeverityWord
{
    const char* word;
    Colour colour;
};

constexpr SeverityWord severityWords[] = {
    {"-", Colour::dim},
    {"info", Colour::none},
    {"warning", Colour::warning},
    {"critical", Colour::bad},
    {"non-recoverable", Colour::bad},
};

Colour colourOf(Severity severity)
{
    return severityWords[static_cast<size_t>(severity)].colour;
}

// "Temperature #0x30" for a sensor that no record tells of, as the library
// names one without a name.
std::string sensorText(const SelRecord& record)
{
    if (!record.isEvent)
        return "-";
    if (!record.sensorName.empty())
        return record.sensorName;
    return record.typeName + " #0x" + hexByte(record.bytes.sensorNumber);
}

const char* directionText(const SelRecord& record)
{
    if (!record.isEvent)
        return "-";
    return record.asserted ? "asserted" : "deasserted";
}

std::vector<Cell> cellsOf(const SelRecord& record, bool utc)
{
    const Colour colour = colourOf(record.severity);
    return {{std::to_string(record.id)},
            {timeText(record.time, utc)},
            {severityWord(record.severity), colour},
            {sensorText(record)},
            {record.event, colour},
            {directionText(record)},
            {record.details}};
}

std::string footer(const SelListing& listing)
{
    const size_t all = listing.log.records.size();
    const size_t shown = listing.records.size();
    std::string text =
        "\n" + (shown == all ? "" : std::to_string(shown) + " of ") +
        std::to_string(all) + (all == 1 ? " record\n" : " records\n");
    const struct
    {
        size_t count;
        const char* why;
    } leftOut[] = {{listing.undated, "without a date"},
                   {listing.unjudged, "without a known severity"}};
    for (const auto& row : leftOut)
        if (row.count != 0)
            text += "  left out: " + std::to_string(row.count) + " " + row.why +
                    "\n";
    return text;
}

Json sensorJson(const SelRecord& record)
{
    if (!record.isEvent)
        return nullptr;
    return {{"deviceId", record.deviceId},
            {"number", record.bytes.sensorNumber},
            {"type",
             {{"code", record.bytes.sensorType}, {"name", record.typeName}}},
            {"name", record.sensorName.empty() ? Json(nullptr)
                                               : Json(record.sensorName)}};
}

Json generatorJson(const SelRecord& record)
{
    const uint8_t low = record.bytes.generatorId[0];
    const uint8_t high = record.bytes.generatorId[1];
    if (!record.isEvent)
        return nullptr;
    return {{"id", low | high << 8},
            {"software", (low & 1) != 0},
            {"lun", high & 3},
            {"channel", high >> 4}};
}

} // namespace

const char* severityWord(Severity severity)
{
    return severityWords[static_cast<size_t>(severity)].word;
}

std::string toTable(const SelListing& listing, const Terminal& terminal)
{
    Columns table{{{"Record", true},
                   {"Time"},
                   {"Severity", false, 0, true},
                   {"Sensor", false, 10},
                   {"Event", false, 16},
                   {"Direction"},
                   {"Details", false, 8, true}}};
    for (const SelRecord& record : listing.records)
        table.row(cellsOf(record, listing.utc));
    return table.text(terminal) + footer(listing);
}

std::string rawLines(const SelListing& listing)
{
    std::string text;
    for (const SelRecord& record : listing.records) {
        const SelBytes bytes = bytesOf(record.bytes);
        text += hexDump({bytes.begin(), bytes.end()});
    }
    return text;
}

std::string toLine(const SelRecord& record, bool utc, const Terminal& terminal)
{
    std::string text = std::to_string(record.id) + "  " +
                       timeText(record.time, utc) + "  " +
                       terminal.coloured(severityWord(record.severity),
                                         colourOf(record.severity)) +
                       "  ";
    if (record.isEvent)
        text += sensorText(record) + ": ";
    text += record.event;
    if (record.isEvent)
        text += std::string{", "} + directionText(record);
    if (!record.details.empty())
        text += " (" + record.details + ")";
    return text + '\n';
}

Json toJson(const SelRecord& record)
{
    const auto& bytes = record.bytes;
    const auto ofEvent = [&](Json value) {
        return record.isEvent ? std::move(value) : Json(nullptr);
    };
    Json json;
    json["id"] = record.id;
    json["recordType"] = bytes.recordType;
    json.update(toJson(record.time));
    json["severity"] = record.severity == Severity::unknown
                           ? Json(nullptr)
                           : Json(severityWord(record.severity));
    json["generator"] = generatorJson(record);
    json["evmRevision"] = ofEvent(bytes.evmRevision);
    json["sensor"] = sensorJson(record);
    json["eventType"] = ofEvent(record.eventType());
    json["offset"] = ofEvent(record.offset());
    json["event"] = record.event;
    json["direction"] = ofEvent(directionText(record));
    json["data"] =
        ofEvent({bytes.eventData1, bytes.eventData2, bytes.eventData3});
    json["details"] =
        record.details.empty() ? Json(nullptr) : Json(record.details);
    std::string raw;
    for (const uint8_t byte : bytesOf(bytes))
        raw += hexByte(byte);
    json["raw"] = raw;
    return json;
}

Json toJson(const SelListing& listing)
{
    Json json = document("sel");
    json["records"] = Json::array();
    for (const SelRecord& record : listing.records)
        json["records"].push_back(toJson(record));
    json["count"] = listing.log.records.size();
    json["log"] = {{"entries", listing.log.total},
                   {"complete", listing.log.complete}};
    json["leftOut"] = {{"undated", listing.undated},
                       {"unjudged", listing.unjudged}};
    return json;
}

} // namespace Tool
