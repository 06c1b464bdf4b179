// A stranger's program: runs a node, asks it something, stops it twice.
#include <cstdio>
#include <thread>

#include <vek-ipmi/IpmiIfc.h>

using Ipmi::IpmiIfc;

namespace
{

int bad = 0;

void expect(bool holds, const char* what)
{
    if (holds)
        return;
    std::printf("expected: %s\n", what);
    bad = 1;
}

int codeOfSecondStop()
{
    try {
        IpmiIfc::stop();
    } catch (const CmpiStatus& status) { // the type, across the boundary
        return status.rc();
    }
    return -1;
}

} // namespace

int main()
{
    expect(IpmiIfc::getState() == IpmiIfc::STATE_INITIAL, "initial");
    std::thread node{[] {
        IpmiIfc::start(1);
    }};
    const int reached =
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED);
    expect(reached == IpmiIfc::STATE_RUNNING, "running");
    Ipmi::ipmiifc_device_id id{};
    expect(IpmiIfc::getManagementControllerInfo(id) == 0, "an identity");
    IpmiIfc::stop();
    node.join();
    expect(IpmiIfc::getState() == IpmiIfc::STATE_STOPPED, "stopped");
    expect(codeOfSecondStop() == CMPI_RC_ERROR, "rc 200");
    return bad;
}
