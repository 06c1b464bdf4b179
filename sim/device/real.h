/// The C library's own calls, behind the ones that stand in front of them.
#ifndef VEK_SIM_DEVICE_REAL_H
#define VEK_SIM_DEVICE_REAL_H

#include <dlfcn.h>

namespace Sim
{

/// The next definition of a function after ours: the C library's, or a
/// sanitizer's that stands in front of it.
template <typename Function>
Function* nextDefinition(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int realClose(int descriptor);

} // namespace Sim

#endif
