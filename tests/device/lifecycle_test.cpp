#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mutex>
#include <syslog.h>
#include <thread>
#include <unistd.h>

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

void handler(void* context, IpmiSelData* record)
{
    note(record || !context ? '?' : 'h');
}

void throwingHandler(void*, IpmiSelData*)
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
        loopAreas = {selInfo,
                     sdr,
                     [](int) { note('r'); },
                     [](int) { note('f'); },
                     [](int) { note('l'); },
                     [](int) {
                         note('c');
                     }};
    }

    // One requested poll; what the loop did in it.
    std::string poll(IpmiIfc::IPMI_POLL_TYPE type)
    {
        takeCalls();
        IpmiIfc::pollAll(1, true, type, nullptr);
        return takeCalls();
    }

    int pollCount()
    {
        VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
        return g_IpmiNode[0].pollCount;
    }

    void setPollCount(int count)
    {
        VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
        g_IpmiNode[0].pollCount = count;
    }

    static int lowestFreeDescriptor()
    {
        const int fd = open("/dev/null", O_RDONLY);
        close(fd);
        return fd;
    }

    void setHandlers(SelHandlerEntry* first)
    {
        VEK::MutexLock lock{g_IpmiNode[0].selMutex};
        g_IpmiNode[0].selHandlers = first;
    }
};

TEST_F(Lifecycle, aNodeFromStartToStop)
{
    startNode(0);
    EXPECT_EQ(waitUntilRunning(), IpmiIfc::STATE_RUNNING);
    EXPECT_EQ(IpmiIfc::GetBmcIpmiVersion(), "2.0");
    stopNode();
    EXPECT_EQ(takeCalls(), "slfc");
    EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
    EXPECT_EQ(g_IpmiNode[0].devFd, -1);
    EXPECT_EQ(g_IpmiNode[0].signalCmdPipeFds[FD_WRITE], -1);
    try {
        IpmiIfc::stop();
        ADD_FAILURE() << "a second stop has to throw";
    } catch (const CmpiStatus& e) {
        EXPECT_EQ(e.rc(), CMPI_RC_ERROR);
    }
    EXPECT_EQ(
        Seam::takeLog().back(),
        (Seam::LogLine{LOG_ERR, "CmpiStatus error 200 IpmiIfc::stop called "
                                "twice"}));
}

TEST_F(Lifecycle, whatEachPollDoes)
{
    int context = 0;
    SelHandlerEntry last{nullptr, handler, &context};
    SelHandlerEntry empty{&last, nullptr, nullptr};
    selEntries = 5;
    startNode(0);
    waitUntilRunning();
    setHandlers(&empty);
    const struct
    {
        const char* what;
        int countBefore;
        IpmiIfc::IPMI_POLL_TYPE type;
        int entries;
        const char* calls;
        int countAfter;
    } cases[] = {
        {"a count", 1, IpmiIfc::POLL_NORMAL, 5, "s", 2},
        {"readings", 2, IpmiIfc::POLL_READINGS, 5, "sr", 3},
        {"periodic: readings, FRU not due", 7, IpmiIfc::POLL_NORMAL, 5, "srhl",
         8},
        {"new events", 8, IpmiIfc::POLL_NORMAL, 6, "sdhfl", 16},
        {"periodic after a full pass: SDR, FRU", 15, IpmiIfc::POLL_NORMAL, 6,
         "sdhfl", 16},
        {"and the next one", 23, IpmiIfc::POLL_NORMAL, 6, "srhl", 24},
        {"forced", 24, IpmiIfc::POLL_FULL, 6, "sdhfl", 32},
        {"skipped", 39, IpmiIfc::POLL_SKIP, 6, "s", 47},
        {"a cleared log", 40, IpmiIfc::POLL_NORMAL, 1, "s", 41},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        setPollCount(c.countBefore);
        selEntries = c.entries;
        EXPECT_EQ(poll(c.type), c.calls);
        EXPECT_EQ(pollCount(), c.countAfter);
    }
    setHandlers(nullptr);
    stopNode();
}

TEST_F(Lifecycle, aPassOutlivesWhatIsThrownInIt)
{
    int context = 0;
    SelHandlerEntry behind{nullptr, handler, &context};
    SelHandlerEntry throwing{&behind, throwingHandler, nullptr};
    startNode(0);
    waitUntilRunning();
    setHandlers(&throwing);
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sdtfl") << "the walk ends, the pass "
                                                    "goes on";
    EXPECT_TRUE(Seam::waitForLog("Event handler ran into issues: (null)(1)"));
    areaThrows = true;
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sd");
    EXPECT_TRUE(Seam::waitForLog(
        "IPMI polling thread caught exception while polling node 0"));
    areaThrows = false;
    setHandlers(&behind);
    EXPECT_EQ(poll(IpmiIfc::POLL_FULL), "sdhfl");
    setHandlers(nullptr);
    stopNode();
}

TEST_F(Lifecycle, aStopDuringAPassEndsItAtTheNextStep)
{
    static void (*const stopNow)(int) = [](int) {
        g_IpmiNode[0].shutdownFlag = true;
    };
    const struct
    {
        const char* what;
        void (*LoopAreas::*area)(int);
        const char* calls;
    } cases[] = {{"in the SDR's", &LoopAreas::sdr, "slfs"},
                 {"in the FRU's", &LoopAreas::fru, "slfsd"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        startNode(0);
        waitUntilRunning();
        loopAreas.*c.area = stopNow;
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
    startNode(0);
    waitUntilRunning();
    EXPECT_EQ(poll(IpmiIfc::POLL_NORMAL), "sdfl");
    stopNode();
}

// Two threads log: their lines come in any order, and how often the one had
// to wait for the other is a matter of luck.
std::vector<Seam::LogLine> sorted(std::vector<Seam::LogLine> lines)
{
    const Seam::LogLine again{LOG_DEBUG, "Poll not finished for node 0"};
    lines.erase(std::remove(lines.begin(), lines.end(), again), lines.end());
    std::sort(lines.begin(), lines.end(),
              [](const auto& a, const auto& b) { return a.text < b.text; });
    return lines;
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
    setPollCount(7);
    Seam::takeLog();
    poll(IpmiIfc::POLL_FULL);
    EXPECT_EQ(
        sorted(Seam::takeLog()),
        sorted({{LOG_DEBUG, "Going to do FULL POLL for node 0"},
                {LOG_DEBUG, "Triggering poll for node 0, poll count = 7"},
                {LOG_DEBUG, "Running threads serially, waiting for node 0 to "
                            "complete"},
                {LOG_DEBUG,
                 "IpmiIfc::poll - new events detected or skip count exceeded "
                 "(skipRemaining = 0, entryCount = 0, lastEntryCount = 0)"},
                {LOG_DEBUG, "IpmiIfc::poll - Refreshing FRU"}}));
    IpmiIfc::pollAll(1, false, IpmiIfc::POLL_NORMAL, nullptr);
    EXPECT_EQ(
        sorted(Seam::takeLog()),
        sorted({{LOG_DEBUG, "Triggering poll for node 0, poll count = 16"},
                {LOG_DEBUG, "Running threads in parallel. Waiting for nodes "
                            "to poll"},
                {LOG_DEBUG, "pollAll: Nodes done polling"}}));
    stopNode();
    EXPECT_EQ(sorted(Seam::takeLog()),
              sorted({{LOG_DEBUG, "Node 0: IpmiIfc poll thread exiting"},
                      {LOG_INFO, "Node 0: IpmiIfc polling thread stopped."},
                      {LOG_DEBUG, "Node 0: IpmiIfc shutting down"},
                      {LOG_DEBUG, "Node 0: IpmiIfc::waitState (12) called"},
                      {LOG_DEBUG, "Node 0: IpmiIfc::waitState (8) called"},
                      {LOG_DEBUG, "Poll loop ended, shutting down"}}));
}

TEST_F(Lifecycle, failedStartsLeaveNothingOpen)
{
    removeDevice();
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
    startNode(0);
    waitUntilRunning();
    selFailures = 3;
    EXPECT_EQ(poll(IpmiIfc::POLL_NORMAL), "ssss");
    Seam::takeLog();
    selFailures = 10;
    EXPECT_EQ(poll(IpmiIfc::POLL_NORMAL), "ssssssssss");
    const auto log = Seam::takeLog();
    const auto times = [&](int priority, const char* text) {
        return std::count(log.begin(), log.end(),
                          Seam::LogLine{priority, text});
    };
    EXPECT_EQ(times(LOG_DEBUG, "Retrying IpmiIfcSelGetInfo"), 1);
    EXPECT_EQ(
        times(LOG_WARNING, "Could not get SEL info for node 0 after 10 tries"),
        1);
    stopNode();
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
    stopNode();
}

TEST_F(Lifecycle, aPollOfTypeNoneDoesNothing)
{
    startNode(0);
    waitUntilRunning();
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
    stopNode();
}

// The first call of a process scales the steps: a process a row. Four records
// exist, so the node count of a row above that shows in the arithmetic only.
TEST_F(Lifecycle, theFirstRequestScalesTheSteps)
{
    bool shutdown = true; // Nodes 1 to 3 never start.
    startNode(0);
    waitUntilRunning();
    IpmiIfc::pollAll(20, false, IpmiIfc::POLL_NORMAL, &shutdown);
    EXPECT_EQ(SKIP_SDR_STEP, 600);
    EXPECT_EQ(SKIP_FRU_STEP, 600);
    EXPECT_TRUE(Seam::waitForLog(
        "Shutdown signal received. Returning from IpmiIfc::pollAll()"));
    IpmiIfc::pollAll(2, false, IpmiIfc::POLL_NORMAL, &shutdown);
    EXPECT_EQ(SKIP_SDR_STEP, 600) << "once in a process";
    stopNode();
}

TEST_F(Lifecycle, countsOutsideTheTableServeTheRecordsThatExist)
{
    startNode(0);
    waitUntilRunning();
    IpmiIfc::pollAll(0, false, IpmiIfc::POLL_NORMAL, nullptr);
    IpmiIfc::pollAll(-3, true, IpmiIfc::POLL_NORMAL, nullptr);
    EXPECT_EQ(SKIP_SDR_STEP, 0);
    setPollCount(7);
    EXPECT_EQ(poll(IpmiIfc::POLL_NORMAL), "sdl") << "a step of 0 counts as 1";
    stopNode();
}

// Stand-ins for polling threads of all four records.
TEST_F(Lifecycle, fullPollsAreSharedOut)
{
    const struct
    {
        int nodeCount;
        bool postponed[NODE_COUNT];
    } cases[] = {
        {1, {false}},
        {4, {false, true, true, true}},
        {8, {false, true, true, true}},
        {9, {false, false, true, true}},
        {20, {false, false, false, true}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nodeCount);
        for (auto& node : g_IpmiNode) {
            node.shutdownFlag = true; // Nobody polls: do not wait for it.
            VEK::MutexLock lock{node.pollMutex};
            node.pollCount = 15;
        }
        IpmiIfc::pollAll(c.nodeCount, false, IpmiIfc::POLL_NORMAL, nullptr);
        for (int i = 0; i < std::min(c.nodeCount, int(NODE_COUNT)); ++i) {
            VEK::MutexLock lock{g_IpmiNode[i].pollMutex};
            EXPECT_EQ(g_IpmiNode[i].pollCount, c.postponed[i] ? 14 : 15)
                << "node " << i;
        }
    }
}

TEST_F(Lifecycle, aStartThatFails)
{
    const struct
    {
        const char* what;
        void (*arrange)();
        CMPIrc rc;
        const char* text;
    } cases[] = {
        {"not root", [] { Seam::setUserId(1000); }, CMPI_RC_ERR_ACCESS_DENIED,
         "Only root user allowed"},
        {"no pipe", [] { Seam::failNth(Seam::Call::pipe, 1, EMFILE); },
         CMPI_RC_ERROR_SYSTEM, "UnnamedPipe::UnnamedPipe: pipe failed"},
        {"reading flags, read end",
         [] { Seam::failNth(Seam::Call::getFlags, 1, EBADF); },
         CMPI_RC_ERROR_SYSTEM,
         "UnnamedPipe::UnnamedPipe: fcntl(g_IpmiNode[NodeNum]."
         "signalCmdPipeFds[FD_READ], F_GETFL, 0) failed"},
        {"setting flags, read end",
         [] { Seam::failNth(Seam::Call::setFlags, 1, EBADF); },
         CMPI_RC_ERROR_SYSTEM,
         "UnnamedPipe::UnnamedPipe: fcntl(g_IpmiNode[NodeNum]."
         "signalCmdPipeFds[FD_READ], F_SETFL, fdflags) failed"},
        {"reading flags, write end",
         [] { Seam::failNth(Seam::Call::getFlags, 2, EBADF); },
         CMPI_RC_ERROR_SYSTEM,
         "UnnamedPipe::UnnamedPipe: fcntl(g_IpmiNode[NodeNum]."
         "signalCmdPipeFds[FD_WRITE], F_GETFL, 0) failed"},
        {"setting flags, write end",
         [] { Seam::failNth(Seam::Call::setFlags, 2, EBADF); },
         CMPI_RC_ERROR_SYSTEM,
         "UnnamedPipe::UnnamedPipe: fcntl(g_IpmiNode[NodeNum]."
         "signalCmdPipeFds[FD_WRITE], F_SETFL, fdflags) failed"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.arrange();
        Seam::takeLog();
        try {
            IpmiIfc::start(0);
            ADD_FAILURE() << "start returned";
        } catch (const CmpiStatus& e) {
            EXPECT_EQ(e.rc(), c.rc);
        }
        const auto log = Seam::takeLog();
        EXPECT_EQ(log[log.size() - 2].text,
                  "CmpiStatus error " + std::to_string(c.rc) + " " + c.text);
        EXPECT_EQ(log.back().text, "Node 0: IpmiIfc polling thread stopped.");
        EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
        Seam::setUserId(0);
    }
}

TEST_F(Lifecycle, aDeviceThatDoesNotOpen)
{
    removeDevice();
    IpmiIfc::start(2, 1);
    EXPECT_EQ(texts(Seam::takeLog()),
              (std::vector<std::string>{
                  "Node 2: IpmiIfc::start(1)",
                  "IPMI Node 0: _changeState check passed",
                  "Node 0: IpmiIfc starting initialization",
                  "IpmiIfcOpenIpmiOpen: open(/dev/ipmi0, RDWR) failed 2 No "
                  "such file or directory",
                  "Node 0: Unable to open node, Error(2):No such file or "
                  "directory",
                  "IPMI Node 0: _changeState check passed",
                  "Node 0: IpmiIfc polling thread stopped."}));
    EXPECT_EQ(
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED),
        IpmiIfc::STATE_STOPPED);
    EXPECT_EQ(takeCalls(), "");
    IpmiIfc::stop();
}

TEST_F(Lifecycle, aStopBeforeTheStartHasEnded)
{
    for (const char* when : {"before the start", "in the first exchange"}) {
        SCOPED_TRACE(when);
        resetNode();
        serve({"cmd=01,lost"});
        std::thread stopper;
        if (std::string{when} == "before the start") {
            stopper = std::thread{[] {
                IpmiIfc::stop();
            }};
            Seam::waitForLog("Node 0: IpmiIfc shutting down");
            startNode(0);
        } else {
            startNode(0);
            waitForExchange();
            stopper = std::thread{[] {
                IpmiIfc::stop();
            }};
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
    startNode(0);
    waitUntilRunning();
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
    startNode(0);
    waitUntilRunning();
    removeDevice();
    EXPECT_EQ(sendChassisStatus(), 0xff);
    Seam::takeLog();
    poll(IpmiIfc::POLL_NORMAL);
    poll(IpmiIfc::POLL_NORMAL);
    EXPECT_EQ(logged("the IPMI device is lost"), 1);
    EXPECT_EQ(sendChassisStatus(), 0xff);
    returnDevice();
    poll(IpmiIfc::POLL_NORMAL);
    EXPECT_EQ(logged("the IPMI device is open again"), 1);
    EXPECT_EQ(sendChassisStatus(), 0);
    stopNode();
}

} // namespace
