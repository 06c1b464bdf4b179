#include "tools/print/text.h"

#include <cstdio>

namespace Tool
{

namespace
{

// Well-formed UTF-8 (Unicode 15, table 3-7) without the control characters
// 00h-1Fh, 7Fh and 80h-9Fh. Bytes behind the second are 80h-BFh.
struct Form
{
    uint8_t firstFrom, firstTo, secondFrom, secondTo;
    size_t length;
};

constexpr Form forms[] = {
    {0x20, 0x7E, 0x00, 0x00, 1}, {0xC2, 0xC2, 0xA0, 0xBF, 2},
    {0xC3, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool within(char c, uint8_t from, uint8_t to)
{
    const auto byte = static_cast<uint8_t>(c);
    return byte >= from && byte <= to;
}

bool fits(std::string_view text, const Form& form)
{
    if (text.size() < form.length ||
        !within(text[0], form.firstFrom, form.firstTo))
        return false;
    for (size_t i = 1; i < form.length; ++i)
        if (!within(text[i], i == 1 ? form.secondFrom : 0x80,
                    i == 1 ? form.secondTo : 0xBF))
            return false;
    return true;
}

// Length of the character that text begins with; 0 when it cannot be shown.
size_t characterLength(std::string_view text)
{
    for (const Form& form : forms)
        if (fits(text, form))
            return form.length;
    return 0;
}

} // namespace

std::string hexNumber(unsigned value, int digits)
{
    char text[16];
    snprintf(text, sizeof text, "%0*Xh", digits, value);
    return text;
}

std::string hexByte(uint8_t value)
{
    char text[3];
    snprintf(text, sizeof text, "%02x", value);
    return text;
}

std::string hexDump(const Bytes& bytes, size_t perLine)
{
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        text += hexByte(bytes[i]);
        const bool lineEnds = (i + 1) % perLine == 0 || i + 1 == bytes.size();
        text += lineEnds ? '\n' : ' ';
    }
    return text;
}

std::string indented(const std::string& lines)
{
    std::string text = "  ";
    for (size_t i = 0; i < lines.size(); ++i) {
        text += lines[i];
        if (lines[i] == '\n' && i + 1 != lines.size())
            text += "  ";
    }
    return text;
}

std::string printable(std::string_view bytes)
{
    while (!bytes.empty() && bytes.back() == '\0')
        bytes.remove_suffix(1);
    std::string text;
    while (!bytes.empty()) {
        const size_t length = characterLength(bytes);
        if (length == 0)
            text += "\\x" + hexByte(static_cast<uint8_t>(bytes[0]));
        else if (bytes[0] == '\\')
            text += "\\\\";
        else
            text += bytes.substr(0, length);
        bytes.remove_prefix(length ? length : 1);
    }
    return text;
}

} // namespace Tool
