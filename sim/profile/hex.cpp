#include "sim/profile/hex.h"

#include <algorithm>
#include <charconv>

namespace Sim
{

std::optional<Bytes> parseBytes(const std::string& text)
{
    Bytes bytes;
    for (size_t at = 0; at < text.size();) {
        if (text[at] == ' ' || text[at] == ':') {
            ++at;
            continue;
        }
        auto byte = parseNumber(text.substr(at, 2), 16);
        if (!byte || at + 2 > text.size())
            return std::nullopt;
        bytes.push_back(uint8_t(*byte));
        at += 2;
    }
    return bytes;
}

std::string formatBytes(const Bytes& bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (uint8_t byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    return text;
}

std::optional<uint32_t> parseNumber(const std::string& text, int base,
                                    uint32_t max)
{
    uint32_t value = 0;
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, value, base);
    if (result.ec != std::errc{} || result.ptr != end || value > max)
        return std::nullopt;
    return value;
}

namespace
{

/// Letters to change, drop, add or swap with their neighbour that make one
/// word of the other.
size_t distance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<size_t>> edits(a.size() + 1);
    for (size_t i = 0; i <= a.size(); ++i) {
        edits[i].resize(b.size() + 1);
        for (size_t j = 0; j <= b.size(); ++j) {
            size_t& here = edits[i][j] = i + j;
            if (i == 0 || j == 0)
                continue;
            here = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1,
                             edits[i - 1][j - 1] + (a[i - 1] != b[j - 1])});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                here = std::min(here, edits[i - 2][j - 2] + 1);
        }
    }
    return edits[a.size()][b.size()];
}

} // namespace

std::string closest(const std::string& word,
                    const std::vector<std::string>& names)
{
    constexpr size_t longestWord = 64; // beyond it nobody mistypes a key
    size_t best = 3;                   // edits that still look like a slip
    std::string found;
    if (word.size() > longestWord)
        return found;
    for (const std::string& name : names) {
        const size_t edits = distance(word, name);
        if (edits < best && edits < name.size()) {
            best = edits;
            found = name;
        }
    }
    return found;
}

} // namespace Sim
