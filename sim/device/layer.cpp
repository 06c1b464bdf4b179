#include "sim/device/layer.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

#include <pthread.h>
#include <sys/auxv.h>
#include <unistd.h>

#include "sim/device/real.h"

namespace Sim::Layer
{

namespace
{

constexpr int highestDescriptor = 65535;

struct State
{
    std::mutex mutex;
    Driver driver;
    pid_t process = getpid();
    /// Which descriptors are simulated, readable without the lock.
    std::array<std::atomic<bool>, highestDescriptor + 1> owned{};
};

void lockForFork();
void unlockInParent();
void unlockInChild();

/// Never destroyed: programs close descriptors while they end.
State& state()
{
    static State& only = [&]() -> State& {
        auto* made = new State;
        pthread_atfork(lockForFork, unlockInParent, unlockInChild);
        return *made;
    }();
    return only;
}

void lockForFork()
{
    state().mutex.lock();
}

void unlockInParent()
{
    state().mutex.unlock();
}

/// The child goes on with a copy of its own: of the controller, the handles
/// and all that waits on them.
void unlockInChild()
{
    State& s = state();
    s.process = getpid();
    s.driver.renewDescriptors();
    s.mutex.unlock();
}

int result(int value)
{
    if (value >= 0)
        return value;
    errno = -value;
    return -1;
}

constexpr const char* served[] = {"/dev/ipmi0", "/dev/ipmi/0",
                                  "/dev/ipmidev/0"};

/// What begins so leads to a controller: by a driver, a bus or its ports.
constexpr const char* controllers[] = {"/dev/ipmi", "/dev/imb", "/dev/bmc",
                                       "/dev/i2c-", "/dev/port"};

} // namespace

bool active()
{
    static const bool privileged = getauxval(AT_SECURE) != 0;
    return !privileged;
}

bool isDevice(const char* path)
{
    if (!path || std::strncmp(path, "/dev/", 5) != 0)
        return false;
    for (const char* prefix : controllers)
        if (std::strncmp(path, prefix, std::strlen(prefix)) == 0)
            return active();
    return false;
}

int open(const char* path, int flags)
{
    for (const char* name : served) {
        if (std::strcmp(path, name) != 0)
            continue;
        State& s = state();
        const std::lock_guard lock(s.mutex);
        int descriptor = s.driver.open(flags);
        if (descriptor > highestDescriptor) {
            s.driver.close(descriptor);
            descriptor = -EMFILE;
        }
        if (descriptor >= 0)
            s.owned[size_t(descriptor)] = true;
        return result(descriptor);
    }
    return result(-ENOENT);
}

bool owns(int descriptor)
{
    return descriptor >= 0 && descriptor <= highestDescriptor &&
           state().owned[size_t(descriptor)];
}

int close(int descriptor)
{
    State& s = state();
    // Between vfork and exec a child has its parent's memory, but
    // descriptors of its own.
    if (s.process != getpid())
        return realClose(descriptor);
    const std::lock_guard lock(s.mutex);
    s.owned[size_t(descriptor)] = false;
    s.driver.close(descriptor);
    return 0;
}

int ioctl(int descriptor, unsigned long request, void* argument)
{
    State& s = state();
    const std::lock_guard lock(s.mutex);
    // Some callers hand over an int, and its sign comes along.
    return result(s.driver.ioctl(descriptor, unsigned(request), argument));
}

void with(const std::function<void(Driver&)>& act)
{
    State& s = state();
    const std::lock_guard lock(s.mutex);
    act(s.driver);
}

} // namespace Sim::Layer
