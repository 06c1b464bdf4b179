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
