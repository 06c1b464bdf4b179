/// The event log.
#ifndef VEK_TOOLS_PRINT_SEL_H
#define VEK_TOOLS_PRINT_SEL_H

#include "tools/collect/sel.h"
#include "tools/collect/sel_log.h"
#include "tools/print/json.h"
#include "tools/print/terminal.h"

namespace Tool
{

struct SelListing
{
    std::vector<SelRecord> records; ///< Those to show.
    /// Left out because what a filter asks for is not known of them.
    size_t undated = 0, unjudged = 0;
    SelLog log;
    bool utc = false;
};

/// The event log's words for how bad something is: "-", "info", "warning",
/// "critical", "non-recoverable".
const char* severityWord(Severity severity);

std::string toTable(const SelListing& listing, const Terminal& terminal);
Json toJson(const SelListing& listing);

/// The 16 bytes of each in hexadecimal, a line a record.
std::string rawLines(const SelListing& listing);

/// One record in a line of its own.
std::string toLine(const SelRecord& record, bool utc, const Terminal& terminal);

/// A stable object a record (docs/JSON.md).
Json toJson(const SelRecord& record);

} // namespace Tool

#endif
