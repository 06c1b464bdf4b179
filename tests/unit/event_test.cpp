#include <gtest/gtest.h>
#include <vek-ipmi/IpmiEvent.h>

using Ipmi::DescFromState;

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
    for (const auto& c : cases)
        EXPECT_EQ(DescFromState(c.type, c.sensorType, c.offset), c.words)
            << int(c.type) << ' ' << int(c.sensorType) << ' ' << c.offset;
}

} // namespace
