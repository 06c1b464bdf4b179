#include "tools/collect/anonymize.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <map>
#include <regex>

namespace Tool
{

namespace
{

// ---- FRU devices (FRU Information Storage Definition v1.0 r1.3) ----

/// A part of a device's bytes.
struct Span
{
    size_t begin, end;
};

struct MaskedArea
{
    size_t headerAt;    ///< Where the common header has its offset.
    size_t firstField;  ///< From the area's start on.
    uint8_t masked;     ///< A bit for each field that is masked.
    size_t customField; ///< The number of the first that may hold anything.
};

constexpr MaskedArea maskedAreas[] = {
    {2, 3, 0x02, 2}, // chassis: serial number
    {3, 6, 0x04, 5}, // board: serial number
    {4, 3, 0x30, 7}, // product: serial number, asset tag
};

constexpr size_t unit = 8;

// What a checksum is of keeps its sum.
class SumKept
{
public:
    SumKept(Bytes& bytes, Span span, size_t checksumAt)
        : bytes_{bytes}, span_{span}, at_{checksumAt}, sum_{sum()}
    {}
    ~SumKept() { bytes_[at_] = uint8_t(bytes_[at_] + sum_ - sum()); }
    SumKept(const SumKept&) = delete;
    SumKept& operator=(const SumKept&) = delete;

private:
    uint8_t sum() const
    {
        uint8_t sum = 0;
        for (size_t i = span_.begin; i < span_.end; ++i)
            sum = uint8_t(sum + bytes_[i]);
        return sum;
    }

    Bytes& bytes_;
    Span span_;
    size_t at_;
    uint8_t sum_;
};

// Whether a text has an address in it: twelve hexadecimal digits in pairs, or
// four numbers with dots.
bool holdsAddress(const Bytes& bytes, Span field)
{
    static const std::regex address{
        "([0-9A-Fa-f]{2}[:-]?){5}[0-9A-Fa-f]{2}|([0-9]{1,3}[.]){3}[0-9]{1,3}"};
    const auto at = [&](size_t i) {
        return bytes.begin() + std::ptrdiff_t(i);
    };
    const std::string text{at(field.begin), at(field.end)};
    return std::regex_search(text, address);
}

// "XXXX" in its own encoding (13.): 8-bit, 6-bit packed, BCD plus and binary.
void mask(uint8_t encoding, Bytes& bytes, Span field)
{
    constexpr uint8_t packed[] = {0x38, 0x8E, 0xE3}; // three of four "X"
    constexpr uint8_t sixBit = 2, eightBit = 3;
    for (size_t i = field.begin; i < field.end; ++i)
        bytes[i] = encoding == eightBit ? uint8_t{'X'}
                   : encoding == sixBit ? packed[(i - field.begin) % 3]
                                        : uint8_t{0};
}

// A field that leaves the area, or an end mark, ends the walk.
void maskFields(const MaskedArea& area, Bytes& bytes, Span where)
{
    constexpr uint8_t endMark = 0xC1, length = 0x3F, eightBit = 3;
    size_t at = where.begin + area.firstField;
    for (size_t i = 0; at < where.end && bytes[at] != endMark; ++i) {
        const Span field{at + 1, at + 1 + (bytes[at] & length)};
        if (field.end > where.end)
            return;
        const uint8_t encoding = bytes[at] >> 6;
        const bool isSerial = i < 8 && area.masked >> i & 1;
        if (isSerial || (i >= area.customField && encoding == eightBit &&
                         holdsAddress(bytes, field)))
            mask(encoding, bytes, field);
        at = field.end;
    }
}

void maskArea(const MaskedArea& area, Bytes& bytes)
{
    constexpr size_t lengthAt = 1;
    const size_t begin = bytes[area.headerAt] * unit;
    if (begin == 0 || begin + lengthAt >= bytes.size())
        return;
    const size_t end =
        std::min(bytes.size(), begin + bytes[begin + lengthAt] * unit);
    if (end < begin + area.firstField + 1)
        return;
    const SumKept checksum{bytes, {begin, end}, end - 1};
    maskFields(area, bytes, {begin, end - 1});
}

// Names, addresses and ids of the server (18.4), behind their kind.
void maskManagementAccess(Bytes& bytes, size_t at)
{
    constexpr uint8_t managementAccess = 0x03, sizeAt = 2, sumAt = 3,
                      headerSumAt = 4, headerSize = 5;
    const Span data{at + headerSize, at + headerSize + bytes[at + sizeAt]};
    if (bytes[at] != managementAccess || data.end > bytes.size())
        return;
    const SumKept header{bytes, {at, data.begin}, at + headerSumAt};
    const SumKept checksum{bytes, data, at + sumAt};
    for (size_t i = data.begin + 1; i < data.end; ++i)
        bytes[i] = 'X';
}

void maskRecords(Bytes& bytes)
{
    constexpr size_t headerAt = 5, headerSize = 5, flagsAt = 1, sizeAt = 2;
    constexpr uint8_t lastRecord = 0x80;
    size_t at = bytes[headerAt] * unit;
    if (at == 0)
        return;
    while (at + headerSize <= bytes.size()) {
        maskManagementAccess(bytes, at);
        if (bytes[at + flagsAt] & lastRecord)
            return;
        at += headerSize + bytes[at + sizeAt];
    }
}

void maskFru(Bytes& bytes)
{
    if (bytes.size() < unit)
        return;
    for (const MaskedArea& area : maskedAreas)
        maskArea(area, bytes);
    maskRecords(bytes);
}

// ---- LAN parameters (IPMI v2.0, table 23-4) ----

struct MaskedParameter
{
    uint8_t number;
    Span address; ///< In the data.
};

constexpr MaskedParameter maskedParameters[] = {
    {3, {0, 4}},   // IP address
    {5, {0, 6}},   // MAC address
    {12, {0, 4}},  // default gateway
    {13, {0, 6}},  // its MAC address
    {14, {0, 4}},  // backup gateway
    {15, {0, 6}},  // its MAC address
    {56, {2, 18}}, // static IPv6 address
    {59, {2, 18}}, // dynamic IPv6 address
    {65, {0, 16}}, // static routers: address
    {66, {0, 6}},  // MAC address
    {68, {0, 16}}, // prefix
    {69, {0, 16}}, // the second one
    {70, {0, 6}},  {72, {0, 16}},
};

// Addresses for documentation and of one's own (RFC 5737, RFC 3849, RFC 7042,
// 2.1.2); the last byte counts. What is of the link alone stays so.
constexpr uint8_t ipv4[] = {192, 0, 2, 0};
constexpr uint8_t mac[] = {0x02, 0x00, 0x5E, 0x10, 0x00, 0x00};
constexpr uint8_t linkLocal[] = {0xFE, 0x80};
constexpr uint8_t ipv6[] = {0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 0,
                            0,    0,    0,    0,    0, 0, 0, 0};

class Addresses
{
public:
    void mask(Bytes& data, Span span)
    {
        if (data.size() < span.end)
            return;
        const auto at = [&](size_t i) {
            return data.begin() + std::ptrdiff_t(i);
        };
        const Bytes old{at(span.begin), at(span.end)};
        const auto isZero = [](uint8_t byte) {
            return byte == 0;
        };
        if (std::all_of(old.begin(), old.end(), isZero))
            return;
        const auto next = known_.emplace(old, nameless(old)).first;
        std::copy(next->second.begin(), next->second.end(), at(span.begin));
    }

private:
    Bytes nameless(const Bytes& old) const
    {
        Bytes address(std::begin(ipv6), std::end(ipv6));
        if (old.size() == std::size(ipv4))
            address.assign(std::begin(ipv4), std::end(ipv4));
        else if (old.size() == std::size(mac))
            address.assign(std::begin(mac), std::end(mac));
        else if (std::equal(std::begin(linkLocal), std::end(linkLocal),
                            old.begin()))
            address = {linkLocal[0],
                       linkLocal[1],
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0};
        address.back() = uint8_t(known_.size() + 1);
        return address;
    }

    std::map<Bytes, Bytes> known_;
};

void maskText(Bytes& bytes, size_t from)
{
    for (size_t i = from; i < bytes.size(); ++i)
        if (isalnum(bytes[i]))
            bytes[i] = 'X';
}

// What is kept as a parameter has the revision before it in an answer.
void maskParameter(Addresses& addresses, uint8_t number, Bytes& data,
                   size_t from)
{
    constexpr uint8_t community = 16;
    if (number == community)
        maskText(data, from);
    for (const MaskedParameter& one : maskedParameters)
        if (one.number == number)
            addresses.mask(data,
                           {from + one.address.begin, from + one.address.end});
}

// ---- other answers ----

bool is(const CapturedAnswer& one, Command command)
{
    return one.command.netFn == command.netFn &&
           one.command.code == command.code;
}

// Names and URLs of host and controller (IPMI v2.0, table 22-16); the first
// block has encoding and length before the text.
void maskSystemText(CapturedAnswer& one)
{
    constexpr uint8_t systemName = 2, bmcUrl = 6, hostUrl = 7;
    constexpr size_t parameterAt = 1, blockAt = 2, textAt = 3, ahead = 2;
    const uint8_t parameter = one.request[parameterAt];
    if (parameter == systemName || parameter == bmcUrl || parameter == hostUrl)
        maskText(one.answer, textAt + (one.request[blockAt] == 0 ? ahead : 0));
}

void maskAnswer(Addresses& addresses, CapturedAnswer& one)
{
    constexpr Command getDeviceGuid = {0x06, 0x08},
                      getSystemGuid = {0x06, 0x37},
                      getLanParameter = {0x0C, 0x02};
    constexpr size_t parameterAt = 1, dataAt = 2;
    if (!one.ok())
        return;
    if (is(one, getDeviceGuid) || is(one, getSystemGuid))
        std::fill(one.answer.begin() + 1, one.answer.end(), uint8_t{0x11});
    else if (is(one, commands::getSystemInfo))
        maskSystemText(one);
    else if (is(one, getLanParameter))
        maskParameter(addresses, one.request[parameterAt], one.answer, dataAt);
}

void maskController(Addresses& addresses, CapturedController& controller)
{
    for (CapturedAnswer& one : controller.answers)
        maskAnswer(addresses, one);
    for (CapturedFru& fru : controller.frus)
        maskFru(fru.bytes);
}

} // namespace

void anonymize(Capture& capture)
{
    Addresses addresses;
    maskController(addresses, capture.controller);
    for (CapturedController& satellite : capture.satellites)
        maskController(addresses, satellite);
    for (CapturedLan& lan : capture.lan)
        for (CapturedParameter& one : lan.parameters)
            maskParameter(addresses, one.number, one.data, 0);
}

} // namespace Tool
