/// The configuration of the controller's LAN channels (IPMI v2.0, 23.2).
#ifndef VEK_TOOLS_COLLECT_LAN_H
#define VEK_TOOLS_COLLECT_LAN_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tools/device.h"

namespace Tool
{

namespace lan
{

/// Parameters that have one value (IPMI v2.0, table 23-4).
enum Parameter : uint8_t
{
    address = 3,
    addressSource = 4,
    mac = 5,
    netmask = 6,
    gateway = 12,
    gatewayMac = 13,
    backupGateway = 14,
    backupGatewayMac = 15,
    vlanId = 20,
    vlanPriority = 21,
    ipv6Support = 50,
    ipv6Enables = 51,
    ipv6Status = 55,
    ipv6RouterControl = 64
};

constexpr uint8_t firstChannel = 1, lastChannel = 11; // IPMI v2.0, 6.3

} // namespace lan

/// What a question is about: "the gateway"; "static IPv6 address 1"; "the MAC
/// address of dynamic IPv6 routers 0 to 9".
struct LanItem
{
    const char *part = "", *one = "", *many = ""; ///< `many`: it has a number.
    unsigned first = 0, last = 0;
};

/// Something that was not read, though it may be there.
struct LanGap
{
    LanItem item;
    Command command;
    Completion completion;
    bool isOfAnother = false; ///< The answer was for another selector.
    const char* rest = "";    ///< What was not asked for after that.

    std::string what() const;
};

struct LanAddress
{
    bool isDynamic = false;
    unsigned index = 0;
    uint8_t source = 0;     ///< 0 static, 1 SLAAC, 2 DHCPv6.
    bool isEnabled = false; ///< Of a static one.
    Bytes address;          ///< 16 bytes.
    uint8_t prefixLength = 0, status = 0;

    bool isUsed() const { return address != Bytes(address.size()); }
};

struct LanRouter
{
    bool isDynamic = false;
    unsigned index = 0; ///< Static ones are 1 and 2.
    Bytes address;      ///< 16 bytes, not all of them 0.
    Bytes mac, prefix;  ///< Empty: not supported, or a gap.
    std::optional<uint8_t> prefixLength;
};

struct LanInterface
{
    uint8_t channel = 0;
    std::optional<uint8_t> medium; ///< None: Get Channel Info was refused.
    /// Without those that are not supported, and those of `gaps`.
    std::map<uint8_t, Bytes> parameters;
    std::vector<LanAddress> addresses;
    std::vector<LanRouter> routers;
    std::vector<LanGap> gaps;

    bool hasIpv6() const;
    /// Null for none.
    const Bytes* find(lan::Parameter parameter) const;
};

/// What became of a question for a channel.
struct LanChannel
{
    uint8_t number = 0;
    Completion completion;
    uint8_t medium = 0;       ///< IPMI v2.0, table 6-3.
    bool isOfAnother = false; ///< The answer was for another channel.

    bool isKnown() const { return completion.ok() && !isOfAnother; }
    bool isLan() const;
    /// It did not say what it is. One that the controller does not have did.
    bool isGap() const;
};

struct Lan
{
    std::vector<LanChannel> channels; ///< All that were asked for.
    unsigned notAsked = 0;            ///< Channels, after too much silence.
    std::vector<LanInterface> interfaces;

    /// Channels that did not say whether they are LAN channels.
    std::vector<LanGap> gaps() const;
};

/// All LAN channels, in their order, or the chosen one, which is tried also
/// where the controller does not tell about channels.
Lan collectLan(Device& device, std::optional<uint8_t> channel = {});

} // namespace Tool

#endif
