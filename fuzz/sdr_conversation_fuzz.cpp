// A controller that answers anything, through a refresh of the repository,
// discovery and two passes of readings.
#include <algorithm>
#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiSensor.h>

#include "fuzz/conversation.h"
#include "fuzz/target.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiNode.h"

using namespace Ipmi;

namespace
{

void installOnce()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    installTimelessDevice();
    if (IpmiIfcOpenIpmiOpen(0) < 0 || IpmiIfcInitForCLI(0) != 0)
        __builtin_trap();
}

void forget()
{
    IpmiIfcSdrCleanUpHeaders(0);
    IpmiIfcSdrCleanUpAll(0);
    IpmiNode& node = g_IpmiNode[0];
    VEK::WriteLock lock{node.sdrLock};
    node.sensors->clear();
    node.sdrInfo = {};
    node.sdrHeaderCount = 0;
    std::fill_n(node.sdrReservation, 3, uint8_t{0});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    installOnce();
    Conversation conversation{data, size};
    Sim::Device::controller()->bmc().answerBy([&](const Sim::Request& request) {
        return conversation.answer(request);
    });
    IpmiIfcSdrGetInfo(0);
    for (const auto& sensor : IpmiIfc::getSensors())
        sensor->getName();
    IpmiIfcSensorUpdateReading(0);
    IpmiIfcSdrGetInfo(0);
    IpmiIfcSensorUpdateReading(0);
    // Whatever it claims, each answer costs a bounded number of exchanges:
    // four for a header, 16 chunks of four for a record, and 15 sensors of a
    // shared record.
    if (conversation.exchanges() > 1000 + size * 200)
        __builtin_trap();
    forget();
    Seam::takeLog();
    return 0;
}
