/// Numbers on the command line.
#ifndef VEK_TOOLS_COMMANDS_NUMBER_H
#define VEK_TOOLS_COMMANDS_NUMBER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace Tool
{

/// A byte as decimal or 0x... Leading zeros are taken where base 8, in which
/// other tools read them, gives the same number. False for anything else.
bool readByte(std::string_view text, uint8_t& value);

/// The same.
/// @param what names the argument in the message.
/// @throws CLI::ValidationError
uint8_t toByte(const std::string& what, const std::string& text);

} // namespace Tool

#endif
