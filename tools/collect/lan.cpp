#include "tools/collect/lan.h"

#include <algorithm>

namespace Tool
{

namespace
{

constexpr uint8_t unsupportedCommand = 0xC1, unsupportedParameter = 0x80;

/// Answers to be waited for in vain before the rest is left: each costs
/// seconds.
constexpr unsigned mostSilences = 2;

struct Parameter
{
    uint8_t number;
    size_t size;
    const char* what;
};

constexpr Parameter parameters[] = {
    {lan::address, 4, "the IPv4 address"},
    {lan::addressSource, 1, "the IPv4 address's source"},
    {lan::mac, 6, "the MAC address"},
    {lan::netmask, 4, "the IPv4 netmask"},
    {lan::gateway, 4, "the gateway"},
    {lan::gatewayMac, 6, "the gateway's MAC address"},
    {lan::backupGateway, 4, "the backup gateway"},
    {lan::backupGatewayMac, 6, "the backup gateway's MAC address"},
    {lan::vlanId, 2, "the VLAN"},
    {lan::vlanPriority, 1, "the VLAN's priority"},
    {lan::ipv6Support, 1, "the IPv6 support"},
    {lan::ipv6Enables, 1, "whether IPv6 is enabled"},
    {lan::ipv6Status, 3, "the number of IPv6 addresses"},
    {lan::ipv6RouterControl, 1, "where IPv6 routers come from"},
};

constexpr size_t addressSize = 16, entrySize = 20;
constexpr Parameter staticAddress = {56, entrySize, "static IPv6 address "};
constexpr Parameter dynamicAddress = {59, entrySize, "dynamic IPv6 address "};

// Each set of routers: address, MAC address, prefix length, prefix.
struct RouterSet
{
    Parameter address;
    bool isIndexed; ///< An entry for each set selector, behind its number.
    unsigned index;
};

constexpr RouterSet staticRouters[] = {
    {{65, addressSize, "static IPv6 router "}, false, 1},
    {{69, addressSize, "static IPv6 router "}, false, 2}};
constexpr RouterSet dynamicRouters = {
    {74, addressSize, "dynamic IPv6 router "}, true, 0};
constexpr Parameter dynamicRouterCount = {73, 1,
                                          "the number of dynamic IPv6 routers"};
constexpr uint8_t macAfter = 1, prefixLengthAfter = 2, prefixAfter = 3;

/// Asks one channel, until it is clear that it will not answer.
class Reader
{
public:
    Reader(Device& device, LanInterface& result)
        : device_{device}, result_{result}
    {}

    /// What follows the revision; nothing when it is not there, or not read,
    /// which is then a gap.
    std::optional<Bytes> read(const Parameter& parameter,
                              const std::string& what, uint8_t selector = 0);
    void readParameters();
    void readAddresses(bool areDynamic, unsigned count);
    void readRouter(const RouterSet& set, unsigned index);
    void readRouters();

private:
    void noteGap(const std::string& what, const Completion& completion);

    Device& device_;
    LanInterface& result_;
    unsigned silences_ = 0;
    bool isOver_ = false;
};

void Reader::noteGap(const std::string& what, const Completion& completion)
{
    silences_ = completion.isUnanswered() ? silences_ + 1 : 0;
    isOver_ = silences_ == mostSilences ||
              (completion.answered && completion.code == unsupportedCommand);
    result_.gaps.push_back({isOver_ ? what + ", and what follows it" : what,
                            commands::getLanConfiguration, completion});
}

std::optional<Bytes> Reader::read(const Parameter& parameter,
                                  const std::string& what, uint8_t selector)
{
    if (isOver_)
        return std::nullopt;
    Answer answer =
        device_.exchange(commands::getLanConfiguration,
                         {result_.channel, parameter.number, selector, 0});
    Completion& completion = answer.completion;
    if (completion.ok() && answer.data.size() < 1 + parameter.size)
        completion.isCut = true;
    if (completion.answered && completion.code == unsupportedParameter) {
        silences_ = 0;
        return std::nullopt;
    }
    if (!completion.ok()) {
        noteGap(what, completion);
        return std::nullopt;
    }
    silences_ = 0;
    return Bytes(answer.data.begin() + 1, answer.data.end());
}

void Reader::readParameters()
{
    for (const Parameter& parameter : parameters)
        if (auto value = read(parameter, parameter.what))
            result_.parameters[parameter.number] = std::move(*value);
}

// IPMI v2.0, table 23-4, parameters 56 and 59: selector, source, address,
// prefix length, status.
LanAddress addressOf(const Bytes& entry, bool isDynamic, unsigned index)
{
    constexpr size_t sourceAt = 1, addressAt = 2, prefixAt = 18, statusAt = 19;
    constexpr uint8_t enabled = 0x80, source = 0x0F;
    LanAddress address;
    address.isDynamic = isDynamic;
    address.index = index;
    address.source = entry[sourceAt] & source;
    address.isEnabled = entry[sourceAt] & enabled;
    address.address.assign(entry.begin() + addressAt, entry.begin() + prefixAt);
    address.prefixLength = entry[prefixAt];
    address.status = entry[statusAt];
    return address;
}

void Reader::readAddresses(bool areDynamic, unsigned count)
{
    const Parameter& parameter = areDynamic ? dynamicAddress : staticAddress;
    for (unsigned i = 0; i < count; ++i)
        if (const auto entry =
                read(parameter, parameter.what + std::to_string(i), uint8_t(i)))
            result_.addresses.push_back(addressOf(*entry, areDynamic, i));
}

// A router that is not there has no address, and is not asked about.
void Reader::readRouter(const RouterSet& set, unsigned index)
{
    constexpr size_t macSize = 6;
    const size_t head = set.isIndexed ? 1 : 0;
    const auto selector = uint8_t(set.isIndexed ? index : 0);
    const auto part = [&](uint8_t after, size_t size, const char* name) {
        const std::string what = set.address.what + std::to_string(index);
        auto value =
            read({uint8_t(set.address.number + after), head + size, ""},
                 *name ? what + "'s " + name : what, selector);
        if (value)
            value->erase(value->begin(), value->begin() + ptrdiff_t(head));
        return value.value_or(Bytes{});
    };
    LanRouter router;
    router.isDynamic = set.isIndexed;
    router.index = index;
    router.address = part(0, addressSize, "");
    if (router.address == Bytes(router.address.size()))
        return;
    router.mac = part(macAfter, macSize, "MAC address");
    const Bytes length = part(prefixLengthAfter, 1, "prefix length");
    if (!length.empty())
        router.prefixLength = length[0];
    router.prefix = part(prefixAfter, addressSize, "prefix");
    result_.routers.push_back(std::move(router));
}

void Reader::readRouters()
{
    for (const RouterSet& set : staticRouters)
        readRouter(set, set.index);
    const auto count = read(dynamicRouterCount, dynamicRouterCount.what);
    for (unsigned i = 0; count && i < (*count)[0]; ++i)
        readRouter(dynamicRouters, i);
}

LanInterface readInterface(Device& device, uint8_t channel)
{
    LanInterface result;
    result.channel = channel;
    Reader reader{device, result};
    reader.readParameters();
    if (const Bytes* status = result.find(lan::ipv6Status)) {
        reader.readAddresses(false, (*status)[0]);
        reader.readAddresses(true, (*status)[1]);
        reader.readRouters();
    }
    // Of a channel that refuses everything one answer says it all.
    if (result.parameters.empty() && !result.gaps.empty()) {
        result.gaps.resize(1);
        result.gaps[0].what = "the configuration";
    }
    return result;
}

LanChannel askFor(Device& device, uint8_t number)
{
    constexpr size_t mediumAt = 1;
    constexpr uint8_t medium = 0x7F;
    const Answer answer = device.exchange(commands::getChannelInfo, {number});
    LanChannel channel{number, answer.completion, 0};
    if (answer.data.size() > mediumAt)
        channel.medium = answer.data[mediumAt] & medium;
    else if (channel.completion.ok())
        channel.completion.isCut = true;
    return channel;
}

std::vector<LanChannel> askForAll(Device& device)
{
    std::vector<LanChannel> channels;
    unsigned silences = 0;
    for (uint8_t number = lan::firstChannel;
         number <= lan::lastChannel && silences < mostSilences; ++number)
    {
        channels.push_back(askFor(device, number));
        const Completion& completion = channels.back().completion;
        silences = completion.isUnanswered() ? silences + 1 : 0;
        if (completion.answered && completion.code == unsupportedCommand)
            break;
    }
    return channels;
}

} // namespace

const Bytes* LanInterface::find(lan::Parameter parameter) const
{
    const auto found = parameters.find(parameter);
    return found == parameters.end() ? nullptr : &found->second;
}

bool LanChannel::isLan() const
{
    constexpr uint8_t lan8023 = 4, otherLan = 6;
    return completion.ok() && (medium == lan8023 || medium == otherLan);
}

std::vector<LanGap> Lan::gaps() const
{
    std::vector<LanGap> gaps;
    for (const LanChannel& channel : channels)
        if (channel.completion.isUnanswered() || channel.completion.isCut)
            gaps.push_back({"channel " + std::to_string(channel.number),
                            commands::getChannelInfo, channel.completion});
    return gaps;
}

Lan collectLan(Device& device, std::optional<uint8_t> channel)
{
    Lan lan;
    if (channel)
        lan.channels.push_back(askFor(device, *channel));
    else
        lan.channels = askForAll(device);
    for (const LanChannel& one : lan.channels) {
        if (!one.isLan() && (!channel || one.completion.ok()))
            continue;
        lan.interfaces.push_back(readInterface(device, one.number));
        if (one.isLan())
            lan.interfaces.back().medium = one.medium;
    }
    return lan;
}

} // namespace Tool
