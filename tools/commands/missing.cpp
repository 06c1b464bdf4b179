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

std::vector<Failure> gapsOf(const std::vector<Part>& parts)
{
    std::vector<Failure> gaps;
    for (const Part& part : parts)
        if (!part.completion.ok() && !part.tolerated)
            gaps.push_back({Status::failed,
                            std::string{part.what} + " was not read: " +
                                inWords(part.command, part.completion),
                            nextStep(part.completion)});
    return gaps;
}

std::vector<Failure> gapsOf(const Info& info)
{
    std::vector<Failure> gaps =
        gapsOf({{"the self-test result", commands::getSelfTestResults,
                 info.selfTest.completion},
                osNamePart(info.os),
                osVersionPart(info.os)});
    // The library fills up a short answer with zeros; 0.0 is no IPMI version.
    constexpr size_t ipmiVersion = 5;
    if (info.deviceId[ipmiVersion] == 0)
        gaps.insert(gaps.begin(),
                    {Status::failed, "Get Device ID's answer was cut",
                     "What it lacks is shown as 0. Try again."});
    return gaps;
}

Status complainOfMissing(const std::vector<Part>& parts)
{
    return complainOf(gapsOf(parts));
}

} // namespace Tool
