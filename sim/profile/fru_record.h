/// Multi-records of a FRU device as keys of the profile.
#ifndef VEK_SIM_PROFILE_FRU_RECORD_H
#define VEK_SIM_PROFILE_FRU_RECORD_H

#include "sim/profile/fields.h"
#include "sim/profile/fru_image.h"

namespace Sim
{

void describe(Fields& io, FruRecord& record);

} // namespace Sim

#endif
