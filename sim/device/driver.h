/// What the Linux OpenIPMI driver does, with a simulated controller behind
/// it. Results are the kernel's: negative values are error numbers. What the
/// driver does was measured; sim/probe/probe.cpp asks it again.
#ifndef VEK_SIM_DEVICE_DRIVER_H
#define VEK_SIM_DEVICE_DRIVER_H

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "sim/controller.h"
#include "sim/device/clock.h"
#include "sim/device/handle.h"

namespace Sim
{

/// Not for several threads at once: the layer serialises.
class Driver
{
public:
    /// Null when no controller can be made: the device is not there.
    using Factory = std::function<std::unique_ptr<Controller>()>;
    using Observer = std::function<void(const Request&, const Outcome&)>;

    /// The factory is asked once, at the first need.
    void setFactory(Factory factory);
    /// Told of every exchange that reaches the controller.
    void setObserver(Observer observer) { observer_ = std::move(observer); }
    LayerClock& clock() { return clock_; }
    Controller* controller();

    /// A descriptor.
    int open(int flags);
    void close(int descriptor) { handles_.erase(descriptor); }
    int ioctl(int descriptor, unsigned request, void* argument);

    /// Open handles stay open and useless for ever; a new open finds no
    /// device until the time is over (nothing: until comeBack).
    void vanish(std::optional<Duration> away);
    void comeBack();

    /// An event message of the controller, for all users who want events.
    void event(Bytes bytes);

    /// For tests: what was opened so far, and an error for the next receive.
    int opens() const { return opens_; }
    void failNextReceive(int errnoValue) { receiveErrno_ = errnoValue; }

    /// For a forked child.
    void renewDescriptors();

private:
    struct Timing
    {
        int retries;
        unsigned retryTimeMs;
    };
    struct Service
    {
        unsigned request;
        int (Driver::*serve)(Handle& handle, void* argument);
    };
    static const Service services[];

    int sendWithDefaults(Handle& handle, void* argument);
    int sendWithTiming(Handle& handle, void* argument);
    int receiveWhole(Handle& handle, void* argument);
    int receiveCut(Handle& handle, void* argument);
    int setGetsEvents(Handle& handle, void* argument);

    int send(Handle& handle, const ipmi_req& request, Timing timing);
    void actOut(Handle& handle, const Outcome& outcome, Message answer);
    void answerBridged(Handle& handle, const Outcome& outcome, Message answer,
                       Timing timing);
    int receive(Handle& handle, ipmi_recv& into, bool cut);
    void collectEvents();
    bool present();

    Factory factory_;
    Observer observer_;
    LayerClock clock_;
    std::unique_ptr<Controller> controller_;
    std::shared_ptr<Interface> interface_;
    std::optional<Time> backAt_; ///< Away until then.
    std::map<int, Handle> handles_;
    int opens_ = 0;
    int receiveErrno_ = 0;
};

} // namespace Sim

#endif
