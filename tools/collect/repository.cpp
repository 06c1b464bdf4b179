#include "tools/collect/repository.h"

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

constexpr char unread[] = "the sensor data repository was not read";

// The library tells only that there was no good answer; asking again brings
// the code to light.
Failure whyNotRead(Device& device)
{
    const Completion completion =
        device.exchange(commands::getSdrRepositoryInfo, {}).completion;
    if (completion.ok())
        return {Status::failed, unread, "Try again."};
    return failureOf(unread, commands::getSdrRepositoryInfo, completion);
}

// IPMI v1.0 writes its version as 51h, all others in BCD with the nibbles
// swapped.
bool isKnownVersion(uint8_t version)
{
    return version == 0x51 || ((version & 0x0F) >= 1 && (version & 0x0F) <= 2);
}

void check(const Ipmi::ipmiifc_sdr_info& info)
{
    if (info.sdrVersion == 0)
        throw Failure{Status::failed,
                      "the controller's answer about its sensor data "
                      "repository is unusable",
                      "--verbose says more."};
    if (!isKnownVersion(info.sdrVersion))
        throw Failure{Status::failed,
                      "the sensor data repository is of an unknown version",
                      "--verbose says more."};
}

} // namespace

Repository repositorySoFar()
{
    const Ipmi::IpmiSdrProgress progress = Ipmi::IpmiIfcSdrGetProgress(0);
    const Ipmi::ipmiifc_sdr_info info = Ipmi::IpmiIfc::getSdr();
    Repository repository;
    repository.total = info.recordCount[0] | info.recordCount[1] << 8;
    repository.headers = progress.headers;
    repository.failed = progress.failed;
    return repository;
}

std::string progressText()
{
    const Ipmi::IpmiSdrProgress progress = Ipmi::IpmiIfcSdrGetProgress(0);
    const std::string of = " of " + std::to_string(progress.total);
    if (progress.total == 0)
        return "asking for the sensor data repository ...";
    if (progress.records == 0)
        return "finding sensor records: " + std::to_string(progress.headers) +
               of;
    if (progress.records < progress.headers)
        return "reading sensor records: " + std::to_string(progress.records) +
               of;
    return "reading the sensors ...";
}

Repository readRepository(Device& device)
{
    const Completion completion =
        device.ask([] { return Ipmi::IpmiIfcSdrGetInfo(0) == 0 ? 0x00 : 0xFF; },
                   progressText);
    if (!completion.ok())
        throw whyNotRead(device);
    check(Ipmi::IpmiIfc::getSdr());
    return repositorySoFar();
}

} // namespace Tool
