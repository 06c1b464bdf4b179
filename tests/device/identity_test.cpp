#include <atomic>
#include <gtest/gtest.h>
#include <syslog.h>
#include <thread>

#include "ipmi/IpmiIdentity.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

class IdentityOnDevice : public NodeFixture
{
protected:
    void SetUp() override
    {
        NodeFixture::SetUp();
        ASSERT_GT(IpmiIfcOpenIpmiOpen(0), 0);
    }
};

std::string text(size_t length)
{
    std::string result(length, 'a');
    for (size_t i = 0; i < length; ++i)
        result[i] = char('a' + i % 26);
    return result;
}

TEST_F(IdentityOnDevice, textsOfEveryLengthAreReadAsTheyWereWritten)
{
    for (const size_t length : {1, 13, 14, 15, 29, 30, 31, 255}) {
        const std::string name = text(length), version = "v" + text(length - 1);
        EXPECT_EQ(IpmiIfc::SetOSInfo(name, version), 1);
        EXPECT_EQ(IpmiIfcReadOS_Name(0), 0);
        EXPECT_EQ(IpmiIfcReadOS_Version(0), 0);
        EXPECT_EQ(IpmiIfc::GetBmcReportedOSName(), name);
        EXPECT_EQ(IpmiIfc::GetBmcReportedOSVersion(), version);
    }
    Seam::takeLog();
    takeExchanges();
    EXPECT_EQ(IpmiIfc::SetOSInfo("", ""), 1);
    EXPECT_TRUE(takeExchanges().empty());
    EXPECT_EQ(logged("SetOSInfo: seting bmc osname='', version=''"), 1);
    setFaults({"netfn=06,cmd=59,flip=4:22"}); // 34 characters become none
    EXPECT_EQ(IpmiIfc::SetOSInfo(text(34), ""), 1);
    EXPECT_EQ(IpmiIfcReadOS_Name(0), 0);
    EXPECT_EQ(IpmiIfc::GetBmcReportedOSName(), "");
}

TEST_F(IdentityOnDevice, aShortLastBlockRepeatsTheTailOfTheOneBefore)
{
    const int sequence = g_IpmiNode[0].msgSeq;
    takeExchanges();
    EXPECT_EQ(IpmiIfc::SetOSInfo(text(20), ""), 1);
    const auto sent = takeExchanges();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].data, (Bytes{4, 0, 0, 20, 'a', 'b', 'c', 'd', 'e', 'f',
                                   'g', 'h', 'i', 'j', 'k', 'l', 'm', 'n'}));
    EXPECT_EQ(sent[1].data, (Bytes{4, 1, 'o', 'p', 'q', 'r', 's', 't', 'e', 'f',
                                   'g', 'h', 'i', 'j', 'k', 'l', 'm', 'n'}));
    EXPECT_EQ(g_IpmiNode[0].msgSeq, sequence + 4);
}

TEST_F(IdentityOnDevice, writingTheOperatingSystemsNameAndVersion)
{
    const struct
    {
        const char* fault;
        const char* name;
        int result;
        const char* written; ///< What the name then is; null: not looked at.
    } cases[] = {
        {"lost,cmd=01", "name", 1, "name"},
        {"cmd=58,data=05,cc=80", "name", 1, "name 1.0"},
        {"cmd=58,data=05,cc=CC", "name", 1, "name"},
        {"cmd=58,data=05,cc=80", "", 0, nullptr},
        {"cmd=58,cc=80", "name", 0, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        serve({c.fault});
        EXPECT_EQ(IpmiIfc::SetOSInfo(c.name, "1.0"), c.result);
        EXPECT_EQ(IpmiIfcReadOS_Name(0), 0);
        if (c.written) {
            EXPECT_EQ(IpmiIfc::GetBmcReportedOSName(), c.written);
        }
    }
}

TEST_F(IdentityOnDevice, everyBlockIsSentAndTheLastFailureIsReported)
{
    serve({"netfn=06,cmd=58,data=0400,cc=C0", "netfn=06,cmd=58,data=0401,lost",
           "netfn=06,cmd=58,data=0402,cc=CC"});
    const std::string value = text(60);
    uint8_t code = 0;
    Seam::takeLog();
    takeExchanges();
    EXPECT_EQ(set_bmc_prop(value.c_str(), value.size(), 4, code), 0);
    EXPECT_EQ(code, 0xcc);
    EXPECT_EQ(takeExchanges().size(), 4u);
    const auto log = texts(Seam::takeLog());
    EXPECT_EQ(log.front(),
              "set_bmc_prop: set bmc prop=4/" + value + " failed cc=0xc0");
    EXPECT_EQ(log[log.size() - 2],
              "set_bmc_prop: No response to prop=4, val='" + value + "'");
}

TEST_F(IdentityOnDevice, aTextThatCannotBeReadWhole)
{
    const struct
    {
        const char* fault;
        int code;
        size_t length; ///< Of the name then; 99: the one before stays.
        int priority;
        const char* line;
    } cases[] = {
        {"cmd=59,cc=80", 0x80, 99, LOG_WARNING,
         "BMC does not support OS Names retrieval"},
        {"cmd=59,cc=C1", 0xc1, 99, LOG_ERR, "retrieve os_name failed cc=0xc1"},
        {"cmd=59,cut=4", 0, 99, LOG_ERR,
         "retrieve os_name failed short buffer read (4)"},
        {"data=000400,cut=5", 0, 0, LOG_WARNING,
         "retrieve os_name failed at block 0, cc=0x0, length 5"},
        {"data=000401,cut=9", 0, 20, LOG_WARNING,
         "retrieve os_name failed at block 1, cc=0x0, length 9"},
        {"data=000401,cc=C0", 0, 14, LOG_WARNING,
         "retrieve os_name failed at block 1, cc=0xc0, length 1"},
        {"data=000401,cut=3", 0, 14, LOG_WARNING,
         "retrieve os_name failed at block 1, cc=0x0, length 3"},
        {"data=000401,lost", 0, 14, LOG_WARNING,
         "retrieve os_name failed at block 1, cc=0xff, length 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        serve({});
        ASSERT_EQ(IpmiIfc::SetOSInfo("before", ""), 1);
        ASSERT_EQ(IpmiIfcReadOS_Name(0), 0);
        ASSERT_EQ(IpmiIfc::SetOSInfo(text(34), ""), 1);
        setFaults({c.fault});
        EXPECT_EQ(IpmiIfcReadOS_Name(0), c.code);
        EXPECT_EQ(IpmiIfc::GetBmcReportedOSName(),
                  c.length == 99 ? "before" : text(c.length));
        EXPECT_EQ(Seam::takeLog().back(),
                  (Seam::LogLine{c.priority, "IpmiIfcRhGetOS_Name: " +
                                                 std::string{c.line}}));
    }
}

// A controller that ignores the set selector gives its first block always.
TEST_F(IdentityOnDevice, aRepeatedBlockIsNotTakenForTheNext)
{
    ASSERT_EQ(IpmiIfc::SetOSInfo(text(34), ""), 1);
    setFaults({"netfn=06,cmd=59,data=000401,flip=2:01"});
    EXPECT_EQ(IpmiIfcReadOS_Name(0), 0);
    EXPECT_EQ(IpmiIfc::GetBmcReportedOSName(), text(14));
}

TEST_F(IdentityOnDevice, identifyingTheChassis)
{
    const struct
    {
        const char* fault;
        uint8_t interval, force;
        Bytes request;
        int result;
    } cases[] = {
        {"cmd=99,lost", 15, 0, {15, 0}, 0},
        {"cmd=99,lost", 15, 3, {0, 1}, 0},  // until turned off
        {"cmd=99,lost", 15, 2, {15, 0}, 0}, // other bits do not count
        {"cmd=04,cc=C1", 15, 0, {15, 0}, 1},
        {"cmd=04,cc=CD", 15, 0, {15, 0}, 1},
        {"cmd=04,cc=C0", 15, 0, {15, 0}, 0xc0},
        {"cmd=04,lost", 15, 0, {15, 0}, 0xff},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        serve({c.fault});
        takeExchanges();
        EXPECT_EQ(IpmiIfc::identifyChassis(c.interval, c.force), c.result);
        EXPECT_EQ(takeExchanges().at(0).data, c.request);
    }
}

TEST_F(IdentityOnDevice, theVersionHasTextsOfItsOwn)
{
    const char* const cases[][2] = {
        {"cmd=59,cc=80", "BMC does not support OS Versions retrieval"},
        {"cmd=59,cc=C1", "retrieve os_version failed cc=0xc1"},
        {"cmd=59,cut=2", "retrieve os_version failed short buffer read (2)"},
    };
    for (const auto& [fault, line] : cases) {
        setFaults({fault});
        IpmiIfcReadOS_Version(0);
        EXPECT_EQ(logged(std::string{"IpmiIfcRhGetOS_Version: "} + line), 1);
    }
}

// Each opens the device if it is closed; none may close it under another.
TEST_F(IdentityOnDevice, usersOfAClosedDeviceShareIt)
{
    IpmiIfcOpenIpmiClose(0);
    std::atomic<int> good{0};
    std::vector<std::thread> users;
    for (int i = 0; i < 4; ++i)
        users.emplace_back([&] {
            for (int round = 0; round < 25; ++round)
                good += IpmiIfc::SetOSInfo("name", "1.0");
        });
    for (auto& user : users)
        user.join();
    EXPECT_EQ(good, 100);
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
}

TEST_F(IdentityOnDevice, theDeviceIsLeftAsItWasFound)
{
    IpmiIfc::GetBMCNetworking();
    EXPECT_GT(g_IpmiNode[0].devFd, 0) << "it was open";
    IpmiIfcOpenIpmiClose(0);
    takeExchanges();
    IpmiIfc::GetBMCNetworking();
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    EXPECT_GE(takeExchanges().size(), 3u);
    EXPECT_EQ(IpmiIfc::SetOSInfo("name", "1.0"), 1);
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
}

} // namespace
