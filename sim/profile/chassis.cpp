#include "sim/model/chassis.h"

#include "sim/profile/describe.h"

namespace Sim
{
namespace
{

// IPMI v2.0, 28.1 and 28.2.
constexpr Word capabilities[] = {
    {"intrusion-sensor", 0x01},
    {"front-panel-lockout", 0x02},
    {"diagnostic-interrupt", 0x04},
    {"power-interlock", 0x08},
};
constexpr Word restorePolicies[] = {
    {"always-off", 0}, {"previous", 1}, {"always-on", 2}, {"unknown", 3}};
constexpr Word powerFaults[] = {
    {"overload", 0x02},
    {"interlock", 0x04},
    {"fault", 0x08},
    {"control-fault", 0x10},
};
constexpr Word powerEvents[] = {
    {"ac-failed", 0x01}, {"overload", 0x02}, {"interlock", 0x04},
    {"fault", 0x08},     {"command", 0x10},
};
constexpr Word chassisFaults[] = {
    {"intrusion", 0x01},
    {"lockout", 0x02},
    {"drive", 0x04},
    {"cooling", 0x08},
};
constexpr Word frontPanel[] = {
    {"power-off-disabled", 0x01},         {"reset-disabled", 0x02},
    {"diagnostic-disabled", 0x04},        {"standby-disabled", 0x08},
    {"power-off-disable-allowed", 0x10},  {"reset-disable-allowed", 0x20},
    {"diagnostic-disable-allowed", 0x40}, {"standby-disable-allowed", 0x80},
};

void describePower(Fields& io, Chassis& chassis)
{
    bool on = chassis.power & 0x01;
    uint8_t faults = chassis.power & 0x1E;
    uint8_t policy = chassis.power >> 5 & 0x03;
    io.flag("powerOn", on);
    io.bits("powerFaults", faults, powerFaults);
    io.choice("restorePolicy", policy, restorePolicies);
    chassis.power = uint8_t(policy << 5 | faults | (on ? 0x01 : 0));
}

} // namespace

void describe(Fields& io, Chassis& chassis)
{
    constexpr auto hexadecimal = Fields::Base::Hexadecimal;
    io.bits("capabilities", chassis.capabilities, capabilities);
    io.number("fruAddress", chassis.fruAddress, hexadecimal);
    io.number("sdrAddress", chassis.sdrAddress, hexadecimal);
    io.number("selAddress", chassis.selAddress, hexadecimal);
    io.number("systemManagementAddress", chassis.systemManagementAddress,
              hexadecimal);
    io.number("bridgeAddress", chassis.bridgeAddress, hexadecimal);
    describePower(io, chassis);
    io.bits("lastPowerEvent", chassis.lastPowerEvent, powerEvents);
    io.bits("faults", chassis.faults, chassisFaults);
    io.bits("frontPanel", chassis.frontPanel, frontPanel);
    io.flag("identify", chassis.identify);
    io.flag("identifyForced", chassis.identifyForced);
}

} // namespace Sim
