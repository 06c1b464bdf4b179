#include "tools/print/sel_info.h"

#include "tools/print/completion_codes.h"
#include "tools/print/text.h"
#include "tools/print/time.h"

namespace Tool
{

namespace
{

struct Operation
{
    unsigned bit;
    const char* name;
};

// IPMI v2.0, 31.2, byte 15.
constexpr Operation operations[] = {
    {0, "Get SEL Allocation Info"},
    {1, "Reserve SEL"},
    {2, "Partial Add SEL Entry"},
    {3, "Delete SEL Entry"},
};

std::vector<std::string> operationNames(const SelInfo& info)
{
    std::vector<std::string> names;
    for (const Operation& operation : operations)
        if (info.supports(operation.bit))
            names.push_back(operation.name);
    return names;
}

// BCD with the major version in the low nibble.
std::string versionText(uint8_t version)
{
    return std::to_string(version & 0x0F) + "." + std::to_string(version >> 4);
}

unsigned freeBytes(const SelInfo& info)
{
    return info.raw.freeSpace[0] | info.raw.freeSpace[1] * 0x100u;
}

// IPMI v2.0, 31.2: that much, or more.
bool isAtLeast(unsigned bytes)
{
    return bytes == 0xFFFF;
}

std::string freeText(const SelInfo& info)
{
    const unsigned bytes = freeBytes(info);
    return std::to_string(bytes) + " bytes" +
           (isAtLeast(bytes) ? " or more" : "");
}

std::string capacityText(const SelInfo& info)
{
    return std::to_string(info.log.getMaxNumberOfRecords()) + " records" +
           (isAtLeast(freeBytes(info)) ? " or more" : "");
}

std::vector<std::string> allocationLines(const SelAllocation& allocation)
{
    if (!allocation.completion.ok())
        return {inWords(commands::getSelAllocation, allocation.completion)};
    const auto text = [](unsigned count) {
        return std::to_string(count);
    };
    return {text(allocation.units) + " units of " + text(allocation.unitSize) +
                " bytes, " + text(allocation.freeUnits) + " free",
            "largest free block " + text(allocation.largestFreeBlock) +
                " units, largest record " + text(allocation.maximumRecordSize) +
                " units"};
}

Json allocationJson(const SelAllocation& allocation)
{
    Json json = {{"completion",
                  toJson(commands::getSelAllocation, allocation.completion)}};
    if (allocation.completion.ok())
        json.update({{"units", allocation.units},
                     {"unitSize", allocation.unitSize},
                     {"freeUnits", allocation.freeUnits},
                     {"largestFreeBlock", allocation.largestFreeBlock},
                     {"maximumRecordSize", allocation.maximumRecordSize}});
    return json;
}

std::string differenceText(const SelClock& clock)
{
    const auto ahead = clock.ahead();
    if (!ahead)
        return "not known: the log's clock was not set";
    if (*ahead == 0)
        return "none";
    return std::to_string(*ahead < 0 ? -*ahead : *ahead) + " s " +
           (*ahead < 0 ? "behind" : "ahead of") + " the host's clock";
}

} // namespace

void addRows(Table& table, const SelClock& clock, bool utc)
{
    if (!clock.completion.ok()) {
        table.row("Clock", inWords(commands::getSelTime, clock.completion));
        return;
    }
    table.row("Clock", timeText(clock.time, utc));
    table.row("Difference", differenceText(clock));
}

Json toJson(const SelClock& clock)
{
    const auto ahead = clock.ahead();
    Json json = {
        {"completion", toJson(commands::getSelTime, clock.completion)}};
    if (clock.completion.ok())
        json.update(toJson(clock.time));
    json["host"] = dateText(clock.host, true);
    json["ahead"] = ahead ? Json(*ahead) : Json(nullptr);
    return json;
}

std::string toTable(const SelInfo& info, bool utc)
{
    Table table;
    table.row("Version", versionText(info.raw.selVersion));
    table.row("Records", std::to_string(entriesOf(info.raw)));
    table.row("Free space", freeText(info));
    table.row("Capacity", capacityText(info));
    table.row("Overflow", info.log.getOverFlowFlag()
                              ? "yes: events were lost for want of room"
                              : "no");
    table.row("Last addition", timeText(info.lastAddition, utc));
    table.row("Last erase", timeText(info.lastErase, utc));
    table.row("Operations", operationNames(info));
    table.row("Allocation", allocationLines(info.allocation));
    addRows(table, info.clock, utc);
    return table.text();
}

Json toJson(const SelInfo& info)
{
    Json json = document("sel-info");
    json["version"] = versionText(info.raw.selVersion);
    json["entries"] = entriesOf(info.raw);
    json["freeBytes"] = freeBytes(info);
    json["capacity"] = info.log.getMaxNumberOfRecords();
    json["atLeast"] = isAtLeast(freeBytes(info));
    json["overflow"] = info.log.getOverFlowFlag();
    json["lastAddition"] = toJson(info.lastAddition);
    json["lastErase"] = toJson(info.lastErase);
    json["operations"] = operationNames(info);
    json["allocation"] = allocationJson(info.allocation);
    json["clock"] = toJson(info.clock);
    return json;
}

} // namespace Tool
