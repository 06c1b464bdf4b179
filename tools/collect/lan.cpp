#include "tools/collect/lan.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Tool
{

namespace
{

constexpr uint8_t unsupportedCommand = 0xC1, unsupportedParameter = 0x80;

/// Answers that were waited for in vain, of which each costs seconds: whether
/// the rest is left.
class Silences
{
public:
    void note(const Completion& completion)
    {
        const bool isSilence = completion.isUnanswered();
        inRow_ = isSilence ? inRow_ + 1 : 0;
        all_ += isSilence ? 1 : 0;
    }
    bool areTooMany() const { return inRow_ >= mostInRow || all_ >= mostInAll; }

private:
    static constexpr unsigned mostInRow = 2, mostInAll = 4;
    unsigned inRow_ = 0, all_ = 0;
};

/// Channels that are left for their silence before the rest of them is, too.
constexpr unsigned mostSilentChannels = 2;

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

/// Things with a number each.
struct Set
{
    uint8_t parameter;
    const char *one, *many;
    bool isIndexed; ///< An entry for each set selector, behind its number.
};

constexpr Set staticAddresses = {56, "static IPv6 address",
                                 "static IPv6 addresses", true},
              dynamicAddresses = {59, "dynamic IPv6 address",
                                  "dynamic IPv6 addresses", true};

// Each set of routers: address, MAC address, prefix length, prefix.
constexpr Set staticRouters[] = {
    {65, "static IPv6 router", "static IPv6 routers", false},
    {69, "static IPv6 router", "static IPv6 routers", false}};
constexpr Set dynamicRouters = {74, "dynamic IPv6 router",
                                "dynamic IPv6 routers", true};
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

    void readParameters();
    void readAddresses();
    void readRouters();
    bool isSilent() const { return silences_.areTooMany(); }

private:
    struct Question
    {
        uint8_t parameter;
        size_t size;
        LanItem item;
        uint8_t selector = 0;
        bool isIndexed = false; ///< The value begins with the selector.
    };

    /// What follows the revision; nothing when it is not there, or not read,
    /// which is then a gap.
    std::optional<Bytes> read(const Question& question);
    std::optional<Bytes> read(const Parameter& parameter);
    /// A part of a thing of the set, without its number.
    Bytes readPart(const Set& set, unsigned index, uint8_t after, size_t size,
                   const char* name);
    void readAddressesOf(const Set& set, unsigned count);
    void readRouter(const Set& set, unsigned index);
    void noteGap(LanGap gap);

    Device& device_;
    LanInterface& result_;
    Silences silences_;
    bool isOver_ = false;
};

// Neighbours that failed for the same reason.
bool joins(const LanGap& before, const LanGap& after)
{
    const Completion &one = before.completion, &other = after.completion;
    using View = std::string_view;
    return *after.item.many && View{before.item.many} == after.item.many &&
           View{before.item.part} == after.item.part &&
           before.item.last + 1 == after.item.first &&
           before.isOfAnother == after.isOfAnother &&
           one.answered == other.answered && one.code == other.code &&
           one.isCut == other.isCut;
}

void addGap(std::vector<LanGap>& gaps, LanGap gap)
{
    const auto before =
        std::find_if(gaps.begin(), gaps.end(),
                     [&](const LanGap& one) { return joins(one, gap); });
    if (before == gaps.end()) {
        gaps.push_back(std::move(gap));
        return;
    }
    before->item.last = gap.item.last;
    before->rest = gap.rest;
}

void Reader::noteGap(LanGap gap)
{
    const Completion& completion = gap.completion;
    isOver_ = silences_.areTooMany() ||
              (completion.answered && completion.code == unsupportedCommand);
    if (isOver_)
        gap.rest = ", and what follows it";
    addGap(result_.gaps, std::move(gap));
}

std::optional<Bytes> Reader::read(const Question& question)
{
    if (isOver_)
        return std::nullopt;
    Answer answer = device_.exchange(
        commands::getLanConfiguration,
        {result_.channel, question.parameter, question.selector, 0});
    Completion& completion = answer.completion;
    silences_.note(completion);
    if (completion.answered && completion.code == unsupportedParameter)
        return std::nullopt;
    if (completion.ok() && answer.data.size() < 1 + question.size)
        completion.isCut = true;
    const bool isOfAnother = completion.ok() && question.isIndexed &&
                             answer.data[1] != question.selector;
    if (!completion.ok() || isOfAnother) {
        noteGap({question.item, commands::getLanConfiguration, completion,
                 isOfAnother, ""});
        return std::nullopt;
    }
    return Bytes(answer.data.begin() + 1, answer.data.end());
}

std::optional<Bytes> Reader::read(const Parameter& parameter)
{
    return read({parameter.number, parameter.size, {"", parameter.what}});
}

Bytes Reader::readPart(const Set& set, unsigned index, uint8_t after,
                       size_t size, const char* name)
{
    const size_t head = set.isIndexed ? 1 : 0;
    auto value = read({uint8_t(set.parameter + after),
                       head + size,
                       {name, set.one, set.many, index, index},
                       uint8_t(set.isIndexed ? index : 0),
                       set.isIndexed});
    if (value)
        value->erase(value->begin(), value->begin() + ptrdiff_t(head));
    return value.value_or(Bytes{});
}

void Reader::readParameters()
{
    for (const Parameter& parameter : parameters)
        if (auto value = read(parameter))
            result_.parameters[parameter.number] = std::move(*value);
}

// IPMI v2.0, table 23-4, parameters 56 and 59, behind the selector: source,
// address, prefix length, status.
LanAddress addressOf(const Bytes& entry, bool isDynamic, unsigned index)
{
    constexpr size_t sourceAt = 0, addressAt = 1, prefixAt = 17, statusAt = 18;
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

void Reader::readAddressesOf(const Set& set, unsigned count)
{
    for (unsigned i = 0; i < count; ++i)
        if (const Bytes entry = readPart(set, i, 0, entrySize - 1, "");
            !entry.empty())
            result_.addresses.push_back(
                addressOf(entry, &set == &dynamicAddresses, i));
}

// Where it is not told how many places there are, there may be one of each.
void Reader::readAddresses()
{
    const Bytes* const counts = result_.find(lan::ipv6Status);
    readAddressesOf(staticAddresses, counts ? (*counts)[0] : 1);
    readAddressesOf(dynamicAddresses, counts ? (*counts)[1] : 1);
}

// A router that is not there has no address, and is not asked about.
void Reader::readRouter(const Set& set, unsigned index)
{
    constexpr size_t macSize = 6;
    LanRouter router;
    router.isDynamic = set.isIndexed;
    router.index = index;
    router.address = readPart(set, index, 0, addressSize, "");
    if (router.address == Bytes(router.address.size()))
        return;
    router.mac = readPart(set, index, macAfter, macSize, "MAC address");
    const Bytes length =
        readPart(set, index, prefixLengthAfter, 1, "prefix length");
    if (!length.empty())
        router.prefixLength = length[0];
    router.prefix = readPart(set, index, prefixAfter, addressSize, "prefix");
    result_.routers.push_back(std::move(router));
}

void Reader::readRouters()
{
    unsigned index = 0;
    for (const Set& set : staticRouters)
        readRouter(set, ++index);
    const auto count = read(dynamicRouterCount);
    for (unsigned i = 0; count && i < (*count)[0]; ++i)
        readRouter(dynamicRouters, i);
}

// Of a channel that refuses everything one answer says it all.
void sumUp(LanInterface& result)
{
    if (!result.parameters.empty() || result.gaps.empty())
        return;
    result.gaps.resize(1);
    result.gaps[0].item = {"", "the configuration"};
    result.gaps[0].rest = "";
}

// @return whether it was left for its silence.
bool readInterface(Device& device, LanInterface& result)
{
    Reader reader{device, result};
    reader.readParameters();
    if (result.hasIpv6()) {
        reader.readAddresses();
        reader.readRouters();
    }
    sumUp(result);
    return reader.isSilent();
}

LanChannel askFor(Device& device, uint8_t number)
{
    constexpr size_t mediumAt = 1;
    constexpr uint8_t medium = 0x7F, fourBits = 0x0F;
    const Answer answer = device.exchange(commands::getChannelInfo, {number});
    LanChannel channel{number, answer.completion, 0, false};
    if (answer.data.size() > mediumAt) {
        channel.medium = answer.data[mediumAt] & medium;
        channel.isOfAnother = (answer.data[0] & fourBits) != number;
    } else if (channel.completion.ok()) {
        channel.completion.isCut = true;
    }
    return channel;
}

void askForAll(Device& device, Lan& lan)
{
    Silences silences;
    for (uint8_t number = lan::firstChannel; number <= lan::lastChannel;
         ++number) {
        if (silences.areTooMany()) {
            lan.notAsked = lan::lastChannel + 1u - number;
            return;
        }
        lan.channels.push_back(askFor(device, number));
        const Completion& completion = lan.channels.back().completion;
        silences.note(completion);
        if (completion.answered && completion.code == unsupportedCommand)
            return;
    }
}

} // namespace

std::string LanGap::what() const
{
    std::string text =
        (*item.part ? "the " + std::string{item.part} + " of " : "");
    const bool isOne = item.first == item.last;
    text += isOne ? item.one : item.many;
    if (*item.many)
        text += " " + std::to_string(item.first) +
                (isOne ? "" : " to " + std::to_string(item.last));
    return text + rest;
}

bool LanInterface::hasIpv6() const
{
    return find(lan::ipv6Support) || find(lan::ipv6Enables) ||
           find(lan::ipv6Status);
}

const Bytes* LanInterface::find(lan::Parameter parameter) const
{
    const auto found = parameters.find(parameter);
    return found == parameters.end() ? nullptr : &found->second;
}

bool LanChannel::isLan() const
{
    constexpr uint8_t lan8023 = 4, otherLan = 6;
    return isKnown() && (medium == lan8023 || medium == otherLan);
}

bool LanChannel::isGap() const
{
    constexpr uint8_t noSuch[] = {unsupportedCommand, 0xC9, 0xCB, 0xCC};
    const bool isNone = completion.answered && !completion.isCut &&
                        std::find(std::begin(noSuch), std::end(noSuch),
                                  completion.code) != std::end(noSuch);
    return !isKnown() && !isNone;
}

std::vector<LanGap> Lan::gaps() const
{
    std::vector<LanGap> gaps;
    for (const LanChannel& channel : channels)
        if (channel.isGap())
            addGap(gaps,
                   {{"", "channel", "channels", channel.number, channel.number},
                    commands::getChannelInfo,
                    channel.completion,
                    channel.isOfAnother,
                    notAsked && &channel == &channels.back()
                        ? ", and all that follow,"
                        : ""});
    return gaps;
}

namespace
{

LanInterface notAskedFor(uint8_t channel)
{
    LanInterface one;
    one.channel = channel;
    one.gaps.push_back({{"", "the configuration"},
                        commands::getLanConfiguration,
                        {},
                        false,
                        ", which was not asked for after so much silence,"});
    return one;
}

} // namespace

Lan collectLan(Device& device, std::optional<uint8_t> channel)
{
    Lan lan;
    if (channel)
        lan.channels.push_back(askFor(device, *channel));
    else
        askForAll(device, lan);
    unsigned silent = 0;
    for (const LanChannel& one : lan.channels) {
        if (!one.isLan() && (!channel || one.isKnown()))
            continue;
        LanInterface result;
        result.channel = one.number;
        if (silent == mostSilentChannels)
            result = notAskedFor(one.number);
        else if (readInterface(device, result))
            ++silent;
        if (one.isLan())
            result.medium = one.medium;
        lan.interfaces.push_back(std::move(result));
    }
    return lan;
}

} // namespace Tool
