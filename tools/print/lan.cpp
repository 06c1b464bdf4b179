#include "tools/print/lan.h"

#include <algorithm>

#include "tools/print/completion_codes.h"
#include "tools/print/lan_words.h"
#include "tools/print/table.h"
#include "tools/print/words.h"

namespace Tool
{

namespace
{

std::string withPrefix(const Bytes& address, unsigned length)
{
    return ipv6Text(address) + "/" + std::to_string(length);
}

std::string vlanText(const LanInterface& one, const Bytes& value)
{
    const Vlan vlan = vlanOf(value);
    if (!vlan.isEnabled)
        return "disabled";
    const Bytes* priority = one.find(lan::vlanPriority);
    return std::to_string(vlan.id) +
           (priority ? ", priority " + std::to_string(vlanPriorityOf(*priority))
                     : "");
}

using ToText = std::string (*)(const LanInterface&, const Bytes&);

template <std::string (*text)(const Bytes&)>
std::string whole(const LanInterface&, const Bytes& value)
{
    return text(value);
}

template <std::string (*name)(uint8_t)>
std::string code(const LanInterface&, const Bytes& value)
{
    return name(value[0]);
}

template <std::vector<std::string> (*names)(uint8_t)>
std::string bits(const LanInterface&, const Bytes& value)
{
    const std::string text = joined(names(value[0]));
    return text.empty() ? "none" : text;
}

struct Row
{
    const char* key;
    lan::Parameter parameter;
    ToText text;
};

constexpr Row rows[] = {
    {"MAC address", lan::mac, whole<macText>},
    {"IPv4 address", lan::address, whole<ipv4Text>},
    {"IPv4 address source", lan::addressSource, code<sourceName>},
    {"IPv4 netmask", lan::netmask, whole<ipv4Text>},
    {"Gateway", lan::gateway, whole<ipv4Text>},
    {"Gateway MAC", lan::gatewayMac, whole<macText>},
    {"Backup gateway", lan::backupGateway, whole<ipv4Text>},
    {"Backup gateway MAC", lan::backupGatewayMac, whole<macText>},
    {"VLAN", lan::vlanId, vlanText},
    {"IPv6", lan::ipv6Enables, code<ipv6EnablesName>},
    {"IPv6 support", lan::ipv6Support, bits<ipv6SupportNames>},
    {"IPv6 routers from", lan::ipv6RouterControl, bits<routerControlNames>},
};

// Places that nothing was ever put into are for JSON alone.
std::vector<std::string> addressLines(const LanInterface& one)
{
    std::vector<std::string> lines;
    for (const LanAddress& address : one.addresses) {
        const bool isOff = !address.isDynamic && !address.isEnabled;
        if (address.isUsed() || address.isEnabled)
            lines.push_back(withPrefix(address.address, address.prefixLength) +
                            ", " + ipv6SourceName(address) + ", " +
                            ipv6StatusName(address.status) +
                            (isOff ? ", not enabled" : ""));
    }
    // What was not read may be there.
    if (lines.empty() && one.gaps.empty())
        lines.push_back(one.find(lan::ipv6Status) ? "none" : "not told");
    return lines;
}

std::vector<std::string> routerLines(const LanInterface& one)
{
    std::vector<std::string> lines;
    for (const LanRouter& router : one.routers) {
        std::string text = ipv6Text(router.address) +
                           (router.isDynamic ? ", dynamic" : ", static");
        if (!router.mac.empty())
            text += ", " + macText(router.mac);
        if (!router.prefix.empty() && router.prefixLength)
            text += ", to " + withPrefix(router.prefix, *router.prefixLength);
        lines.push_back(std::move(text));
    }
    return lines;
}

void addGaps(Table& table, const std::vector<LanGap>& gaps)
{
    std::vector<std::string> lines;
    for (const LanGap& gap : gaps)
        lines.push_back(gap.what() + " (" + whyGap(gap) + ")");
    if (!lines.empty())
        table.row("Not read", lines);
}

std::string channelText(const LanInterface& one)
{
    const std::string number = std::to_string(one.channel);
    return one.medium ? number + " (" + mediumName(*one.medium) + ")" : number;
}

std::string toTable(const LanInterface& one)
{
    Table table;
    table.row("Channel", channelText(one));
    for (const Row& row : rows)
        if (const Bytes* value = one.find(row.parameter))
            table.row(row.key, row.text(one, *value));
    if (one.hasIpv6())
        if (const auto lines = addressLines(one); !lines.empty())
            table.row("IPv6 addresses", lines);
    if (!one.routers.empty())
        table.row("IPv6 routers", routerLines(one));
    addGaps(table, one.gaps);
    return table.text();
}

// "channel 6 is IPMB (I2C); 10 channels: CCh: ...", for all that are no LAN.
std::string channelsInWords(const Lan& lan)
{
    std::string text;
    std::vector<std::pair<std::string, unsigned>> failures;
    for (const LanChannel& channel : lan.channels) {
        const std::string words =
            channel.isOfAnother
                ? "the answer was for another one"
                : inWords(commands::getChannelInfo, channel.completion);
        const auto same =
            std::find_if(failures.begin(), failures.end(),
                         [&](const auto& one) { return one.first == words; });
        if (channel.isKnown())
            text += (text.empty() ? "" : "; ") + std::string{"channel "} +
                    std::to_string(channel.number) + " is " +
                    mediumName(channel.medium);
        else if (same == failures.end())
            failures.push_back({words, 1});
        else
            ++same->second;
    }
    for (const auto& [words, count] : failures)
        text += (text.empty() ? "" : "; ") + std::to_string(count) +
                (count == 1 ? " channel: " : " channels: ") + words;
    if (lan.notAsked != 0)
        text += "; " + std::to_string(lan.notAsked) + " were not asked";
    return text;
}

} // namespace

std::string toTable(const Lan& lan)
{
    std::string text;
    for (const LanInterface& one : lan.interfaces)
        text += (text.empty() ? "" : "\n") + toTable(one);
    Table unknown;
    addGaps(unknown, lan.gaps());
    return text + (text.empty() || unknown.text().empty() ? "" : "\n") +
           unknown.text();
}

std::vector<Failure> failuresOf(const Lan& lan)
{
    std::vector<Failure> failures;
    const auto add = [&](const std::string& whose, const LanGap& gap) {
        failures.push_back(
            {Status::failed,
             whose + gap.what() +
                 (gap.item.first == gap.item.last ? " was not read: "
                                                  : " were not read: ") +
                 whyGap(gap),
             nextStep(gap.completion)});
    };
    for (const LanGap& gap : lan.gaps())
        add("Get Channel Info: ", gap);
    for (const LanInterface& one : lan.interfaces)
        for (const LanGap& gap : one.gaps)
            add("LAN channel " + std::to_string(one.channel) + ": ", gap);
    return failures;
}

Failure whyNoLan(const Lan& lan)
{
    const LanChannel& first = lan.channels.front();
    if (lan.channels.size() == 1 && first.isKnown())
        return {Status::usage,
                "channel " + std::to_string(first.number) +
                    " is no LAN channel but " + mediumName(first.medium),
                "See which are: vek-ipmi lan"};
    const bool answered = std::none_of(
        lan.channels.begin(), lan.channels.end(), [](const LanChannel& one) {
            return one.completion.status() == Status::failed || one.isOfAnother;
        });
    return {answered ? Status::refused : Status::failed,
            "no LAN channel was found with Get Channel Info: " +
                channelsInWords(lan),
            "If there is one, choose it by its number: vek-ipmi lan --channel "
            "1"};
}

} // namespace Tool
