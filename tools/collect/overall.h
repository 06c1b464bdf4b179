/// How well the machine is, as far as its sensors tell.
#ifndef VEK_TOOLS_COLLECT_OVERALL_H
#define VEK_TOOLS_COLLECT_OVERALL_H

#include "tools/collect/health_source.h"
#include "tools/collect/repository.h"
#include "tools/collect/sensor.h"

namespace Tool
{

struct Overall
{
    Health health = Health::unknown; ///< Never noRule or none.
    std::vector<Sensor> notWell;     ///< The worst first; what counts.
    std::vector<Sensor> notJudged;   ///< No reading, or no rule for the state.
    size_t absent = 0;               ///< Not present, or never read.
    size_t count = 0;                ///< All sensors.
    size_t judged = 0; ///< Those that are known to be well or not.
    Repository repository;
    HealthSource source = HealthSource::file;
};

/// The worst health of all sensors. A sensor that is absent, never read or not
/// scanned, that has no reading or is none to be read (CDh), and a state
/// without a rule do not count. A sensor that does not answer or is refused, a
/// record that was not read, and no sensor that could be judged make it
/// unknown, unless something is degraded or critical.
Overall overallOf(const std::vector<Sensor>& sensors,
                  const Repository& repository);

} // namespace Tool

#endif
