#include "sim/model/lan.h"

#include <algorithm>

#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

constexpr uint8_t notSupported = 0x80, alreadySet = 0x81, readOnly = 0x82;

LanConfig* findLan(Bmc& bmc, uint8_t channel)
{
    std::vector<LanConfig>& all = bmc.state().lan;
    const auto found =
        std::find_if(all.begin(), all.end(), [=](const LanConfig& one) {
            return one.channel == channel ||
                   std::count(one.aliases.begin(), one.aliases.end(), channel);
        });
    return found == all.end() ? nullptr : &*found;
}

template <size_t count>
bool isIn(const uint8_t (&list)[count], uint8_t parameter)
{
    return std::find(list, list + count, parameter) != list + count;
}

/// Whether it has many values, of which the set selector names one. Anything
/// else has the same answer at each.
bool isIndexed(const LanConfig& config, uint8_t parameter)
{
    constexpr uint8_t indexed[] = {lan::destinationType,
                                   lan::destinationAddress,
                                   lan::destinationVlan,
                                   lan::ipv6Static,
                                   58,
                                   lan::ipv6Dynamic,
                                   61,
                                   63,
                                   74,
                                   75,
                                   76,
                                   77,
                                   80};
    const auto& all = config.parameters;
    return isIn(indexed, parameter) ||
           all.upper_bound(lanKey(parameter)) !=
               all.upper_bound(lanKey(parameter, 0xFF));
}

/// The completion code where there is no such parameter, or no such value.
uint8_t findParameter(LanConfig& config, uint8_t parameter, uint8_t selector,
                      Bytes*& found)
{
    auto& all = config.parameters;
    const auto first = all.lower_bound(lanKey(parameter));
    if (first == all.end() || first->first >> 8 != parameter)
        return notSupported;
    const auto at = all.find(
        lanKey(parameter, isIndexed(config, parameter) ? selector : 0));
    if (at == all.end())
        return cc::parameterOutOfRange;
    found = &at->second;
    return cc::ok;
}

Bytes getParameter(Bmc& bmc, const Bytes& data)
{
    constexpr uint8_t revision = 0x11, revisionOnly = 0x80;
    LanConfig* config = findLan(bmc, data[0] & 0x0F);
    if (!config)
        return {cc::invalidDataField};
    if (data[0] & revisionOnly)
        return {cc::ok, revision};
    Bytes* found = nullptr;
    const uint8_t code = findParameter(*config, data[1], data[2], found);
    if (!found)
        return {code};
    Bytes answer{cc::ok, revision};
    append(answer, *found);
    return answer;
}

uint8_t checkSet(const Bytes& held, uint8_t parameter, const Bytes& data)
{
    constexpr uint8_t fixed[] = {lan::authenticationSupport,
                                 lan::destinations,
                                 lan::cipherSuiteSupport,
                                 lan::cipherSuites,
                                 lan::ipv6Support,
                                 lan::ipv6Status,
                                 57,
                                 lan::ipv6Dynamic,
                                 60,
                                 62,
                                 73,
                                 74,
                                 75,
                                 76,
                                 77,
                                 78,
                                 79};
    constexpr uint8_t inProgress = 1;
    if (isIn(fixed, parameter))
        return readOnly;
    // The status at the end of an IPv6 address is not for writing.
    if (data.empty() || data.size() > held.size())
        return cc::dataLengthInvalid;
    if (parameter == lan::setInProgress && data[0] == inProgress &&
        held[0] == inProgress)
        return alreadySet;
    return cc::ok;
}

Bytes setParameter(Bmc& bmc, const Bytes& data)
{
    LanConfig* config = findLan(bmc, data[0] & 0x0F);
    if (!config)
        return {cc::invalidDataField};
    const Bytes value{data.begin() + 2, data.end()};
    Bytes* found = nullptr;
    uint8_t code = findParameter(*config, data[1], data[2], found);
    if (found)
        code = checkSet(*found, data[1], value);
    if (code == cc::ok)
        std::copy(value.begin(), value.end(), found->begin());
    return {code};
}

constexpr Command commands[] = {
    {0x0C, 0x01, "set-lan-configuration", 3, 255, setParameter},
    {0x0C, 0x02, "get-lan-configuration", 4, 4, getParameter},
};

} // namespace

const Family lanFamily{commands, [](const Bmc& bmc) {
                           return !bmc.state().lan.empty();
                       }};

} // namespace Sim
