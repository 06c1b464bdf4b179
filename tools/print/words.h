/// Small helps with words.
#ifndef VEK_TOOLS_PRINT_WORDS_H
#define VEK_TOOLS_PRINT_WORDS_H

#include <set>
#include <string>
#include <vector>

namespace Tool
{

/// ASCII letters in lower case.
std::string lowered(std::string text);

/// Lower case with '-' for blanks: "no-reading".
std::string asWord(std::string text);

/// "a, b, c"
std::string joined(const std::set<std::string>& texts);
std::string joined(const std::vector<std::string>& texts);

} // namespace Tool

#endif
