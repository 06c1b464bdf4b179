#include "tools/collect/anonymize.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace Tool
{

namespace
{

// ---- FRU devices (FRU Information Storage Definition v1.0 r1.3) ----

constexpr size_t unit = 8;

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
    size_t customField; ///< From this one on a field may hold anything.
};

constexpr MaskedArea maskedAreas[] = {
    {2, 3, 0x02, 2}, // chassis: serial number
    {3, 6, 0x04, 5}, // board: serial number
    {4, 3, 0x30, 7}, // product: serial number, asset tag
};

// What a checksum is of keeps its sum, if all of it is there.
class SumKept
{
public:
    SumKept(Bytes& bytes, Span span, size_t checksumAt)
        : bytes_{bytes}, span_{span}, at_{checksumAt}, sum_{sum()}
    {}
    ~SumKept()
    {
        if (isThere())
            bytes_[at_] = uint8_t(bytes_[at_] + sum_ - sum());
    }
    SumKept(const SumKept&) = delete;
    SumKept& operator=(const SumKept&) = delete;

private:
    bool isThere() const
    {
        return span_.end <= bytes_.size() && at_ < bytes_.size();
    }
    uint8_t sum() const
    {
        uint8_t sum = 0;
        for (size_t i = span_.begin; isThere() && i < span_.end; ++i)
            sum = uint8_t(sum + bytes_[i]);
        return sum;
    }

    Bytes& bytes_;
    Span span_;
    size_t at_;
    uint8_t sum_;
};

// "XXXX" in its own encoding (13.): 8-bit, 6-bit packed, BCD plus and binary.
void mask(uint8_t encoding, Bytes& bytes, Span field)
{
    constexpr uint8_t packed[] = {0x38, 0x8E, 0xE3}; // three of four "X"
    constexpr uint8_t sixBit = 2, eightBit = 3;
    for (size_t i = field.begin; i < std::min(field.end, bytes.size()); ++i)
        bytes[i] = encoding == eightBit ? uint8_t{'X'}
                   : encoding == sixBit ? packed[(i - field.begin) % 3]
                                        : uint8_t{0};
}

// An end mark ends the walk. A field that leaves the area, or what could be
// read of the device, is masked as far as it goes.
void maskFields(const MaskedArea& area, Bytes& bytes, Span where)
{
    constexpr uint8_t endMark = 0xC1, length = 0x3F;
    size_t at = where.begin + area.firstField;
    for (size_t i = 0; at < std::min(where.end, bytes.size()); ++i) {
        if (bytes[at] == endMark)
            return;
        const Span field{at + 1, at + 1 + (bytes[at] & length)};
        if (i >= area.customField || area.masked >> i & 1)
            mask(bytes[at] >> 6, bytes, field);
        at = field.end;
    }
}

void maskArea(const MaskedArea& area, Bytes& bytes)
{
    constexpr size_t lengthAt = 1;
    const size_t begin = bytes[area.headerAt] * unit;
    if (begin == 0 || begin + lengthAt >= bytes.size())
        return;
    // Where a length is left out, the fields' own end mark ends the area.
    const size_t length = bytes[begin + lengthAt] * unit;
    const size_t end = length == 0 ? bytes.size() + 1 : begin + length;
    const SumKept checksum{bytes, {begin, end}, end - 1};
    maskFields(area, bytes, {begin, end - 1});
}

// Names, addresses and ids of the server (18.4), behind their kind.
void maskManagementAccess(Bytes& bytes, size_t at)
{
    constexpr uint8_t managementAccess = 0x03, sizeAt = 2, sumAt = 3,
                      headerSumAt = 4, headerSize = 5, eightBit = 3;
    const Span data{at + headerSize, at + headerSize + bytes[at + sizeAt]};
    if (bytes[at] != managementAccess)
        return;
    const SumKept header{bytes, {at, data.begin}, at + headerSumAt};
    const SumKept checksum{bytes, {at + sumAt, data.end}, at + sumAt};
    mask(eightBit, bytes, {data.begin + 1, data.end});
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

// Memory modules show their SPD in this place: by its kind, where it holds the
// serial number (JEDEC Standard 21-C, annexes K and L; JESD400-5).
struct Spd
{
    uint8_t kind;
    Span serial;
};

constexpr size_t spdKindAt = 2;
constexpr Spd spds[] = {{0x0B, {122, 126}},  // DDR3
                        {0x0C, {325, 329}},  // DDR4
                        {0x12, {517, 521}}}; // DDR5

bool hasCommonHeader(const Bytes& bytes)
{
    constexpr uint8_t formatMask = 0x0F, format = 0x01;
    return bytes.size() >= unit && (bytes[0] & formatMask) == format &&
           bytes[0] >> 4 == 0;
}

void maskFru(Bytes& bytes)
{
    if (hasCommonHeader(bytes)) {
        for (const MaskedArea& area : maskedAreas)
            maskArea(area, bytes);
        return maskRecords(bytes);
    }
    for (const Spd& spd : spds)
        if (bytes.size() > spdKindAt && bytes[spdKindAt] == spd.kind)
            mask(0, bytes, spd.serial);
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
    {74, {1, 17}}, // dynamic routers, behind their number: address
    {75, {1, 7}},  // MAC address
    {77, {1, 17}}, // prefix
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
        span.end = std::min(span.end, data.size());
        if (span.begin >= span.end)
            return;
        const auto at = [&](size_t i) {
            return data.begin() + std::ptrdiff_t(i);
        };
        const Bytes old{at(span.begin), at(span.end)};
        if (std::count(old.begin(), old.end(), 0) == std::ptrdiff_t(old.size()))
            return;
        const auto next = known_.emplace(old, nameless(old)).first;
        std::copy_n(next->second.begin(), old.size(), at(span.begin));
    }

private:
    Bytes nameless(const Bytes& old) const
    {
        Bytes address(std::begin(ipv6), std::end(ipv6));
        if (old.size() == std::size(ipv4))
            address.assign(std::begin(ipv4), std::end(ipv4));
        else if (old.size() == std::size(mac))
            address.assign(std::begin(mac), std::end(mac));
        else if (old.size() >= 2 &&
                 std::equal(std::begin(linkLocal), std::end(linkLocal),
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
        const size_t number = known_.size() + 1;
        address.back() = uint8_t(number);
        if (address.size() > std::size(ipv4))
            address[address.size() - 2] = uint8_t(number >> 8);
        return address;
    }

    std::map<Bytes, Bytes> known_;
};

// Whatever the encoding; what follows its end is zeros.
void maskText(Bytes& bytes, size_t from)
{
    for (size_t i = from; i < bytes.size(); ++i)
        if (bytes[i] != 0)
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

constexpr uint8_t guidByte = 0x11;

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
        std::fill(one.answer.begin() + 1, one.answer.end(), guidByte);
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

// The controller's GUID (IPMI v2.0, 43.10).
void maskRecord(Bytes& record)
{
    constexpr uint8_t confirmation = 0x13;
    constexpr size_t typeAt = 3, guidAt = 16;
    if (record.size() > typeAt && record[typeAt] == confirmation)
        for (size_t i = guidAt; i < record.size(); ++i)
            record[i] = guidByte;
}

} // namespace

void anonymize(Capture& capture)
{
    Addresses addresses;
    if (capture.repository)
        for (CapturedRecord& record : capture.repository->records)
            maskRecord(record.bytes);
    maskController(addresses, capture.controller);
    for (CapturedController& satellite : capture.satellites)
        maskController(addresses, satellite);
    for (CapturedLan& lan : capture.lan)
        for (CapturedParameter& one : lan.parameters)
            maskParameter(addresses, one.number, one.data, 0);
}

} // namespace Tool
