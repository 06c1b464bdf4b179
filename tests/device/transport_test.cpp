#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/ipmi.h>
#include <syslog.h>
#include <thread>

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

// The text with the descriptor in the place of "%d".
std::string withFd(std::string text, int fd)
{
    return text.replace(text.find("%d"), 2, std::to_string(fd));
}

// No record came back. A record that was given for use again came back or
// not, and says that there is no answer, or is as it was.
enum
{
    none = -1,
    unanswered = -2,
    untouched = -3
};

// What one exchange comes to, by what the device does with it.
TEST_F(Transport, everyEndOfAnExchange)
{
    const struct
    {
        const char* what;
        std::vector<std::string> faults;
        void (*arrange)();
        int code; ///< In the record; `none`, `unanswered` or `untouched`.
        const char* line;
        int priority;
        bool reopened;
    } cases[] = {
        {"answered", {}, nullptr, 0, nullptr, 0, false},
        {"refused", {"cmd=01,cc=C1"}, nullptr, 0xc1, nullptr, 0, false},
        {"not open",
         {},
         [] { IpmiIfcOpenIpmiClose(0); },
         untouched,
         nullptr,
         0,
         false},
        {"shutting down",
         {},
         [] { g_IpmiNode[0].shutdownFlag = true; },
         untouched,
         nullptr,
         0,
         false},
        {"busy at the send",
         {"cmd=01,send-errno=EBUSY"},
         nullptr,
         unanswered,
         "Node 0: ioctl IPMICTL_SEND_COMMAND(fd=%d), errno(16):Device or "
         "resource busy",
         LOG_ERR,
         true},
        {"never answered",
         {"cmd=01,lost"},
         nullptr,
         unanswered,
         "Node 0: poll(fd=%d) timeout with no reply.",
         LOG_WARNING,
         true},
        {"silent controller",
         {"cmd=01,silence"},
         nullptr,
         0xc3,
         nullptr,
         0,
         false},
        {"a signal in the wait",
         {},
         [] { Seam::failNth(Seam::Call::poll, 1, EINTR); },
         unanswered,
         "Node 0: poll(fd=%d), errno=4 Interrupted system call",
         LOG_ERR,
         true},
        {"the wake-up pipe",
         {"cmd=01,lost"},
         [] {
             EXPECT_EQ(
                 write(g_IpmiNode[0].signalCmdPipeFds[FD_WRITE], "\xff", 1), 1);
         },
         unanswered,
         nullptr,
         0,
         false},
        {"nothing to receive after all",
         {},
         [] { failNextReceive(EAGAIN); },
         none,
         nullptr,
         0,
         true},
        {"receive fails",
         {},
         [] { failNextReceive(EIO); },
         none,
         "Node 0: ioctl IPMICTL_RECEIVE_MSG_TRUNC(fd=%d), "
         "errno(5):Input/output "
         "error",
         LOG_ERR,
         true},
        {"an event comes first",
         {},
         [] {
             int on = 1;
             IpmiIfcOpenIpmiEventEnable(0, &on);
             injectEvent();
         },
         none,
         nullptr,
         0,
         false},
    };
    for (const auto& c : cases)
        for (const bool reuse : {false, true}) {
            SCOPED_TRACE(std::string(c.what) + (reuse ? ", reused" : ""));
            TearDown();
            SetUp();
            serve(c.faults);
            const int fd = g_IpmiNode[0].devFd;
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
            if (c.code >= 0) {
                ASSERT_NE(resp, nullptr);
                EXPECT_EQ(resp->cc, c.code);
                EXPECT_TRUE(!reuse || resp == given);
            } else {
                EXPECT_EQ(resp, c.code == unanswered ? given : nullptr);
            }
            if (given && c.code < 0) {
                EXPECT_EQ(given->cc, c.code == untouched ? 0x5a : noAnswer);
            }
            EXPECT_EQ(openCount() - opens, c.reopened);
            const auto log = Seam::takeLog();
            if (c.line) {
                ASSERT_EQ(log.size(), 1u) << log[0];
                EXPECT_EQ(log[0],
                          (Seam::LogLine{c.priority, withFd(c.line, fd)}));
            } else {
                EXPECT_TRUE(log.empty()) << log[0];
            }
            if (reuse)
                IpmiIfcRespDel(&given); // Still ours, whatever happened.
            else
                IpmiIfcRespDel(&resp);
            g_IpmiNode[0].shutdownFlag = false;
        }
}

TEST_F(Transport, noMemoryForTheAnswer)
{
    Seam::failNth(Seam::Call::allocate, 1);
    Seam::takeLog();
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    EXPECT_EQ(Seam::takeLog(),
              (std::vector<Seam::LogLine>{
                  {LOG_ERR, "Node 0: alloc failed - not enough memory."}}));
}

TEST_F(Transport, aLostDeviceStaysClosedAndTheNodeSilent)
{
    removeDevice();
    Seam::takeLog();
    EXPECT_EQ(send(0x06, 0x01), nullptr);
    const auto log = texts(Seam::takeLog());
    ASSERT_EQ(log.size(), 3u);
    EXPECT_EQ(log[1], "IpmiIfcOpenIpmiOpen: open(/dev/ipmi0, RDWR) failed 2 "
                      "No such file or directory");
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
    } cases[] = {{"cmd=01,pad=31", 31}, {"cmd=01,pad=32", 32},
                 {"cmd=01,pad=33", 32}, {"cmd=01,pad=255", 32},
                 {"cmd=01,cut=3", 3},   {"cmd=01,cut=1", 1}};
    ipmiifc_resp* resp = nullptr;
    ASSERT_EQ(IpmiIfcRespNew(&resp), 0);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        serve({c.fault});
        memset(resp->data, 0x5a, sizeof resp->data); // a reused record's rest
        ASSERT_EQ(send(0x06, 0x01, 0, resp), resp);
        EXPECT_EQ(resp->cc, 0);
        EXPECT_EQ(resp->data_len, c.length);
        for (int i = c.length; i < resp->capacity; ++i)
            EXPECT_EQ(resp->data[i], 0) << i;
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
    EXPECT_EQ(IpmiIfcRespReuse(nullptr), -1);
    EXPECT_EQ(IpmiIfcRespNew(nullptr), -1);
}

TEST_F(Transport, whomACommandGoesTo)
{
    const struct
    {
        const char* what;
        int own, target;
        int channel, slave; ///< 15: the BMC itself.
    } cases[] = {
        {"nobody named", 0x20, 0, 15, 0x20},
        {"the BMC named", 0x20, 0x20, 15, 0x20},
        {"own address left to the driver", 0, 0x20, 15, 0x20},
        {"own address another", 0x24, 0x24, 15, 0x20},
        {"the BMC seen from another", 0x24, 0x20, 0, 0x20},
        {"a satellite", 0, 0x52, 0, 0x52},
    };
    IpmiNode& node = g_IpmiNode[0];
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
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
    node.targetAddress = 0;
    node.myAddress = 0;
}

TEST_F(Transport, whatACallersBufferGets)
{
    const struct
    {
        const char* what;
        const char* fault;
        uint16_t size;
        int code;
        uint16_t sizeAfter;
        Bytes bytes;
    } cases[] = {
        {"just large enough",
         "cmd=01,cut=6",
         6,
         0,
         6,
         {0, 0x20, 0x81, 0x02, 0x14, 0x02}},
        {"larger", "cmd=01,cut=2", 6, 0, 2, {0, 0x20, 0xaa}},
        {"too small", "cmd=01,cut=6", 4, 0x10, 4, {0, 0x20, 0x81, 0x02, 0xaa}},
        {"none", "cmd=01,cut=6", 0, 0x10, 0, {0xaa}},
        {"refused", "cmd=01,cc=C0", 6, 0xc0, 6, {0xaa}},
        {"no answer", "cmd=01,lost", 6, 0xff, 6, {0xaa}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        serve({c.fault});
        uint8_t buffer[8];
        memset(buffer, 0xaa, sizeof buffer);
        uint16_t size = c.size;
        EXPECT_EQ(IpmiIfc::sendCmd(0x01, 0x06, 0, nullptr, &size, buffer),
                  c.code);
        EXPECT_EQ(size, c.sizeAfter);
        EXPECT_EQ(Bytes(buffer, buffer + c.bytes.size()), c.bytes);
    }
}

TEST_F(Transport, timingParametersFromTheEnvironment)
{
    const struct
    {
        const char* what;
        const char *retries, *time;
        std::vector<std::string> log;
    } cases[] = {
        {"neither", nullptr, nullptr, {}},
        {"nothing usable", "0", "-5", {}},
        {"no numbers", "many", "", {}},
        {"both",
         "7",
         "250",
         {"IPMI default timing parms: retries=-1, retry_time=0(ms)",
          "IPMI timing parms have been set to: retries=7, "
          "retry_time=250(ms)."}},
        {"out of range", "99999999999", "2147483648", {}},
        {"one",
         "9 times",
         nullptr,
         {"IPMI default timing parms: retries=7, retry_time=250(ms)",
          "IPMI timing parms have been set to: retries=9, "
          "retry_time=250(ms)."}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        unsetenv("CIM_IPMI_RETRIES");
        unsetenv("CIM_IPMI_RETRY_TIME");
        if (c.retries)
            setenv("CIM_IPMI_RETRIES", c.retries, 1);
        if (c.time)
            setenv("CIM_IPMI_RETRY_TIME", c.time, 1);
        Seam::takeLog();
        IpmiIfcSetTimingParms(0);
        EXPECT_EQ(texts(Seam::takeLog()), c.log);
    }
    IpmiIfcOpenIpmiClose(0);
    IpmiIfcSetTimingParms(0);
    EXPECT_EQ(Seam::takeLog(),
              (std::vector<Seam::LogLine>{
                  {LOG_WARNING, "Can not get IPMI default timing parms, they "
                                "will not be changed."}}));
}

TEST_F(Transport, settingsOfADeviceThatIsNotThere)
{
    IpmiIfcCloseForCLI(0);
    IpmiIfcOpenIpmiClose(0);
    int off = 0;
    Seam::takeLog();
    EXPECT_EQ(IpmiIfcOpenIpmiEventEnable(0, &off), -1);
    EXPECT_EQ(IpmiIfcInitForCLI(0), -2);
    EXPECT_EQ(texts(Seam::takeLog()),
              (std::vector<std::string>{
                  "IpmiIfcOpenIpmiEventEnable: ioctl(GETS_EVENTS) failed, 9 "
                  "Bad file descriptor",
                  "Node 0: IpmiIfcOpenIpmiAddressSet failed ioctl call "
                  "returning -1"}));
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
