/// The driver's requests that only read and write settings.
#ifndef VEK_SIM_DEVICE_SETTINGS_H
#define VEK_SIM_DEVICE_SETTINGS_H

namespace Sim
{

class Handle;

/// -ENOTTY for a request that is none of these.
int serveSetting(Handle& handle, unsigned request, void* argument);

} // namespace Sim

#endif
