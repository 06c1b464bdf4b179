#include "tools/collect/os.h"

#include <algorithm>
#include <iterator>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

namespace Tool
{

namespace
{

OsText read(Device& device, int (*ask)(int), std::string (*get)())
{
    OsText text;
    text.completion = device.ask([&] { return ask(0); });
    if (text.completion.ok())
        text.bytes = get();
    return text;
}

} // namespace

bool OsText::unsupported() const
{
    // The request holds nothing but the parameter's number, so a controller
    // that finds fault with it does not know the parameter.
    constexpr uint8_t codes[] = {0x80, 0xC1, 0xC9, 0xCB, 0xCC};
    return completion.answered && std::find(std::begin(codes), std::end(codes),
                                            completion.code) != std::end(codes);
}

OsInfo collectOs(Device& device)
{
    using Ipmi::IpmiIfc;
    OsInfo os;
    os.name =
        read(device, Ipmi::IpmiIfcReadOS_Name, IpmiIfc::GetBmcReportedOSName);
    os.version = read(device, Ipmi::IpmiIfcReadOS_Version,
                      IpmiIfc::GetBmcReportedOSVersion);
    return os;
}

} // namespace Tool
