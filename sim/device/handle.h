/// One open descriptor of the simulated driver and what waits on it.
#ifndef VEK_SIM_DEVICE_HANDLE_H
#define VEK_SIM_DEVICE_HANDLE_H

#include <deque>
#include <memory>

#include "sim/device/address.h"
#include "sim/device/clock.h"
#include "sim/device/interface.h"
#include "sim/model/message.h"

namespace Sim
{

/// One message that RECEIVE hands out once it is due.
struct Message
{
    /// Of a message that never comes.
    static constexpr Time never = Time::max();

    Time due{};
    int receiveType = IPMI_RESPONSE_RECV_TYPE;
    Address from;
    long id = 0;
    uint8_t netFn = 0;
    uint8_t command = 0;
    Bytes data;
};

/// The descriptor is a timerfd, readable while a message is due: so poll,
/// select and epoll work, and nothing needs a thread.
class Handle
{
public:
    /// Owns the descriptor.
    Handle(int descriptor, std::shared_ptr<Interface> interface);
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void deliver(Message message);
    const Message* firstDue(Time now) const;
    void dropFirst();
    void dropNotDue(Time now); ///< What was in flight is lost.
    size_t outstanding() const { return queue_.size(); }

    /// A descriptor of its own under the same number, for a forked child:
    /// else it would set the timer of its parent.
    void renewDescriptor();

    /// The descriptor is somebody else's by now.
    void disown() { descriptor_ = -1; }

    Interface& interface() { return *interface_; }

    bool getsEvents = false;
    ipmi_timing_parms timing{-1, 0}; ///< -1, 0: as the driver sees fit.

private:
    void arm();

    int descriptor_;
    std::shared_ptr<Interface> interface_;
    std::deque<Message> queue_; ///< By due time.
};

} // namespace Sim

#endif
