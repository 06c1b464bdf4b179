/// What a sensor can do, in words (IPMI v2.0, 43.1, bytes 11 and 12).
#ifndef VEK_TOOLS_PRINT_SUPPORT_H
#define VEK_TOOLS_PRINT_SUPPORT_H

#include <cstdint>
#include <string>
#include <vector>

namespace Tool
{

/// Of thresholds and hysteresis: "none", "readable", "settable", "fixed".
const char* supportWord(uint8_t support);

/// "each event", "whole sensor", "controller only", "none"; "unknown" for
/// records that do not say.
const char* eventSupportWord(uint8_t support);

/// What IpmiSensor::getFlags says, a text for each bit.
std::vector<std::string> flagWords(unsigned flags);

} // namespace Tool

#endif
