#include "sim/device/handle.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "sim/device/real.h"

namespace Sim
{

Handle::Handle(int descriptor, std::shared_ptr<Interface> interface)
    : descriptor_(descriptor), interface_(std::move(interface))
{}

Handle::~Handle()
{
    auto& all = interface_->registrations;
    all.erase(std::remove_if(all.begin(), all.end(),
                             [this](const Interface::Registration& one) {
                                 return one.owner == this;
                             }),
              all.end());
    if (descriptor_ >= 0)
        realClose(descriptor_);
}

void Handle::deliver(Message message)
{
    const auto later = [](const Message& one, const Message& other) {
        return one.due < other.due;
    };
    queue_.insert(
        std::upper_bound(queue_.begin(), queue_.end(), message, later),
        std::move(message));
    arm();
}

const Message* Handle::firstDue(Time now) const
{
    return !queue_.empty() && queue_.front().due <= now ? &queue_.front()
                                                        : nullptr;
}

void Handle::dropFirst()
{
    queue_.pop_front();
    arm();
}

void Handle::dropNotDue(Time now)
{
    while (!queue_.empty() && queue_.back().due > now)
        queue_.pop_back();
    arm();
}

void Handle::renewDescriptor()
{
    const int closeOnExec = fcntl(descriptor_, F_GETFD) & FD_CLOEXEC;
    const int nonBlocking = fcntl(descriptor_, F_GETFL) & O_NONBLOCK;
    const int fresh = timerfd_create(
        CLOCK_MONOTONIC, TFD_CLOEXEC | (nonBlocking ? TFD_NONBLOCK : 0));
    if (fresh < 0)
        return;
    dup3(fresh, descriptor_, closeOnExec ? O_CLOEXEC : 0);
    realClose(fresh);
    arm();
}

/// A time that has passed makes the descriptor readable at once; no time
/// at all makes it unreadable.
void Handle::arm()
{
    itimerspec at{};
    if (!queue_.empty() && queue_.front().due != Message::never) {
        using namespace std::chrono;
        const auto due =
            duration_cast<nanoseconds>(queue_.front().due.time_since_epoch())
                .count();
        at.it_value.tv_sec = time_t(due / 1000000000);
        at.it_value.tv_nsec = long(due % 1000000000);
    }
    timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &at, nullptr);
}

} // namespace Sim
