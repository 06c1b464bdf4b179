#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/ipmi.h>
#include <syslog.h>

#include "ipmi/IpmiTransport.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

class Transport : public NodeFixture
{
protected:
    void SetUp() override
    {
        NodeFixture::SetUp();
        ASSERT_EQ(IpmiIfcOpenIpmiOpen(0), g_IpmiNode[0].devFd);
        ASSERT_EQ(IpmiIfcInitForCLI(0), 0);
    }
    void TearDown() override
    {
        IpmiIfcCloseForCLI(0);
        NodeFixture::TearDown();
    }

    ipmiifc_resp* send(uint8_t netFn, uint8_t command, int flags = 0,
                       ipmiifc_resp* reuse = nullptr)
    {
        ipmiifc_req request{};
        request.msgid = 77;
        request.netfn = netFn;
        request.cmd = command;
        request.data = data_;
        request.data_len = dataLength_;
        return IpmiIfcSendWresponse(0, &request, flags, reuse);
    }

    uint8_t data_[4] = {};
    uint16_t dataLength_ = 0;
};

// No record came back. A record that was given for use again came back or
// not, and says that there is no answer, or is as it was.
enum
{
    none = -1,
    unanswered = -2,
    untouched = -3
};

constexpr const char* healthy = "cmd=44,lost"; // None asks for that.

const auto closeDevice = [] {
    IpmiIfcOpenIpmiClose(0);
};
const auto shutDown = [] {
    g_IpmiNode[0].shutdownFlag = true;
};
const auto interruptWait = [] {
    Seam::failNth(Seam::Call::poll, 1, EINTR);
};
const auto receiveNothing = [] {
    failNextReceive(EAGAIN);
};
const auto failReceive = [] {
    failNextReceive(EIO);
};
const auto wakeUp = [] {
    EXPECT_EQ(write(g_IpmiNode[0].signalCmdPipeFds[FD_WRITE], "\xff", 1), 1);
};
const auto sendEventFirst = [] {
    int on = 1;
    IpmiIfcOpenIpmiEventEnable(0, &on);
    injectEvent();
};

// What one exchange comes to, by what the device does with it.
TEST_F(Transport, everyEndOfAnExchange)
{
    const struct
    {
        const char* fault;
        void (*arrange)();
        int code; ///< In the record; `none`, `unanswered` or `untouched`.
        bool reopened;
        int priority = 0;
        const char *call = nullptr,
                   *reason =
                       nullptr; ///< What is logged; the descriptor between.
    } cases[] = {
        {healthy, nullptr, 0, false},
        {"cmd=01,cc=C1", nullptr, 0xc1, false},
        {"cmd=01,silence", nullptr, 0xc3, false},
        {healthy, closeDevice, untouched, false},
        {healthy, shutDown, untouched, false},
        {"cmd=01,send-errno=EBUSY", nullptr, unanswered, true, LOG_ERR,
         "ioctl IPMICTL_SEND_COMMAND", ", errno(16):Device or resource busy"},
        {"cmd=01,lost", nullptr, unanswered, true, LOG_WARNING, "poll",
         " timeout with no reply."},
        {healthy, interruptWait, unanswered, true, LOG_ERR, "poll",
         ", errno=4 Interrupted system call"},
        {"cmd=01,lost", wakeUp, unanswered, false},
        {healthy, receiveNothing, none, true},
        {healthy, failReceive, none, true, LOG_ERR,
         "ioctl IPMICTL_RECEIVE_MSG_TRUNC", ", errno(5):Input/output error"},
        {healthy, sendEventFirst, none, false},
    };
    for (const auto& c : cases)
        for (const bool reuse : {false, true}) {
            SCOPED_TRACE(testing::Message() << &c - cases << ' ' << reuse);
            TearDown();
            SetUp();
            serve({c.fault});
            std::vector<Seam::LogLine> log;
            if (c.call)
                log = {{c.priority, std::string{"Node 0: "} + c.call + "(fd=" +
                                        std::to_string(g_IpmiNode[0].devFd) +
                                        ")" + c.reason}};
            if (c.arrange)
                c.arrange();
            const int opens = openCount();
            ipmiifc_resp* given = nullptr;
            if (reuse) {
                ASSERT_EQ(IpmiIfcRespNew(&given), 0);
                given->cc = 0x5a;
            }
            Seam::takeLog();

            ipmiifc_resp* resp = send(0x06, 0x01, 0, given);
            const bool back = c.code >= 0 || (reuse && c.code == unanswered);
            EXPECT_EQ(resp != nullptr, back);
            EXPECT_TRUE(!reuse || !resp || resp == given);
            const int unchanged = c.code == untouched ? 0x5a : noAnswer;
            if (const auto* record = reuse ? given : resp) {
                EXPECT_EQ(record->cc, c.code >= 0 ? c.code : unchanged);
            }
            EXPECT_EQ(openCount() - opens, c.reopened);
            EXPECT_EQ(Seam::takeLog(), log);
            // Still ours, whatever happened.
            IpmiIfcRespDel(reuse ? &given : &resp);
            g_IpmiNode[0].shutdownFlag = false;
        }
}

TEST_F(Transport, noMemoryForTheAnswer)
{
    Seam::failNth(Seam::Call::allocate, 1);
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    EXPECT_EQ(logged("Node 0: alloc failed - not enough memory."), 1);
}

TEST_F(Transport, aLostDeviceStaysClosedAndTheNodeSilent)
{
    removeDevice();
    Seam::takeLog();
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    const auto log = texts(Seam::takeLog());
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[2], "Node 0: Unable to open node No such file or directory");
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    EXPECT_TRUE(Seam::takeLog().empty());
}

TEST_F(Transport, longAnswersAreCutAndShortOnesFilledUp)
{
    const struct
    {
        const char* fault;
        int length;
    } cases[] = {{"cmd=01,pad=31", 31},
                 {"cmd=01,pad=33", 32},
                 {"cmd=01,pad=255", 32},
                 {"cmd=01,cut=1", 1}};
    ipmiifc_resp* resp = nullptr;
    ASSERT_EQ(IpmiIfcRespNew(&resp), 0);
    for (const auto& c : cases) {
        serve({c.fault});
        memset(resp->data, 0x5a, sizeof resp->data); // a reused record's rest
        ASSERT_EQ(send(0x06, 0x01, 0, resp), resp);
        EXPECT_EQ(resp->cc, 0);
        EXPECT_EQ(resp->data_len, c.length);
        for (int i = c.length; i < resp->capacity; ++i)
            EXPECT_EQ(resp->data[i], 0) << c.fault << i;
    }
    IpmiIfcRespDel(&resp);
}

TEST_F(Transport, theRequestIsKeptWhenAskedFor)
{
    data_[0] = 0x0e;
    dataLength_ = 1;
    ipmiifc_resp* resp = send(0x06, 0x42, keepRequest);
    ASSERT_NE(resp, nullptr);
    EXPECT_EQ(resp->cc, 0);
    EXPECT_EQ(resp->request.msgid, 77);
    EXPECT_EQ(resp->request.cmd, 0x42);
    ASSERT_EQ(resp->request.addr_len, 8u);
    int type;
    memcpy(&type, resp->request.addr, sizeof type);
    EXPECT_EQ(type, IPMI_SYSTEM_INTERFACE_ADDR_TYPE);
    ASSERT_NE(resp->request.data, nullptr);
    EXPECT_NE(resp->request.data, data_);
    EXPECT_EQ(resp->request.data[0], 0x0e);

    dataLength_ = 0; // the arrays of the reused record are freed
    ASSERT_EQ(send(0x06, 0x01, keepRequest, resp), resp);
    EXPECT_EQ(resp->request.data, nullptr);
    serve({"cmd=01,cc=C0"});
    ASSERT_EQ(send(0x06, 0x01, keepRequest, resp), resp);
    EXPECT_EQ(resp->request.addr, nullptr) << "a refusal keeps no request";
    EXPECT_EQ(IpmiIfcRespDel(&resp), 0);
    EXPECT_EQ(IpmiIfcRespDel(&resp), -1);
}

TEST_F(Transport, whomACommandGoesTo)
{
    const struct
    {
        int own, target;
        int channel, slave; ///< 15: the BMC itself.
    } cases[] = {{0x20, 0, 15, 0x20},   {0x20, 0x20, 15, 0x20},
                 {0, 0x20, 15, 0x20},   {0x24, 0x24, 15, 0x20},
                 {0x24, 0x20, 0, 0x20}, // The BMC, seen from another.
                 {0, 0x52, 0, 0x52}};
    IpmiNode& node = g_IpmiNode[0];
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.own << ' ' << c.target);
        serve({"netfn=06,cmd=01,cc=C0"}); // No satellite is there to answer.
        node.myAddress = c.own;
        node.targetAddress = c.target;
        node.targetChannel = 0x10; // four bits count
        node.targetLun = 1;
        takeExchanges();
        ipmiifc_resp* resp = send(0x06, 0x01);
        IpmiIfcRespDel(&resp);
        const auto exchange = takeExchanges().at(0);
        EXPECT_EQ(exchange.channel, c.channel);
        EXPECT_EQ(exchange.slaveAddress, c.slave);
        EXPECT_EQ(exchange.lun, c.channel == 15 ? 0 : 1);
    }
}

TEST_F(Transport, whatACallersBufferGets)
{
    const struct
    {
        const char* fault;
        uint16_t size;
        int code;
        uint16_t sizeAfter;
        Bytes bytes;
    } cases[] = {
        {"cut=6", 6, 0, 6, {0, 0x20, 0x81, 0x02, 0x14, 0x02, 0xaa}},
        {"cut=2", 6, 0, 2, {0, 0x20, 0xaa}},
        {"cut=6", 4, 0x10, 4, {0, 0x20, 0x81, 0x02, 0xaa}},
        {"cut=6", 0, 0x10, 0, {0xaa}},
        {"cc=C0", 6, 0xc0, 6, {0xaa}},
        {"lost", 6, 0xff, 6, {0xaa}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.fault << ' ' << c.size);
        serve({std::string{"cmd=01,"} + c.fault});
        Bytes buffer(8, 0xaa);
        uint16_t size = c.size;
        EXPECT_EQ(
            IpmiIfc::sendCmd(0x01, 0x06, 0, nullptr, &size, buffer.data()),
            c.code);
        EXPECT_EQ(size, c.sizeAfter);
        buffer.resize(c.bytes.size());
        EXPECT_EQ(buffer, c.bytes);
    }
}

TEST_F(Transport, timingParametersFromTheEnvironment)
{
    const std::string before = "IPMI default timing parms: ";
    const std::string after = "IPMI timing parms have been set to: ";
    const struct
    {
        const char *retries, *time;
        const char *before = nullptr, *after = nullptr; ///< As logged.
    } cases[] = {
        {"", ""},
        {"0", "-5"},
        {"many", "99999999999"},
        {"7", "250", "retries=-1, retry_time=0(", "retries=7, retry_time=250("},
        {"99999999999", "2147483648"},
        {"9 times", "", "retries=7, retry_time=250(",
         "retries=9, retry_time=250("},
    };
    unsetenv("CIM_IPMI_RETRIES");
    unsetenv("CIM_IPMI_RETRY_TIME");
    Seam::takeLog();
    IpmiIfcSetTimingParms(0);
    EXPECT_TRUE(Seam::takeLog().empty());
    for (const auto& c : cases) {
        setenv("CIM_IPMI_RETRIES", c.retries, 1);
        setenv("CIM_IPMI_RETRY_TIME", c.time, 1);
        IpmiIfcSetTimingParms(0);
        std::vector<std::string> log;
        if (c.before)
            log = {before + c.before + "ms)", after + c.after + "ms)."};
        EXPECT_EQ(texts(Seam::takeLog()), log) << c.retries;
    }
    IpmiIfcOpenIpmiClose(0);
    IpmiIfcSetTimingParms(0);
    const Seam::LogLine last{LOG_WARNING,
                             "Can not get IPMI default timing parms, they "
                             "will not be changed."};
    EXPECT_EQ(Seam::takeLog(), std::vector{last});
}

TEST_F(Transport, settingsOfADeviceThatIsNotThere)
{
    IpmiIfcCloseForCLI(0);
    IpmiIfcOpenIpmiClose(0);
    int off = 0;
    Seam::takeLog();
    EXPECT_EQ(IpmiIfcOpenIpmiEventEnable(0, &off), -1);
    EXPECT_EQ(IpmiIfcInitForCLI(0), -2);
    const auto log = texts(Seam::takeLog());
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0], "IpmiIfcOpenIpmiEventEnable: ioctl(GETS_EVENTS) failed, "
                      "9 Bad file descriptor");
    EXPECT_EQ(log[1], "Node 0: IpmiIfcOpenIpmiAddressSet failed ioctl call "
                      "returning -1");
    EXPECT_EQ(g_IpmiNode[0].signalCmdPipeFds[FD_READ], -1);
    g_IpmiNode[0].myAddress = 0;
    EXPECT_EQ(IpmiIfcOpenIpmiAddressSet(0), 0) << "the driver is not asked";
    Seam::failNth(Seam::Call::pipe, 1, EMFILE);
    EXPECT_EQ(IpmiIfcInitForCLI(0), -1);
}

TEST_F(Transport, standardInputIsNeverClosed)
{
    IpmiIfcOpenIpmiClose(0);
    g_IpmiNode[0].devFd = 0;
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    IpmiIfcOpenIpmiClose(0);
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    EXPECT_EQ(fcntl(0, F_GETFD) & ~FD_CLOEXEC, 0) << "still open";
}

} // namespace
