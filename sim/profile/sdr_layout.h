/// Which bits of a sensor data record a key of the profile stands for.
#ifndef VEK_SIM_PROFILE_SDR_LAYOUT_H
#define VEK_SIM_PROFILE_SDR_LAYOUT_H

#include "sim/profile/fields.h"

namespace Sim
{

struct SdrLayout
{
    uint8_t type;
    Bytes initial; ///< Up to the type/length byte of the ID string, if any.
    bool hasId;
    /// All but the ID string; `usual` is `initial`.
    void (*describe)(Fields& io, Bytes& record, const Bytes& usual);
};

/// Null for a type whose records have no fields here.
const SdrLayout* findSdrLayout(uint8_t type);

} // namespace Sim

#endif
