// What the probe (sim/probe/probe.cpp) cannot ask of a real driver: answers
// that fail, events, a device that goes away, time.
#include "sim/device/device.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "sim/profile/profile.h"

namespace
{

using Sim::Bytes;
namespace Device = Sim::Device;

/// Real time of a simulated second; the longer one where an answer must not
/// yet be there.
constexpr double shortened = 0.01, lessShortened = 0.1;
constexpr uint8_t netFnApp = 0x06, netFnOem = 0x2E, unknown = 0xFE;

/// What Client::receive makes of an answer, and of none.
Bytes answer(uint8_t netFn, uint8_t command, const Bytes& data, uint8_t id = 1)
{
    Bytes all{IPMI_RESPONSE_RECV_TYPE, id, uint8_t(netFn | 1), command};
    Sim::append(all, data);
    return all;
}
Bytes refusal(uint8_t id = 1, uint8_t code = 0xC1)
{
    return answer(netFnApp, unknown, {code}, id);
}
const Bytes nothing{EAGAIN};

/// One open handle, as a client of the driver uses it.
struct Client
{
    explicit Client(const char* path = "/dev/ipmi0")
        : descriptor(::open(path, O_RDWR | O_CLOEXEC)),
          openError(descriptor < 0 ? errno : 0)
    {}
    ~Client() { ::close(descriptor); }
    Client(const Client&) = delete;

    int control(unsigned long request, void* argument)
    {
        return ioctl(descriptor, request, argument) < 0 ? errno : 0;
    }
    int send(uint8_t netFn, uint8_t command, long id = 1, bool bridged = false)
    {
        ipmi_addr to{IPMI_SYSTEM_INTERFACE_ADDR_TYPE, IPMI_BMC_CHANNEL, {}};
        const ipmi_ipmb_addr satellite{IPMI_IPMB_ADDR_TYPE, 0, 0x52, 0};
        if (bridged)
            memcpy(&to, &satellite, sizeof satellite);
        ipmi_req request{reinterpret_cast<unsigned char*>(&to),
                         sizeof(ipmi_system_interface_addr),
                         id,
                         {netFn, command, 0, nullptr}};
        return control(IPMICTL_SEND_COMMAND, &request);
    }
    bool readable(int timeoutMs)
    {
        pollfd waiting{descriptor, POLLIN, 0};
        return ::poll(&waiting, 1, timeoutMs) == 1;
    }
    /// Kind, message id, network function, command and data; or an errno.
    Bytes receive()
    {
        ipmi_addr from{};
        uint8_t buffer[512];
        ipmi_recv into{};
        into.addr = reinterpret_cast<unsigned char*>(&from);
        into.addr_len = sizeof from;
        into.msg.data = buffer;
        into.msg.data_len = sizeof buffer;
        if (const int error = control(IPMICTL_RECEIVE_MSG_TRUNC, &into))
            return {uint8_t(error)};
        Bytes all{uint8_t(into.recv_type), uint8_t(into.msgid), into.msg.netfn,
                  into.msg.cmd};
        Sim::append(all, Bytes(buffer, buffer + into.msg.data_len));
        return all;
    }
    Bytes await()
    {
        readable(5000);
        return receive();
    }
    void wantEvents()
    {
        int yes = 1;
        EXPECT_EQ(0, control(IPMICTL_SET_GETS_EVENTS_CMD, &yes));
    }

    const int descriptor, openError;
};

class SimDevice : public testing::Test
{
protected:
    /// A controller with answers of the test's choice in front of its own.
    static void install(const std::vector<Sim::FixedAnswer>& answers = {})
    {
        auto bmc = Sim::builtinProfile();
        bmc->state().answers = answers;
        Device::install(
            std::make_unique<Sim::Controller>(std::move(bmc), Sim::FaultSet{}));
    }
    static void installFaulty(const std::string& rule)
    {
        Sim::Mistakes mistakes;
        Device::install(Sim::makeController({"two-socket", {rule}}, mistakes));
        ASSERT_TRUE(mistakes.empty()) << rule;
    }
    void TearDown() override { Device::reset(); }
};

TEST_F(SimDevice, onlyAnInstalledControllerIsThere)
{
    EXPECT_EQ(ENOENT, Client().openError);
    install();
    for (const char* path : {"/dev/ipmi0", "/dev/ipmi/0", "/dev/ipmidev/0"})
        EXPECT_EQ(0, Client(path).openError) << path;
    for (const char* path : {"/dev/ipmi1", "/dev/ipmi", "/dev/ipmi00"})
        EXPECT_EQ(ENOENT, Client(path).openError) << path;
    EXPECT_EQ(ENOTTY, Client("/dev/null").send(netFnApp, unknown));
}

TEST_F(SimDevice, aNumberThatWasClosedBehindTheLayersBackIsUsedAgain)
{
    install();
    const int first = open("/dev/ipmi0", O_RDWR);
    syscall(SYS_close, first);
    Client again;
    EXPECT_GE(fcntl(first, F_GETFD), 0) << "closed with the old handle";
    EXPECT_EQ(0, again.send(netFnApp, unknown, 5));
    EXPECT_EQ(refusal(5), again.await());
}

TEST_F(SimDevice, silenceIsAnsweredByTheDriver)
{
    install({{netFnOem, 1, {}, {}}});
    Device::setTimeScale(lessShortened);
    Client silent, behind;
    silent.send(netFnOem, 1, 5);
    behind.send(netFnApp, unknown, 6);
    // The controller serves one at a time: who comes later waits.
    EXPECT_FALSE(behind.readable(0));
    EXPECT_EQ(nothing, silent.receive());
    EXPECT_EQ(refusal(6), behind.await());
    EXPECT_EQ(answer(netFnOem, 1, {0xC3}, 5), silent.receive());
}

TEST_F(SimDevice, anAnswerThatIsTooLongIsCutByTheDriver)
{
    install({{netFnOem, 1, {}, Bytes(271, 0)}, {netFnOem, 2, {}, Bytes(270)}});
    Client client;
    for (const uint8_t command : {1, 2}) {
        Bytes data(270, 0);
        data[0] = command == 1 ? 0xC6 : 0;
        client.send(netFnOem, command);
        EXPECT_EQ(answer(netFnOem, command, data), client.await());
    }
}

TEST_F(SimDevice, faultsAreWhatTheDriverMakesOfThem)
{
    const struct
    {
        const char* rule;
        int sendError;
        Bytes received;
    } rows[] = {{"cc=d1", 0, refusal(1, 0xD1)},
                {"answer-netfn=09", 0, refusal(1, 0xFF)},
                {"answer-cmd=01", 0, refusal(1, 0xFF)},
                {"cut=0", 0, refusal(1, 0xC3)},
                {"silence", 0, refusal(1, 0xC3)},
                {"delay=3900", 0, refusal(1, 0xC1)},
                {"delay=4000", 0, refusal(1, 0xC3)},
                {"lost", 0, nothing},
                {"vanish=0", 0, nothing},
                {"send-errno=EBUSY", EBUSY, nothing}};
    for (const auto& row : rows) {
        installFaulty(row.rule);
        Device::setTimeScale(shortened);
        Client client;
        EXPECT_EQ(row.sendError, client.send(netFnApp, unknown)) << row.rule;
        client.readable(100);
        EXPECT_EQ(row.received, client.receive()) << row.rule;
    }
    // Opens have a count of their own.
    installFaulty("open-errno=EACCES,nth=2");
    EXPECT_EQ(0, Client().send(netFnApp, unknown));
    EXPECT_EQ(EACCES, Client().openError);
    EXPECT_EQ(0, Client().openError);
}

TEST_F(SimDevice, aDeviceThatVanishesForAWhileComesBackByItself)
{
    installFaulty("vanish=2000,count=1");
    Device::setTimeScale(lessShortened);
    Client old;
    EXPECT_EQ(0, old.send(netFnApp, unknown)) << "lost in silence";
    EXPECT_EQ(ENOENT, Client().openError);
    EXPECT_FALSE(old.readable(300));
    EXPECT_EQ(0, Client().openError);
}

TEST_F(SimDevice, theDriverRepeatsBridgedRequestsBeforeItGivesUp)
{
    const struct
    {
        int retries;
        unsigned timeMs;
        int leastMs; ///< Of real time.
    } rows[] = {{0, 1000, 10}, {3, 1000, 40}, {-1, 0, 100}};
    install();
    Device::setTimeScale(shortened);
    for (const auto& row : rows) {
        Client client;
        ipmi_timing_parms timing{row.retries, row.timeMs};
        client.control(IPMICTL_SET_TIMING_PARMS_CMD, &timing);
        const auto sent = std::chrono::steady_clock::now();
        ASSERT_EQ(0, client.send(netFnApp, unknown, 1, true));
        EXPECT_EQ(refusal(1, 0xC3), client.await());
        EXPECT_GE(std::chrono::steady_clock::now() - sent,
                  std::chrono::milliseconds(row.leastMs));
    }
}

Bytes eventOf(uint8_t value)
{
    Bytes all{IPMI_ASYNC_EVENT_RECV_TYPE, 0, 0x07, 0x35};
    all.resize(20, value);
    return all;
}

TEST_F(SimDevice, eventsGoToAllWhoWantThemAnd25AreKept)
{
    install();
    Client one, two, other;
    for (uint8_t i = 0; i < 40; ++i)
        Device::injectEvent(Bytes(16, i));
    EXPECT_EQ(nothing, one.receive());
    one.wantEvents();
    two.wantEvents();
    for (uint8_t i = 0; i < 25; ++i)
        EXPECT_EQ(eventOf(i), one.receive()) << "kept for the first";
    EXPECT_EQ(nothing, one.receive());
    std::thread injector([] { Device::injectEvent(Bytes(16, 50)); });
    EXPECT_EQ(eventOf(50), two.await());
    injector.join();
    EXPECT_EQ(eventOf(50), one.await());
    EXPECT_EQ(nothing, two.receive());
    EXPECT_EQ(nothing, other.receive());
}

TEST_F(SimDevice, aDeviceThatVanishesLeavesItsHandlesDeadForEver)
{
    install({{netFnOem, 1, {}, {}}});
    Device::setTimeScale(lessShortened);
    Client arrived, inFlight;
    arrived.send(netFnApp, unknown);
    ASSERT_TRUE(arrived.readable(5000));
    inFlight.send(netFnOem, 1);
    Device::vanish();
    EXPECT_EQ(refusal(), arrived.await());
    EXPECT_FALSE(inFlight.readable(500));
    EXPECT_EQ(nothing, inFlight.receive());
    Device::comeBack();
    Client fresh;
    EXPECT_EQ(0, fresh.send(netFnApp, unknown));
    EXPECT_EQ(refusal(), fresh.await());

    int value = 0;
    EXPECT_EQ(ENODEV, arrived.send(netFnApp, unknown));
    for (const auto request :
         {IPMICTL_GET_MY_ADDRESS_CMD, IPMICTL_SET_MY_LUN_CMD,
          IPMICTL_SET_GETS_EVENTS_CMD, IPMICTL_SET_MAINTENANCE_MODE_CMD})
        EXPECT_EQ(ENODEV, arrived.control(request, &value)) << request;
    EXPECT_EQ(0, arrived.control(IPMICTL_GET_MAINTENANCE_MODE_CMD, &value));
    EXPECT_EQ(-ENODEV, value);
}

TEST_F(SimDevice, aForkedChildHasAControllerOfItsOwn)
{
    install();
    Client client;
    client.send(netFnApp, unknown, 7);
    ASSERT_TRUE(client.readable(5000));
    const pid_t child = fork();
    if (child == 0) {
        const bool sameAnswer = client.await() == refusal(7);
        client.send(netFnApp, unknown, 8);
        const bool ownAnswer = client.await() == refusal(8);
        _exit(sameAnswer && ownAnswer && !client.readable(0) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_TRUE(client.readable(0));
    EXPECT_EQ(refusal(7), client.await());
    EXPECT_EQ(1u, Device::exchanges().size());
}

} // namespace
