/// Choosing records of the event log.
#ifndef VEK_TOOLS_COMMANDS_SEL_FILTER_H
#define VEK_TOOLS_COMMANDS_SEL_FILTER_H

#include <optional>

#include "tools/print/sel.h"

namespace Tool
{

struct SelFilter
{
    std::optional<int64_t> since; ///< Seconds since 1970.
    Severity least = Severity::unknown;
    std::string sensor; ///< Empty: all.

    /// Whether it lets the time pass; a record without a date is no later
    /// than any.
    bool passes(const SelTime& time) const
    {
        return !since || (time.isDate() && time.raw >= *since);
    }
};

constexpr char severityHelp[] = "info, warning, critical or non-recoverable";

/// No value for a word that is none of those.
std::optional<Severity> readSeverity(const std::string& text);

/// Leaves in the listing what passes, and counts what may have.
/// @throws Failure with status usage when nothing fits the sensor that is
///     named: neither a record nor a sensor that is known.
void choose(SelListing& listing, const SelFilter& filter,
            const KnownSensors& sensors);

} // namespace Tool

#endif
