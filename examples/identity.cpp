#include <cstdio>
#include <thread>

#include <vek-ipmi/IpmiIfc.h>

using Ipmi::IpmiIfc;

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
    std::thread node{runNode};
    const int state =
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED);
    if (state == IpmiIfc::STATE_RUNNING)
        std::printf("%s, firmware %s, IPMI %s\n",
                    IpmiIfc::GetBmcManufacturer().c_str(),
                    IpmiIfc::GetBmcFWVersion().c_str(),
                    IpmiIfc::GetBmcIpmiVersion().c_str());
    IpmiIfc::stop();
    node.join();
    return state == IpmiIfc::STATE_RUNNING ? 0 : 1;
}
