#ifndef VEK_SIM_PROGRAM_IMPORT_H
#define VEK_SIM_PROGRAM_IMPORT_H

#include <string>

namespace Sim
{

/// Writes a profile of the SDR dump in a file; an empty output is standard
/// output. Throws Failure.
void importSdrFile(const std::string& dump, const std::string& output);

} // namespace Sim

#endif
