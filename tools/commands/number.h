/// Numbers on the command line.
#ifndef VEK_TOOLS_COMMANDS_NUMBER_H
#define VEK_TOOLS_COMMANDS_NUMBER_H

#include <cstdint>
#include <string>

namespace Tool
{

/// A byte as decimal or 0x... Leading zeros are taken where base 8, in which
/// other tools read them, gives the same number.
/// @param what names the argument in the message.
/// @throws CLI::ValidationError
uint8_t toByte(const std::string& what, const std::string& text);

} // namespace Tool

#endif
