/// Units of sensors (IPMI v2.0, 43.17).
#ifndef VEK_TOOLS_COLLECT_UNIT_H
#define VEK_TOOLS_COLLECT_UNIT_H

#include "tools/collect/sensor.h"

namespace Tool
{

Unit unitOf(const Ipmi::IpmiSensor& sensor);

} // namespace Tool

#endif
