#include <gtest/gtest.h>
#include <sstream>
#include <syslog.h>

#include "ipmi/IpmiMapper.h"
#include "tests/support/libc_seam.h"

using namespace Ipmi;

namespace
{

constexpr char table[] = "111,12,10,1:20,any text\n"
                         "111, *, *, 1: 10\n"
                         "3;*;0;1:1\n"
                         "3;*;1;1:30\n"
                         "7,2,*,1:15\n"
                         "7,2,3,1:16\n"
                         "9,5,0,0:25\n"   // kept, but no rule of the map
                         "11,*,*,1\n"     // no health section
                         "12,4,2,1::40\n" // an empty one
                         "garbage\n"
                         "4,70000,0,1:7\n";

class Health : public testing::Test
{
protected:
    void SetUp() override
    {
        healthList.clear();
        sensorHealthMap.clear();
    }
};

TEST_F(Health, theTableThatIsRead)
{
    std::istringstream in{table};
    EXPECT_EQ(readHealthTable(in), 12u) << "the last newline starts a line";
    EXPECT_EQ(healthList.size(), 8u);
    EXPECT_EQ(sensorHealthMap.count(9), 0u);
    EXPECT_EQ(sensorHealthMap.count(11), 0u);
    EXPECT_EQ(sensorHealthMap.count(4), 0u);

    const struct
    {
        const char* what;
        uint8_t sensorClass, type;
        uint16_t bits;
        int health;
    } cases[] = {
        {"nothing asserted", 3, 1, 0, 5},
        {"a rule for any type", 3, 1, 0x0002, 30},
        {"health 1 counts as well", 3, 1, 0x0001, 5},
        {"the highest bit decides", 3, 1, 0x0003, 30},
        {"a bit without a rule", 3, 1, 0x0004, 5},
        {"the rule for the type", 111, 12, 0x0400, 20},
        {"the rule for any type and bit", 111, 5, 0x0001, 10},
        // Its entry matches only for the status bit that it is asked with.
        {"no entry for status bit 0", 12, 4, 0x0004, 1},
        {"the bit before any bit", 7, 2, 0x0008, 16},
        {"any bit", 7, 2, 0x8000, 15},
        {"no rule for the type", 7, 3, 0x0001, 1},
        {"an entry without a rule", 9, 5, 0x0001, 1},
        {"no table for the class", 10, 5, 0x0001, 1},
        {"not a discrete class", 2, 5, 0x0001, 0},
        {"an OEM class", 0x70, 5, 0x0001, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(getSensorHealthState(c.sensorClass, c.type, 9, c.bits),
                  c.health);
    }

    Seam::takeLog();
    EXPECT_EQ(getSensorHealthState(1, 2, 9, 1), 0);
    EXPECT_EQ(getSensorHealthState(0, 2, 9, 1), 0);
    EXPECT_EQ(
        Seam::takeLog(),
        (std::vector<Seam::LogLine>{
            {LOG_ERR, "Expected discrete sensor/threshold for sensor "
                      "number : 9 Sendor Type 2"},
            {LOG_ERR, "Invalid class for sensor number 9, sensor type: 2"}}));
}

TEST_F(Health, digitalSensorsWithAndWithoutAnEntry)
{
    EXPECT_EQ(IpmiMapper(3, 1, 1, 9, 0).getDigitalDiscrete(1), 5);
    EXPECT_EQ(IpmiMapper(3, 1, 1, 9, 0).getDigitalDiscrete(2), 25);
    std::istringstream in{"3,1,1,1:30\n"};
    readHealthTable(in);
    EXPECT_EQ(IpmiMapper(3, 1, 1, 9, 0).getDigitalDiscrete(3), 30);
    EXPECT_EQ(IpmiMapper(3, 1, 1, 9, 0).getDigitalDiscrete(2), 25);
}

} // namespace
