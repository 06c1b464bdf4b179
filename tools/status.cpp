#include "tools/status.h"

#include <algorithm>
#include <iostream>

namespace Tool
{

void complain(const Failure& failure)
{
    std::cerr << "vek-ipmi: " << failure.what << '\n';
    if (!failure.next.empty())
        std::cerr << "  " << failure.next << '\n';
}

Status complainOf(const std::vector<Failure>& failures)
{
    Status status = Status::done;
    for (const Failure& failure : failures) {
        complain(failure);
        status = std::max(status, failure.status);
    }
    return status;
}

} // namespace Tool
