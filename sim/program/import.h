#ifndef VEK_SIM_PROGRAM_IMPORT_H
#define VEK_SIM_PROGRAM_IMPORT_H

#include <optional>
#include <string>

#include "sim/profile/import.h"

namespace Sim
{

using Import = std::optional<Profile> (*)(const Bytes& dump,
                                          Mistakes& mistakes);

/// Writes a profile of the dump in a file; an empty output is standard output.
/// Throws Failure.
void importFile(Import import, const std::string& dump,
                const std::string& output);

} // namespace Sim

#endif
