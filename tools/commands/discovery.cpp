#include "tools/commands/discovery.h"

#include "tools/collect/health_source.h"

namespace Tool
{

Discovery readDiscovery(Device& device)
{
    loadHealthTable();
    Discovery discovery;
    discovery.repository = readRepository(device);
    discovery.sensors = collectSensors();
    return discovery;
}

namespace
{

// A controller without a repository has no names to tell: that is no failure.
bool hasRepository(Device& device)
{
    constexpr uint8_t unsupported = 0xC1;
    const Completion completion =
        device.exchange(commands::getSdrRepositoryInfo, {}).completion;
    return !completion.answered || completion.code != unsupported;
}

} // namespace

bool readForNames(Device& device, const char* unnamed,
                  std::vector<Failure>& gaps, const RecordTypes& types)
{
    if (!hasRepository(device)) {
        gaps.push_back({Status::done,
                        "the controller has no sensor data repository",
                        unnamed});
        return true;
    }
    try {
        const Repository repository = readRecordsOf(device, types);
        if (repository.missing() == 0)
            return true;
        gaps.push_back({Status::failed, missingText(repository), unnamed});
    } catch (const Failure& failure) {
        gaps.push_back({Status::failed, failure.what, unnamed});
    }
    return false;
}

std::string missingText(const Repository& repository)
{
    const auto text = [](unsigned count) {
        return std::to_string(count);
    };
    return "only " + text(repository.read()) + " of " + text(repository.total) +
           " sensor data records were read (" + text(repository.headers) +
           " found, " + text(repository.failed) + " unreadable)";
}

Status complainOfMissing(const Repository& repository)
{
    if (repository.missing() == 0)
        return Status::done;
    complain({Status::failed, missingText(repository),
              "Try again; --verbose shows the codes that the controller "
              "gave."});
    return Status::failed;
}

} // namespace Tool
