/// Words for FRU devices, their areas and fields.
#ifndef VEK_TOOLS_PRINT_FRU_WORDS_H
#define VEK_TOOLS_PRINT_FRU_WORDS_H

#include <string>

#include "tools/collect/fru.h"

namespace Tool
{

/// "board": a stable word.
const char* kindWord(Ipmi::IpmiFruArea::Kind kind);

/// "serialNumber", "custom2": a stable word for a field by the library's name.
std::string fieldKey(const std::string& name);

/// "Board serial number"
std::string fieldLabel(Ipmi::IpmiFruArea::Kind kind, const std::string& name);

/// "0", "0@0x72/6", "0@0x72/6.1": as a command line takes it.
std::string fruNumber(const FruLocator& locator);

/// "FRU device 0 of 72h on channel 6"
std::string placeText(const FruLocator& locator);

/// "'PSU1' (FRU device 1)", or the place alone.
std::string nameText(const FruLocator& locator);

} // namespace Tool

#endif
