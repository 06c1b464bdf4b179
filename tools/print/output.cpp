#include "tools/print/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/status.h"

namespace Tool
{

void put(const std::string& text)
{
    if (fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        fflush(stdout) == 0)
        return;
    throw Failure{Status::failed,
                  std::string{"cannot write the result: "} + strerror(errno),
                  ""};
}

} // namespace Tool
