/// Reading the event log (IPMI v2.0, section 31).
#ifndef VEK_TOOLS_COLLECT_SEL_LOG_H
#define VEK_TOOLS_COLLECT_SEL_LOG_H

#include <memory>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiSel.h>
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

/// Whether a node's last read of the log brought all that it announced. Sends
/// nothing.
bool nodeHoldsSel();

/// The answer to one Get SEL Info.
struct SelState
{
    Completion completion;
    Ipmi::ipmiifc_sel_info info{}; ///< Zeros without a whole, good answer.

    bool isUsable() const { return completion.ok() && info.selVersion != 0; }
};

/// Asks the controller of an open device.
SelState askForSel();

/// @throws Failure when asking again would not help: the controller has no log,
///     or one that is too old.
void requireSel(const SelState& state);

/// "reading the event log: 12 of 80"; for showing it to people.
std::string selProgressText();

} // namespace Tool

#endif
