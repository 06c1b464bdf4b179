#include <algorithm>
#include <gtest/gtest.h>

#include "ipmi/IpmiIdentity.h"
#include "ipmi/IpmiNode.h"

using namespace Ipmi;

namespace
{

ipmiifc_resp answer(std::initializer_list<uint8_t> bytes)
{
    ipmiifc_resp resp{};
    std::copy(bytes.begin(), bytes.end(), resp.data);
    resp.data_len = int(bytes.size());
    resp.cc = resp.data[0];
    return resp;
}

TEST(Identity, theTextsOfADeviceId)
{
    const struct
    {
        std::initializer_list<uint8_t> bytes;
        const char* texts;
    } cases[] = {
        {{0, 0x20, 1, 2, 0x10, 2, 0xbf, 0xa2, 2}, "2.0|2.10|Dell Inc."},
        // The major revision has seven bits; a minor one below 10.
        {{0, 0x20, 1, 0xc1, 5, 0x51, 0, 255, 255, 255}, "1.5|1.5|Unknown"},
        {{0, 0x20, 1, 0x3f}, "0.0|63.0|Unknown"}, // missing ones are 0
        // A maker's three bytes.
        {{0, 0x20, 1, 1, 0, 2, 0, 0xee, 0x51, 0},
         "2.0|1.0|American Megatrends, Inc"},
        {{0, 0x20, 1, 1, 0, 2, 0, 0xa2, 2, 1}, "2.0|1.0|Unknown"},
    };
    const auto texts = [] {
        return IpmiIfc::GetBmcIpmiVersion() + "|" + IpmiIfc::GetBmcFWVersion() +
               "|" + IpmiIfc::GetBmcManufacturer();
    };
    for (const auto& c : cases) {
        InitIpmiNode(0);
        EXPECT_EQ(texts(), "n/a|n/a|n/a");
        auto resp = answer(c.bytes);
        EXPECT_EQ(IpmiIfcRhGetDeviceId(&resp), 0);
        EXPECT_EQ(texts(), c.texts);
    }
    uint8_t id[3], length = 3;
    EXPECT_EQ(IpmiIfc::getManufacturerId(id, length), 0);
    EXPECT_EQ(length, 1) << "callers rely on it";
    EXPECT_EQ(id[0] | id[1] << 8 | id[2] << 16, 0x0102a2);
}

TEST(Identity, aRefusedAnswerKeepsWhatWasThere)
{
    InitIpmiNode(0);
    auto good = answer({0, 0x20, 1, 1, 0, 2, 0, 0, 0, 0});
    auto refused = answer({0xc0});
    auto selfTest = answer({0, 0x57, 0x04});
    EXPECT_EQ(IpmiIfcRhGetDeviceId(&refused), -1);
    EXPECT_EQ(IpmiIfc::GetBmcIpmiVersion(), "n/a");
    EXPECT_EQ(IpmiIfcRhGetDeviceId(&good), 0);
    EXPECT_EQ(IpmiIfcRhGetDeviceId(&refused), -1);
    EXPECT_EQ(IpmiIfc::GetBmcIpmiVersion(), "2.0");

    uint8_t result = 0, detail = 0;
    EXPECT_EQ(IpmiIfcRhGetSelfTest(&refused), -1);
    EXPECT_EQ(IpmiIfc::getSelfTestResults(result, detail), 1);
    EXPECT_EQ(IpmiIfcRhGetSelfTest(&selfTest), 0);
    EXPECT_EQ(IpmiIfc::getSelfTestResults(result, detail), 0);
    EXPECT_EQ(result, 0x57);
    EXPECT_EQ(detail, 0x04);
}

TEST(Identity, manufacturersAndGenerators)
{
    EXPECT_STREQ(IpmiIfc::getManufacturerName(0), "Unknown");
    EXPECT_STREQ(IpmiIfc::getManufacturerName(12634), "PICMG");
    EXPECT_STREQ(IpmiIfc::getManufacturerName(20974),
                 "American Megatrends, Inc");
    EXPECT_STREQ(IpmiIfc::getManufacturerName(1), "Unknown");

    EXPECT_EQ(IpmiIfc::convertToGeneratorId(0x20, 0, 0), 0x0020);
    EXPECT_EQ(IpmiIfc::convertToGeneratorId(0x141, 0x0f, 7), 0xf341);
    EXPECT_EQ(IpmiIfc::convertToGeneratorId(0x20, 0x17, 1), 0x7120);
    EXPECT_EQ(IpmiIfc::convertToGeneratorId(0x20, -1, 0), 0xf020);
}

} // namespace
