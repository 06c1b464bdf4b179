#include "tools/print/lan_words.h"

#include <arpa/inet.h>

#include "tools/print/completion_codes.h"
#include "tools/print/self_test.h"

namespace Tool
{

namespace
{

constexpr const char* media[] = {
    "reserved",        "IPMB (I2C)",   "ICMB v1.0", "ICMB v0.9",
    "802.3 LAN",       "serial/modem", "other LAN", "PCI SMBus",
    "SMBus v1.0/1.1",  "SMBus v2.0",   "USB 1.x",   "USB 2.x",
    "system interface"};
constexpr const char* sources[] = {"unspecified", "static", "DHCP", "BIOS",
                                   "other"};
constexpr const char* enables[] = {"disabled", "enabled, without IPv4",
                                   "enabled, beside IPv4"};
constexpr const char* ipv6Sources[] = {"static", "SLAAC", "DHCPv6"};
constexpr const char* statuses[] = {"active", "disabled",   "pending",
                                    "failed", "deprecated", "invalid"};
constexpr BitName supports[] = {
    {0, "instead of IPv4"}, {1, "beside IPv4"}, {2, "destinations of alerts"}};
constexpr BitName dynamicSupports[] = {{0, "DHCPv6"}, {1, "SLAAC"}};
constexpr BitName routerControls[] = {{0, "static"}, {1, "dynamic"}};

std::string reserved(uint8_t code)
{
    return "reserved (" + hexNumber(code) + ")";
}

template <size_t count>
std::string nameIn(const char* const (&names)[count], uint8_t code)
{
    return code < count ? names[code] : reserved(code);
}

} // namespace

std::string mediumName(uint8_t medium)
{
    constexpr uint8_t firstOem = 0x60;
    return medium >= firstOem ? "OEM (" + hexNumber(medium) + ")"
                              : nameIn(media, medium);
}

std::string sourceName(uint8_t code)
{
    constexpr uint8_t fourBits = 0x0F;
    return nameIn(sources, code & fourBits);
}

std::string ipv6EnablesName(uint8_t code)
{
    return nameIn(enables, code);
}

std::vector<std::string> ipv6SupportNames(uint8_t bits)
{
    return namesOfBits(supports, bits);
}

std::vector<std::string> dynamicSupportNames(uint8_t bits)
{
    return namesOfBits(dynamicSupports, bits);
}

std::vector<std::string> routerControlNames(uint8_t bits)
{
    return namesOfBits(routerControls, bits);
}

std::string ipv6SourceName(const LanAddress& address)
{
    if (address.isDynamic && address.source == 0)
        return reserved(address.source);
    return nameIn(ipv6Sources, address.source);
}

std::string whyGap(const LanGap& gap)
{
    return gap.isOfAnother ? "the controller answered for another one"
                           : inWords(gap.command, gap.completion);
}

std::string ipv6StatusName(uint8_t code)
{
    return nameIn(statuses, code);
}

std::string ipv4Text(const Bytes& value)
{
    constexpr size_t size = 4;
    std::string text;
    for (size_t i = 0; i < size; ++i)
        text += (i ? "." : "") + std::to_string(value[i]);
    return text;
}

std::string macText(const Bytes& value)
{
    constexpr size_t size = 6;
    std::string text;
    for (size_t i = 0; i < size; ++i)
        text += (i ? ":" : "") + hexByte(value[i]);
    return text;
}

std::string ipv6Text(const Bytes& address)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, address.data(), text, sizeof text);
    return text;
}

Vlan vlanOf(const Bytes& value)
{
    constexpr uint8_t enabled = 0x80, upperBits = 0x0F;
    return {(value[1] & enabled) != 0,
            value[0] | (value[1] & upperBits) * 0x100u};
}

unsigned vlanPriorityOf(const Bytes& value)
{
    constexpr uint8_t threeBits = 0x07;
    return value[0] & threeBits;
}

} // namespace Tool
