#include "sim/profile/id_string.h"

#include <algorithm>
#include <cstring>

namespace Sim
{
namespace
{

constexpr size_t mostCharacters = 30; // 31 is reserved
constexpr char bcdPlus[] = "0123456789 -.:,_";

std::optional<Bytes> toLatin1(const std::string& text)
{
    Bytes bytes;
    for (size_t at = 0; at < text.size(); ++at) {
        const auto c = uint8_t(text[at]);
        if (c < 0x80) {
            bytes.push_back(c);
        } else if ((c == 0xC2 || c == 0xC3) && at + 1 < text.size()) {
            bytes.push_back(uint8_t(c << 6 | (uint8_t(text[++at]) & 0x3F)));
        } else {
            return std::nullopt;
        }
    }
    return bytes;
}

std::string fromLatin1(Bytes::const_iterator at, Bytes::const_iterator end)
{
    std::string text;
    for (; at != end; ++at) {
        if (*at >= 0x80)
            text += char(0xC0 | *at >> 6);
        text += char(*at < 0x80 ? *at : 0x80 | (*at & 0x3F));
    }
    return text;
}

/// The first character is in the low bits.
std::optional<Bytes> toSixBit(const std::string& text)
{
    Bytes bytes;
    uint32_t kept = 0;
    int bits = 0;
    for (char c : text) {
        if (c < 0x20 || c > 0x5F)
            return std::nullopt;
        kept |= uint32_t(c - 0x20) << bits;
        for (bits += 6; bits >= 8; bits -= 8, kept >>= 8)
            bytes.push_back(uint8_t(kept));
    }
    if (bits > 0)
        bytes.push_back(uint8_t(kept));
    return bytes;
}

std::string fromSixBit(const Bytes& data, size_t characters)
{
    std::string text;
    for (size_t bit = 0; text.size() < characters; bit += 6) {
        const size_t at = bit / 8, shift = bit % 8;
        if (at >= data.size())
            break;
        const unsigned next = at + 1 < data.size() ? data[at + 1] : 0u;
        text += char(((data[at] | next << 8) >> shift & 0x3F) + 0x20);
    }
    return text;
}

/// The first digit is in the high bits; a blank fills up.
std::optional<Bytes> toBcdPlus(const std::string& text)
{
    constexpr uint8_t blank = 0x0A;
    Bytes bytes;
    for (size_t at = 0; at < text.size(); ++at) {
        const char* digit = std::strchr(bcdPlus, text[at]);
        if (!digit || *digit == 0)
            return std::nullopt;
        const auto value = uint8_t(digit - bcdPlus);
        if (at % 2 == 0)
            bytes.push_back(uint8_t(value << 4 | blank));
        else
            bytes.back() = uint8_t((bytes.back() & 0xF0) | value);
    }
    return bytes;
}

std::string fromBcdPlus(const Bytes& data, size_t characters)
{
    std::string text;
    for (size_t at = 0; at < data.size() && text.size() < characters; ++at) {
        text += bcdPlus[data[at] >> 4];
        if (text.size() < characters)
            text += bcdPlus[data[at] & 0x0F];
    }
    return text;
}

} // namespace

std::optional<Bytes> encodeText(const std::string& text, IdEncoding encoding)
{
    switch (encoding) {
    case IdEncoding::BcdPlus:
        return toBcdPlus(text);
    case IdEncoding::SixBit:
        return toSixBit(text);
    case IdEncoding::EightBit:
        return toLatin1(text);
    case IdEncoding::Unicode:
        break;
    }
    return Bytes(text.begin(), text.end());
}

std::string decodeText(const Bytes& data, IdEncoding encoding,
                       size_t characters)
{
    switch (encoding) {
    case IdEncoding::BcdPlus:
        return fromBcdPlus(data, characters);
    case IdEncoding::SixBit:
        return fromSixBit(data, characters);
    default:
        break;
    }
    const auto end =
        data.begin() + std::ptrdiff_t(std::min(data.size(), characters));
    return encoding == IdEncoding::EightBit ? fromLatin1(data.begin(), end)
                                            : std::string(data.begin(), end);
}

std::optional<Bytes> encodeId(const std::string& text, IdEncoding encoding)
{
    const auto bytes = encodeText(text, encoding);
    if (!bytes)
        return std::nullopt;
    const bool packed =
        encoding == IdEncoding::BcdPlus || encoding == IdEncoding::SixBit;
    const size_t characters = packed ? text.size() : bytes->size();
    if (characters > mostCharacters)
        return std::nullopt;
    Bytes id{uint8_t(uint8_t(encoding) << 6 | characters)};
    append(id, *bytes);
    return id;
}

std::string decodeId(const Bytes& id)
{
    if (id.empty())
        return {};
    return decodeText({id.begin() + 1, id.end()}, IdEncoding(id[0] >> 6),
                      id[0] & 0x1F);
}

} // namespace Sim
