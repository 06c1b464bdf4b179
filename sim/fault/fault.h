#ifndef VEK_SIM_FAULT_FAULT_H
#define VEK_SIM_FAULT_FAULT_H

namespace Sim
{

class FaultSet
{};

} // namespace Sim

#endif
