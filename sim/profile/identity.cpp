#include "sim/model/identity.h"

#include "sim/profile/describe.h"
#include "sim/profile/hex.h"

namespace Sim
{
namespace
{

// IPMI v2.0, 20.1, byte 7.
constexpr Word support[] = {
    {"sensor-device", 0x01}, {"sdr-repository", 0x02}, {"sel", 0x04},
    {"fru-inventory", 0x08}, {"ipmb-receiver", 0x10},  {"ipmb-generator", 0x20},
    {"bridge", 0x40},        {"chassis", 0x80},
};

/// "2.14": two numbers up to `maxMajor` and `maxMinor`.
bool splitVersion(const std::string& text, uint32_t maxMajor, uint32_t maxMinor,
                  uint8_t& major, uint8_t& minor)
{
    const size_t dot = text.find('.');
    if (dot == std::string::npos)
        return false;
    auto first = parseNumber(text.substr(0, dot), 10, maxMajor);
    auto second = parseNumber(text.substr(dot + 1), 10, maxMinor);
    if (!first || !second)
        return false;
    major = uint8_t(*first);
    minor = uint8_t(*second);
    return true;
}

void describeFirmware(Fields& io, Identity& id)
{
    uint8_t major = id.firmwareMajor & 0x7F;
    uint8_t minor =
        uint8_t((id.firmwareMinor >> 4) * 10 + (id.firmwareMinor & 0x0F));
    std::string text = std::to_string(major) + '.' + std::to_string(minor);
    io.text("firmware", text, [](const std::string& value) {
        uint8_t unused = 0;
        return splitVersion(value, 127, 99, unused, unused)
                   ? ""
                   : "expected a version from \"0.0\" to \"127.99\"";
    });
    splitVersion(text, 127, 99, major, minor);
    bool updating = id.firmwareMajor & 0x80;
    io.flag("updating", updating);
    id.firmwareMajor = uint8_t(major | (updating ? 0x80 : 0));
    id.firmwareMinor = uint8_t(minor / 10 << 4 | minor % 10);
}

void describeIpmiVersion(Fields& io, Identity& id)
{
    uint8_t major = id.ipmiVersion & 0x0F;
    uint8_t minor = id.ipmiVersion >> 4;
    std::string text = std::to_string(major) + '.' + std::to_string(minor);
    io.text("ipmiVersion", text, [](const std::string& value) {
        uint8_t unused = 0;
        return splitVersion(value, 15, 15, unused, unused)
                   ? ""
                   : "expected a version such as \"2.0\"";
    });
    splitVersion(text, 15, 15, major, minor);
    id.ipmiVersion = uint8_t(minor << 4 | major);
}

void describeRevision(Fields& io, Identity& id)
{
    uint8_t revision = id.deviceRevision & 0x0F;
    bool deviceSdrs = id.deviceRevision & 0x80;
    io.number("deviceRevision", revision, Fields::Base::Decimal, 15);
    io.flag("deviceSdrs", deviceSdrs);
    id.deviceRevision = uint8_t(revision | (deviceSdrs ? 0x80 : 0));
}

} // namespace

void describe(Fields& io, Identity& id)
{
    io.require("manufacturer");
    io.number("deviceId", id.deviceId, Fields::Base::Hexadecimal);
    describeRevision(io, id);
    describeFirmware(io, id);
    describeIpmiVersion(io, id);
    io.bits("support", id.deviceSupport, support);
    io.number("manufacturer", id.manufacturer, Fields::Base::Decimal, 0xFFFFFF);
    io.number("product", id.product, Fields::Base::Hexadecimal);
    io.bytes("auxiliaryFirmware", id.auxiliaryFirmware, 4, 4);
    io.bytes("selfTest", id.selfTest, 2, 2);
    io.bytes("acpiPowerState", id.acpiPowerState, 2, 2);
    io.bytes("deviceGuid", id.deviceGuid, 16, 16);
    io.bytes("systemGuid", id.systemGuid, 16, 16);
}

} // namespace Sim
