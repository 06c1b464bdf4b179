// Start and stop of a node.
#include <vek-ipmi/IpmiIfc.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiLoop.h"
#include "ipmi/IpmiMapper.h"
#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiStartup.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

namespace
{

void logStopped()
{
    syslog(LOG_INFO, "Node %d: IpmiIfc polling thread stopped.", 0);
}

[[noreturn]] void failPipe(const char* text)
{
    throw CmpiStatus(CMPI_RC_ERROR_SYSTEM, text);
}

// Literals of what failed, as callers find them in the log.
struct PipeEnd
{
    int index;
    const char* getFailed;
    const char* setFailed;
};

#define PIPE_TEXT(end, call)                                                   \
    "UnnamedPipe::UnnamedPipe: "                                               \
    "fcntl(g_IpmiNode[NodeNum].signalCmdPipeFds[" #end "], " call ") failed"
constexpr PipeEnd pipeEnds[] = {
    {FD_READ, PIPE_TEXT(FD_READ, "F_GETFL, 0"),
     PIPE_TEXT(FD_READ, "F_SETFL, fdflags")},
    {FD_WRITE, PIPE_TEXT(FD_WRITE, "F_GETFL, 0"),
     PIPE_TEXT(FD_WRITE, "F_SETFL, fdflags")},
};
#undef PIPE_TEXT

void makeNonBlockingPipe(const IpmiNode& node)
{
    if (!makeWakeUpPipe())
        failPipe("UnnamedPipe::UnnamedPipe: pipe failed");
    for (const PipeEnd& end : pipeEnds) {
        const int fd = node.signalCmdPipeFds[end.index];
        const int flags = fcntl(fd, F_GETFL, 0);
        if (flags < 0)
            failPipe(end.getFailed);
        if (fcntl(fd, F_SETFL, flags | O_NONBLOCK) < 0)
            failPipe(end.setFailed);
    }
}

bool openNode()
{
    if (IpmiIfcOpenIpmiOpen(0) >= 0)
        return true;
    const int reason = errno;
    syslog(LOG_ERR, "Node %d: Unable to open node, Error(%d):%s", 0, reason,
           strerror(reason));
    _changeState(0, IpmiIfc::STATE_STARTING, IpmiIfc::STATE_STOPPED);
    return false;
}

void configureDevice()
{
    IpmiIfcSetTimingParms(0);
    int events = 0; // They are read from the SEL instead.
    IpmiIfcOpenIpmiEventEnable(0, &events);
    IpmiIfcOpenIpmiAddressSet(0);
}

void initialize(IpmiNode& node, int interval)
{
    node.pollingInterval = interval;
    {
        VEK::MutexLock lock{node.pollMutex};
        node.pollCount = 0;
    }
    syslog(LOG_INFO, "Node %d: IpmiIfc starting initialization", 0);
    if (getuid() != 0)
        throw CmpiStatus(CMPI_RC_ERR_ACCESS_DENIED, "Only root user allowed");
    makeNonBlockingPipe(node);
}

void run(IpmiNode& node, int interval)
{
    initialize(node, interval);
    if (!openNode())
        return;
    configureDevice();
    IpmiIfcDataGet(oneShotCount);
    _changeState(0, IpmiIfc::STATE_STARTING, IpmiIfc::STATE_RUNNING);
    syslog(LOG_INFO, "%s: Node %d: IpmiIfc initialization complete", "start",
           0);
    IpmiIfc::poll(0);
    syslog(LOG_DEBUG, "Node %d: IpmiIfc poll thread exiting", 0);
}

// stop has done all that it does.
VEK::Relaxed<bool> stopEnded{false};

void closeAll()
{
    closeWakeUpPipe();
    IpmiIfcOpenIpmiClose(0);
}

// What a start that failed has left open: a caller may try again and again
// until there is a device.
void closeLeftovers(const IpmiNode& node)
{
    if (!node.shutdownFlag && _getState(0) == IpmiIfc::STATE_STOPPED)
        closeAll();
}

// A start after the stop has nobody left to close behind it.
void endStart()
{
    if (stopEnded)
        closeAll();
    _setState(0, IpmiIfc::STATE_STOPPED);
    logStopped();
}

} // namespace

void IpmiIfc::start(int node, int interval)
{
    syslog(LOG_DEBUG, "Node %d: IpmiIfc::start(%d)", node, interval);
    IpmiNode& record = g_IpmiNode[0];
    closeLeftovers(record);
    InitIpmiNode(0);
    _changeState(0, STATE_INITIAL, STATE_STARTING);
    try {
        run(record, interval);
    } catch (...) {
        endStart();
        throw;
    }
    endStart();
}

void IpmiIfc::start(int interval)
{
    start(0, interval);
}

void IpmiIfc::stop(int node)
{
    IpmiNode& record = g_IpmiNode[0];
    if (record.shutdownFlag.exchange(true))
        throw CmpiStatus(CMPI_RC_ERROR, "IpmiIfc::stop called twice");
    syslog(LOG_DEBUG, "Node %d: IpmiIfc shutting down", node);
    if (waitState(0, STATE_RUNNING | STATE_STOPPED) == STATE_RUNNING) {
        {
            // Held, so that the wake-up cannot fall between the loop's look
            // at shutdownFlag and its wait.
            VEK::MutexLock lock{record.pollMutex};
            record.pollCond.broadcast();
        }
        waitState(0, STATE_STOPPED);
    }

    const int wakeUp = record.signalCmdPipeFds[FD_WRITE];
    const uint8_t byte = 0xff;
    if (write(wakeUp, &byte, 1) != 1) {
        const int reason = errno;
        syslog(LOG_ERR, "%s: ignoring, write(fd=%d 1 byte) failed errno=%d %m",
               __func__, wakeUp, reason);
    }
    {
        // An exchange that is still in progress has then finished.
        VEK::MutexLock lock{record.ifcMutex};
    }
    closeAll();
    if (loopAreas.cleanUp)
        loopAreas.cleanUp(0);
    IpmiIfcSelCleanUpEventHandlers(0);
    stopEnded = true;
}

void IpmiIfc::stop()
{
    stop(0);
}

int IpmiIfcInitForCLI(int)
{
    constexpr int driversAddress = 0x20;
    IpmiNode& node = g_IpmiNode[0];
    if (_getState(0) == IpmiIfc::STATE_CLI)
        closeWakeUpPipe();
    InitIpmiNode(0);
    node.myAddress = driversAddress;
    if (!makeWakeUpPipe())
        return -1;
    if (IpmiIfcOpenIpmiAddressSet(0) != 0) {
        closeWakeUpPipe();
        return -2;
    }
    IpmiIfcSetTimingParms(0);
    {
        VEK::MutexLock lock{node.stateMutex};
        node.state = IpmiIfc::STATE_CLI;
        node.stateCond.broadcast();
    }
    LoadSensorHealthDataFile();
    if (healthList.empty())
        syslog(LOG_WARNING,
               "%s: Unable to translate discrete sensor state, see prior "
               "errors",
               __func__);
    return 0;
}

void IpmiIfcCloseForCLI(int)
{
    closeWakeUpPipe();
    if (loopAreas.cleanUp)
        loopAreas.cleanUp(0);
}

} // namespace Ipmi
