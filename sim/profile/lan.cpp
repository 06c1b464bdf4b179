#include "sim/model/lan.h"

#include <algorithm>
#include <arpa/inet.h>
#include <set>

#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"

namespace Sim
{
namespace
{

constexpr auto decimal = Fields::Base::Decimal;

/// Those that are still to be written, or that are read so far.
using Parameters = std::map<uint16_t, Bytes>;

enum class Kind
{
    Address, ///< IPv4 or IPv6, by its size.
    Bytes,
    Text,
    Number,
    Choice,
    Bits,
    Vlan
};

struct Row
{
    const char* key;
    uint8_t parameter;
    Kind kind;
    size_t size;
    Words words;
};

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

int familyOf(size_t size)
{
    return size == 4 ? AF_INET : AF_INET6;
}

std::string formatAddress(const Bytes& address)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(familyOf(address.size()), address.data(), text, sizeof text);
    return text;
}

/// Leaves the address as it was when the text is none of its size.
bool parseAddress(const std::string& text, Bytes& address)
{
    Bytes parsed(address.size());
    if (inet_pton(familyOf(parsed.size()), text.c_str(), parsed.data()) != 1)
        return false;
    address = parsed;
    return true;
}

void describeAddress(Fields& io, const char* key, Bytes& address)
{
    std::string text = formatAddress(address);
    const size_t size = address.size();
    io.text(key, text, [size](const std::string& value) {
        Bytes unused(size);
        return parseAddress(value, unused) ? ""
               : size == 4                 ? "expected an IPv4 address"
                                           : "expected an IPv6 address";
    });
    parseAddress(text, address);
}

void describeText(Fields& io, const char* key, Bytes& data)
{
    std::string text{data.begin(), std::find(data.begin(), data.end(), 0)};
    const size_t most = data.size();
    io.text(key, text, [most](const std::string& value) {
        return value.size() <= most ? "" : "expected 18 bytes at most";
    });
    data.assign(text.begin(), text.end());
    data.resize(most);
}

constexpr uint8_t vlanEnabled = 0x80;

void describeVlan(Fields& io, const char* key, Bytes& data)
{
    auto id = uint16_t(data[0] | (data[1] & 0x0F) << 8);
    io.number(key, id, decimal, 4094);
    data = {uint8_t(id), uint8_t(id >> 8 | (id == 0 ? 0 : vlanEnabled))};
}

void describeData(Fields& io, const Row& row, Bytes& data)
{
    switch (row.kind) {
    case Kind::Address:
        return describeAddress(io, row.key, data);
    case Kind::Bytes:
        return io.bytes(row.key, data, row.size, row.size);
    case Kind::Text:
        return describeText(io, row.key, data);
    case Kind::Number:
        return io.number(row.key, data[0], decimal);
    case Kind::Choice:
        return io.choice(row.key, data[0], row.words);
    case Kind::Bits:
        return io.bits(row.key, data[0], row.words);
    case Kind::Vlan:
        return describeVlan(io, row.key, data);
    }
}

bool isWord(uint8_t value, Words words)
{
    return std::any_of(words.begin(), words.end(),
                       [=](const Word& one) { return one.value == value; });
}

bool isText(const Bytes& data)
{
    const auto end = std::find_if(data.begin(), data.end(), [](uint8_t byte) {
        return byte < ' ' || byte > '~';
    });
    return std::all_of(end, data.end(), [](uint8_t byte) { return byte == 0; });
}

/// Whether the key says all that the bytes do.
bool fits(const Row& row, const Bytes& data)
{
    if (data.size() != row.size)
        return false;
    unsigned bits = 0;
    for (const Word& word : row.words)
        bits |= word.value;
    switch (row.kind) {
    case Kind::Text:
        return isText(data);
    case Kind::Choice:
        return isWord(data[0], row.words);
    case Kind::Bits:
        return (data[0] & ~bits) == 0;
    case Kind::Vlan:
        return data[1] >> 4 == (data[0] || data[1] & 0x0F ? 0x08 : 0) &&
               !(data[0] == 0xFF && (data[1] & 0x0F) == 0x0F);
    default:
        return true;
    }
}

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
                 entrySize = 20;
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
    for (size_t at = 0; io.reads() && at < entries.size() && at <= 0xFF; ++at) {
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
