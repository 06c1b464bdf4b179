#include "sim/profile/lan_row.h"

#include <algorithm>
#include <arpa/inet.h>

namespace Sim::LanRows
{
namespace
{

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
    io.number(key, id, Fields::Base::Decimal, 4094);
    data = {uint8_t(id), uint8_t(id >> 8 | (id == 0 ? 0 : vlanEnabled))};
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

} // namespace

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
        return io.number(row.key, data[0], Fields::Base::Decimal);
    case Kind::Choice:
        return io.choice(row.key, data[0], row.words);
    case Kind::Bits:
        return io.bits(row.key, data[0], row.words);
    case Kind::Vlan:
        return describeVlan(io, row.key, data);
    }
}

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

} // namespace Sim::LanRows
