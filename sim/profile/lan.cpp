#include "sim/model/lan.h"

#include <algorithm>
#include <set>

#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/lan_row.h"

namespace Sim
{
namespace
{

using namespace LanRows;

constexpr auto decimal = Fields::Base::Decimal;

/// Those that are still to be written, or that are read so far.
using Parameters = std::map<uint16_t, Bytes>;

// IPMI v2.0, table 23-4.
constexpr Word sources[] = {
    {"unspecified", 0}, {"static", 1}, {"dhcp", 2}, {"bios", 3}, {"other", 4}};
constexpr Word authentications[] = {
    {"none", 0x01},     {"md2", 0x02}, {"md5", 0x04},
    {"password", 0x10}, {"oem", 0x20},
};
constexpr Word arps[] = {{"gratuitous", 0x01}, {"responses", 0x02}};
constexpr Row rows[] = {
    {"authenticationSupport", lan::authenticationSupport, Kind::Bits, 1,
     authentications},
    {"authenticationEnables", lan::authenticationEnables, Kind::Bytes, 5, {}},
    {"address", lan::address, Kind::Address, 4, {}},
    {"source", lan::addressSource, Kind::Choice, 1, sources},
    {"mac", lan::mac, Kind::Bytes, 6, {}},
    {"netmask", lan::netmask, Kind::Address, 4, {}},
    {"headerSettings", lan::headerSettings, Kind::Bytes, 3, {}},
    {"arpControl", lan::arpControl, Kind::Bits, 1, arps},
    {"arpInterval", lan::arpInterval, Kind::Number, 1, {}},
    {"gateway", lan::gateway, Kind::Address, 4, {}},
    {"gatewayMac", lan::gatewayMac, Kind::Bytes, 6, {}},
    {"backupGateway", lan::backupGateway, Kind::Address, 4, {}},
    {"backupGatewayMac", lan::backupGatewayMac, Kind::Bytes, 6, {}},
    {"community", lan::community, Kind::Text, 18, {}},
    {"vlan", lan::vlanId, Kind::Vlan, 2, {}},
    {"vlanPriority", lan::vlanPriority, Kind::Number, 1, {}},
    {"cipherPrivileges", lan::cipherSuitePrivileges, Kind::Bytes, 9, {}},
    {"badPasswordThreshold", lan::badPasswordThreshold, Kind::Bytes, 6, {}},
};

constexpr Word ipv6Supports[] = {
    {"ipv6-only", 0x01}, {"dual", 0x02}, {"alerts", 0x04}};
constexpr Word ipv6Enables[] = {{"disabled", 0}, {"only", 1}, {"both", 2}};
constexpr Word routerControls[] = {{"static", 0x01}, {"dynamic", 0x02}};
constexpr Row ipv6Rows[] = {
    {"support", lan::ipv6Support, Kind::Bits, 1, ipv6Supports},
    {"enables", lan::ipv6Enables, Kind::Choice, 1, ipv6Enables},
    {"status", lan::ipv6Status, Kind::Bytes, 3, {}},
    {"routerControl", lan::ipv6RouterControl, Kind::Bits, 1, routerControls},
    {"router", lan::ipv6Router, Kind::Address, 16, {}},
    {"routerMac", lan::ipv6RouterMac, Kind::Bytes, 6, {}},
    {"routerPrefixLength", lan::ipv6RouterPrefixLength, Kind::Number, 1, {}},
    {"routerPrefix", lan::ipv6RouterPrefix, Kind::Address, 16, {}},
};

void describeRows(Fields& io, View<Row> all, Parameters& parameters)
{
    for (const Row& row : all) {
        const uint16_t key = lanKey(row.parameter);
        const auto held = parameters.find(key);
        if (io.reads() ? !io.has(row.key)
                       : held == parameters.end() || !fits(row, held->second))
            continue;
        Bytes data = held == parameters.end() ? Bytes(row.size) : held->second;
        describeData(io, row, data);
        if (io.reads())
            parameters[key] = data;
        else
            parameters.erase(held);
    }
}

/// The suites, after a reserved byte; how many they are is a parameter too.
void describeCipherSuites(Fields& io, Parameters& parameters)
{
    constexpr const char* key = "cipherSuites";
    constexpr size_t most = 16;
    constexpr uint16_t countKey = lanKey(lan::cipherSuiteSupport),
                       listKey = lanKey(lan::cipherSuites);
    Bytes suites;
    if (io.reads()) {
        io.bytes(key, suites, 1, most);
        if (suites.empty())
            return;
        parameters[countKey] = {uint8_t(suites.size())};
        suites.insert(suites.begin(), 0);
        parameters[listKey] = suites;
        return;
    }
    const auto count = parameters.find(countKey),
               list = parameters.find(listKey);
    if (count == parameters.end() || list == parameters.end() ||
        list->second.size() < 2 || list->second.size() > most + 1 ||
        list->second[0] != 0 ||
        count->second != Bytes{uint8_t(list->second.size() - 1)})
        return;
    suites.assign(list->second.begin() + 1, list->second.end());
    io.bytes(key, suites, 1, most);
    parameters.erase(count);
    parameters.erase(list);
}

constexpr size_t sourceAt = 1, ipv6At = 2, prefixAt = 18, statusAt = 19,
                 entrySize = 20, mostEntries = 256;
constexpr uint8_t enabled = 0x80;
constexpr Word ipv6Sources[] = {{"static", 0}, {"slaac", 1}, {"dhcp", 2}};
constexpr Word statuses[] = {{"active", 0}, {"disabled", 1},   {"pending", 2},
                             {"failed", 3}, {"deprecated", 4}, {"invalid", 5}};

void describeCode(Fields& io, const char* key, uint8_t& byte, uint32_t max,
                  Words words)
{
    uint32_t value = byte;
    io.code(key, value, max, words);
    byte = uint8_t(value);
}

template <uint8_t usualSource>
void describeEntry(Fields& io, Bytes& entry)
{
    if (io.reads()) {
        entry.assign(entrySize, 0);
        entry[sourceAt] = usualSource;
    }
    const auto begin = entry.begin() + ipv6At, end = entry.begin() + prefixAt;
    Bytes address{begin, end};
    bool isEnabled = entry[sourceAt] & enabled;
    uint8_t source = entry[sourceAt] & 0x7F;
    io.require("address");
    describeAddress(io, "address", address);
    io.number("prefix", entry[prefixAt], decimal);
    describeCode(io, "source", source, 0x7F, ipv6Sources);
    if (usualSource & enabled)
        io.flag("enabled", isEnabled);
    describeCode(io, "status", entry[statusAt], 0xFF, statuses);
    std::copy(address.begin(), address.end(), begin);
    entry[sourceAt] = uint8_t(source | (isEnabled ? enabled : 0));
}

/// The addresses of a parameter that has one for each set selector.
template <uint8_t usualSource>
void describeEntries(Fields& io, const char* key, uint8_t parameter,
                     Parameters& parameters)
{
    std::vector<Bytes> entries;
    const auto keyAt = [=](size_t at) {
        return lanKey(parameter, uint8_t(at));
    };
    for (; !io.reads(); parameters.erase(keyAt(entries.size() - 1))) {
        const auto held = parameters.find(keyAt(entries.size()));
        if (held == parameters.end() || held->second.size() != entrySize ||
            held->second[0] != entries.size() ||
            (held->second[sourceAt] & enabled & ~usualSource))
            break;
        entries.push_back(held->second);
    }
    io.list(key, entries, describeEntry<usualSource>);
    if (entries.size() > mostEntries)
        io.refuse(key, "more than 256 addresses");
    for (size_t at = 0; io.reads() && at < entries.size(); ++at) {
        entries[at][0] = uint8_t(at);
        parameters[keyAt(at)] = entries[at];
    }
}

void describeIpv6(Fields& io, Parameters& parameters)
{
    constexpr uint8_t slaac = 1;
    describeRows(io, ipv6Rows, parameters);
    describeEntries<enabled>(io, "static", lan::ipv6Static, parameters);
    describeEntries<slaac>(io, "dynamic", lan::ipv6Dynamic, parameters);
}

struct Parameter
{
    uint8_t number = 0, selector = 0;
    Bytes data;
};

void describe(Fields& io, Parameter& parameter)
{
    constexpr size_t longest = 255;
    io.require("number");
    io.number("number", parameter.number, decimal);
    io.number("selector", parameter.selector, decimal);
    io.bytes("data", parameter.data, 0, longest);
}

void describeOthers(Fields& io, Parameters& parameters)
{
    std::vector<Parameter> others;
    for (const auto& [key, data] : parameters)
        if (!io.reads())
            others.push_back({uint8_t(key >> 8), uint8_t(key), data});
    io.list("parameters", others, describe);
    for (const Parameter& one : others)
        parameters[lanKey(one.number, one.selector)] = one.data;
}

void describe(Fields& io, LanConfig& config)
{
    Parameters copy = config.parameters;
    Parameters& parameters = io.reads() ? config.parameters : copy;
    io.require("channel");
    io.number("channel", config.channel, decimal, 0x0B);
    io.bytes("aliases", config.aliases, io.reads() ? 0 : 1, 0x0B);
    if (io.reads())
        parameters[lanKey(lan::setInProgress)] = {0};
    else if (parameters[lanKey(lan::setInProgress)] == Bytes{0})
        parameters.erase(lanKey(lan::setInProgress));
    describeRows(io, rows, parameters);
    describeCipherSuites(io, parameters);
    if (io.reads() ||
        parameters.lower_bound(lanKey(lan::ipv6Support)) != parameters.end())
        io.object("ipv6", parameters, describeIpv6);
    describeOthers(io, parameters);
}

} // namespace

void describeLan(Fields& io, std::vector<LanConfig>& lan)
{
    io.list("lan", lan, describe);
    std::set<uint8_t> seen;
    for (const LanConfig& config : lan)
        if (!seen.insert(config.channel).second)
            io.refuse("lan", "channel " + std::to_string(config.channel) +
                                 " stands twice");
}

LanConfig makeLanConfig(const std::string& text)
{
    LanConfig config;
    readObject(text, [&](Fields& io) { describe(io, config); });
    return config;
}

} // namespace Sim
