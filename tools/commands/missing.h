/// Complaints about a result that is not whole.
#ifndef VEK_TOOLS_COMMANDS_MISSING_H
#define VEK_TOOLS_COMMANDS_MISSING_H

#include <vector>

#include "tools/collect/info.h"

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

/// One for each part whose lack is a failure.
std::vector<Failure> gapsOf(const std::vector<Part>& parts);

/// What an identity lacks.
std::vector<Failure> gapsOf(const Info& info);

/// One complaint for each part whose lack is a failure; done when there is
/// none, else failed.
Status complainOfMissing(const std::vector<Part>& parts);

} // namespace Tool

#endif
