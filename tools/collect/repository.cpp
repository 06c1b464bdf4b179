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

// 51h is IPMI v1.5; the library reads no older ones.
bool isKnownVersion(uint8_t version)
{
    return version == 0x51 || (version & 0x0F) == 2;
}

} // namespace

void checkRepository()
{
    const Ipmi::ipmiifc_sdr_info info = Ipmi::IpmiIfc::getSdr();
    if (info.sdrVersion == 0)
        throw Failure{Status::failed,
                      "no usable answer about the sensor data repository",
                      "--verbose says more."};
    if (!isKnownVersion(info.sdrVersion))
        throw Failure{Status::failed,
                      "the sensor data repository is older than IPMI v1.5",
                      "Update the controller's firmware."};
}

Repository repositorySoFar()
{
    const Ipmi::IpmiSdrProgress progress = Ipmi::IpmiIfcSdrGetProgress(0);
    const Ipmi::ipmiifc_sdr_info info = Ipmi::IpmiIfc::getSdr();
    Repository repository;
    repository.total = info.recordCount[0] | info.recordCount[1] << 8;
    repository.headers = progress.headers;
    repository.records = progress.records;
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

namespace
{

template <class Read>
Repository readBy(Device& device, const Read& read)
{
    const Completion completion = device.ask(
        [&read] { return read(0) == 0 ? 0x00 : 0xFF; }, progressText);
    if (!completion.ok())
        throw whyNotRead(device);
    checkRepository();
    return repositorySoFar();
}

} // namespace

Repository readRepository(Device& device)
{
    return readBy(device, Ipmi::IpmiIfcSdrGetInfo);
}

Repository readRecordsOnly(Device& device)
{
    return readBy(device, Ipmi::IpmiIfcSdrReadRecords);
}

Repository readRecordsOf(Device& device, const RecordTypes& types)
{
    return readBy(device, [&types](int node) {
        return Ipmi::IpmiIfcSdrReadRecordsOf(node, types.data(),
                                             unsigned(types.size()));
    });
}

} // namespace Tool
