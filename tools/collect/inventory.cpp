#include "tools/collect/inventory.h"

#include <algorithm>
#include <iterator>

namespace Tool
{

namespace
{

// A busy controller may have it.
bool isNone(const FruDevice& device)
{
    constexpr uint8_t noSuch[] = {0xC1, 0xC9, 0xCB, 0xCC, 0xCD};
    const Completion& completion = device.completion;
    return !device.locator.isRecord && completion.answered &&
           !completion.isCut &&
           std::find(std::begin(noSuch), std::end(noSuch), completion.code) !=
               std::end(noSuch);
}

} // namespace

std::vector<FruDevice> Inventory::knownFrus() const
{
    std::vector<FruDevice> known;
    std::remove_copy_if(frus.begin(), frus.end(), std::back_inserter(known),
                        isNone);
    return known;
}

bool Inventory::isEmpty() const
{
    const auto isRead = [](const FruDevice& device) {
        return device.completion.ok();
    };
    return !info && entities.empty() && lan.interfaces.empty() &&
           std::none_of(frus.begin(), frus.end(), isRead);
}

} // namespace Tool
