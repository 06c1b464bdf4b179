#include "sim/model/channel.h"

#include "sim/profile/describe.h"

namespace Sim
{
namespace
{

// IPMI v2.0, tables 6-3 and 6-2, 22.24.
constexpr Word media[] = {
    {"ipmb", 0x01},      {"icmb-1.0", 0x02}, {"icmb-0.9", 0x03},
    {"lan", 0x04},       {"serial", 0x05},   {"other-lan", 0x06},
    {"pci-smbus", 0x07}, {"smbus-1", 0x08},  {"smbus-2", 0x09},
    {"usb-1", 0x0A},     {"usb-2", 0x0B},    {"system-interface", 0x0C},
};
constexpr Word protocols[] = {
    {"ipmb-1.0", 0x01}, {"icmb-1.0", 0x02}, {"ipmi-smbus", 0x04},
    {"kcs", 0x05},      {"smic", 0x06},     {"bt-1.0", 0x07},
    {"bt-1.5", 0x08},   {"tmode", 0x09},
};
constexpr Word sessions[] = {
    {"none", 0}, {"single", 1}, {"multiple", 2}, {"by-setting", 3}};

} // namespace

void describe(Fields& io, Channel& channel)
{
    for (const char* key : {"number", "medium", "protocol"})
        io.require(key);
    constexpr auto decimal = Fields::Base::Decimal;
    io.number("number", channel.number, decimal, 0x0F);
    if (channel.number >= 0x0C && channel.number < systemInterface)
        io.refuse("number", "12 to 14 are no channels");
    io.choice("medium", channel.medium, media);
    io.choice("protocol", channel.protocol, protocols);
    io.choice("sessions", channel.sessions, sessions);
    io.number("activeSessions", channel.activeSessions, decimal, 0x3F);
    io.number("vendor", channel.vendor, decimal, 0xFFFFFF);
    io.bytes("auxiliary", channel.auxiliary, 2, 2);
}

} // namespace Sim
