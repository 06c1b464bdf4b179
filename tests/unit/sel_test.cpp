// The event log's values: the log as a whole, its records.
#include <gtest/gtest.h>
#include <vek-ipmi/IpmiSel.h>

#include "ipmi/IpmiEventTexts.h"
#include "ipmi/IpmiSelRecord.h"
#include "tests/support/sel_records.h"

using namespace Ipmi;

namespace
{

TEST(Sel, theLogAsAWhole)
{
    const IpmiSel none;
    EXPECT_EQ(none.version(), 0u);
    EXPECT_EQ(none.getMaxNumberOfRecords(), 0);
    EXPECT_EQ(none.getAddTimeStampUnix(), 0u);
    EXPECT_TRUE(none.isEnabled());
    EXPECT_EQ(none.enable() + none.disable(), 2);

    const ipmiifc_sel_info info{
        0,   0x51, {100, 0}, {0xe0, 0x01}, {1, 0, 0, 0x20}, {0, 0, 0, 0x20},
        0x8a};
    const ipmiifc_sel_alloc_info alloc{};
    const IpmiSel log{&info, &alloc, 0};
    EXPECT_EQ(log.version(), 0x51u);
    EXPECT_EQ(log.getCurrentNumberOfRecords(), 100);
    EXPECT_EQ(log.getMaxNumberOfRecords(), 130);
    EXPECT_EQ(log.getAddTimeStampUnix(), 0x20000001u);
    EXPECT_EQ(log.getEraseTimeStampUnix(), 0u) << "counted from the start";
    EXPECT_EQ(log.getFlags(), 0x8au);
    EXPECT_TRUE(log.getOverFlowFlag());
}

// An event, a record of a type that firmware writes for one, OEM records.
TEST(Sel, recordsByTheirType)
{
    const EventBytes event{0x01, 0x81, 0x52, 0x10, 0x20};
    const struct
    {
        uint8_t recordType;
        bool isEvent;
        unsigned time;
    } cases[] = {{0x02, true, 0x11223344},  {0x00, true, 0x11223344},
                 {0x01, false, 0xffffffff}, {0xbf, false, 0xffffffff},
                 {0xc0, false, 0x11223344}, {0xdf, false, 0x11223344},
                 {0xe0, false, 0xffffffff}, {0xff, false, 0xffffffff}};
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.recordType));
        const sel_event_record record = eventRecord(event, c.recordType);
        const IpmiSelData data{&record, 0};
        EXPECT_EQ(data.recordId(), 0x1234);
        EXPECT_EQ(data.recordId(0), "4660");
        EXPECT_EQ(data.recordType(), c.recordType);
        EXPECT_EQ(data.isSelEventRecord(), c.isEvent);
        EXPECT_EQ(data.messageTimeStamp(), c.time);
        EXPECT_EQ(data.getGeneratorId(), c.isEvent ? 0x20 : 0);
        EXPECT_EQ(data.eventType(), c.isEvent ? 1 : -1);
        EXPECT_EQ(data.severity(), c.isEvent ? 6 : 0);
        EXPECT_EQ(data.alertType(), c.isEvent ? 6 : 0);
        EXPECT_EQ(data.caption(),
                  c.isEvent ? "Deassert + Temperature Lower Critical going low "
                            : "");
        EXPECT_EQ(data.messageFormat().empty(), !c.isEvent);
        EXPECT_EQ(data.description(), "");
    }
    for (const uint8_t end : {0x00, 0xff}) {
        sel_event_record record = eventRecord(event);
        record.recordId[0] = record.recordId[1] = end;
        EXPECT_EQ((IpmiSelData{&record, 0}.recordId(7)), "Invalid");
    }
}

TEST(Sel, severitiesAndAlertTypes)
{
    for (unsigned offset = 0; offset < 16; ++offset) {
        const auto data1 = uint8_t(offset | 0xf0);
        const sel_event_record record = eventRecord({0x04, 0x01, data1, 0, 0});
        constexpr char severities[] = "5566775566770000";
        EXPECT_EQ((IpmiSelData{&record, 0}.severity()),
                  severities[offset] - '0');
    }
    const struct
    {
        uint8_t sensorType, eventType;
        int alertType;
    } cases[] = {{0x01, 0x01, 6}, {0x05, 0x6f, 8}, {0x06, 0xef, 8},
                 {0x04, 0x03, 5}, {0x01, 0x70, 0}, {0x00, 0x00, 5}};
    for (const auto& c : cases) {
        const sel_event_record record =
            eventRecord({c.sensorType, c.eventType, 0, 0, 0});
        EXPECT_EQ((IpmiSelData{&record, 0}.alertType()), c.alertType);
        if (c.eventType != 0x01) {
            EXPECT_EQ((IpmiSelData{&record, 0}.severity()), 0);
        }
    }
}

TEST(Sel, captions)
{
    const struct
    {
        EventBytes event;
        const char* text;
    } cases[] = {
        {{0x01, 0x01, 0x59, 0, 0},
         "Assert + Temperature Upper Critical going high"},
        {{0x00, 0x03, 0x01, 0, 0}, "Assert + Reserved State Asserted"},
        {{0xb0, 0x83, 0x01, 0, 0}, "Deassert + State Asserted"},
        {{0x04, 0x02, 0x09, 0, 0}, "Assert + Fan "},
        {{0x0f, 0x6f, 0x02, 0, 0},
         "Assert + System Firmware Progress "
         "Unspecified"},
        {{0x08, 0x6f, 0xa6, 0, 9},
         "Assert + Power Supply Config Error: Vendor Mismatch"},
        {{0x04, 0x6f, 0x00, 0, 0}, "Assert + Fan"},
        {{0x04, 0x6f, 0x01, 0, 0}, "Assert + "},
        {{0xc0, 0x6f, 0x00, 0, 0}, "Assert + OEM"},
        {{0x04, 0x0d, 0x00, 0, 0}, ""},
        {{0x04, 0x70, 0x00, 0, 0}, ""},
    };
    for (const auto& c : cases) {
        sel_event_record record = eventRecord(c.event);
        EXPECT_EQ((IpmiSelData{&record, 0}.caption()), c.text);
        record.evmRevision = 3;
        EXPECT_EQ((IpmiSelData{&record, 0}.caption()), "");
    }
}

// Without a sensor: raw values; those with one are the device's tests.
TEST(Sel, detailsAreOnlyWhatIsDefined)
{
    const struct
    {
        EventBytes event;
        const char* text;
    } cases[] = {
        {{0x01, 0x01, 0x59, 0x60, 0x5f}, "raw reading 60h, raw threshold 5Fh"},
        {{0x01, 0x01, 0x19, 0x60, 0x5f}, "raw threshold 5Fh"},
        {{0x01, 0x01, 0x09, 0x60, 0x5f}, ""},
        {{0x0c, 0x6f, 0x30, 0xff, 0x07}, "memory module 7"},
        {{0x0c, 0x6f, 0xa0, 0x01, 0x07}, "OEM data 2 01h, OEM data 3 07h"},
        {{0x0c, 0x6f, 0x30, 0xff, 0xff}, ""},
        {{0x0f, 0x6f, 0xc2, 0x13, 0xff},
         "Starting operating system boot process"},
        {{0x0f, 0x6f, 0xc0, 0x7f, 0xff}, ""},
        {{0x08, 0x6f, 0x36, 0xff, 0x04}, "voltage rating mismatch"},
        {{0x10, 0x6f, 0xf1, 0x6f, 0x12},
         "event/reading type 6Fh, assertions of offset 2"},
        {{0x10, 0x6f, 0xf6, 0x03, 0x80}, "processor 3, numbered by the vendor"},
        {{0x10, 0x6f, 0x35, 0xff, 90}, "90% full"},
        {{0x12, 0x6f, 0xc5, 0x80, 0xff}, "after the change, SEL clock"},
        {{0x1d, 0x6f, 0xf7, 0x04, 0x01},
         "cause: watchdog expiration, channel 1"},
        {{0x21, 0x6f, 0xf0, 0x09, 0x03}, "PCI Express, slot 3"},
        {{0x23, 0x6f, 0xc1, 0x03, 0xff}, "timer use: OS load, interrupt: none"},
        {{0x2a, 0x6f, 0xf1, 0x02, 0x21}, "user 2, channel 1, timed out"},
        {{0x2b, 0x6f, 0xc1, 0x09, 0xff}, "system firmware"},
        {{0x2b, 0x6f, 0xc1, 0x18, 0xff}, ""},
        {{0x07, 0x07, 0x42, 0x10, 0xff},
         "before: Transition to OK, severity: Transition to Non-Critical from "
         "OK"},
        {{0x01, 0x01, 0x59, 0xff, 0xff}, ""},
        {{0x10, 0x6f, 0x36, 0xff, 0x80}, ""},
        {{0x0f, 0x6f, 0xc2, 0x15, 0xff}, ""}, // reserved
        {{0x2c, 0x6f, 0xc4, 0x34, 0xff}, "cause: push button"},
        {{0x2c, 0x6f, 0xc4, 0x31, 0xff},
         "before: FRU Inactive (in standby or hot spare state), cause: push "
         "button"},
        {{0x0c, 0x70, 0xf0, 0x01, 0x02}, ""},
    };
    for (const auto& c : cases) {
        sel_event_record record = eventRecord(c.event);
        EXPECT_EQ((IpmiSelData{&record, 0}.details()), c.text);
        record.evmRevision = 3;
        EXPECT_EQ((IpmiSelData{&record, 0}.details()), "");
    }
    const EventBytes bytes{0x0a, 0x0b, 0x0c, 0x0d, 0x0e};
    const std::pair<uint8_t, const char*> others[] = {
        {0xc0, "manufacturer 262176, data 0A 30 0B 0C 0D 0E"},
        {0xe0, "data 44 33 22 11 20 00 04 0A 30 0B 0C 0D 0E"},
        {0x30, ""}};
    for (const auto& [type, text] : others) {
        const sel_event_record record = eventRecord(bytes, type);
        EXPECT_EQ((IpmiSelData{&record, 0}.details()), text);
    }
}

} // namespace
