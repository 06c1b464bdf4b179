/// ID strings of sensor data records (IPMI v2.0, 43.15).
#ifndef VEK_SIM_PROFILE_ID_STRING_H
#define VEK_SIM_PROFILE_ID_STRING_H

#include <optional>
#include <string>

#include "sim/model/message.h"

namespace Sim
{

/// As a type/length byte has it in bits 7:6.
enum class IdEncoding : uint8_t
{
    Unicode = 0, ///< UTF-8: what is in such bytes, no standard says.
    BcdPlus = 1,
    SixBit = 2,
    EightBit = 3 ///< ASCII and Latin-1.
};

/// No value for a UTF-8 text that the encoding cannot hold.
std::optional<Bytes> encodeText(const std::string& text, IdEncoding encoding);
/// At most so many characters of it.
std::string decodeText(const Bytes& data, IdEncoding encoding,
                       size_t characters = SIZE_MAX);

/// Type/length byte, which counts characters, and string. No value for a
/// UTF-8 text that the encoding cannot hold, or of more than 30 characters.
std::optional<Bytes> encodeId(const std::string& text, IdEncoding encoding);

/// The text of what begins with a type/length byte; cut where it ends.
std::string decodeId(const Bytes& id);

} // namespace Sim

#endif
