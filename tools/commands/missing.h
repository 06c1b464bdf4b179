/// Complaints about a result that is not whole.
#ifndef VEK_TOOLS_COMMANDS_MISSING_H
#define VEK_TOOLS_COMMANDS_MISSING_H

#include <vector>

#include "tools/collect/os.h"

namespace Tool
{

/// A part of a result.
struct Part
{
    const char* what;
    Command command;
    Completion completion;
    bool tolerated = false; ///< Its lack is no failure.
};

Part osNamePart(const OsInfo& os);
Part osVersionPart(const OsInfo& os);

/// One complaint for each part whose lack is a failure; done when there is
/// none, else failed.
Status complainOfMissing(const std::vector<Part>& parts);

} // namespace Tool

#endif
