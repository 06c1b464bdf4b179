/// How a run of the program ends.
#ifndef VEK_TOOLS_STATUS_H
#define VEK_TOOLS_STATUS_H

#include <string>
#include <vector>

namespace Tool
{

/// The program's exit status.
enum class Status
{
    done = 0,
    usage = 1,
    noDevice = 2, ///< No device, or no permission to open it.
    refused = 3,  ///< By the controller, with a completion code.
    failed = 4    ///< Anything else, or a partial result.
};

/// Subcommands with the statuses of monitoring plug-ins give this one for
/// every failure.
constexpr Status monitoringUnknown{3};

/// Thrown to end the program: what is wrong, and what to do next (a line
/// each; the second may be empty).
struct Failure
{
    Status status = Status::failed;
    std::string what;
    std::string next;
};

/// Writes both lines to standard error.
void complain(const Failure& failure);

/// Tells them all; the worst status, done when there are none.
Status complainOf(const std::vector<Failure>& failures);

} // namespace Tool

#endif
