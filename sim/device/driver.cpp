#include "sim/device/driver.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/timerfd.h>

#include "sim/device/settings.h"

namespace Sim
{

namespace
{

constexpr uint8_t netFnAppResponse = 0x07, readEventMessageBuffer = 0x35;
constexpr size_t keptEvents = 25;

Message eventMessage(Bytes bytes, Time now)
{
    Message message;
    message.due = now;
    message.receiveType = IPMI_ASYNC_EVENT_RECV_TYPE;
    message.from = Address::systemInterface(0);
    message.netFn = netFnAppResponse;
    message.command = readEventMessageBuffer;
    message.data = std::move(bytes);
    return message;
}

} // namespace

const Driver::Service Driver::services[] = {
    {IPMICTL_SEND_COMMAND, &Driver::sendWithDefaults},
    {IPMICTL_SEND_COMMAND_SETTIME, &Driver::sendWithTiming},
    {IPMICTL_RECEIVE_MSG, &Driver::receiveWhole},
    {IPMICTL_RECEIVE_MSG_TRUNC, &Driver::receiveCut},
    {IPMICTL_SET_GETS_EVENTS_CMD, &Driver::setGetsEvents},
};

void Driver::setFactory(Factory factory)
{
    vanish(std::nullopt);
    comeBack();
    factory_ = std::move(factory);
    controller_.reset();
}

Controller* Driver::controller()
{
    if (!controller_ && factory_) {
        controller_ = factory_();
        factory_ = nullptr;
    }
    return controller_.get();
}

bool Driver::present()
{
    if (backAt_ && clock_.now() >= *backAt_)
        comeBack();
    if (backAt_ || !controller())
        return false;
    if (!interface_)
        interface_ = std::make_shared<Interface>(controller_->bmc());
    return true;
}

int Driver::open(int flags)
{
    if (!present())
        return -ENOENT;
    if (flags & O_DIRECTORY)
        return -ENOTDIR;
    if (const int error = controller_->openErrno())
        return -error;
    const int descriptor = timerfd_create(
        CLOCK_MONOTONIC, (flags & O_CLOEXEC ? TFD_CLOEXEC : 0) |
                             (flags & O_NONBLOCK ? TFD_NONBLOCK : 0));
    if (descriptor < 0)
        return -errno;
    // A number that was closed behind the layer's back is used again: it is
    // the new handle's now, and not to be closed with the old one.
    if (const auto old = handles_.find(descriptor); old != handles_.end()) {
        old->second.disown();
        handles_.erase(old);
    }
    handles_.try_emplace(descriptor, descriptor, interface_);
    ++opens_;
    return descriptor;
}

int Driver::ioctl(int descriptor, unsigned request, void* argument)
{
    const auto found = handles_.find(descriptor);
    if (found == handles_.end())
        return -EBADF;
    for (const Service& service : services)
        if (service.request == request)
            return isFault(argument)
                       ? -EFAULT
                       : (this->*service.serve)(found->second, argument);
    return serveSetting(found->second, request, argument);
}

void Driver::vanish(std::optional<Duration> away)
{
    const Time now = clock_.now();
    backAt_ = away ? now + clock_.scaled(*away) : Time::max();
    if (!interface_)
        return;
    interface_->gone = true;
    for (auto& [descriptor, handle] : handles_)
        if (&handle.interface() == interface_.get())
            handle.dropNotDue(now);
    interface_.reset();
}

void Driver::comeBack()
{
    backAt_.reset();
}

void Driver::event(Bytes bytes)
{
    if (!present())
        return;
    bool taken = false;
    for (auto& [descriptor, handle] : handles_)
        if (handle.getsEvents && !handle.interface().gone) {
            handle.deliver(eventMessage(bytes, clock_.now()));
            taken = true;
        }
    if (!taken && interface_->events.size() < keptEvents)
        interface_->events.push_back(std::move(bytes));
}

void Driver::collectEvents()
{
    Bytes bytes;
    while (controller_->nextEvent(bytes))
        event(bytes);
}

int Driver::setGetsEvents(Handle& handle, void* argument)
{
    if (handle.interface().gone)
        return -ENODEV;
    handle.getsEvents = *static_cast<const int*>(argument) != 0;
    collectEvents();
    auto& kept = handle.interface().events;
    for (; handle.getsEvents && !kept.empty(); kept.pop_front())
        handle.deliver(eventMessage(kept.front(), clock_.now()));
    return 0;
}

void Driver::renewDescriptors()
{
    for (auto& [descriptor, handle] : handles_)
        handle.renewDescriptor();
}

} // namespace Sim
