/// Records of an event log, for tests.
#ifndef VEK_TESTS_SUPPORT_SEL_RECORDS_H
#define VEK_TESTS_SUPPORT_SEL_RECORDS_H

#include <array>
#include <vek-ipmi/IpmiSelData.h>

/// Sensor type, direction with event/reading type, event data 1 to 3.
using EventBytes = std::array<uint8_t, 5>;

/// Id 1234h, time 11223344h, the BMC's sensor 30h.
inline Ipmi::sel_event_record eventRecord(const EventBytes& event,
                                          uint8_t recordType = 0x02,
                                          uint8_t revision = 0x04)
{
    return {{0x34, 0x12}, recordType, {0x44, 0x33, 0x22, 0x11},
            {0x20, 0x00}, revision,   event[0],
            0x30,         event[1],   event[2],
            event[3],     event[4]};
}

#endif
