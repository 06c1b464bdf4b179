#include "ipmi/IpmiText.h"

#include <cstdio>

namespace Ipmi
{

namespace
{

bool isPrintable(unsigned code)
{
    return code >= 0x20 && code < 0x7f;
}

std::string escapedByte(unsigned code)
{
    char text[12];
    snprintf(text, sizeof text, "\\x%02X", code);
    return text;
}

std::string escapedUnit(unsigned code)
{
    char text[12];
    snprintf(text, sizeof text, "\\u%04X", code);
    return text;
}

std::string latin1Character(unsigned code)
{
    constexpr unsigned firstPrintable = 0xa0;
    if (isPrintable(code))
        return std::string(1, char(code));
    if (code < firstPrintable)
        return escapedByte(code);
    return {char(0xc0 | code >> 6), char(0x80 | (code & 0x3f))};
}

// Two units for one character: D800h to DBFFh, then DC00h to DFFFh.
bool isSurrogate(unsigned code)
{
    return (code & 0xf800) == 0xd800;
}

bool isPair(unsigned high, unsigned low)
{
    return (high & 0xfc00) == 0xd800 && (low & 0xfc00) == 0xdc00;
}

std::string utf8Of(unsigned code)
{
    const auto behind = [code](unsigned shift) {
        return char(0x80 | (code >> shift & 0x3f));
    };
    if (code < 0x80)
        return {char(code)};
    if (code < 0x800)
        return {char(0xc0 | code >> 6), behind(0)};
    if (code < 0x10000)
        return {char(0xe0 | code >> 12), behind(6), behind(0)};
    return {char(0xf0 | code >> 18), behind(12), behind(6), behind(0)};
}

std::string utf16Character(unsigned code)
{
    constexpr unsigned firstControl = 0x7f, lastControl = 0x9f;
    if (code == '\\')
        return "\\\\";
    if (code < ' ' || (code >= firstControl && code <= lastControl) ||
        isSurrogate(code))
        return escapedUnit(code);
    return utf8Of(code);
}

} // namespace

std::string decodeLatin1(RecordView bytes, bool doubled)
{
    size_t size = bytes.size();
    while (size > 0 && bytes.u8(size - 1) == 0) // padding
        --size;
    std::string text;
    for (size_t i = 0; i < size; ++i)
        text += doubled && bytes.u8(i) == '\\' ? "\\\\"
                                               : latin1Character(bytes.u8(i));
    return text;
}

std::string withDoubledBackslashes(const std::string& text)
{
    std::string doubled;
    for (const char c : text)
        doubled.append(c == '\\' ? 2 : 1, c);
    return doubled;
}

std::string decodeUtf16(RecordView bytes)
{
    size_t size = bytes.size() / 2 * 2;
    while (size > 0 && bytes.u16(size - 2) == 0) // padding
        size -= 2;
    std::string text;
    for (size_t i = 0; i < size; i += 2) {
        const unsigned unit = bytes.u16(i);
        const unsigned next = i + 2 < size ? bytes.u16(i + 2) : 0;
        if (isPair(unit, next)) {
            constexpr unsigned firstOfPairs = 0x10000;
            text +=
                utf8Of(firstOfPairs + ((unit & 0x3ff) << 10) + (next & 0x3ff));
            i += 2;
        } else {
            text += utf16Character(unit);
        }
    }
    return text;
}

std::string decodeBcdPlus(RecordView bytes)
{
    constexpr char digits[] = "0123456789 -.:,_";
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        text += digits[bytes.u8(i) >> 4];
        text += digits[bytes.u8(i) & 0x0f];
    }
    return text;
}

std::string decodePacked(RecordView bytes)
{
    std::string text;
    const size_t characters = bytes.size() * 8 / 6;
    for (size_t i = 0; i < characters; ++i) {
        const size_t bit = i * 6;
        const unsigned pair = bytes.u8(bit / 8) | bytes.u8(bit / 8 + 1) << 8;
        text += char(0x20 + (pair >> bit % 8 & 0x3f));
    }
    return text;
}

std::string decodeUnicode(RecordView bytes, bool wide)
{
    std::string text;
    const size_t step = wide ? 2 : 1;
    for (size_t i = 0; i + step <= bytes.size(); i += step) {
        const unsigned code = wide ? bytes.u16(i) : bytes.u8(i);
        if (isPrintable(code))
            text += char(code);
        else if (code)
            text += wide ? escapedUnit(code) : escapedByte(code);
    }
    return text;
}

std::string hexText(unsigned value)
{
    char text[12];
    snprintf(text, sizeof text, "%02Xh", value);
    return text;
}

std::string hexBytes(RecordView bytes)
{
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i)
        text += (i ? " " : "") + hexText(bytes.u8(i)).substr(0, 2);
    return text;
}

std::string trimmed(std::string text)
{
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

} // namespace Ipmi
