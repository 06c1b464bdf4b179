/// Sensor data records.
#ifndef VEK_TOOLS_PRINT_RECORD_H
#define VEK_TOOLS_PRINT_RECORD_H

#include "tools/collect/record.h"
#include "tools/collect/repository.h"
#include "tools/print/json.h"
#include "tools/print/terminal.h"

namespace Tool
{

/// A line a record; with `raw` its bytes below.
std::string toTable(const std::vector<Record>& records, bool raw,
                    const Terminal& terminal);

/// {"recordId", "version", "type", "length", "name"}
Json toJson(const Record& record);

/// {"records", "found", "unreadable"}
Json toJson(const Repository& repository);

Json toJson(const std::vector<Record>& records, const Repository& repository,
            bool raw);

} // namespace Tool

#endif
