// A controller that answers anything, through a pass over its FRU devices and
// a read of all areas.
#include <vek-ipmi/IpmiCommandLine.h>

#include "fuzz/conversation.h"
#include "fuzz/target.h"
#include "ipmi/IpmiIfcFru.h"

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
    if (IpmiIfcOpenIpmiOpen(0) < 0)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    installOnce();
    Conversation conversation{data, size};
    Sim::Device::controller()->bmc().answerBy([&](const Sim::Request& request) {
        return conversation.answer(request);
    });
    IpmiIfcFruInstantiateAll(0);
    for (const auto& fru : IpmiIfc::getFrus())
        for (const auto& area : fru->getOptionalRefArray())
            IpmiIfc::getFruPart(area);
    IpmiIfc::getFruAreas(nullptr);
    // Behind the last answer every read is refused; ahead of it eight may bring
    // nothing, four may be late, and fifteen may be too long.
    if (conversation.exchanges() > 1000 + size * 30)
        __builtin_trap();
    Seam::takeLog();
    return 0;
}
