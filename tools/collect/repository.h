/// Reading the controller's sensor data repository (IPMI v2.0, section 33).
#ifndef VEK_TOOLS_COLLECT_REPOSITORY_H
#define VEK_TOOLS_COLLECT_REPOSITORY_H

#include <algorithm>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiSdrRecord.h>

#include "tools/device.h"

namespace Tool
{

struct Repository
{
    unsigned total = 0;   ///< Records, as the controller says.
    unsigned headers = 0; ///< Found when walking from record to record.
    unsigned records = 0; ///< Of those: asked for, when the walk was whole,
    unsigned failed = 0;  ///< and not read.

    unsigned read() const { return records - failed; }
    unsigned missing() const { return std::max(total, headers) - read(); }
};

/// Reads all records, once, and with them the sensors' first readings,
/// thresholds and hysteresis.
/// @throws Failure when the controller has no repository that can be read.
Repository readRepository(Device& device);
/// The same without the sensors: for their records alone.
Repository readRecordsOnly(Device& device);
/// The same for records of these types; what else was found is not missing.
using RecordTypes = std::vector<uint8_t>;
Repository readRecordsOf(Device& device, const RecordTypes& types);

/// @throws Failure when the controller told nothing usable of a repository.
void checkRepository();

/// What the node has read so far.
Repository repositorySoFar();

/// "reading sensor records: 12 of 92"; for showing it to people.
std::string progressText();

} // namespace Tool

#endif
