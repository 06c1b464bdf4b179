/// The one clock of the device layer.
#ifndef VEK_SIM_DEVICE_CLOCK_H
#define VEK_SIM_DEVICE_CLOCK_H

#include <chrono>

namespace Sim
{

using Duration = std::chrono::microseconds;
/// CLOCK_MONOTONIC, since that is what a timerfd can wait for.
using Time = std::chrono::steady_clock::time_point;

/// Real time goes on as it is; what the layer waits for can be shortened.
class LayerClock
{
public:
    Time now() const { return std::chrono::steady_clock::now(); }
    Duration scaled(Duration duration) const
    {
        return Duration(Duration::rep(double(duration.count()) * scale_));
    }
    void setScale(double scale) { scale_ = scale; }

private:
    double scale_ = 1;
};

} // namespace Sim

#endif
