/// Showing something again and again while the node is polled.
#ifndef VEK_TOOLS_COMMANDS_WATCH_H
#define VEK_TOOLS_COMMANDS_WATCH_H

#include <functional>
#include <string>

#include "tools/status.h"

namespace Tool
{

/// Starts the node, and after each poll puts what `draw` gives, in place on a
/// terminal, until SIGINT or SIGTERM.
/// @param inPlace false: never.
/// @throws Failure without root or a device, or what draw throws.
Status watch(const std::function<std::string()>& draw, bool inPlace);

} // namespace Tool

#endif
