/// The functions that stand in front of the C library's: whatever is not
/// about the simulated device goes on to the next definition.

// With these the headers would define some of the functions themselves, or
// give them other names.
#undef _FORTIFY_SOURCE
#undef _FILE_OFFSET_BITS

#include <cerrno>
#include <cstdarg>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "sim/device/layer.h"
#include "sim/device/real.h"

namespace
{

namespace Layer = Sim::Layer;

constexpr int ioctlTypeIpmi = 'i';

bool takesMode(int flags)
{
    return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE;
}

} // namespace

extern "C"
{

    // The compiler turns calls into these when it knows the flags.
    int __open_2(const char* path, int flags);
    int __open64_2(const char* path, int flags);
    int __openat_2(int directory, const char* path, int flags);
    int __openat64_2(int directory, const char* path, int flags);

#define VEK_MODE_OF(flags)                                                     \
    mode_t mode = 0;                                                           \
    if (takesMode(flags)) {                                                    \
        va_list arguments;                                                     \
        va_start(arguments, flags);                                            \
        mode = va_arg(arguments, mode_t);                                      \
        va_end(arguments);                                                     \
    }

#define VEK_OPEN(name)                                                         \
    int name(const char* path, int flags, ...)                                 \
    {                                                                          \
        if (Layer::isDevice(path))                                             \
            return Layer::open(path, flags);                                   \
        VEK_MODE_OF(flags)                                                     \
        static const auto next =                                               \
            Sim::nextDefinition<int(const char*, int, ...)>(#name);            \
        return next(path, flags, mode);                                        \
    }

#define VEK_OPENAT(name)                                                       \
    int name(int directory, const char* path, int flags, ...)                  \
    {                                                                          \
        if (Layer::isDevice(path))                                             \
            return Layer::open(path, flags);                                   \
        VEK_MODE_OF(flags)                                                     \
        static const auto next =                                               \
            Sim::nextDefinition<int(int, const char*, int, ...)>(#name);       \
        return next(directory, path, flags, mode);                             \
    }

    VEK_OPEN(open)
    VEK_OPEN(open64)
    VEK_OPENAT(openat)
    VEK_OPENAT(openat64)

    int __open_2(const char* path, int flags)
    {
        return open(path, flags);
    }

    int __open64_2(const char* path, int flags)
    {
        return open64(path, flags);
    }

    int __openat_2(int directory, const char* path, int flags)
    {
        return openat(directory, path, flags);
    }

    int __openat64_2(int directory, const char* path, int flags)
    {
        return openat64(directory, path, flags);
    }

    int close(int descriptor)
    {
        return Layer::owns(descriptor) ? Layer::close(descriptor)
                                       : Sim::realClose(descriptor);
    }

    /// What is not for this driver gets the kernel's own answer. What is for it
    /// never reaches the kernel: a descriptor may have come by a way that the
    /// functions above do not see (fopen, a relative path, a parent).
    int ioctl(int descriptor, unsigned long request, ...) noexcept
    {
        va_list arguments;
        va_start(arguments, request);
        void* argument = va_arg(arguments, void*);
        va_end(arguments);
        if (_IOC_TYPE(request) == ioctlTypeIpmi && Layer::active()) {
            if (Layer::owns(descriptor))
                return Layer::ioctl(descriptor, request, argument);
            if (fcntl(descriptor, F_GETFD) >= 0)
                errno = ENOTTY; // else EBADF, as fcntl has set it
            return -1;
        }
        static const auto next =
            Sim::nextDefinition<int(int, unsigned long, void*)>("ioctl");
        return next(descriptor, request, argument);
    }

} // extern "C"
