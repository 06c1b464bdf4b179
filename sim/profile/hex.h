/// Bytes and numbers as people write them in profiles and rules.
#ifndef VEK_SIM_PROFILE_HEX_H
#define VEK_SIM_PROFILE_HEX_H

#include <optional>
#include <string>

#include "sim/model/message.h"

namespace Sim
{

/// Pairs of hexadecimal digits; blanks and colons may stand between pairs.
std::optional<Bytes> parseBytes(const std::string& text);
std::string formatBytes(const Bytes& bytes);

/// The whole text, digits only, at most `max`.
std::optional<uint32_t> parseNumber(const std::string& text, int base,
                                    uint32_t max = 0xFFFFFFFF);

/// The entry of `names` that `word` was probably meant to be, or empty.
std::string closest(const std::string& word,
                    const std::vector<std::string>& names);

} // namespace Sim

#endif
