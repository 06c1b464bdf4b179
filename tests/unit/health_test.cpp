#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <syslog.h>
#include <vek-ipmi/IpmiEvent.h>

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

TEST_F(Health, theFirstStreamThatHoldsATableCounts)
{
    std::istringstream empty{"no rule\n"}, first{"4,*,1,1:10\n"},
        second{"4,*,1,1:30\n"};
    EXPECT_FALSE(LoadSensorHealthData(empty));
    EXPECT_TRUE(LoadSensorHealthData(first));
    EXPECT_TRUE(LoadSensorHealthData(second));
    EXPECT_EQ(healthList.size(), 1u);
}

TEST_F(Health, whatThePackagedTableMakesOfStates)
{
    std::ifstream file{PACKAGED_HEALTH_TABLE};
    ASSERT_TRUE(LoadSensorHealthData(file));
    constexpr int unknown = 0, ok = 5, degraded = 10, minor = 15, major = 20,
                  critical = 25, dead = 30;
    const struct
    {
        const char* what;
        uint8_t sensorClass, type;
        uint16_t bits;
        int health;
    } cases[] = {
        {"nothing asserted", 0x6f, 0x08, 0x0000, ok},
        {"a fan that is asserted", 0x03, 0x04, 0x0002, major},
        {"predictive failure", 0x04, 0x0d, 0x0002, degraded},
        {"limit exceeded", 0x05, 0x01, 0x0002, major},
        {"performance lags", 0x06, 0x07, 0x0002, degraded},
        {"severity: critical", 0x07, 0x02, 0x0004, critical},
        {"severity: non-recoverable", 0x07, 0x02, 0x0040, dead},
        {"device disabled", 0x09, 0x0d, 0x0001, degraded},
        {"install error", 0x0a, 0x15, 0x0100, major},
        {"redundancy full", 0x0b, 0x09, 0x0001, ok},
        {"redundancy lost", 0x0b, 0x09, 0x0002, major},
        {"insufficient resources", 0x0b, 0x04, 0x0020, critical},
        {"no state of the standard", 0x0b, 0x04, 0x0100, unknown},
        {"device power D3", 0x0c, 0x07, 0x0008, ok},
        {"chassis intrusion", 0x6f, 0x05, 0x0001, degraded},
        {"processor IERR", 0x6f, 0x07, 0x0001, critical},
        {"thermal trip", 0x6f, 0x07, 0x0002, critical},
        {"processor present", 0x6f, 0x07, 0x0080, ok},
        {"supply present", 0x6f, 0x08, 0x0001, ok},
        {"present and failed", 0x6f, 0x08, 0x0003, major},
        {"present without AC", 0x6f, 0x08, 0x0009, major},
        {"supply in standby", 0x6f, 0x08, 0x0080, ok},
        {"power unit lost AC", 0x6f, 0x09, 0x0010, critical},
        {"uncorrectable ECC", 0x6f, 0x0c, 0x0002, critical},
        {"drive present, will fail", 0x6f, 0x0d, 0x0005, degraded},
        {"log full", 0x6f, 0x10, 0x0010, minor},
        {"log full and almost full", 0x6f, 0x10, 0x0030, degraded},
        {"PCI SERR", 0x6f, 0x13, 0x0020, critical},
        {"run-time critical stop", 0x6f, 0x20, 0x0002, critical},
        {"watchdog: hard reset", 0x6f, 0x23, 0x0002, major},
        {"battery low", 0x6f, 0x29, 0x0001, degraded},
        {"battery failed", 0x6f, 0x29, 0x0002, major},
        {"FRU communication lost", 0x6f, 0xf0, 0x0080, major},
        {"a type of nobody's", 0x6f, 0xc1, 0x0001, unknown},
    };
    for (const auto& c : cases)
        EXPECT_EQ(getSensorHealthState(c.sensorClass, c.type, 9, c.bits),
                  c.health)
            << c.what;
    // A state that the standard has and the table forgot would be unknown.
    for (unsigned type = 0; type < 0x100; ++type)
        for (unsigned bit = 0; bit < 15; ++bit) {
            if (DescFromState(0x6f, uint8_t(type), bit).empty())
                continue;
            EXPECT_EQ(getSensorHealthState(0x6f, uint8_t(type), 9,
                                           uint16_t(1u << bit)) == unknown,
                      type == 0x22 && bit == 14)
                << type << ' ' << bit;
        }
}

} // namespace
