/// Profiles made of what was read from a real controller.
#ifndef VEK_SIM_PROFILE_IMPORT_H
#define VEK_SIM_PROFILE_IMPORT_H

#include "sim/profile/profile.h"

namespace Sim
{

/// A controller with the records of a dump, one after the other and with
/// their headers, as "ipmitool sdr dump" writes them; sensors read what their
/// records call nominal. No value, with the mistake, when it ends within a
/// record or holds none.
std::optional<Profile> importSdr(const Bytes& dump, Mistakes& mistakes);

/// A controller with the event log of a file of records of 16 bytes, as
/// "ipmitool sel writeraw" writes it.
std::optional<Profile> importSel(const Bytes& dump, Mistakes& mistakes);

/// A controller with one FRU device, of which these are all bytes, as
/// "ipmitool fru read" writes them.
std::optional<Profile> importFru(const Bytes& dump, Mistakes& mistakes);

/// The controller of a profile that "vek-ipmi capture" wrote, with fields in
/// place of those answers that they give as well.
std::optional<Profile> importCapture(const Bytes& dump, Mistakes& mistakes);

} // namespace Sim

#endif
