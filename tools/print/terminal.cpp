#include "tools/print/terminal.h"

#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Tool
{

namespace
{

// Blocks whose characters take two columns (Unicode 15, East Asian Width) or
// none; all others take one.
struct Block
{
    uint32_t first, last;
    size_t width;
};

constexpr Block blocks[] = {
    {0x0300, 0x036F, 0},   {0x1100, 0x115F, 2},   {0x200B, 0x200F, 0},
    {0x2E80, 0xA4CF, 2},   {0xAC00, 0xD7A3, 2},   {0xF900, 0xFAFF, 2},
    {0xFE00, 0xFE0F, 0},   {0xFE30, 0xFE6F, 2},   {0xFF00, 0xFF60, 2},
    {0xFFE0, 0xFFE6, 2},   {0x1F300, 0x1F64F, 2}, {0x1F900, 0x1F9FF, 2},
    {0x20000, 0x3FFFD, 2},
};

size_t columnsOf(uint32_t character)
{
    for (const Block& block : blocks)
        if (character >= block.first && character <= block.last)
            return block.width;
    return 1;
}

bool continues(char c)
{
    return (static_cast<uint8_t>(c) & 0xC0) == 0x80;
}

struct Character
{
    size_t length; ///< In bytes.
    size_t width;
};

// Of well-formed UTF-8.
Character characterAt(const std::string& text, size_t at)
{
    const auto first = static_cast<uint8_t>(text[at]);
    const uint8_t keep = first < 0x80   ? 0x7F
                         : first < 0xE0 ? 0x1F
                         : first < 0xF0 ? 0x0F
                                        : 0x07;
    uint32_t character = first & keep;
    size_t length = 1;
    while (at + length < text.size() && continues(text[at + length]))
        character = character << 6 |
                    (static_cast<uint8_t>(text[at + length++]) & 0x3Fu);
    return {length, columnsOf(character)};
}

constexpr const char* codes[] = {"", "32", "33", "31", "2"};

bool wantsColours()
{
    const char* none = getenv("NO_COLOR");
    const char* kind = getenv("TERM");
    return !(none && *none) && !(kind && strcmp(kind, "dumb") == 0);
}

} // namespace

Terminal Terminal::ofOutput()
{
    winsize size{};
    if (!isatty(STDOUT_FILENO))
        return {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        size = {24, 80, 0, 0};
    return {size.ws_col, size.ws_row, wantsColours()};
}

std::string Terminal::coloured(const std::string& text, Colour colour) const
{
    if (!colours_ || colour == Colour::none)
        return text;
    return std::string{"\033["} + codes[static_cast<int>(colour)] + 'm' + text +
           "\033[0m";
}

size_t widthOf(const std::string& text)
{
    size_t width = 0;
    for (size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        width += character.width;
        at += character.length;
    }
    return width;
}

std::string cutToWidth(const std::string& text, size_t width)
{
    if (widthOf(text) <= width || width == 0)
        return text;
    size_t at = 0, used = 0;
    for (;;) {
        const Character character = characterAt(text, at);
        if (used + character.width > width - 1)
            return text.substr(0, at) + "\u2026";
        used += character.width;
        at += character.length;
    }
}

namespace
{

// How many bytes of the text fit; at least one character's.
size_t fittingBytes(const std::string& text, size_t width)
{
    size_t at = 0, used = 0;
    while (at < text.size()) {
        const Character character = characterAt(text, at);
        used += character.width;
        if (used > width && at != 0)
            break;
        at += character.length;
    }
    return at;
}

} // namespace

std::vector<std::string> wrapped(const std::string& text, size_t width)
{
    std::vector<std::string> lines;
    std::string rest = text;
    while (widthOf(rest) > width) {
        const size_t end = fittingBytes(rest, width);
        if (end == rest.size()) // A character that is too wide.
            break;
        const size_t blank = rest.rfind(' ', end);
        const bool atBlank = blank != 0 && blank != std::string::npos;
        lines.push_back(rest.substr(0, atBlank ? blank : end));
        rest.erase(0, atBlank ? blank + 1 : end);
    }
    lines.push_back(rest);
    return lines;
}

} // namespace Tool
