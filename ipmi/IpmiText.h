/// Texts that controllers hold, in UTF-8. What cannot be printed is escaped, as
/// \x1B or \u0041.
#ifndef VEK_IPMI_PRIVATE_IPMITEXT_H
#define VEK_IPMI_PRIVATE_IPMITEXT_H

#include <string>

#include "ipmi/RecordView.h"

namespace Ipmi
{

/// Without the zeroes that fill it up. Backslashes doubled, so that no text
/// reads as an escaped one, or as they are.
std::string decodeLatin1(RecordView bytes, bool doubled = false);
std::string withDoubledBackslashes(const std::string& text);
/// LS byte first, in UTF-8, without the zeroes that fill it up; backslashes
/// doubled.
std::string decodeUtf16(RecordView bytes);
/// Two characters a byte (IPMI v2.0, 43.15).
std::string decodeBcdPlus(RecordView bytes);
/// Four characters in three bytes, the first in the low bits.
std::string decodePacked(RecordView bytes);
/// The ASCII of UTF-16, LS byte first; not wide: a byte for a character.
std::string decodeUnicode(RecordView bytes, bool wide);
/// "1Fh", two digits at least; "1F 2E".
std::string hexText(unsigned value);
std::string hexBytes(RecordView bytes);
/// Without blanks at its end.
std::string trimmed(std::string text);

} // namespace Ipmi

#endif
