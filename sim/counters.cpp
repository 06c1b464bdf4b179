#include "sim/counters.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Sim
{

namespace
{

/// Requests have even network functions, below 64.
constexpr size_t cellCount = 32 * 256;
constexpr size_t size = cellCount * sizeof(uint32_t);

} // namespace

bool SharedCounters::create()
{
    descriptor_ = memfd_create("vek-ipmi-sim-count", MFD_CLOEXEC);
    return descriptor_ >= 0 && ftruncate(descriptor_, size) == 0 &&
           map(descriptor_);
}

bool SharedCounters::join(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
    const bool joined = descriptor >= 0 && map(descriptor);
    if (descriptor >= 0)
        close(descriptor);
    return joined;
}

bool SharedCounters::map(int descriptor)
{
    void* memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED)
        return false;
    cells_ = static_cast<uint32_t*>(memory);
    return true;
}

std::string SharedCounters::path() const
{
    return "/proc/" + std::to_string(getpid()) + "/fd/" +
           std::to_string(descriptor_);
}

void SharedCounters::add(uint8_t netFn, uint8_t command)
{
    const size_t cell = size_t(netFn & 0x3E) / 2 * 256 + command;
    if (cells_)
        __atomic_fetch_add(&cells_[cell], 1, __ATOMIC_RELAXED);
}

Counts SharedCounters::read() const
{
    Counts counts;
    for (size_t cell = 0; cells_ && cell < cellCount; ++cell)
        if (const auto count = __atomic_load_n(&cells_[cell], __ATOMIC_RELAXED))
            counts[uint16_t(cell / 256 * 2 << 8 | cell % 256)] = count;
    return counts;
}

} // namespace Sim
