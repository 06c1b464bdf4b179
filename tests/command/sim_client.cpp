/// A client of the driver that is built in the ways that matter to a preloaded
/// library. Reads the controller's identity twice, prints its first bytes,
/// and with an argument ends as no exit handler sees it.
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace
{

bool readIdentity(int device)
{
    ipmi_system_interface_addr to{IPMI_SYSTEM_INTERFACE_ADDR_TYPE,
                                  IPMI_BMC_CHANNEL, 0};
    ipmi_req request{reinterpret_cast<unsigned char*>(&to), sizeof to, 1, {}};
    request.msg.netfn = 0x06;
    request.msg.cmd = 0x01;
    if (ioctl(device, IPMICTL_SEND_COMMAND, &request) < 0)
        return false;
    pollfd waiting{device, POLLIN, 0};
    poll(&waiting, 1, 10000);
    ipmi_addr from;
    unsigned char data[32] = {};
    ipmi_recv into{0,
                   reinterpret_cast<unsigned char*>(&from),
                   sizeof from,
                   0,
                   {0, 0, sizeof data, data}};
    if (ioctl(device, IPMICTL_RECEIVE_MSG_TRUNC, &into) < 0)
        return false;
    std::printf("%02x %02x\n", data[0], data[1]);
    return true;
}

} // namespace

int main(int argc, char**)
{
    const int device = open("/dev/ipmi0", O_RDWR);
    if (device < 0 || !readIdentity(device) || !readIdentity(device)) {
        std::perror("/dev/ipmi0");
        return 2;
    }
    std::fflush(stdout);
    return argc > 1 ? raise(SIGKILL) : 0;
}
