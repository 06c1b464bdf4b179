// Events and states in words.
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <vek-ipmi/IpmiEvent.h>

#include "ipmi/IpmiEventLookup.h"
#include "tests/support/libc_seam.h"
#include "tests/support/sel_records.h"

using namespace Ipmi;

namespace
{

TEST(Event, statesInWords)
{
    const struct
    {
        uint8_t type, sensorType;
        unsigned offset;
        const char* words;
    } cases[] = {
        {0x0b, 0x08, 1, "Redundancy Lost"}, // whatever the sensor is
        {0x07, 0x01, 8, "Informational"},
        {0x07, 0x01, 9, ""},
        {0x6f, 0x08, 1, "Power Supply Failure Detected"},
        {0x6f, 0x08, 6, "Config Error"}, // the rest is in event data 3
        {0x6f, 0x0f, 0, "System Firmware Error"},
        {0x6f, 0x0f, 2, "System Firmware Progress"},
        {0x6f, 0x07, 0x0b, "Machine Check Exception (Uncorrectable)"},
        {0x6f, 0x23, 4, ""}, // reserved
        {0x6f, 0x23, 8, "Timer Interrupt"},
        {0x6f, 0x01, 0, ""},
        {0x6f, 0xf1, 3, "IPMB-A enabled, IPMP-B enabled"},
        {0x6f, 0x0f, 256, ""},
        {0x01, 0x01, 0, ""}, // thresholds are no states
        {0x17, 0x17, 0, ""},
        {0x70, 0x08, 1, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << int(c.type) << ' ' << int(c.sensorType) << ' '
                     << c.offset);
        EXPECT_EQ(DescFromState(c.type, c.sensorType, c.offset), c.words);
        if (c.type != 0x01 && c.offset < 16) {
            EXPECT_EQ(DescFromEvent(c.type, c.sensorType, c.offset | 0xa0),
                      c.words);
        }
    }
    EXPECT_EQ(DescFromEvent(0x01, 0x04, 0x52), "Lower Critical going low");
    EXPECT_EQ(DescFromEvent(0x01, 0x04, 0x0c), "");
}

// A record whose code this is.
Event_log recordOf(uint32_t code)
{
    const bool generic = code >> 24 == EventText::generic;
    const auto type = uint8_t(code >> 16);
    return {eventRecord({generic ? uint8_t{0x04} : type,
                         generic ? type : uint8_t{0x6f}, uint8_t(code >> 8),
                         0xff, uint8_t(code)})};
}

// Every code, and every one that is a bit away: what is found is the row, and
// only the row's own code finds it.
TEST(Event, everyCodeAndItsNeighbours)
{
    std::map<uint32_t, const char*> rows;
    for (const EventText& row : ipmi_sel_data)
        rows[row.code()] = row.description;
    ASSERT_EQ(rows.size(), eventTextCount);
    std::set<uint32_t> codes;
    for (const auto& [code, text] : rows) {
        EXPECT_EQ(ipmi_sel_data[perfect_hash_lookup(code)].code(), code);
        codes.insert(code);
        for (int bit = 0; bit < 24; ++bit)
            codes.insert(code ^ 1u << bit);
    }
    for (const uint32_t code : codes) {
        SCOPED_TRACE(testing::Message() << std::hex << code);
        const auto type = uint8_t(code >> 16), data1 = uint8_t(code >> 8);
        const bool generic = code >> 24 == EventText::generic;
        if (generic && (code & 0xff) != 0xff)
            continue; // no record has such a code
        const auto row = rows.find(code);
        const std::string text = row == rows.end() ? "" : row->second;
        EXPECT_LT(perfect_hash_lookup(code), eventTextCount);
        EXPECT_EQ(generic ? find_generic_desc(type, data1)
                          : find_specific_desc(type, data1, uint8_t(code)),
                  text);
        // A record has seven bits for it, and 6Fh sends to the other class.
        if (generic && (type & 0x80 || type == 0x6f))
            continue;
        const bool described = !generic || (type >= 1 && type <= 0x0c);
        const Event_log entry = recordOf(code);
        char buffer[128];
        EXPECT_EQ(GetMessage(&entry), described ? text : "N/A");
        const std::string whole = build_sel_desc(&entry, buffer, sizeof buffer);
        EXPECT_EQ(whole.rfind("Assert +", 0), 0u);
        if (described) {
            EXPECT_EQ(whole.substr(whole.size() - text.size() - 1), " " + text);
        }
    }
}

TEST(Event, descriptionsOfRecords)
{
    const struct
    {
        sel_event_record record;
        const char* text;
        const char* message;
        const char* line; ///< Of the log.
    } cases[] = {
        {eventRecord({0x01, 0x01, 0x09, 0xff, 0xff}),
         "Assert + Temperature Upper Critical going high",
         "Upper Critical going high", ""},
        {eventRecord({0x01, 0x81, 0x59, 0x60, 0x55}), "Deassert + Temperature ",
         "", ""},
        {eventRecord({0x08, 0x6f, 0x06, 0xff, 0x01}),
         "Assert + Power Supply Config Error: Revision Mismatch",
         "Config Error: Revision Mismatch", ""},
        {eventRecord({0x08, 0x6f, 0x06, 0xff, 0xff}), "Assert + Power Supply ",
         "", ""},
        {eventRecord({0x0f, 0x6f, 0x02, 0xff, 0x00}),
         "Assert + System Firmware Progress Unspecified", "Unspecified", ""},
        {eventRecord({0xc5, 0x6f, 0x00, 0xff, 0xff}), "Assert +  ", "", ""},
        {eventRecord({0x04, 0x70, 0x00, 0xff, 0xff}), "Assert + Fan", "N/A",
         ""},
        {eventRecord({0x01, 0x01, 0x00, 0xff, 0xff}, 0xc0),
         "Assert + Temperature Lower Non-critical going low ",
         "Lower Non-critical going low ",
         "build_sel_desc: no description for SEL type=192 (support only 2)"},
        {eventRecord({0x01, 0x01, 0x00, 0xff, 0xff}, 0x02, 0x03), "n/a",
         "Lower Non-critical going low ",
         "build_sel_desc: no description for SEL with IPMI version is 3, "
         "expect "
         "> 4"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const Event_log entry{c.record};
        Seam::takeLog();
        for (const int size : {0, 1, 2, 12, 128}) {
            char buffer[130];
            memset(buffer, '#', sizeof buffer);
            EXPECT_EQ(build_sel_desc(&entry, buffer, size), buffer);
            EXPECT_EQ(buffer[size], '#');
            if (size > 0) {
                EXPECT_EQ(buffer,
                          std::string{c.text}.substr(0, size_t(size - 1)));
            }
        }
        EXPECT_EQ(GetMessage(&entry), c.message);
        const auto log = Seam::takeLog();
        EXPECT_EQ(log.empty() ? "" : log[0].text, c.line);
    }
}

} // namespace
