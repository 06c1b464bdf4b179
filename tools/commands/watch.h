/// Showing something again and again while the node is polled.
#ifndef VEK_TOOLS_COMMANDS_WATCH_H
#define VEK_TOOLS_COMMANDS_WATCH_H

#include <functional>
#include <string>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/patience.h"
#include "tools/status.h"

namespace Tool
{

/// What is done while the node is polled.
struct Watching
{
    Ipmi::IpmiIfc::IPMI_POLL_TYPE first, next;
    std::function<void()> show;       ///< After each poll.
    std::function<void()> over;       ///< A signal has ended it.
    unsigned pause = 0;               ///< Further seconds between two polls.
    WaitText waiting = {};            ///< What the first poll waits for.
    std::function<void()> check = {}; ///< Before the node starts.
};

/// Starts the node and polls it, every 2 seconds at most, until SIGINT or
/// SIGTERM.
/// @throws Failure without root or a device, or what check or show
/// throws.
Status watch(const Watching& watching);

/// Reads the sensors each time and puts what `draw` gives, in place on a
/// terminal.
/// @param inPlace false: never.
Status watch(const std::function<std::string()>& draw, bool inPlace);

} // namespace Tool

#endif
