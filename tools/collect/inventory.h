/// What a controller tells of itself and its machine.
#ifndef VEK_TOOLS_COLLECT_INVENTORY_H
#define VEK_TOOLS_COLLECT_INVENTORY_H

#include <optional>
#include <vector>

#include "tools/collect/entity.h"
#include "tools/collect/fru.h"
#include "tools/collect/info.h"
#include "tools/collect/lan.h"
#include "tools/collect/repository.h"

namespace Tool
{

/// Something that is not shown, or not all of it. Its status is done where the
/// controller has no such thing.
struct InventoryGap
{
    const char* part; ///< "info", "fru", "entities" or "lan".
    Failure failure;
};

struct Inventory
{
    std::optional<Info> info;
    Repository repository;
    std::vector<Entity> entities;
    std::vector<FruDevice> frus;
    Lan lan;
    std::vector<InventoryGap> gaps;

    /// Without a device 0 that no record tells of and that is not there.
    std::vector<FruDevice> knownFrus() const;
    /// Nothing was read at all.
    bool isEmpty() const;
};

} // namespace Tool

#endif
