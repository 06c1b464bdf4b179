/// LAN channels.
#ifndef VEK_TOOLS_PRINT_LAN_H
#define VEK_TOOLS_PRINT_LAN_H

#include "tools/collect/lan.h"
#include "tools/print/json.h"

namespace Tool
{

/// A table for each channel, a blank line between them.
std::string toTable(const Lan& lan);
Json toJson(const Lan& lan);

/// "LAN channel 1: the gateway was not read: C0h: node busy", and what to do.
std::vector<Failure> failuresOf(const Lan& lan);

/// Why no LAN channel was found, or what there is on the chosen one.
Failure whyNoLan(const Lan& lan);

} // namespace Tool

#endif
