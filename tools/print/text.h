/// Bytes as text.
#ifndef VEK_TOOLS_PRINT_TEXT_H
#define VEK_TOOLS_PRINT_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Tool
{

using Bytes = std::vector<uint8_t>;

/// As IPMI writes numbers: "C1h", with at least `digits` digits.
std::string hexNumber(unsigned value, int digits = 2);

/// "0a"
std::string hexByte(uint8_t value);

/// "20 01 bf": `perLine` bytes a line, each line ended.
std::string hexDump(const Bytes& bytes, size_t perLine = 16);

/// Each line behind two blanks.
std::string indented(const std::string& lines);

/// A text of the controller's as UTF-8 that a terminal and a JSON document
/// can take: trailing NULs are dropped; control characters and bytes that are
/// no UTF-8 become \xNN, a backslash \\.
std::string printable(std::string_view bytes);

} // namespace Tool

#endif
