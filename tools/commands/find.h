/// Finding the sensor that a person means.
#ifndef VEK_TOOLS_COMMANDS_FIND_H
#define VEK_TOOLS_COMMANDS_FIND_H

#include "tools/commands/discovery.h"

namespace Tool
{

/// How a command line says which sensor.
constexpr char sensorHelp[] =
    "Its name, its number (decimal or 0x..), or its device id";

/// The one sensor of that device id, name or number.
/// @throws Failure with status usage when it fits none, or several: which it
///     is of those is never guessed; status failed for none while records are
///     missing.
const Sensor& findSensor(const Discovery& discovery, const std::string& what);

/// The same for a command that writes: while records are missing, which might
/// fit as well, only a device id says which sensor it is.
const Sensor& findForWriting(const Discovery& discovery,
                             const std::string& what);

/// Commands about settings go to the controller itself, whoever owns a sensor.
/// @throws Failure for a sensor that is not the controller's at LUN 0.
void refuseSatellite(const Sensor& sensor);

} // namespace Tool

#endif
