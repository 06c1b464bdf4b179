/// A captured controller as a profile of the simulated one
/// (docs/SIMULATOR.md).
#ifndef VEK_TOOLS_PRINT_PROFILE_H
#define VEK_TOOLS_PRINT_PROFILE_H

#include "tools/collect/capture.h"

namespace Tool
{

/// What has no list in it stands on one line, as people write profiles.
std::string toProfile(const Capture& capture);

} // namespace Tool

#endif
