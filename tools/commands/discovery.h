/// What most subcommands about sensors begin with.
#ifndef VEK_TOOLS_COMMANDS_DISCOVERY_H
#define VEK_TOOLS_COMMANDS_DISCOVERY_H

#include "tools/collect/repository.h"
#include "tools/collect/sensor.h"

namespace Tool
{

struct Discovery
{
    Repository repository;
    std::vector<Sensor> sensors;
};

/// Reads the repository, once, with the sensors.
/// @throws Failure without a repository.
Discovery readDiscovery(Device& device);

/// Reads the repository for the names in its records; of some types, if they
/// are enough. What is lacking goes to `gaps`, with `unnamed` on what that
/// means; a controller without a repository lacks nothing.
/// @return whether all records were read that there are.
bool readForNames(Device& device, const char* unnamed,
                  std::vector<Failure>& gaps, const RecordTypes& types = {});

/// "only 90 of 105 sensor data records were read (...)"
std::string missingText(const Repository& repository);

/// One complaint when records are missing; done when there are none, else
/// failed.
Status complainOfMissing(const Repository& repository);

} // namespace Tool

#endif
