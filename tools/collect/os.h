/// The host operating system as the controller reports it.
#ifndef VEK_TOOLS_COLLECT_OS_H
#define VEK_TOOLS_COLLECT_OS_H

#include <string>

#include "tools/device.h"

namespace Tool
{

/// One system information text (IPMI v2.0, 22.14b).
struct OsText
{
    Completion completion;
    std::string bytes; ///< As the controller sent them; see printable().

    /// The controller answered that it has no such parameter.
    bool unsupported() const;
};

struct OsInfo
{
    OsText name;
    OsText version;
};

OsInfo collectOs(Device& device);

} // namespace Tool

#endif
