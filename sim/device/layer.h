/// The one driver of a process, for the functions that stand in front of the
/// C library's. Safe for several threads at once; close() in a signal handler
/// is safe for any descriptor but the simulated ones.
#ifndef VEK_SIM_DEVICE_LAYER_H
#define VEK_SIM_DEVICE_LAYER_H

#include <functional>

#include "sim/device/driver.h"

namespace Sim::Layer
{

/// False in a program that runs with more rights than its user has: there
/// the layer lets every call through.
bool active();

/// A path that leads to a controller, simulated or not: none reaches the
/// kernel.
bool isDevice(const char* path);

/// As the calls of these names: -1 and errno for a failure.
int open(const char* path, int flags);
int close(int descriptor);
int ioctl(int descriptor, unsigned long request, void* argument);

/// A simulated descriptor. Takes no lock.
bool owns(int descriptor);

/// Under the layer's lock.
void with(const std::function<void(Driver&)>& act);

} // namespace Sim::Layer

#endif
