// The driver's device: opening, closing, settings; the wake-up pipe.
#include "ipmi/IpmiTransport.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <sys/ioctl.h>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiNode.h"

namespace Ipmi
{

namespace
{

struct DevicePath
{
    DevicePath() { snprintf(text, sizeof text, "/dev/ipmi%d", 0); }
    char text[32];
};

// Who opened the device. One that an operation opened for itself is closed
// behind the last such user, unless a node has taken it over by then.
bool openedForUse VEK_GUARDED_BY(g_IpmiNode[0].ifcMutex) = false;
int users VEK_GUARDED_BY(g_IpmiNode[0].ifcMutex) = 0;

int openDevice(const DevicePath& path)
{
    int fd = open(path.text, O_RDWR | O_CLOEXEC);
    if (fd == 0) {
        // Standard input was closed; 0 counts as not open everywhere here.
        fd = open(path.text, O_RDWR | O_CLOEXEC);
        close(0);
    }
    g_IpmiNode[0].devFd = fd;
    if (fd > 0)
        g_IpmiNode[0].devOpen = 1;
    return fd;
}

// 0 unless the variable holds a number above 0.
unsigned positiveFromEnvironment(const char* name)
{
    const char* text = getenv(name);
    const long long value = text ? strtoll(text, nullptr, 10) : 0;
    return value > 0 && value <= 0x7fffffff ? static_cast<unsigned>(value) : 0;
}

void closeAndForget(VEK::Relaxed<int>& fd)
{
    const int old = fd.exchange(-1);
    if (old != -1)
        close(old);
}

} // namespace

int openLogged()
{
    const DevicePath path;
    const int fd = openDevice(path);
    if (fd > 0)
        return fd;
    const int reason = errno;
    syslog(LOG_ERR, "%s: open(%s, RDWR) failed %d %m", "IpmiIfcOpenIpmiOpen",
           path.text, reason);
    errno = reason;
    return -1;
}

void closeDevice()
{
    // 0 counts as not open here as it does when sending: the record's
    // descriptor is 0 before the first open, and that is standard input.
    const int fd = g_IpmiNode[0].devFd.exchange(-1);
    if (fd > 0)
        close(fd);
    g_IpmiNode[0].devOpen = 0;
}

int IpmiIfcOpenIpmiOpen(int)
{
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    openedForUse = false;
    if (g_IpmiNode[0].devOpen == 1)
        closeDevice();
    return openLogged();
}

void IpmiIfcOpenIpmiClose(int)
{
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    openedForUse = false;
    closeDevice();
}

bool openDeviceQuietly()
{
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    openedForUse = false;
    return g_IpmiNode[0].devFd > 0 || openDevice(DevicePath{}) > 0;
}

DeviceUse::DeviceUse()
{
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    ++users;
    if (g_IpmiNode[0].devOpen != 1)
        openedForUse = openLogged() > 0;
}

DeviceUse::~DeviceUse()
{
    VEK::MutexLock exchange{g_IpmiNode[0].ifcMutex};
    if (--users > 0 || !openedForUse)
        return;
    openedForUse = false;
    closeDevice();
}

void IpmiIfcSetTimingParms(int)
{
    const unsigned retries = positiveFromEnvironment("CIM_IPMI_RETRIES");
    const unsigned retryTime = positiveFromEnvironment("CIM_IPMI_RETRY_TIME");
    if (!retries && !retryTime)
        return;
    ipmi_timing_parms parms{};
    const int fd = g_IpmiNode[0].devFd;
    if (ioctl(fd, IPMICTL_GET_TIMING_PARMS_CMD, &parms) < 0) {
        syslog(LOG_WARNING, "Can not get IPMI default timing parms, they will "
                            "not be changed.");
        return;
    }
    syslog(LOG_INFO, "IPMI default timing parms: retries=%d, retry_time=%d(ms)",
           parms.retries, int(parms.retry_time_ms));
    if (retries)
        parms.retries = static_cast<int>(retries);
    if (retryTime)
        parms.retry_time_ms = retryTime;
    if (ioctl(fd, IPMICTL_SET_TIMING_PARMS_CMD, &parms) < 0)
        syslog(LOG_WARNING, "Can not set IPMI timing parms.");
    else
        syslog(LOG_INFO,
               "IPMI timing parms have been set to: retries=%d, "
               "retry_time=%d(ms).",
               parms.retries, int(parms.retry_time_ms));
}

int IpmiIfcOpenIpmiEventEnable(int, int* flag)
{
    const int result =
        ioctl(g_IpmiNode[0].devFd, IPMICTL_SET_GETS_EVENTS_CMD, flag);
    if (result >= 0)
        return result;
    syslog(LOG_ERR, "%s: ioctl(GETS_EVENTS) failed, %d %m", __func__, errno);
    return -1;
}

int IpmiIfcOpenIpmiAddressSet(int)
{
    unsigned address = static_cast<unsigned>(int(g_IpmiNode[0].myAddress));
    if (address == 0)
        return 0;
    if (ioctl(g_IpmiNode[0].devFd, IPMICTL_SET_MY_ADDRESS_CMD, &address) >= 0)
        return 0;
    syslog(LOG_ERR,
           "Node %d: IpmiIfcOpenIpmiAddressSet failed ioctl call returning -1",
           0);
    return -1;
}

bool makeWakeUpPipe()
{
    int fds[2];
    // Programs that the broker starts must not inherit it.
    if (pipe2(fds, O_CLOEXEC) != 0)
        return false;
    g_IpmiNode[0].signalCmdPipeFds[FD_READ] = fds[FD_READ];
    g_IpmiNode[0].signalCmdPipeFds[FD_WRITE] = fds[FD_WRITE];
    return true;
}

void closeWakeUpPipe()
{
    closeAndForget(g_IpmiNode[0].signalCmdPipeFds[FD_READ]);
    closeAndForget(g_IpmiNode[0].signalCmdPipeFds[FD_WRITE]);
}

} // namespace Ipmi
