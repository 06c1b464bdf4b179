/// Listings of sensors.
#ifndef VEK_TOOLS_PRINT_SENSORS_H
#define VEK_TOOLS_PRINT_SENSORS_H

#include "tools/collect/record.h"
#include "tools/collect/repository.h"
#include "tools/print/json.h"
#include "tools/print/terminal.h"

namespace Tool
{

struct Listing
{
    std::vector<Sensor> sensors; ///< Those to show.
    size_t count = 0;            ///< Of those before filters chose.
    std::vector<Record> records; ///< All of the repository.
    Repository repository;
    bool thresholds = false; ///< A column for each.
    bool all = false;        ///< Also the records that are no sensors here.
};

std::string toTable(const Listing& listing, const Terminal& terminal);
Json toJson(const Listing& listing);

/// A rule by which records are left out, as a text for several of them.
const char* leftOutText(LeftOut rule);

} // namespace Tool

#endif
