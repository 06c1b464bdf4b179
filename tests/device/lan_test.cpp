// The LAN configuration as the library reads it from a controller.
#include <cstring>
#include <vek-ipmi/IpmiLan.h>

#include "sim/model/bmc.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

class Lan : public RecordsFixture
{
protected:
    void SetUp() override
    {
        RecordsFixture::SetUp();
        Sim::BmcState state;
        for (const uint8_t number : {1, 2, 3})
            state.channels.push_back(
                {number, uint8_t(number == 3 ? 4 : 1), 1, 0, 0, 7154, {0, 0}});
        Sim::LanConfig config;
        config.channel = 3;
        config.aliases = {0};
        using namespace Sim::lan;
        config.parameters[Sim::lanKey(address)] = {192, 168, 0, 1};
        config.parameters[Sim::lanKey(mac)] = {0, 0x11, 0x22, 0xaa, 0xbb, 0xcc};
        config.parameters[Sim::lanKey(netmask)] = {255, 255, 255, 0};
        config.parameters[Sim::lanKey(gateway)] = {192, 168, 0, 254};
        Bytes ipv6{0, 0x80, 0x20, 0x01, 0x0d, 0xb8};
        ipv6.resize(20);
        config.parameters[Sim::lanKey(ipv6Static)] = ipv6;
        state.lan.push_back(config);
        serveState(std::move(state));
        takeExchanges();
        Seam::takeLog();
        g_IpmiNode[0].lan.renew();
    }

    static IpmiLan& lan() { return *IpmiIfc::getLan(); }
    static std::string texts()
    {
        return lan().getIPv4Address() + " " + lan().getMACAddress() + " " +
               lan().getIPv4Netmask() + " " + lan().getIPv4DefaultGateway();
    }
};

TEST_F(Lan, whatIsRead)
{
    EXPECT_EQ(texts(), "   ");
    EXPECT_FALSE(lan().isEnabled());
    EXPECT_EQ(lan().IpmiIfcLanInstantiate(0), 0);
    EXPECT_EQ(texts(),
              "192.168.0.1 00:11:22:aa:bb:cc 255.255.255.0 192.168.0.254");
    EXPECT_TRUE(lan().isEnabled());
    EXPECT_EQ(lan().getChannelNumber(), 3u);
    EXPECT_EQ(takeExchanges().size(), 3u + 5u);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(lan().IpmiIfcLanInstantiate(0), 0);
    const auto requests = takeExchanges();
    ASSERT_EQ(requests.size(), 10u) << "the channel is known";
    EXPECT_EQ(requests[0].data, (Bytes{3, 3, 0, 0}));
    EXPECT_EQ(requests[4].data, (Bytes{0, 56, 0, 0})) << "channel 0";
    EXPECT_EQ(lan().getIPv6Addresses(),
              std::vector<std::string>(3, "00:80:20:01:0d:b8:00:00"));
    // Byte 20 of the answer.
    Sim::Device::controller()->bmc().state().lan[0].parameters[Sim::lanKey(
        Sim::lan::ipv6Static)][18] = 0xff;
    Seam::takeLog();
    lan().load_v6_addresses(0);
    EXPECT_EQ(logged("Ignore BMC V6 IP addr, not active, state=-1"), 1);
    EXPECT_EQ(lan().getIPv6Addresses().size(), 3u);
    EXPECT_EQ(IpmiIfc::getLan(7), IpmiIfc::getLan(0));
}

TEST_F(Lan, whatCannotBeRead)
{
    const struct
    {
        const char* fault;
        int result;
        const char* texts;
        const char* line;
        unsigned channel;
    } cases[] = {
        {"cmd=get-channel-info,cc=CC", -1, "   ",
         "initChannelNumber: Get Channel 7 Info failed: cc=0xcc", 1},
        {"cmd=get-channel-info,lost", -1, "   ",
         "initChannelNumber: Get Channel 1 Info - NULL response", 1},
        {"cmd=get-lan-configuration,data=03:03,cc=80", 0,
         " 00:11:22:aa:bb:cc 255.255.255.0 192.168.0.254",
         "IpmiIfcLanInstantiate: Get IP addr failed: cc=0x80", 3},
        {"cmd=get-lan-configuration,data=03:05,lost", 0,
         "192.168.0.1  255.255.255.0 192.168.0.254",
         "IpmiIfcLanInstantiate: Get MAC address - NULL response", 3},
        {"cmd=get-lan-configuration,data=03:06,cc=80", -1,
         "192.168.0.1 00:11:22:aa:bb:cc  ",
         "IpmiIfcLanInstantiate: Get netmask failed: cc=0x80", 3},
        {"cmd=get-lan-configuration,data=03:0c,lost", -1,
         "192.168.0.1 00:11:22:aa:bb:cc 255.255.255.0 ",
         "IpmiIfcLanInstantiate: Get default gateway - NULL response", 3},
        {"cmd=get-lan-configuration,data=00,lost", 0,
         "192.168.0.1 00:11:22:aa:bb:cc 255.255.255.0 192.168.0.254",
         "load_v6_addresses: Get V6 Manual address - NULL response", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        g_IpmiNode[0].lan.renew();
        setFaults({c.fault});
        Seam::takeLog();
        EXPECT_EQ(lan().IpmiIfcLanInstantiate(0), c.result);
        EXPECT_EQ(texts(), c.texts);
        EXPECT_EQ(logged(c.line), 1);
        EXPECT_EQ(lan().getChannelNumber(), c.channel);
        EXPECT_EQ(lan().isEnabled(), c.texts[0] == '1');
        const bool ipv6 = c.result == 0 && !strstr(c.fault, "data=00");
        EXPECT_EQ(lan().getIPv6Addresses().size(), ipv6 ? 1u : 0u);
    }
    setFaults({"cmd=get-lan-configuration,data=00,cc=80"});
    Seam::takeLog();
    for (int i = 0; i < 1500; ++i)
        lan().load_v6_addresses(0);
    EXPECT_EQ(logged("failed"), 0) << "never";
    setFaults({"cmd=get-lan-configuration,data=03:03,cc=80"});
    lan().IpmiIfcLanInstantiate(0);
    EXPECT_FALSE(lan().isEnabled());
    EXPECT_EQ(lan().getIPv4Address(), "192.168.0.1") << "as it was";
}

} // namespace
