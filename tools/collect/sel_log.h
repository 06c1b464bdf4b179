/// Reading the event log (IPMI v2.0, section 31).
#ifndef VEK_TOOLS_COLLECT_SEL_LOG_H
#define VEK_TOOLS_COLLECT_SEL_LOG_H

#include <memory>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiSelData.h>

#include "tools/device.h"

namespace Tool
{

struct SelLog
{
    std::vector<std::shared_ptr<Ipmi::IpmiSelData>> records;
    unsigned total = 0;  ///< Records, as the controller says.
    unsigned failed = 0; ///< Attempts at a record that were given up.
    bool complete = false;
};

/// Reads all records, once.
/// @throws Failure when the controller has no log that can be read.
SelLog readSel(Device& device);

/// What the node has read so far.
SelLog selSoFar();

/// Whether a running node has read all of the log, which it does at its own
/// time; asks the controller, too.
/// @throws Failure when there is no log that can be read.
bool nodeHoldsSel();

} // namespace Tool

#endif
