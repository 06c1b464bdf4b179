#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiIfcSensor.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <sys/time.h>
#include <syslog.h>

namespace Ipmi
{

IpmiNode g_IpmiNode[NODE_COUNT];

IpmiNode::~IpmiNode()
{
    if (sdrLock.tryLockForWriting()) {
        freeRecords(*this);
        sensors.renew();
        sdrLock.unlock();
    }
    lan->release();
    if (entityMutex.tryLock()) {
        freeEntities(*this);
        entities.renew();
        entityMutex.unlock();
    }
    if (fruMutex.tryLock()) {
        frus.renew();
        fruMutex.unlock();
    }
    if (selRefreshMutex.tryLock()) {
        selRefresh.renew();
        selRefreshMutex.unlock();
    }
    if (selMutex.tryLock()) {
        selSummary.renew();
        selRecords.renew();
        selEvents.renew();
        freeSelHandlers(*this);
        selMutex.unlock();
    }
}

IpmiNode* nodeRecord(int node)
{
    return node >= 0 && size_t(node) < NODE_COUNT ? &g_IpmiNode[node] : nullptr;
}

void SetLogLevel(LogLvl)
{
    setlogmask(0xff);
}

void InitIpmiNode(int node)
{
    IpmiNode& record = g_IpmiNode[node];
    record.nodeNum = node;
    record.msgSeq = 0x5a5;
    record.signalCmdPipeFds[FD_READ] = -1;
    record.signalCmdPipeFds[FD_WRITE] = -1;
    record.pollingInterval = -1;
    {
        VEK::MutexLock lock{record.identityMutex};
        record.deviceIdAnswered = false;
        record.deviceId = {};
        std::fill(std::begin(record.selfTest), std::end(record.selfTest),
                  uint8_t{0});
    }
    {
        VEK::WriteLock lock{record.sdrLock};
        record.sdrInfo = {};
        std::fill(std::begin(record.sdrReservation),
                  std::end(record.sdrReservation), uint8_t{0});
    }
    {
        VEK::MutexLock refreshing{record.selRefreshMutex};
        *record.selRefresh = {};
        VEK::MutexLock lock{record.selMutex};
        record.selInfo = {};
        record.selAllocInfo = {};
        record.selReservationId = 0;
        record.lastSelRecordId = 0;
        dropSelHandlers(record);
    }
    VEK::MutexLock lock{record.stateMutex};
    record.state = IpmiIfc::STATE_INITIAL;
    record.stateCond.broadcast();
}

void _setState(int, IpmiIfc::IPMI_STATE state)
{
    IpmiNode& record = g_IpmiNode[0];
    VEK::MutexLock lock{record.stateMutex};
    record.state = state;
    record.stateCond.broadcast();
}

IpmiIfc::IPMI_STATE _getState(int)
{
    VEK::MutexLock lock{g_IpmiNode[0].stateMutex};
    return g_IpmiNode[0].state;
}

void _changeState(int, IpmiIfc::IPMI_STATE from, IpmiIfc::IPMI_STATE to)
{
    IpmiNode& record = g_IpmiNode[0];
    VEK::MutexLock lock{record.stateMutex};
    if (record.state != from) {
        syslog(LOG_ERR,
               "IpmiIfc unexpected state transition: (%d->%d), Current state "
               "%d",
               from, to, record.state);
        throw CmpiStatus(CMPI_RC_ERROR, "IpmiIfc unexpected state transition");
    }
    syslog(LOG_DEBUG, "IPMI Node %d: _changeState check passed", 0);
    record.state = to;
    record.stateCond.broadcast();
}

IpmiIfc::IPMI_STATE IpmiIfc::getState(int node)
{
    return _getState(node);
}

IpmiIfc::IPMI_STATE IpmiIfc::getState()
{
    return _getState(0);
}

IpmiIfc::IPMI_STATE IpmiIfc::waitState(int, int mask)
{
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::waitState (%d) called", 0, mask);
    IpmiNode& record = g_IpmiNode[0];
    VEK::MutexLock lock{record.stateMutex};
    while ((record.state & mask) == 0)
        record.stateCond.wait(record.stateMutex);
    return record.state;
}

IpmiIfc::IPMI_STATE IpmiIfc::waitState(int mask)
{
    return waitState(0, mask);
}

namespace
{

// Now and so much later; as far as a time of day goes, whatever the caller
// asks for.
timespec deadlineAfter(long sec, long usec)
{
    constexpr long long million = 1000000;
    constexpr long long latest = std::min<long long>(
        std::numeric_limits<time_t>::max(), 1LL << 60); // sums cannot wrap
    timeval now;
    gettimeofday(&now, nullptr);
    long long micros = now.tv_usec + usec % million;
    long long seconds = std::clamp<long long>(sec, -latest, latest) +
                        usec / million + now.tv_sec;
    if (micros < 0) {
        micros += million;
        --seconds;
    }
    seconds += micros / million;
    timespec deadline;
    deadline.tv_sec =
        static_cast<time_t>(std::clamp<long long>(seconds, 0, latest));
    deadline.tv_nsec = static_cast<long>(micros % million * 1000);
    return deadline;
}

} // namespace

IpmiIfc::IPMI_STATE IpmiIfc::timedWaitState(int node, int mask, long sec,
                                            long usec)
{
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::timedWaitState (%d, %ld, %ld) called",
           node, mask, sec, usec);
    IpmiNode& record = g_IpmiNode[0];
    VEK::MutexLock lock{record.stateMutex};
    // A time-out only re-arms the wait: callers rely on the state matching.
    while ((record.state & mask) == 0)
        record.stateCond.waitUntil(record.stateMutex, deadlineAfter(sec, usec));
    return record.state;
}

IpmiIfc::IPMI_STATE IpmiIfc::timedWaitState(int mask, long sec, long usec)
{
    return timedWaitState(0, mask, sec, usec);
}

} // namespace Ipmi
