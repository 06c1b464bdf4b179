/// Arguments in fault rules. Each sets its target and returns null, or
/// returns what it expected.
#ifndef VEK_SIM_FAULT_ARGUMENT_H
#define VEK_SIM_FAULT_ARGUMENT_H

#include "sim/fault/fault.h"

namespace Sim
{

using Expected = const char*;

Expected parseHexByte(const std::string& text, uint8_t& value);
Expected parseHexWord(const std::string& text, uint32_t& value); ///< To FFFF.
Expected parseCount(const std::string& text, uint32_t& value);   ///< From 1.
Expected parseWhole(const std::string& text, uint32_t& value);   ///< From 0.
Expected parseRate(const std::string& text, double& value);      ///< 0 to 1.
Expected parseErrno(const std::string& text, uint32_t& value);   ///< EBUSY.
Expected parseNothing(const std::string& text);
Expected parseFlip(const std::string& text, uint32_t& offset, uint8_t& mask);
/// "0b:??:4?": a question mark stands for any digit.
Expected parsePattern(const std::string& text, std::vector<BytePattern>& data);

} // namespace Sim

#endif
