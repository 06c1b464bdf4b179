/// A value that follows a script over the model's clock.
#ifndef VEK_SIM_MODEL_SCRIPT_H
#define VEK_SIM_MODEL_SCRIPT_H

#include <cstdint>
#include <vector>

namespace Sim
{

struct Script
{
    struct Point
    {
        uint32_t at = 0; ///< Seconds since the controller's start.
        int32_t value = 0;
    };

    std::vector<Point> points; ///< By time; none: there is no script.
    bool ramp = false;         ///< Straight from point to point, else steps.
    uint32_t period = 0;       ///< Seconds; 0: it runs once.
    uint32_t noise = 0;        ///< The value is off by so much at most,
    uint32_t seed = 1;         ///< in each second the same in every run.

    /// There is a point.
    int32_t valueAt(int64_t seconds) const;
};

} // namespace Sim

#endif
