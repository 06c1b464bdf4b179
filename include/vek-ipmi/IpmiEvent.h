/// Events and states in words.
#ifndef VEK_IPMI_IPMIEVENT_H
#define VEK_IPMI_IPMIEVENT_H

#include <string>

#include <vek-ipmi/IpmiSelData.h>

namespace Ipmi
{

/// What it means that a discrete sensor's state bit `offset` is set: by the
/// event/reading type from 02h to 0Ch, by the sensor type for 6Fh (IPMI v2.0,
/// tables 42-2 and 42-3). The empty string where the standard has no such
/// state, and for OEM types.
std::string DescFromState(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset);

/// The same of an event, thresholds (01h: "Upper Critical going high")
/// included. Bits above the low four of `offset`, as they stand in event data
/// 1, are left out.
std::string DescFromEvent(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset);

/// What callers hand to the two operations below: the 16 bytes of a record,
/// and behind them whatever the caller keeps with it. Only these are read.
struct Event_log
{
    sel_event_record record;
};

/// Writes "Assert + TYPE DESCRIPTION" (or "Deassert +") in at most `size`
/// bytes with the final zero; nothing when size is below 1. Both go by the
/// whole of event data 1 and, for sensor-specific events, of event data 3: with
/// any flag set there the description is empty (DescFromEvent goes by the
/// offset). "n/a" for an event message revision below 04h; record types other
/// than 02h and 00h are logged and described all the same.
/// @return buffer.
char* build_sel_desc(const Event_log* entry, char* buffer, int size);

/// The description alone, of at most 63 characters; "N/A" for event/reading
/// types that are neither 01h to 0Ch nor 6Fh.
std::string GetMessage(const Event_log* entry);

} // namespace Ipmi

#endif
