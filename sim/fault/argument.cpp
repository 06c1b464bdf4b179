#include "sim/fault/argument.h"

#include <cerrno>
#include <charconv>

#include "sim/profile/hex.h"

namespace Sim
{
namespace
{

constexpr struct
{
    const char* name;
    int value;
} errnos[] = {
    {"EPERM", EPERM},
    {"ENOENT", ENOENT},
    {"EINTR", EINTR},
    {"EIO", EIO},
    {"ENXIO", ENXIO},
    {"EAGAIN", EAGAIN},
    {"ENOMEM", ENOMEM},
    {"EACCES", EACCES},
    {"EFAULT", EFAULT},
    {"EBUSY", EBUSY},
    {"ENODEV", ENODEV},
    {"EINVAL", EINVAL},
    {"EMFILE", EMFILE},
    {"EMSGSIZE", EMSGSIZE},
    {"EADDRNOTAVAIL", EADDRNOTAVAIL},
    {"ETIMEDOUT", ETIMEDOUT},
};

Expected keep(const std::optional<uint32_t>& parsed, uint32_t& value,
              Expected expected)
{
    if (!parsed)
        return expected;
    value = *parsed;
    return nullptr;
}

/// One digit of a pattern at bit `shift` of its byte.
bool addDigit(char digit, unsigned shift, BytePattern& byte)
{
    if (digit == '?')
        return true;
    auto value = parseNumber({digit}, 16);
    if (!value)
        return false;
    byte.value = uint8_t(byte.value | *value << shift);
    byte.mask = uint8_t(byte.mask | 0x0F << shift);
    return true;
}

} // namespace

Expected parseHexByte(const std::string& text, uint8_t& value)
{
    auto parsed =
        parseNumber(text.compare(0, 2, "0x") ? text : text.substr(2), 16, 0xFF);
    if (!parsed)
        return "a hexadecimal byte";
    value = uint8_t(*parsed);
    return nullptr;
}

Expected parseHexWord(const std::string& text, uint32_t& value)
{
    return keep(parseNumber(text, 16, 0xFFFF), value,
                "a hexadecimal number up to ffff");
}

Expected parseCount(const std::string& text, uint32_t& value)
{
    auto parsed = parseNumber(text, 10);
    return keep(parsed == 0u ? std::nullopt : parsed, value,
                "a whole number from 1");
}

Expected parseWhole(const std::string& text, uint32_t& value)
{
    return keep(parseNumber(text, 10), value, "a whole number");
}

Expected parseRate(const std::string& text, double& value)
{
    // Not strtod: the host process may have a locale with a decimal comma.
    double parsed = 0;
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, parsed);
    if (result.ec != std::errc{} || result.ptr != end ||
        !(parsed >= 0 && parsed <= 1))
        return "a share from 0 to 1";
    value = parsed;
    return nullptr;
}

Expected parseErrno(const std::string& text, uint32_t& value)
{
    for (const auto& row : errnos)
        if (text == row.name)
            return value = uint32_t(row.value), nullptr;
    auto number = parseNumber(text, 10, 4095);
    return keep(number == 0u ? std::nullopt : number, value,
                "an errno such as EBUSY");
}

Expected parseNothing(const std::string& text)
{
    return text.empty() ? nullptr : "no value";
}

Expected parseFlip(const std::string& text, uint32_t& offset, uint8_t& mask)
{
    constexpr Expected expected = "OFFSET:BITS such as 3:80";
    const size_t colon = text.find(':');
    if (colon == std::string::npos)
        return expected;
    const bool wrong = parseWhole(text.substr(0, colon), offset) ||
                       parseHexByte(text.substr(colon + 1), mask);
    return wrong ? expected : nullptr;
}

Expected parsePattern(const std::string& text, std::vector<BytePattern>& data)
{
    constexpr Expected expected = "bytes such as 0b:??:4?";
    for (size_t at = 0; at < text.size();) {
        if (text[at] == ':' || text[at] == ' ') {
            ++at;
            continue;
        }
        BytePattern byte{0, 0};
        if (at + 2 > text.size() || !addDigit(text[at], 4, byte) ||
            !addDigit(text[at + 1], 0, byte))
            return expected;
        data.push_back(byte);
        at += 2;
    }
    return data.empty() ? expected : nullptr;
}

} // namespace Sim
