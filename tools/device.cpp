#include "tools/device.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include <vek-ipmi/IpmiIfc.h>

namespace Tool
{

namespace
{

constexpr char path[] = "/dev/ipmi0";
constexpr int noAnswer = 0xFF;

bool isMissing(int reason)
{
    return reason == ENOENT || reason == ENXIO || reason == ENODEV;
}

bool isForbidden(int reason)
{
    return reason == EACCES || reason == EPERM;
}

} // namespace

Failure openFailure(int reason, bool isRoot)
{
    const std::string where = std::string{path} + ": " + strerror(reason);
    const std::string who = isRoot ? "" : " (you are not root)";
    if (isMissing(reason))
        // Without -a modprobe would take the second name for a parameter.
        return {Status::noDevice, "no IPMI device: " + where + who,
                "Load the driver as root: modprobe -a ipmi_devintf ipmi_si - "
                "or try it without a controller: vek-ipmi --simulate info"};
    if (isForbidden(reason))
        return {Status::noDevice, "no permission: " + where + who,
                isRoot ? "Look at the device's mode and at the container's "
                         "or sandbox's device rules."
                       : "Run it as root."};
    return {Status::failed, "cannot open the IPMI device: " + where + who,
            "See the kernel's log (dmesg)."};
}

Device::Device()
{
    fd_ = Ipmi::IpmiIfcOpenIpmiOpen(0);
    if (fd_ < 0)
        throw openFailure(errno, geteuid() == 0);
    newFlags_ = fcntl(fd_, F_GETFD);
    if (Ipmi::IpmiIfcInitForCLI(0) == 0)
        return;
    Ipmi::IpmiIfcCloseForCLI(0);
    Ipmi::IpmiIfcOpenIpmiClose(0);
    throw Failure{Status::failed,
                  std::string{path} + " does not take its settings",
                  "Is it the OpenIPMI driver's? --verbose says more."};
}

Device::~Device()
{
    Ipmi::IpmiIfcCloseForCLI(0);
    Ipmi::IpmiIfcOpenIpmiClose(0);
}

// The library replaces its descriptor by a new one after each exchange
// without an answer, and gives both that and the controller's own FFh as FFh.
// A descriptor that still has a flag which no newly opened one has was not
// replaced.
void Device::mark() const
{
    fcntl(fd_, F_SETFD, newFlags_ ^ FD_CLOEXEC);
}

bool Device::marked() const
{
    return fcntl(fd_, F_GETFD) == (newFlags_ ^ FD_CLOEXEC);
}

Completion Device::ask(const std::function<int()>& operation, WaitText text)
{
    mark();
    const Patience patience{std::move(text)};
    const int code = operation();
    return {static_cast<uint8_t>(code), code != noAnswer || marked()};
}

Answer Device::exchange(Command command, Bytes data,
                        const Ipmi::IpmiTarget& target)
{
    uint8_t buffer[32]; // as much as the library holds of an answer
    uint16_t length = sizeof buffer;
    const auto send = [&] {
        return Ipmi::IpmiIfcSendCmdTo(0, target, command.code, command.netFn,
                                      static_cast<uint16_t>(data.size()),
                                      data.data(), &length, buffer);
    };
    Answer answer;
    answer.completion = ask(send);
    if (!answer.completion.ok() || length == 0)
        return answer;
    answer.data.assign(buffer + 1, buffer + length);
    answer.possiblyCut = length == sizeof buffer;
    return answer;
}

} // namespace Tool
