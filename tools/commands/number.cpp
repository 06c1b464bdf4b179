#include "tools/commands/number.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <string_view>

namespace Tool
{

namespace
{

// False unless all of the digits make a number below 256.
bool read(std::string_view digits, int base, uint8_t& value)
{
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, base);
    return result.ec == std::errc{} && result.ptr == end;
}

} // namespace

bool readByte(std::string_view text, uint8_t& value)
{
    const std::string_view prefix = text.substr(0, 2);
    if (prefix == "0x" || prefix == "0X")
        return read(text.substr(2), 16, value);
    uint8_t octal = 0;
    return read(text, 10, value) &&
           (text[0] != '0' || (read(text, 8, octal) && octal == value));
}

uint8_t toByte(const std::string& what, const std::string& text)
{
    uint8_t value = 0;
    if (readByte(text, value))
        return value;
    throw CLI::ValidationError(
        what, "'" + text + "' is no number from 0 to 255 (0x00 to 0xff)");
}

} // namespace Tool
