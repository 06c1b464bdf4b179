/// The simulated device for tests: linked into a program, it stands in front
/// of the C library there. Without a controller there is no device.
#ifndef VEK_SIM_DEVICE_DEVICE_H
#define VEK_SIM_DEVICE_DEVICE_H

#include <memory>
#include <optional>
#include <vector>

#include "sim/controller.h"

namespace Sim::Device
{

struct Exchange
{
    Request request;
    Outcome outcome;
};

/// A new device with this controller behind it; what was recorded is
/// dropped. Handles of an earlier device stay open and dead (ENODEV).
void install(std::unique_ptr<Controller> controller);

/// No device, nothing recorded, time as it is.
void reset();

/// What has reached the controller since it was installed.
std::vector<Exchange> exchanges();

/// Whether exchanges are recorded: as installed, they are.
void record(bool on);

/// For a look into the model, while no other thread has an exchange. Null
/// when nothing is installed.
Controller* controller();

/// As when the interface loses its driver: open handles are dead for ever,
/// and a new open finds no device until comeBack.
void vanish();
void comeBack();

/// An asynchronous event of 16 bytes for every handle that wants events;
/// kept for the first that will when none does. Wakes a waiting poll.
void injectEvent(const Bytes& event);

/// How many handles were opened since the process began.
int openCount();

/// The next receive fails, whatever waits to be received.
void failNextReceive(int errnoValue);

/// How long a simulated second lasts: the layer's waits (latency, the 4 s of
/// a silent controller) are multiplied with it.
void setTimeScale(double scale);

} // namespace Sim::Device

#endif
