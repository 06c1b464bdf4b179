// FRU devices in a line each.
#include <algorithm>

#include "tools/print/columns.h"
#include "tools/print/fru.h"
#include "tools/print/fru_words.h"

namespace Tool
{

namespace
{

using Kind = Ipmi::IpmiFruArea::Kind;

struct Part
{
    std::string name, partNumber, serialNumber;

    bool isEmpty() const
    {
        return name.empty() && partNumber.empty() && serialNumber.empty();
    }
};

Part partOf(const Ipmi::IpmiFruArea& area)
{
    Part part;
    for (const Ipmi::IpmiFruField& field : area.fields) {
        const std::string key = fieldKey(field.name);
        if (key == "productName")
            part.name = field.value;
        if (key == "partNumber")
            part.partNumber = field.value;
        if (key == "serialNumber")
            part.serialNumber = field.value;
    }
    return part;
}

// All of it from one area: a board's number beside the name of the product
// that it is in would mislead.
Part partOf(const FruDevice& device)
{
    for (const Kind kind : {Kind::PRODUCT, Kind::BOARD, Kind::CHASSIS})
        for (const Ipmi::IpmiFruArea& area : device.contents.areas) {
            Part part = area.kind == kind ? partOf(area) : Part{};
            if (!part.isEmpty())
                return part;
        }
    return {};
}

size_t problemsOf(const Ipmi::IpmiFruContents& contents)
{
    size_t count = contents.problems.size();
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        count += area.problems.size();
    return count;
}

Cell stateOf(const FruDevice& device)
{
    if (!device.locator.isLogical)
        return {"physical", Colour::dim};
    if (device.isAbsent())
        return {"not present", Colour::dim};
    if (device.isFailed())
        return {"not read", Colour::bad};
    if (device.isSpd())
        return {"SPD"};
    const size_t count = problemsOf(device.contents);
    if (count == 0)
        return {"ok", Colour::good};
    return {std::to_string(count) + " problem" + (count == 1 ? "" : "s"),
            Colour::bad};
}

std::string entityText(const FruLocator& locator)
{
    return locator.isRecord ? locator.entityName + " " +
                                  std::to_string(locator.entityInstance)
                            : "";
}

} // namespace

std::string toSummary(const std::vector<FruDevice>& devices,
                      const Terminal& terminal)
{
    Columns table{{{"Device", false, 8},
                   {"Name", false, 8},
                   {"Entity", false, 8, true},
                   {"Product", false, 8},
                   {"Part number", false, 8},
                   {"Serial number"},
                   {"State"}}};
    for (const FruDevice& device : devices) {
        const Part part = partOf(device);
        table.row({{fruNumber(device.locator)},
                   {device.locator.name},
                   {entityText(device.locator)},
                   {part.name},
                   {part.partNumber},
                   {part.serialNumber},
                   stateOf(device)});
    }
    return table.text(terminal);
}

} // namespace Tool
