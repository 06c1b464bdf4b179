#include "ipmi/IpmiLoop.h"

#include <algorithm>
#include <cxxabi.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcFru.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiIfcSensor.h"
#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

VEK::Relaxed<int> SKIP_SDR_STEP{30};
VEK::Relaxed<int> SKIP_FRU_STEP{30};

namespace
{

// What areas answer is in their log lines; the loop goes on.

void refreshRecords(int node)
{
    IpmiIfcSdrGetInfo(node);
}

void refreshReadings(int node)
{
    IpmiIfcSensorUpdateReading(node);
}

void refreshFrus(int node)
{
    IpmiIfcFruInstantiateAll(node);
}

void refreshLan(int node)
{
    IpmiIfc::getLan(node)->IpmiIfcLanInstantiate(node);
}

void cleanUpRecords(int node)
{
    IpmiIfcSdrCleanUpHeaders(node);
    IpmiIfcSdrCleanUpAll(node);
    IpmiIfcEntityCleanUpAll(node);
}

} // namespace

// One line an area, in the order of the record.
LoopAreas loopAreas = {
    IpmiIfcSelGetInfo, // SEL
    refreshRecords,    // SDR
    refreshReadings,   // sensor
    refreshFrus,       // FRU
    refreshLan,        // LAN
    cleanUpRecords,    // clean-up
};

PollChoice choosePass(int pollCount, IpmiIfc::IPMI_POLL_TYPE type,
                      unsigned entryCount, unsigned lastEntryCount)
{
    const int skip = pollCount & 7;
    // A log that was cleared holds the record of its clearing: no news.
    const bool cleared = entryCount == 1 && lastEntryCount != 0;
    const bool newEvents = entryCount != lastEntryCount && !cleared;
    if (newEvents || type == IpmiIfc::POLL_FULL)
        return {PollPass::full, pollCount + 8 - skip};
    const bool readings = type == IpmiIfc::POLL_READINGS;
    if (skip != 0)
        return {readings ? PollPass::readings : PollPass::count, pollCount};
    if (type == IpmiIfc::POLL_SKIP)
        return {PollPass::count, pollCount + 7};
    if (readings)
        return {PollPass::readings, pollCount + 7};
    return {PollPass::periodic, pollCount};
}

namespace
{

bool isDue(int cycle, int step, int remainder)
{
    return cycle % (step ? step : 1) == remainder;
}

void call(void (*area)(int))
{
    if (area)
        area(0);
}

class Loop
{
public:
    explicit Loop(IpmiNode& node) : node_{node} {}

    void run() VEK_EXCLUDES(node_.pollMutex);

private:
    /// False ends the loop, as in every step that may find the node stopped.
    bool pass() VEK_REQUIRES(node_.pollMutex);
    bool firstPass();
    void waitForRequest() VEK_REQUIRES(node_.pollMutex);
    void openLostDevice();
    void countSelEntries();
    bool refresh(const PollChoice& choice, int skip)
        VEK_REQUIRES(node_.pollMutex);
    bool refreshSensors(bool full);
    bool refreshFru(bool full);

    /// One pass, the first or another. What it throws is logged and not the
    /// end of the loop.
    bool guardedPass(bool first) VEK_REQUIRES(node_.pollMutex);

    IpmiNode& node_;
    uint16_t entryCount_ = 0;
    uint16_t lastEntryCount_ = 0;
    int cycle_ = 2; ///< Counts periodic passes since the last full one.
    bool deviceLost_ = false;
};

bool Loop::guardedPass(bool first)
{
    try {
        return first ? firstPass() : pass();
    } catch (abi::__forced_unwind&) {
        throw; // The thread is being cancelled.
    } catch (...) {
        syslog(LOG_ERR,
               "IPMI polling thread caught exception while polling node %d", 0);
    }
    return true;
}

// Holds the poll mutex except in waits, so that a request for a poll arrives
// only there.
void Loop::run()
{
    VEK::MutexLock lock{node_.pollMutex};
    bool goOn = guardedPass(true);
    while (goOn && !node_.shutdownFlag)
        goOn = guardedPass(false);
    syslog(LOG_DEBUG, "Poll loop ended, shutting down");
}

bool Loop::firstPass()
{
    if (loopAreas.selInfo && loopAreas.selInfo(0, &entryCount_) != 0)
        entryCount_ = 0;
    lastEntryCount_ = entryCount_;
    call(loopAreas.lan);
    call(loopAreas.fru);
    return true;
}

void Loop::waitForRequest()
{
    const int interval = node_.pollingInterval;
    if (interval < 1) {
        node_.pollCond.wait(node_.pollMutex);
        return;
    }
    // A month is as good as never, and fits a time of day of any width.
    constexpr long long longest = 30 * 24 * 3600;
    const long long seconds = std::min(interval * 16LL, longest);
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::poll sleeping for %d second(s)", 0,
           static_cast<int>(seconds));
    timeval now;
    gettimeofday(&now, nullptr);
    timespec deadline;
    deadline.tv_sec = static_cast<time_t>(now.tv_sec + seconds);
    deadline.tv_nsec = now.tv_usec * 1000L;
    node_.pollCond.waitUntil(node_.pollMutex, deadline);
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::poll woke up.", 0);
}

// A reopen that fails (the driver's module is gone, the interface unbound)
// leaves the device closed; without this the node would be deaf for good.
void Loop::openLostDevice()
{
    const bool open = openDeviceQuietly();
    if (open && deviceLost_)
        syslog(LOG_INFO, "Node %d: the IPMI device is open again", 0);
    if (!open && !deviceLost_)
        syslog(LOG_WARNING,
               "Node %d: the IPMI device is lost, each poll tries to open it",
               0);
    deviceLost_ = !open;
}

void Loop::countSelEntries()
{
    constexpr int mostTries = 10;
    if (!loopAreas.selInfo)
        return;
    for (int tries = 1; loopAreas.selInfo(0, &entryCount_) != 0; ++tries) {
        // Nothing is sent any more: no try would succeed.
        if (node_.shutdownFlag)
            return;
        sleep(1);
        if (tries == mostTries) {
            syslog(LOG_WARNING,
                   "Could not get SEL info for node %d after %d tries", 0,
                   mostTries);
            return;
        }
        if (tries == 1)
            syslog(LOG_DEBUG, "Retrying IpmiIfcSelGetInfo");
    }
}

bool Loop::pass()
{
    if (node_.pollCount == 0)
        node_.pollCount = 1;
    node_.pollType = IpmiIfc::POLL_NORMAL;
    waitForRequest();
    const IpmiIfc::IPMI_POLL_TYPE type = node_.pollType;
    if (type == IpmiIfc::POLL_NONE) {
        syslog(LOG_DEBUG,
               "Poll signaled for Node %d with poll type NONE. No poll "
               "performed",
               0);
        return true;
    }
    if (node_.shutdownFlag)
        return false;
    openLostDevice();
    node_.pollCount += 1;
    countSelEntries();

    const int skip = node_.pollCount & 7;
    const PollChoice choice =
        choosePass(node_.pollCount, type, entryCount_, lastEntryCount_);
    node_.pollCount = choice.pollCount;
    switch (choice.pass) {
    case PollPass::count:
        return true;
    case PollPass::readings:
        call(loopAreas.sensorReadings);
        return true;
    default:
        return refresh(choice, skip);
    }
}

bool Loop::refresh(const PollChoice& choice, int skip)
{
    const bool full = choice.pass == PollPass::full;
    if (full)
        cycle_ = 0;
    syslog(LOG_DEBUG,
           "IpmiIfc::poll - new events detected or skip count exceeded "
           "(skipRemaining = %d, entryCount = %d, lastEntryCount = %d)",
           (8 - skip) & 7, entryCount_, lastEntryCount_);
    lastEntryCount_ = entryCount_;
    if (node_.shutdownFlag || !refreshSensors(full))
        return false;
    announceRefresh(node_);
    if (!refreshFru(full))
        return false;
    if (!node_.shutdownFlag)
        call(loopAreas.lan);
    return true;
}

bool Loop::refreshSensors(bool full)
{
    if (!full && !isDue(cycle_, SKIP_SDR_STEP, 0)) {
        call(loopAreas.sensorReadings);
        return true;
    }
    call(loopAreas.sdr);
    return !node_.shutdownFlag;
}

bool Loop::refreshFru(bool full)
{
    if (!full)
        cycle_ += 1;
    if (!full && !isDue(cycle_, SKIP_FRU_STEP, 1))
        return true;
    syslog(LOG_DEBUG, "IpmiIfc::poll - Refreshing FRU");
    call(loopAreas.fru);
    return !node_.shutdownFlag;
}

} // namespace

void IpmiIfc::poll(int node)
{
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::poll called", node);
    Loop{g_IpmiNode[0]}.run();
}

void IpmiIfc::poll()
{
    poll(0);
}

void IpmiIfc::doPoll(int)
{
    g_IpmiNode[0].pollCond.broadcast();
}

void IpmiIfc::doPoll()
{
    doPoll(0);
}

void IpmiIfc::setPollingInterval(int, int interval)
{
    VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
    g_IpmiNode[0].pollingInterval = interval;
    g_IpmiNode[0].pollCond.broadcast();
}

void IpmiIfc::setPollingInterval(int interval)
{
    setPollingInterval(0, interval);
}

int IpmiIfc::getPollingInterval(int)
{
    return g_IpmiNode[0].pollingInterval;
}

int IpmiIfc::getPollingInterval()
{
    return getPollingInterval(0);
}

} // namespace Ipmi
