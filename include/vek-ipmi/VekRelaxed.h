/// A field that threads share without a lock on purpose.
#ifndef VEK_IPMI_VEKRELAXED_H
#define VEK_IPMI_VEKRELAXED_H

#include <atomic>

namespace VEK
{

/// A relaxed atomic of T's own width that reads and writes like a T. It
/// orders nothing: whoever needs an order takes the lock beside the field.
template <typename T>
class Relaxed
{
public:
    Relaxed() : value_{T{}} {}
    Relaxed(T value) : value_{value} {}
    Relaxed(const Relaxed&) = delete;
    Relaxed& operator=(const Relaxed&) = delete;

    operator T() const { return value_.load(std::memory_order_relaxed); }
    T operator=(T value)
    {
        value_.store(value, std::memory_order_relaxed);
        return value;
    }
    T operator++(int) { return value_.fetch_add(1, std::memory_order_relaxed); }
    T exchange(T value)
    {
        return value_.exchange(value, std::memory_order_relaxed);
    }

private:
    std::atomic<T> value_;
    static_assert(sizeof(std::atomic<T>) == sizeof(T), "wider than its value");
};

} // namespace VEK

#endif
