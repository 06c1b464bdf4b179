/// An inventory as one page, or one document.
#ifndef VEK_TOOLS_PRINT_INVENTORY_H
#define VEK_TOOLS_PRINT_INVENTORY_H

#include "tools/collect/inventory.h"
#include "tools/print/entity.h"
#include "tools/print/json.h"

namespace Tool
{

/// Of FRU devices what identifies them; of entities no sensors.
std::string toPage(const Inventory& inventory, TreeStyle style);

/// Each part as in its own document.
Json toJson(const Inventory& inventory);

} // namespace Tool

#endif
