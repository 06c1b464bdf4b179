#include <atomic>
#include <climits>
#include <gtest/gtest.h>
#include <syslog.h>
#include <thread>

#include "ipmi/IpmiNode.h"
#include "tests/support/libc_seam.h"

using namespace Ipmi;
using State = IpmiIfc::IPMI_STATE;

namespace
{

using Lines = std::vector<Seam::LogLine>;

TEST(Node, theTableIsReadyBeforeAnythingIsInitialised)
{
    for (auto& node : g_IpmiNode) {
        VEK::MutexLock lock{node.stateMutex};
        EXPECT_EQ(node.state, IpmiIfc::STATE_INITIAL);
        EXPECT_EQ(node.pollingInterval, -1);
        EXPECT_EQ(node.signalCmdPipeFds[FD_READ], -1);
        EXPECT_EQ(node.signalCmdPipeFds[FD_WRITE], -1);
        EXPECT_EQ(node.devFd, 0);
    }
}

TEST(Node, aChangeOfStateIsRefusedExactlyWhenTheStateIsAnother)
{
    constexpr State states[] = {IpmiIfc::STATE_INITIAL, IpmiIfc::STATE_STARTING,
                                IpmiIfc::STATE_RUNNING, IpmiIfc::STATE_STOPPED,
                                IpmiIfc::STATE_CLI};
    for (const State current : states)
        for (const State from : states)
            for (const State to : states) {
                _setState(0, current);
                if (current == from)
                    _changeState(0, from, to);
                else
                    EXPECT_THROW(_changeState(0, from, to), CmpiStatus);
                EXPECT_EQ(_getState(0), current == from ? to : current);
            }
    _setState(0, IpmiIfc::STATE_INITIAL);
    Seam::takeLog();
    EXPECT_THROW(
        _changeState(3, IpmiIfc::STATE_STARTING, IpmiIfc::STATE_RUNNING),
        CmpiStatus);
    EXPECT_EQ(Seam::takeLog(),
              (Lines{{LOG_ERR, "IpmiIfc unexpected state transition: (2->4), "
                               "Current state 1"},
                     {LOG_ERR, "CmpiStatus error 200 IpmiIfc unexpected state "
                               "transition"}}));
    _changeState(3, IpmiIfc::STATE_INITIAL, IpmiIfc::STATE_STARTING);
    EXPECT_EQ(Seam::takeLog(),
              (Lines{{LOG_DEBUG, "IPMI Node 0: _changeState check passed"}}));
}

TEST(Node, waitingForAStateThatHoldsReturnsIt)
{
    const auto stopped = IpmiIfc::STATE_STOPPED;
    _setState(0, stopped);
    Seam::takeLog();
    EXPECT_EQ(IpmiIfc::waitState(2, IpmiIfc::STATE_RUNNING | stopped), stopped);
    EXPECT_EQ(IpmiIfc::timedWaitState(2, stopped, 1, 5), stopped);
    EXPECT_EQ(Seam::takeLog(),
              (Lines{{LOG_DEBUG, "Node 0: IpmiIfc::waitState (12) called"},
                     {LOG_DEBUG,
                      "Node 2: IpmiIfc::timedWaitState (8, 1, 5) called"}}));
}

// Many time-outs pass before the state comes: none may end the wait, and no
// odd time may keep the state from being set.
TEST(Node, aTimedWaitEndsOnlyWithTheState)
{
    const std::pair<long, long> times[] = {
        {1, 999999},   {0, 0},        {0, -1},       {LONG_MAX, 0},
        {LONG_MIN, 0}, {0, LONG_MAX}, {0, LONG_MIN}, {LONG_MAX, LONG_MAX}};
    Seam::setTimeScale(1000);
    for (const auto& [sec, usec] : times) {
        SCOPED_TRACE(testing::Message() << sec << ' ' << usec);
        _setState(0, IpmiIfc::STATE_STARTING);
        std::atomic<bool> returned{false};
        State seen = IpmiIfc::STATE_INITIAL;
        std::thread waiter{[&, sec = sec, usec = usec] {
            seen = IpmiIfc::timedWaitState(IpmiIfc::STATE_RUNNING, sec, usec);
            returned = true;
        }};
        usleep(10000);
        EXPECT_FALSE(returned);
        _changeState(0, IpmiIfc::STATE_STARTING, IpmiIfc::STATE_RUNNING);
        waiter.join();
        EXPECT_EQ(seen, IpmiIfc::STATE_RUNNING);
    }
}

TEST(Node, initialisingAgainForgetsTheIdentityAndKeepsTheRest)
{
    IpmiNode& node = g_IpmiNode[0];
    node.msgSeq = 7;
    {
        VEK::MutexLock lock{node.identityMutex};
        node.deviceId.deviceId = 0x20;
        node.deviceIdAnswered = true;
        node.selfTest[1] = 0x55;
    }
    node.signalCmdPipeFds[FD_READ] = 40;
    node.pollingInterval = 5;
    _setState(0, IpmiIfc::STATE_STOPPED);
    node.devFd = 42;
    node.shutdownFlag = true;
    IpmiIfc::registerSelEventHandler([](void*, IpmiSelData*) {}, nullptr);
    InitIpmiNode(0);
    EXPECT_EQ(node.msgSeq, 0x5a5);
    EXPECT_EQ(node.signalCmdPipeFds[FD_READ], -1);
    EXPECT_EQ(node.pollingInterval, -1);
    EXPECT_EQ(_getState(0), IpmiIfc::STATE_INITIAL);
    ipmiifc_device_id id;
    EXPECT_EQ(IpmiIfc::getManagementControllerInfo(id), 1);
    uint8_t result, detail;
    EXPECT_EQ(IpmiIfc::getSelfTestResults(result, detail), 1);
    EXPECT_EQ(node.devFd, 42);
    EXPECT_TRUE(node.shutdownFlag) << "a stopped node stays stopped";
    VEK::MutexLock lock{node.selMutex};
    EXPECT_EQ(node.selHandlers, nullptr);
}

TEST(Node, theLogLevelIsIgnored)
{
    setlogmask(LOG_MASK(LOG_ERR));
    SetLogLevel(LOG_LVL_ERROR);
    EXPECT_EQ(setlogmask(0), 0xff);
}

} // namespace
