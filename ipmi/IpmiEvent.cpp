#include <vek-ipmi/IpmiEvent.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <syslog.h>

#include "ipmi/IpmiEventLookup.h"
#include "ipmi/IpmiPerfectHash.h"
#include "ipmi/IpmiSelRecord.h"
#include "ipmi/IpmiText.h"

namespace Ipmi
{

namespace
{

constexpr uint32_t codeOf(uint8_t eventClass, uint8_t type, uint8_t data1,
                          uint8_t data3)
{
    return EventText{eventClass, type, data1, data3, nullptr, nullptr}.code();
}

const char* findDescription(uint32_t code)
{
    const EventText& row = ipmi_sel_data[perfect_hash_lookup(code)];
    return row.code() == code ? row.description : "";
}

template <typename Rows>
const EventText* findRow(const Rows& rows, uint8_t eventClass, uint8_t type,
                         unsigned offset)
{
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto& r) {
        return r.eventClass == eventClass && r.type == type &&
               r.offset == offset;
    });
    return row == rows.end() ? nullptr : &*row;
}

// A state bit has no event data 3: "Config Error: Vendor Mismatch" is then a
// "Config Error", and without a colon the name is all that can be said.
std::string withoutDetail(const EventText& row)
{
    const std::string_view text = row.description;
    if (row.data3 == EventText::anyData3)
        return row.description;
    const size_t colon = text.find(':');
    return colon == text.npos ? row.name : std::string{text.substr(0, colon)};
}

// Of a sensor type; sensor type 0Fh has a name for each offset. Empty for a
// type that has no row.
const char* nameOfType(uint8_t sensorType, uint8_t offset)
{
    const uint32_t wanted = codeOf(EventText::sensorSpecific, sensorType, 0, 0);
    const auto row =
        std::lower_bound(ipmi_sel_data.begin(), ipmi_sel_data.end(), wanted,
                         [](const EventText& r, uint32_t code) {
                             return code_compare(r.code(), code) < 0;
                         });
    if (row == ipmi_sel_data.end() || code_compare(row->code(), wanted) != 0)
        return "";
    const EventText* const own =
        findText(EventText::sensorSpecific, sensorType, offset);
    return own ? own->name : row->name;
}

// Null for an event/reading type whose events have no descriptions.
const char* describe(const sel_event_record& record)
{
    const uint8_t type = eventTypeOf(record);
    if (isGenericType(type))
        return find_generic_desc(type, record.eventData1);
    if (type == sensorSpecificEventType)
        return find_specific_desc(record.sensorType, record.eventData1,
                                  record.eventData3);
    return nullptr;
}

} // namespace

unsigned perfect_hash_lookup(unsigned code)
{
    return unsigned(rowOfCode(G_array, V_array, code));
}

const char* find_generic_desc(unsigned char type, unsigned char data1)
{
    return findDescription(
        codeOf(EventText::generic, type, data1, EventText::anyData3));
}

const char* find_specific_desc(unsigned char sensorType, unsigned char data1,
                               unsigned char data3)
{
    return findDescription(
        codeOf(EventText::sensorSpecific, sensorType, data1, data3));
}

int code_compare(unsigned a, unsigned b)
{
    return int(a >> 16) - int(b >> 16);
}

const EventText* findText(uint8_t eventClass, uint8_t type, unsigned offset)
{
    const EventText* const row =
        findRow(ipmi_sel_data, eventClass, type, offset);
    return row ? row : findRow(laterStates, eventClass, type, offset);
}

std::string DescFromState(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset)
{
    if (eventReadingType == thresholdEventType || offset > offsetMask)
        return "";
    return DescFromEvent(eventReadingType, sensorType, offset);
}

std::string DescFromEvent(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset)
{
    const bool specific = eventReadingType == sensorSpecificEventType;
    if (!specific && !isGenericType(eventReadingType))
        return "";
    const EventText* const row =
        findText(specific ? EventText::sensorSpecific : EventText::generic,
                 specific ? sensorType : eventReadingType, offset & offsetMask);
    const std::string text = row ? trimmed(withoutDetail(*row)) : "";
    return text == "Reserved" ? "" : text;
}

char* build_sel_desc(const Event_log* entry, char* buffer, int size)
{
    constexpr int leastRevision = 4;
    const sel_event_record& record = entry->record;
    const size_t room = size > 0 ? size_t(size) : 0;
    if (!isEvent(record)) {
        syslog(LOG_ERR, "%s: no description for SEL type=%d (support only %d)",
               __func__, record.recordType, systemEventRecord);
        snprintf(buffer, room, "n/a");
    }
    if (record.evmRevision < leastRevision) {
        syslog(LOG_ERR,
               "%s: no description for SEL with IPMI version is %d, expect > "
               "%d",
               __func__, record.evmRevision, leastRevision);
        snprintf(buffer, room, "n/a");
        return buffer;
    }
    const char* const direction =
        isDeassertion(record) ? "Deassert +" : "Assert +";
    const char* const name =
        nameOfType(record.sensorType, record.eventData1 & offsetMask);
    if (const char* const description = describe(record))
        snprintf(buffer, room, "%s %s %s", direction, name, description);
    else
        snprintf(buffer, room, "%s %s", direction, name);
    return buffer;
}

std::string GetMessage(const Event_log* entry)
{
    constexpr size_t longest = 63;
    const char* const description = describe(entry->record);
    return description ? std::string{description}.substr(0, longest) : "N/A";
}

} // namespace Ipmi
