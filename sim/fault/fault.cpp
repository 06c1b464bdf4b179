#include "sim/fault/fault.h"

#include "sim/fault/action.h"

namespace Sim
{

bool matches(const Fault& fault, const Request& request)
{
    if (fault.netFn.value_or(request.netFn) != request.netFn ||
        fault.command.value_or(request.command) != request.command ||
        fault.data.size() > request.data.size())
        return false;
    for (size_t at = 0; at < fault.data.size(); ++at)
        if ((request.data[at] ^ fault.data[at].value) & fault.data[at].mask)
            return false;
    return true;
}

void FaultSet::add(const Fault& fault)
{
    if (fault.action)
        entries_.push_back({fault, 0, 0, std::mt19937{fault.seed}});
}

/// Counts one match, and says whether it is the rule's turn.
bool FaultSet::Entry::take()
{
    ++seen;
    if (seen <= fault.after || (fault.count && fired >= fault.count))
        return false;
    const uint32_t index = seen - fault.after;
    if (fault.nth ? index != fault.nth : index % fault.every != 0)
        return false;
    if (fault.rate < 1 && double(random()) >= fault.rate * 4294967296.0)
        return false;
    ++fired;
    return true;
}

std::vector<const Fault*> FaultSet::due(const Request& request)
{
    std::vector<const Fault*> due;
    for (Entry& entry : entries_)
        if (entry.fault.action->phase != FaultAction::Phase::Open &&
            matches(entry.fault, request) && entry.take())
            due.push_back(&entry.fault);
    return due;
}

std::vector<const Fault*> FaultSet::dueAtOpen()
{
    std::vector<const Fault*> due;
    for (Entry& entry : entries_)
        if (entry.fault.action->phase == FaultAction::Phase::Open &&
            entry.take())
            due.push_back(&entry.fault);
    return due;
}

} // namespace Sim
