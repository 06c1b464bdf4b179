// Prints each new event of the controller until Ctrl-C.
#include <csignal>
#include <cstdio>
#include <thread>

#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSelData.h>

using Ipmi::IpmiIfc;
using Ipmi::IpmiSelData;

// Runs on the polling thread. Null: a pass has refreshed the caches.
static void printEvent(void*, IpmiSelData* record)
{
    if (record)
        std::printf("%s: %s (%s)\n", record->recordId(0).c_str(),
                    record->caption().c_str(), record->details().c_str());
    std::fflush(stdout);
}

static void runNode()
{
    try {
        IpmiIfc::start(1); // polls every 16 s until stop()
    } catch (const CmpiStatus& status) {
        std::fprintf(stderr, "the node ended: rc %d\n", int(status.rc()));
    }
}

int main()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr); // for the node's thread, too

    std::thread node{runNode};
    const int state =
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED);
    if (state == IpmiIfc::STATE_RUNNING) {
        // Behind start, which begins with an empty list.
        IpmiIfc::registerSelEventHandler(printEvent, nullptr);
        int signal;
        sigwait(&signals, &signal);
    }
    IpmiIfc::stop();
    node.join();
    return state == IpmiIfc::STATE_RUNNING ? 0 : 1;
}
