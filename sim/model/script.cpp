#include "sim/model/script.h"

#include <algorithm>

namespace Sim
{
namespace
{

/// Of the second itself, not of how often was asked: two readers agree.
uint32_t mix(uint32_t seed, uint32_t second)
{
    uint32_t hash = seed * 0x9E3779B9 + second;
    for (uint32_t factor : {0x85EBCA6Bu, 0xC2B2AE35u}) {
        hash ^= hash >> 15;
        hash *= factor;
    }
    return hash ^ hash >> 16;
}

int32_t between(const Script::Point& a, const Script::Point& b, int64_t time)
{
    return int32_t(a.value + (int64_t{b.value} - a.value) * (time - a.at) /
                                 (int64_t{b.at} - a.at));
}

} // namespace

int32_t Script::valueAt(int64_t seconds) const
{
    int64_t time = std::max<int64_t>(seconds, 0);
    if (period != 0)
        time %= period;
    const auto later = std::upper_bound(
        points.begin(), points.end(), time,
        [](int64_t wanted, const Point& point) { return wanted < point.at; });
    const auto last = later == points.begin() ? later : later - 1;
    int64_t value = last->value;
    if (ramp && later != points.end() && later != last)
        value = between(*last, *later, time);
    if (noise != 0)
        value += int64_t{mix(seed, uint32_t(time)) % (2 * noise + 1)} - noise;
    return int32_t(value);
}

} // namespace Sim
