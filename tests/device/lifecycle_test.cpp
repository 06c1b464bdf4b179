#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <syslog.h>
#include <thread>
#include <unistd.h>

#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiLoop.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

// What the loop asked of the areas, a letter each: s SEL, d SDR, r readings,
// f FRU, l LAN, h handlers, c clean-up.
std::mutex callsMutex;
std::string calls;
std::atomic<int> selEntries{0};
std::atomic<int> selFailures{0};
std::atomic<bool> areaThrows{false};

void note(char call)
{
    std::lock_guard<std::mutex> lock{callsMutex};
    calls += call;
}

std::string takeCalls()
{
    std::lock_guard<std::mutex> lock{callsMutex};
    return std::exchange(calls, {});
}

int selInfo(int, uint16_t* count)
{
    note('s');
    if (selFailures > 0 && selFailures--)
        return -1;
    *count = static_cast<uint16_t>(selEntries);
    return 0;
}

void sdr(int)
{
    note('d');
    if (areaThrows)
        throw CmpiStatus(CMPI_RC_ERR_FAILED, "an area");
}

template <char letter>
void noteIn(int)
{
    note(letter);
}

void calm(void* context, IpmiSelData* record)
{
    note(record || context != &calls ? '?' : 'h');
}

void throwing(void*, IpmiSelData*)
{
    note('t');
    throw CmpiStatus(CMPI_RC_ERR_FAILED);
}

class Lifecycle : public NodeFixture
{
protected:
    void SetUp() override
    {
        NodeFixture::SetUp();
        takeCalls();
        selEntries = 0;
        loopAreas = {selInfo,     sdr,         noteIn<'r'>,
                     noteIn<'f'>, noteIn<'l'>, noteIn<'c'>};
    }

    void TearDown() override
    {
        if (IpmiIfc::getState() == IpmiIfc::STATE_RUNNING)
            stopNode();
        IpmiIfcSelCleanUpEventHandlers(0);
        NodeFixture::TearDown();
    }

    void runNode()
    {
        startNode(0);
        EXPECT_EQ(waitUntilRunning(), IpmiIfc::STATE_RUNNING);
    }

    // One requested poll; what the loop did in it.
    std::string poll(IpmiIfc::IPMI_POLL_TYPE type = IpmiIfc::POLL_NORMAL)
    {
        takeCalls();
        IpmiIfc::pollAll(1, true, type, nullptr);
        return takeCalls();
    }

    // The poll count, and another one for it if one is given.
    static int pollCount(int next = -1)
    {
        VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
        return next < 0 ? g_IpmiNode[0].pollCount
                        : std::exchange(g_IpmiNode[0].pollCount, next);
    }
};

TEST_F(Lifecycle, aNodeFromStartToStop)
{
    runNode();
    EXPECT_EQ(IpmiIfc::GetBmcIpmiVersion(), "2.0");
    stopNode();
    EXPECT_EQ(takeCalls(), "slfc");
    EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    EXPECT_EQ(g_IpmiNode[0].signalCmdPipeFds[FD_WRITE], -1);
    EXPECT_THROW(IpmiIfc::stop(), CmpiStatus);
    EXPECT_EQ(logged("CmpiStatus error 200 IpmiIfc::stop called twice"), 1);
}

TEST_F(Lifecycle, whatEachPollDoes)
{
    constexpr auto normal = IpmiIfc::POLL_NORMAL, full = IpmiIfc::POLL_FULL,
                   readings = IpmiIfc::POLL_READINGS, skip = IpmiIfc::POLL_SKIP;
    selEntries = 5;
    runNode();
    IpmiIfc::registerSelEventHandler(calm, &calls);
    const struct
    {
        const char* what;
        int countBefore;
        IpmiIfc::IPMI_POLL_TYPE type;
        int entries; ///< New events: another number than in the row before.
        const char* calls;
        int countAfter;
    } cases[] = {
        {"a count", 1, normal, 5, "s", 2},
        {"readings", 2, readings, 5, "sr", 3},
        {"periodic, FRU not due", 7, normal, 5, "srhl", 8},
        {"new events", 8, normal, 6, "sdhfl", 16},
        {"periodic after a full pass", 15, normal, 6, "sdhfl", 16},
        {"and the next one", 23, normal, 6, "srhl", 24},
        {"forced", 24, full, 6, "sdhfl", 32},
        {"skip: nothing due", 8, skip, 6, "s", 9},
        {"skip a periodic pass", 39, skip, 6, "s", 47},
        {"skip does not hide events", 15, skip, 7, "sdhfl", 24},
        {"fewer events", 14, normal, 6, "sdhfl", 16},
        {"new events on an 8th poll", 15, normal, 7, "sdhfl", 24},
        {"readings for a periodic pass", 15, readings, 7, "sr", 23},
        {"readings and new events", 10, readings, 8, "sdhfl", 16},
        {"a cleared log", 40, normal, 1, "s", 41},
        {"on an 8th poll", 7, normal, 1, "sdhfl", 8},
        {"an emptied log", 8, normal, 0, "sdhfl", 16},
        {"a first event", 8, normal, 1, "sdhfl", 16},
        {"more", 8, normal, 5, "sdhfl", 16},
        {"forced of a cleared log", 9, full, 1, "sdhfl", 16},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        pollCount(c.countBefore);
        selEntries = c.entries;
        EXPECT_EQ(poll(c.type), c.calls);
        EXPECT_EQ(pollCount(), c.countAfter);
    }
}

TEST_F(Lifecycle, aPassOutlivesWhatIsThrownInIt)
{
    runNode();
    IpmiIfc::registerSelEventHandler(calm, &calls);
    IpmiIfc::registerSelEventHandler(throwing, nullptr);
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sdtfl") << "the walk ends, the pass "
                                                    "goes on";
    EXPECT_TRUE(Seam::waitForLog("Event handler ran into issues: (null)(1)"));
    areaThrows = true;
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sd");
    EXPECT_TRUE(Seam::waitForLog(
        "IPMI polling thread caught exception while polling node 0"));
    areaThrows = false;
    IpmiIfc::unRegisterSelEventHandler(throwing);
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sdhfl");
}

TEST_F(Lifecycle, aStopDuringAPassEndsItAtTheNextStep)
{
    const struct
    {
        void (*LoopAreas::*area)(int);
        const char* calls;
    } cases[] = {{&LoopAreas::sdr, "slfs"}, {&LoopAreas::fru, "slfsd"}};
    for (const auto& c : cases) {
        SetUp();
        runNode();
        loopAreas.*c.area = [](int) {
            g_IpmiNode[0].shutdownFlag = true;
        };
        {
            VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
            g_IpmiNode[0].pollType = IpmiIfc::POLL_FULL;
            IpmiIfc::doPoll();
        }
        joinNode();
        EXPECT_EQ(takeCalls(), c.calls);
        EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
        TearDown();
    }
}

TEST_F(Lifecycle, aFirstCountThatFailsIsNone)
{
    selFailures = 1;
    selEntries = 1; // new events when the count before was 0
    runNode();
    EXPECT_EQ(poll(), "sdfl");
}

// What was logged, after its priority if that is not debug. Two threads log:
// their lines come in any order, and how often the one had to wait for the
// other is a matter of luck.
using Lines = std::multiset<std::string>;
Lines takeLines()
{
    Lines result;
    for (const auto& [priority, text] : Seam::takeLog())
        result.insert(
            (priority == LOG_DEBUG ? "" : std::to_string(priority) + ' ') +
            text);
    result.erase("Poll not finished for node 0");
    return result;
}

// Every line of a request, serial and parallel, and of the pass that it asks
// for.
TEST_F(Lifecycle, whatIsLogged)
{
    std::thread early{[] {
        IpmiIfc::pollAll(1, true, IpmiIfc::POLL_FULL, nullptr);
    }};
    EXPECT_TRUE(
        Seam::waitForLog("Waiting for poll thread for node 0 to start"));
    startNode(0);
    early.join();
    pollCount(7);
    Seam::takeLog();
    poll(IpmiIfc::POLL_FULL);
    EXPECT_EQ(takeLines(),
              (Lines{"Going to do FULL POLL for node 0",
                     "Triggering poll for node 0, poll count = 7",
                     "Running threads serially, waiting for node 0 to complete",
                     "IpmiIfc::poll - new events detected or skip count "
                     "exceeded (skipRemaining = 0, entryCount = 0, "
                     "lastEntryCount = 0)",
                     "IpmiIfc::poll - Refreshing FRU"}));
    IpmiIfc::pollAll(1, false, IpmiIfc::POLL_NORMAL, nullptr);
    EXPECT_EQ(takeLines(),
              (Lines{"Triggering poll for node 0, poll count = 16",
                     "Running threads in parallel. Waiting for nodes to poll",
                     "pollAll: Nodes done polling"}));
    stopNode();
    EXPECT_EQ(takeLines(), (Lines{"Node 0: IpmiIfc poll thread exiting",
                                  "6 Node 0: IpmiIfc polling thread stopped.",
                                  "Node 0: IpmiIfc shutting down",
                                  "Node 0: IpmiIfc::waitState (12) called",
                                  "Node 0: IpmiIfc::waitState (8) called",
                                  "Poll loop ended, shutting down"}));
}

TEST_F(Lifecycle, failedStartsLeaveNothingOpen)
{
    removeDevice();
    const auto lowestFreeDescriptor = [] {
        const int fd = open("/dev/null", O_RDONLY);
        close(fd);
        return fd;
    };
    const int before = lowestFreeDescriptor();
    for (int i = 0; i < 3; ++i)
        IpmiIfc::start(0);
    IpmiIfc::stop();
    returnDevice();
    for (int i = 0; i < 3; ++i)
        IpmiIfc::start(0); // after the stop: ends at once
    EXPECT_EQ(lowestFreeDescriptor(), before);
}

TEST_F(Lifecycle, theSelCountIsTriedTenTimes)
{
    runNode();
    selFailures = 3;
    EXPECT_EQ(poll(), "ssss");
    Seam::takeLog();
    selFailures = 10;
    EXPECT_EQ(poll(), "ssssssssss");
    const auto log = takeLines();
    EXPECT_EQ(log.count("Retrying IpmiIfcSelGetInfo"), 1u);
    EXPECT_EQ(log.count("4 Could not get SEL info for node 0 after 10 tries"),
              1u);
}

TEST_F(Lifecycle, theIntervalIsInUnitsOfSixteenSeconds)
{
    startNode(2);
    waitUntilRunning();
    EXPECT_TRUE(
        Seam::waitForLog("Node 0: IpmiIfc::poll sleeping for 32 second(s)"));
    EXPECT_TRUE(Seam::waitForLog("Node 0: IpmiIfc::poll woke up."));
    EXPECT_EQ(IpmiIfc::getPollingInterval(), 2);
    IpmiIfc::setPollingInterval(3);
    EXPECT_TRUE(
        Seam::waitForLog("Node 0: IpmiIfc::poll sleeping for 48 second(s)"));
}

TEST_F(Lifecycle, aPollOfTypeNoneDoesNothing)
{
    runNode();
    const int before = pollCount();
    takeCalls();
    std::thread caller{[] {
        IpmiIfc::pollAll(1, false, IpmiIfc::POLL_NONE, nullptr);
    }};
    EXPECT_TRUE(Seam::waitForLog("Poll signaled for Node 0 with poll type "
                                 "NONE. No poll performed"));
    EXPECT_TRUE(Seam::waitForLog("Poll not finished for node 0"));
    EXPECT_EQ(pollCount(), before);
    EXPECT_EQ(takeCalls(), "");
    {
        // A poll of another type is what the caller waits for.
        VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
        IpmiIfc::doPoll();
    }
    caller.join();
    EXPECT_EQ(takeCalls(), "s");
}

// The first call of a process scales the steps: a process a row. Four records
// exist, so the node count of a row above that shows in the arithmetic only.
TEST_F(Lifecycle, theFirstRequestScalesTheSteps)
{
    bool shutdown = true; // Nodes 1 to 3 never start.
    runNode();
    IpmiIfc::pollAll(20, false, IpmiIfc::POLL_NORMAL, &shutdown);
    EXPECT_EQ(SKIP_SDR_STEP, 600);
    EXPECT_EQ(SKIP_FRU_STEP, 600);
    EXPECT_TRUE(Seam::waitForLog(
        "Shutdown signal received. Returning from IpmiIfc::pollAll()"));
    IpmiIfc::pollAll(2, false, IpmiIfc::POLL_NORMAL, &shutdown);
    EXPECT_EQ(SKIP_SDR_STEP, 600) << "once in a process";
}

TEST_F(Lifecycle, countsOutsideTheTableServeTheRecordsThatExist)
{
    runNode();
    IpmiIfc::pollAll(0, false, IpmiIfc::POLL_NORMAL, nullptr);
    IpmiIfc::pollAll(-3, true, IpmiIfc::POLL_NORMAL, nullptr);
    EXPECT_EQ(SKIP_SDR_STEP, 0);
    pollCount(7);
    EXPECT_EQ(poll(), "sdl") << "a step of 0 counts as 1";
}

// Stand-ins for polling threads of all four records.
TEST_F(Lifecycle, fullPollsAreSharedOut)
{
    const struct
    {
        int nodeCount;
        bool postponed[NODE_COUNT];
    } cases[] = {{1, {}},
                 {4, {false, true, true, true}},
                 {8, {false, true, true, true}},
                 {9, {false, false, true, true}},
                 {20, {false, false, false, true}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nodeCount);
        for (auto& node : g_IpmiNode) {
            node.shutdownFlag = true; // Nobody polls: do not wait for it.
            VEK::MutexLock lock{node.pollMutex};
            node.pollCount = 15;
        }
        IpmiIfc::pollAll(c.nodeCount, false, IpmiIfc::POLL_NORMAL, nullptr);
        for (int i = 0; i < c.nodeCount && i < int(NODE_COUNT); ++i) {
            VEK::MutexLock lock{g_IpmiNode[i].pollMutex};
            EXPECT_EQ(g_IpmiNode[i].pollCount, c.postponed[i] ? 14 : 15)
                << "node " << i;
        }
    }
}

TEST_F(Lifecycle, aStartThatFails)
{
    using Seam::Call;
    const std::string flags = "100 UnnamedPipe::UnnamedPipe: fcntl(g_IpmiNode["
                              "NodeNum].signalCmdPipeFds[";
    const struct
    {
        Call call; ///< `count`: all go well, but the user is not root.
        int nth;
        std::string text;
    } cases[] = {
        {Call::count, 1, "2 Only root user allowed"},
        {Call::pipe, 1, "100 UnnamedPipe::UnnamedPipe: pipe failed"},
        {Call::getFlags, 1, flags + "FD_READ], F_GETFL, 0) failed"},
        {Call::setFlags, 1, flags + "FD_READ], F_SETFL, fdflags) failed"},
        {Call::getFlags, 2, flags + "FD_WRITE], F_GETFL, 0) failed"},
        {Call::setFlags, 2, flags + "FD_WRITE], F_SETFL, fdflags) failed"},
    };
    for (const auto& c : cases) {
        Seam::setUserId(c.call == Call::count ? 1000 : 0);
        if (c.call != Call::count)
            Seam::failNth(c.call, c.nth, EBADF);
        EXPECT_THROW(IpmiIfc::start(0), CmpiStatus);
        const auto log = texts(Seam::takeLog());
        EXPECT_EQ(log[log.size() - 2], "CmpiStatus error " + c.text);
        EXPECT_EQ(log.back(), "Node 0: IpmiIfc polling thread stopped.");
        EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
        Seam::setUserId(0);
    }
}

TEST_F(Lifecycle, aDeviceThatDoesNotOpen)
{
    removeDevice();
    IpmiIfc::start(2, 1);
    const auto log = texts(Seam::takeLog());
    ASSERT_EQ(log.size(), 7u);
    EXPECT_EQ(log[0], "Node 2: IpmiIfc::start(1)");
    EXPECT_EQ(log[2], "Node 0: IpmiIfc starting initialization");
    EXPECT_EQ(log[3], "IpmiIfcOpenIpmiOpen: open(/dev/ipmi0, RDWR) failed 2 No "
                      "such file or directory");
    EXPECT_EQ(log[4], "Node 0: Unable to open node, Error(2):No such file or "
                      "directory");
    EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
    EXPECT_EQ(takeCalls(), "");
    IpmiIfc::stop();
}

TEST_F(Lifecycle, aStopBeforeTheStartHasEnded)
{
    for (const bool started : {false, true}) {
        resetNode();
        serve({"cmd=01,lost"});
        if (started) {
            startNode(0);
            waitForExchange();
        }
        std::thread stopper{[] {
            IpmiIfc::stop();
        }};
        if (!started) {
            Seam::waitForLog("Node 0: IpmiIfc shutting down");
            startNode(0);
        }
        stopper.join();
        joinNode();
        EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
        EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    }
}

TEST_F(Lifecycle, aStopWhileAnotherThreadWaitsForAnAnswer)
{
    serve({"netfn=00,cmd=01,lost"});
    runNode();
    int result = 0;
    std::thread caller{[&] {
        result = sendChassisStatus();
    }};
    waitForExchange(0x00, 0x01);
    Seam::takeLog();
    stopNode();
    caller.join();
    EXPECT_EQ(result, 0xff);
    EXPECT_EQ(logged("Node 0: poll(fd="), 0) << "woken, not timed out";
}

TEST_F(Lifecycle, aNodeAnswersAgainWhenItsDeviceIsBack)
{
    runNode();
    removeDevice();
    EXPECT_EQ(sendChassisStatus(), 0xff);
    Seam::takeLog();
    poll();
    poll();
    EXPECT_EQ(logged("the IPMI device is lost"), 1);
    EXPECT_EQ(sendChassisStatus(), 0xff);
    returnDevice();
    poll();
    EXPECT_EQ(logged("the IPMI device is open again"), 1);
    EXPECT_EQ(sendChassisStatus(), 0);
}

} // namespace
