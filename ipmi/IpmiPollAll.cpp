// Asking all nodes for a poll, and waiting for them.
#include <algorithm>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIdentity.h"
#include "ipmi/IpmiNode.h"

namespace Ipmi
{

namespace
{

bool isSet(const bool* flag)
{
    return flag && __atomic_load_n(flag, __ATOMIC_RELAXED);
}

// Wraps instead of overflowing: the count is whatever a caller says.
int product(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) *
                            static_cast<unsigned>(b));
}

void scaleStepsOnce(int nodeCount)
{
    static bool scaled VEK_GUARDED_BY(manNameInitMut) = false;
    VEK::MutexLock lock{manNameInitMut};
    if (scaled)
        return;
    SKIP_FRU_STEP = product(SKIP_FRU_STEP, nodeCount);
    SKIP_SDR_STEP = product(SKIP_SDR_STEP, nodeCount);
    scaled = true;
}

// How many nodes may take their periodic pass in one call.
int fullPollsFor(int nodeCount)
{
    if (nodeCount < 1)
        return 0;
    return nodeCount <= 8 ? 1 : nodeCount / 8 + 1;
}

void logStarted(int i, int tries)
{
    if (tries > 59)
        syslog(LOG_WARNING,
               "Poll thread for node %d started, but it took %d tries", i,
               tries);
    else if (tries > 0)
        syslog(LOG_DEBUG, "Poll thread for node %d started", i);
}

// Locks again on every way out, cancellation included.
class MutexUnlock
{
public:
    explicit MutexUnlock(VEK::Mutex& mutex) : mutex_{mutex}
    {
        pthread_mutex_unlock(mutex_.native());
    }
    ~MutexUnlock() { pthread_mutex_lock(mutex_.native()); }
    MutexUnlock(const MutexUnlock&) = delete;
    MutexUnlock& operator=(const MutexUnlock&) = delete;

private:
    VEK::Mutex& mutex_;
};

void sleepUnlocked(VEK::Mutex& mutex) VEK_REQUIRES(mutex)
{
    MutexUnlock unlocked{mutex};
    sleep(1);
}

// False when the caller shuts down meanwhile.
bool waitForThread(IpmiNode& node, int i, const bool* shutdown)
    VEK_REQUIRES(node.pollMutex)
{
    int tries = 0;
    while (node.pollCount == 0) {
        if (isSet(shutdown)) {
            syslog(LOG_DEBUG, "Shutdown signal received. Returning from "
                              "IpmiIfc::pollAll()");
            return false;
        }
        ++tries;
        syslog(tries == 1 ? LOG_INFO : LOG_DEBUG,
               "Waiting for poll thread for node %d to start", i);
        if (tries % 500 == 0)
            syslog(LOG_WARNING,
                   "Still waiting for poll thread for node %d to start (%d "
                   "tries",
                   i, tries);
        sleepUnlocked(node.pollMutex);
    }
    logStarted(i, tries);
    return true;
}

class Request
{
public:
    Request(int nodeCount, IpmiIfc::IPMI_POLL_TYPE type, const bool* shutdown)
        : count_{std::clamp(nodeCount, 0, int(NODE_COUNT))},
          fullPolls_{fullPollsFor(nodeCount)},
          type_{type},
          shutdown_{shutdown}
    {}

    int count() const { return count_; }

    // False when the caller shuts down meanwhile.
    bool trigger(int i)
    {
        IpmiNode& node = g_IpmiNode[i];
        VEK::MutexLock lock{node.pollMutex};
        if (!waitForThread(node, i, shutdown_))
            return false;
        shareOutFullPolls(node, i);
        seen_[i] = node.pollCount;
        syslog(LOG_DEBUG, "Triggering poll for node %d, poll count = %d", i,
               seen_[i]);
        node.pollType = type_;
        IpmiIfc::doPoll(i);
        return true;
    }

    bool isPending(int i) const
    {
        IpmiNode& node = g_IpmiNode[i];
        // Waits for a pass that is under way.
        VEK::MutexLock lock{node.pollMutex};
        return node.pollCount == seen_[i] && !node.shutdownFlag;
    }

private:
    // A node whose periodic pass is due takes it while there are some left to
    // give, and otherwise one poll later.
    void shareOutFullPolls(IpmiNode& node, int i) VEK_REQUIRES(node.pollMutex)
    {
        if (((node.pollCount + 1) & 7) != 0)
            return;
        if (fullPolls_ > 0) {
            syslog(LOG_DEBUG, "Going to do FULL POLL for node %d", i);
            --fullPolls_;
        } else {
            --node.pollCount;
        }
    }

    int count_;
    int fullPolls_;
    IpmiIfc::IPMI_POLL_TYPE type_;
    const bool* shutdown_;
    int seen_[NODE_COUNT] = {};
};

void waitForOne(const Request& request, int i)
{
    syslog(LOG_DEBUG,
           "Running threads serially, waiting for node %d to "
           "complete",
           i);
    do
        sleep(1);
    while (request.isPending(i));
    if (i + 1 < request.count())
        sleep(1);
}

void waitForAll(const Request& request)
{
    syslog(LOG_DEBUG, "Running threads in parallel. Waiting for nodes to poll");
    bool pending = request.count() > 0;
    while (pending) {
        sleep(2);
        pending = false;
        for (int i = 0; i < request.count(); ++i)
            if (request.isPending(i)) {
                syslog(LOG_DEBUG, "Poll not finished for node %d", i);
                pending = true;
            }
    }
    syslog(LOG_DEBUG, "%s: Nodes done polling", "pollAll");
}

} // namespace

void IpmiIfc::pollAll(int nodeCount, bool serial, IPMI_POLL_TYPE type,
                      bool* shutdown)
{
    scaleStepsOnce(nodeCount);
    Request request{nodeCount, type, shutdown};
    for (int i = 0; i < request.count(); ++i) {
        if (!request.trigger(i))
            return;
        if (serial)
            waitForOne(request, i);
    }
    if (!serial)
        waitForAll(request);
}

} // namespace Ipmi
