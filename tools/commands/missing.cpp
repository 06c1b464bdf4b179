#include "tools/commands/missing.h"

#include "tools/print/completion_codes.h"

namespace Tool
{

Part osNamePart(const OsInfo& os)
{
    return {"the OS name", commands::getSystemInfo, os.name.completion,
            os.name.unsupported()};
}

Part osVersionPart(const OsInfo& os)
{
    return {"the OS version", commands::getSystemInfo, os.version.completion,
            os.version.unsupported()};
}

Status complainOfMissing(const std::vector<Part>& parts)
{
    Status status = Status::done;
    for (const Part& part : parts) {
        if (part.completion.ok() || part.tolerated)
            continue;
        status = Status::failed;
        complain({status,
                  std::string{part.what} + " was not read: " +
                      inWords(part.command, part.completion),
                  nextStep(part.completion)});
    }
    return status;
}

} // namespace Tool
