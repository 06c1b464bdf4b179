#include <gtest/gtest.h>
#include <vek-ipmi/IpmiEntity.h>

using Ipmi::IpmiEntity;

namespace
{

TEST(Entity, namesAtTheEndsOfEachRange)
{
    const struct
    {
        unsigned id;
        const char *name, *alertClass;
    } cases[] = {
        {0x00, "Unspecified", "VEK_IpmiAlertIndication"},
        {0x1b, "Peripheral Bay", "VEK_IpmiAlertIndication"},
        {0x22, "BIOS", "VEK_BIOSIpmiAlertIndication"},
        {0x36, "System Firmware", "VEK_IpmiAlertIndication"},
        {0x37, "Other", "VEK_IpmiAlertIndication"},
        {0x8f, "Other", "VEK_IpmiAlertIndication"},
        {0x90, "Chasis Specific", "VEK_IpmiAlertIndication"},
        {0xaf, "Chasis Specific", "VEK_IpmiAlertIndication"},
        {0xb0, "Board Set Specific", "VEK_IpmiAlertIndication"},
        {0xd0, "OEM System Integrator defined", "VEK_IpmiAlertIndication"},
        {0xff, "OEM System Integrator defined", "VEK_IpmiAlertIndication"},
        {0x10a, "Other", "VEK_IpmiAlertIndication"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const IpmiEntity entity{c.id, 0x81, 0, 2};
        EXPECT_EQ(entity.getName(), c.name);
        EXPECT_EQ(entity.getAlertClassName(), c.alertClass);
        EXPECT_EQ(entity.getInstance(), 1u) << "seven bits of the instance";
    }
}

} // namespace
