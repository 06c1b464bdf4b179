/// Values of the LAN configuration as texts.
#ifndef VEK_TOOLS_PRINT_LAN_WORDS_H
#define VEK_TOOLS_PRINT_LAN_WORDS_H

#include <string>
#include <vector>

#include "tools/collect/lan.h"
#include "tools/print/text.h"

namespace Tool
{

/// "802.3 LAN" (IPMI v2.0, table 6-3).
std::string mediumName(uint8_t medium);

// IPMI v2.0, table 23-4. A code that it does not define is "reserved (07h)".

/// Of the IPv4 address: "static", "DHCP".
std::string sourceName(uint8_t code);
/// "enabled, beside IPv4"
std::string ipv6EnablesName(uint8_t code);
std::vector<std::string> ipv6SupportNames(uint8_t bits);
/// "DHCPv6", "SLAAC"
std::vector<std::string> dynamicSupportNames(uint8_t bits);
/// "static", "dynamic"
std::vector<std::string> routerControlNames(uint8_t bits);
/// "static", "SLAAC", "DHCPv6"; a dynamic one is never static.
std::string ipv6SourceName(const LanAddress& address);
/// "active", "deprecated"
std::string ipv6StatusName(uint8_t code);

/// What became of the question.
std::string whyGap(const LanGap& gap);

/// The beginning of the value as "192.0.2.1" and "02:00:5e:10:0a:01".
std::string ipv4Text(const Bytes& value);
std::string macText(const Bytes& value);
/// 16 bytes as RFC 5952 has them.
std::string ipv6Text(const Bytes& address);

struct Vlan
{
    bool isEnabled;
    unsigned id;
};

Vlan vlanOf(const Bytes& value);
unsigned vlanPriorityOf(const Bytes& value);

} // namespace Tool

#endif
