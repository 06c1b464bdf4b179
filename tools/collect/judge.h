/// How well a sensor's state is.
#ifndef VEK_TOOLS_COLLECT_JUDGE_H
#define VEK_TOOLS_COLLECT_JUDGE_H

#include "tools/collect/sensor.h"

namespace Tool
{

/// Fills health and healthNumber from condition and stateBits: thresholds by
/// the worst that is passed, other states by the health table.
void judge(Sensor& sensor);

/// The health that a number of the health table stands for.
Health healthOf(int number);

} // namespace Tool

#endif
