// What the probe (sim/probe/probe.cpp) cannot ask of a real driver: answers
// that fail, events, a device that goes away, time.
#include "sim/device/device.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ostream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/epoll.h>
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
constexpr uint8_t netFnApp = 0x06, netFnOem = 0x2E, getDeviceId = 0x01;

struct Received
{
    int error = 0;
    int type = 0;
    long id = 0;
    uint8_t netFn = 0, command = 0;
    Bytes data;

    bool operator==(const Received& other) const
    {
        return error == other.error && type == other.type && id == other.id &&
               netFn == other.netFn && command == other.command &&
               data == other.data;
    }
};

std::ostream& operator<<(std::ostream& out, const Received& r)
{
    out << "error " << r.error << " type " << r.type << " id " << r.id
        << std::hex << " netfn " << int(r.netFn) << " cmd " << int(r.command);
    for (uint8_t byte : r.data)
        out << ' ' << int(byte);
    return out << std::dec;
}

/// One open handle, as a client of the driver uses it.
class Client
{
public:
    explicit Client(const char* path = "/dev/ipmi0")
        : descriptor_(::open(path, O_RDWR | O_CLOEXEC)), error_(errno)
    {}
    ~Client()
    {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    int descriptor() const { return descriptor_; }
    int openError() const { return descriptor_ < 0 ? error_ : 0; }

    int control(unsigned long request, void* argument)
    {
        return ioctl(descriptor_, request, argument) < 0 ? errno : 0;
    }
    int send(uint8_t netFn, uint8_t command, long id = 1, Bytes data = {})
    {
        ipmi_system_interface_addr to{IPMI_SYSTEM_INTERFACE_ADDR_TYPE,
                                      IPMI_BMC_CHANNEL, 0};
        return sendTo(&to, sizeof to, netFn, command, id, data);
    }
    int sendTo(void* to, unsigned size, uint8_t netFn, uint8_t command, long id,
               Bytes& data)
    {
        ipmi_req request{static_cast<unsigned char*>(to), size, id, {}};
        request.msg = {netFn, command, uint16_t(data.size()), data.data()};
        return control(IPMICTL_SEND_COMMAND, &request);
    }
    bool readable(int timeoutMs)
    {
        pollfd waiting{descriptor_, POLLIN, 0};
        return ::poll(&waiting, 1, timeoutMs) == 1;
    }
    Received receive()
    {
        ipmi_addr from{};
        uint8_t buffer[512];
        ipmi_recv into{};
        into.addr = reinterpret_cast<unsigned char*>(&from);
        into.addr_len = sizeof from;
        into.msg.data = buffer;
        into.msg.data_len = sizeof buffer;
        if (const int error = control(IPMICTL_RECEIVE_MSG_TRUNC, &into))
            return {error, 0, 0, 0, 0, {}};
        return {0,
                into.recv_type,
                into.msgid,
                into.msg.netfn,
                into.msg.cmd,
                Bytes(buffer, buffer + into.msg.data_len)};
    }
    Received await()
    {
        readable(5000);
        return receive();
    }

private:
    int descriptor_;
    int error_;
};

Received answer(uint8_t netFn, uint8_t command, Bytes data, long id = 1)
{
    return {0,       IPMI_RESPONSE_RECV_TYPE, id, uint8_t(netFn | 1),
            command, std::move(data)};
}

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
        Sim::Setup setup;
        setup.faults = {rule};
        Device::install(Sim::makeController(setup, mistakes));
        ASSERT_TRUE(mistakes.empty()) << rule;
    }
    void TearDown() override { Device::reset(); }
};

TEST_F(SimDevice, onlyAnInstalledControllerIsThere)
{
    EXPECT_EQ(ENOENT, Client().openError());
    install();
    const struct
    {
        const char* path;
        int error;
    } rows[] = {{"/dev/ipmi0", 0},     {"/dev/ipmi/0", 0},
                {"/dev/ipmidev/0", 0}, {"/dev/ipmi1", ENOENT},
                {"/dev/ipmi", ENOENT}, {"/dev/ipmi00", ENOENT},
                {"/dev/null", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(row.error, Client(row.path).openError()) << row.path;
    EXPECT_EQ(ENOTTY, Client("/dev/null").send(netFnApp, getDeviceId));
}

TEST_F(SimDevice, aNumberThatWasClosedBehindTheLayersBackIsUsedAgain)
{
    install();
    const int first = open("/dev/ipmi0", O_RDWR);
    syscall(SYS_close, first);
    Client again;
    EXPECT_EQ(0, again.openError());
    EXPECT_GE(fcntl(first, F_GETFD), 0) << "closed with the old handle";
    EXPECT_EQ(0, again.send(netFnApp, 0xFE, 5));
    EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}, 5), again.await());
}

TEST_F(SimDevice, silenceIsAnsweredByTheDriver)
{
    install({{netFnOem, 1, {}, {}}});
    Device::setTimeScale(lessShortened);
    Client silent, behind;
    silent.send(netFnOem, 1, 5);
    behind.send(netFnApp, 0xFE, 6);
    // The controller serves one at a time: who comes later waits.
    EXPECT_FALSE(behind.readable(0));
    EXPECT_EQ(EAGAIN, silent.receive().error);
    EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}, 6), behind.await());
    EXPECT_EQ(answer(netFnOem, 1, {0xC3}, 5), silent.receive());
}

TEST_F(SimDevice, anAnswerThatIsTooLongIsCutByTheDriver)
{
    install({{netFnOem, 1, {}, Bytes(271, 0)}, {netFnOem, 2, {}, Bytes(270)}});
    Client client;
    Bytes cut(270, 0);
    cut[0] = 0xC6;
    client.send(netFnOem, 1);
    EXPECT_EQ(answer(netFnOem, 1, cut), client.await());
    client.send(netFnOem, 2);
    EXPECT_EQ(answer(netFnOem, 2, Bytes(270)), client.await());
}

TEST_F(SimDevice, faultsAreWhatTheDriverMakesOfThem)
{
    const uint8_t unknown = 0xFE;
    const auto answered = [&](uint8_t code) {
        return answer(netFnApp, unknown, {code});
    };
    const Received nothing{EAGAIN, 0, 0, 0, 0, {}};
    const struct
    {
        const char* rule;
        int sendError;
        Received received;
    } rows[] = {{"cc=d1", 0, answered(0xD1)},
                {"answer-netfn=09", 0, answered(0xFF)},
                {"answer-cmd=01", 0, answered(0xFF)},
                {"cut=0", 0, answered(0xC3)},
                {"silence", 0, answered(0xC3)},
                {"delay=3900", 0, answered(0xC1)},
                {"delay=4000", 0, answered(0xC3)},
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
    installFaulty("open-errno=EACCES,count=1");
    EXPECT_EQ(EACCES, Client().openError());
    EXPECT_EQ(0, Client().openError());
}

TEST_F(SimDevice, aDeviceThatVanishesForAWhileComesBackByItself)
{
    installFaulty("vanish=2000,count=1");
    Device::setTimeScale(lessShortened);
    Client old;
    EXPECT_EQ(0, old.send(netFnApp, getDeviceId)) << "lost in silence";
    EXPECT_EQ(ENOENT, Client().openError());
    EXPECT_FALSE(old.readable(300));
    EXPECT_EQ(0, Client().openError());
    EXPECT_EQ(ENODEV, old.send(netFnApp, getDeviceId));
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
        ipmi_ipmb_addr to{IPMI_IPMB_ADDR_TYPE, 0, 0x52, 0};
        Bytes none;
        const auto sent = std::chrono::steady_clock::now();
        ASSERT_EQ(
            0, client.sendTo(&to, sizeof to, netFnApp, getDeviceId, 1, none));
        EXPECT_EQ(answer(netFnApp, getDeviceId, {0xC3}), client.await());
        EXPECT_GE(std::chrono::steady_clock::now() - sent,
                  std::chrono::milliseconds(row.leastMs));
    }
}

Received eventOf(const Bytes& bytes)
{
    return {0, IPMI_ASYNC_EVENT_RECV_TYPE, 0, 0x07, 0x35, bytes};
}

TEST_F(SimDevice, eventsGoToAllWhoWantThem)
{
    install();
    Client one, two, other;
    int yes = 1;
    const Bytes early(16, 1), late(16, 2);
    Device::injectEvent(early);
    EXPECT_EQ(EAGAIN, one.receive().error);
    ASSERT_EQ(0, one.control(IPMICTL_SET_GETS_EVENTS_CMD, &yes));
    ASSERT_EQ(0, two.control(IPMICTL_SET_GETS_EVENTS_CMD, &yes));
    EXPECT_EQ(eventOf(early), one.await()) << "kept for the first";
    std::thread injector([&] { Device::injectEvent(late); });
    EXPECT_EQ(eventOf(late), two.await());
    injector.join();
    EXPECT_EQ(eventOf(late), one.await());
    EXPECT_EQ(EAGAIN, two.receive().error);
    EXPECT_EQ(EAGAIN, other.receive().error);
}

TEST_F(SimDevice, noMoreThan25EventsAreKept)
{
    install();
    for (uint8_t i = 0; i < 40; ++i)
        Device::injectEvent(Bytes(16, i));
    Client client;
    int yes = 1;
    client.control(IPMICTL_SET_GETS_EVENTS_CMD, &yes);
    for (uint8_t i = 0; i < 25; ++i)
        EXPECT_EQ(eventOf(Bytes(16, i)), client.receive());
    EXPECT_EQ(EAGAIN, client.receive().error);
}

TEST_F(SimDevice, aDeviceThatVanishesLeavesItsHandlesDeadForEver)
{
    install({{netFnOem, 1, {}, {}}});
    Device::setTimeScale(lessShortened);
    Client arrived, inFlight;
    arrived.send(netFnApp, 0xFE);
    ASSERT_TRUE(arrived.readable(5000));
    inFlight.send(netFnOem, 1);
    Device::vanish();
    EXPECT_EQ(ENOENT, Client().openError());
    EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}), arrived.await());
    EXPECT_FALSE(inFlight.readable(500));
    EXPECT_EQ(EAGAIN, inFlight.receive().error);
    Device::comeBack();
    Client fresh;
    EXPECT_EQ(0, fresh.send(netFnApp, 0xFE));
    EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}), fresh.await());

    int value = 0;
    ipmi_timing_parms timing{};
    EXPECT_EQ(ENODEV, arrived.send(netFnApp, getDeviceId));
    const struct
    {
        unsigned long request;
        void* argument;
        int error;
    } rows[] = {{IPMICTL_GET_MY_ADDRESS_CMD, &value, ENODEV},
                {IPMICTL_SET_MY_LUN_CMD, &value, ENODEV},
                {IPMICTL_SET_GETS_EVENTS_CMD, &value, ENODEV},
                {IPMICTL_SET_MAINTENANCE_MODE_CMD, &value, ENODEV},
                {IPMICTL_GET_TIMING_PARMS_CMD, &timing, 0},
                {IPMICTL_GET_MAINTENANCE_MODE_CMD, &value, 0}};
    for (const auto& row : rows)
        EXPECT_EQ(row.error, arrived.control(row.request, row.argument));
    EXPECT_EQ(-ENODEV, value);
}

TEST_F(SimDevice, aForkedChildHasAControllerOfItsOwn)
{
    install();
    Client client;
    client.send(netFnApp, 0xFE, 7);
    ASSERT_TRUE(client.readable(5000));
    const pid_t child = fork();
    if (child == 0) {
        const bool sameAnswer =
            client.await() == answer(netFnApp, 0xFE, {0xC1}, 7);
        client.send(netFnApp, 0xFD, 8);
        const bool ownAnswer =
            client.await() == answer(netFnApp, 0xFD, {0xC1}, 8);
        _exit(sameAnswer && ownAnswer && !client.readable(0) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_TRUE(client.readable(0));
    EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}, 7), client.await());
    EXPECT_EQ(1u, Device::exchanges().size());
}

TEST_F(SimDevice, epollSeesAnswersAsTheyComeAndGo)
{
    install();
    Client client;
    const int set = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{EPOLLIN, {}};
    ASSERT_EQ(0, epoll_ctl(set, EPOLL_CTL_ADD, client.descriptor(), &event));
    EXPECT_EQ(0, epoll_wait(set, &event, 1, 0));
    client.send(netFnApp, 0xFE);
    EXPECT_EQ(1, epoll_wait(set, &event, 1, 5000));
    client.receive();
    EXPECT_EQ(0, epoll_wait(set, &event, 1, 0));
    ::close(set);
}

TEST_F(SimDevice, threadsWithHandlesOfTheirOwnGetTheirOwnAnswers)
{
    install();
    const auto converse = [](long base) {
        Client client;
        for (long i = 0; i < 50; ++i) {
            client.send(netFnApp, 0xFE, base + i);
            EXPECT_EQ(answer(netFnApp, 0xFE, {0xC1}, base + i), client.await());
        }
    };
    std::thread one(converse, 1000), two(converse, 2000);
    one.join();
    two.join();
    EXPECT_EQ(100u, Device::exchanges().size());
}

} // namespace
