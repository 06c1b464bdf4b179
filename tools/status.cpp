#include "tools/status.h"

#include <iostream>

namespace Tool
{

void complain(const Failure& failure)
{
    std::cerr << "vek-ipmi: " << failure.what << '\n';
    if (!failure.next.empty())
        std::cerr << "  " << failure.next << '\n';
}

} // namespace Tool
