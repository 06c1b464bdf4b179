/// What the bytes of a log's record mean (IPMI v2.0, 32).
#ifndef VEK_IPMI_PRIVATE_IPMISELRECORD_H
#define VEK_IPMI_PRIVATE_IPMISELRECORD_H

#include <vek-ipmi/IpmiSelData.h>

#include "ipmi/IpmiSensorRecord.h"

namespace Ipmi
{

constexpr uint8_t systemEventRecord = 0x02;
constexpr uint8_t offsetMask = 0x0f;

/// Ids that no record has: they ask for the first and for the last one.
constexpr uint16_t firstRecord = 0x0000;
constexpr uint16_t lastRecord = 0xffff;

constexpr uint16_t word(const uint8_t (&bytes)[2])
{
    return uint16_t(bytes[0] | bytes[1] << 8);
}

constexpr uint32_t longWord(const uint8_t (&bytes)[4])
{
    return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 |
           uint32_t{bytes[3]} << 24;
}

/// Some firmware writes 00h for an event.
constexpr bool isEvent(const sel_event_record& record)
{
    return record.recordType == systemEventRecord || record.recordType == 0x00;
}

constexpr bool isTimedOem(const sel_event_record& record)
{
    return record.recordType >= 0xc0 && record.recordType <= 0xdf;
}

constexpr bool isDeassertion(const sel_event_record& record)
{
    return record.eventType & 0x80;
}

/// Event/reading type.
constexpr uint8_t eventTypeOf(const sel_event_record& record)
{
    return record.eventType & 0x7f;
}

/// Threshold and generic discrete events.
constexpr bool isGenericType(uint8_t eventType)
{
    return eventType >= 0x01 && eventType <= 0x0c;
}

} // namespace Ipmi

#endif
