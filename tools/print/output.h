/// Standard output, written once and checked.
#ifndef VEK_TOOLS_PRINT_OUTPUT_H
#define VEK_TOOLS_PRINT_OUTPUT_H

#include <string>

namespace Tool
{

/// @throws Failure when standard output does not take all of the text.
void put(const std::string& text);

} // namespace Tool

#endif
