#include "tools/commands/inventory.h"

#include "tools/collect/health_source.h"

namespace Tool
{

Inventory readInventory(Device& device)
{
    loadHealthTable();
    Inventory inventory;
    inventory.repository = readRepository(device);
    inventory.sensors = collectSensors();
    return inventory;
}

Status complainOfMissing(const Repository& repository)
{
    if (repository.missing() == 0)
        return Status::done;
    const std::string of = " of " + std::to_string(repository.total);
    std::string what;
    if (repository.headers < repository.total)
        what = "only " + std::to_string(repository.headers) + of +
               " sensor data records were found";
    if (repository.failed)
        what += (what.empty() ? "" : "; ") + std::to_string(repository.failed) +
                of + " could not be read";
    complain({Status::failed, what,
              "What was read is shown. Try again; --verbose shows the codes "
              "that the controller gave."});
    return Status::failed;
}

} // namespace Tool
