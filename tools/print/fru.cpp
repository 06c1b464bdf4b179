#include "tools/print/fru.h"

#include <algorithm>
#include <functional>

#include "tools/collect/fru_record.h"
#include "tools/print/completion_codes.h"
#include "tools/print/fru_words.h"
#include "tools/print/table.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

using Kind = Ipmi::IpmiFruArea::Kind;

/// A table whose values are broken to the width of a terminal.
class Block
{
public:
    explicit Block(const Terminal& terminal) : terminal_{terminal} {}

    void row(const std::string& key, const std::string& value,
             Colour colour = Colour::none)
    {
        std::vector<std::string> lines = wrapped(value, width());
        for (std::string& line : lines)
            line = terminal_.coloured(line, colour);
        table_.row(key, lines);
    }
    std::string text() const { return indented(table_.text()); }

private:
    // Beside the keys.
    size_t width() const
    {
        constexpr size_t keys = 24, least = 20;
        return std::max(terminal_.width(), keys + least) - keys;
    }

    const Terminal& terminal_;
    Table table_;
};

std::string textOf(const FruValue& value)
{
    if (value.flag)
        return *value.flag ? "yes" : "no";
    if (!value.raw)
        return value.words.empty() ? "-" : value.words;
    if (!value.isGiven)
        return "not specified";
    const double step = 1.0 / static_cast<double>(value.perUnit);
    const std::string number =
        numberText(static_cast<double>(*value.raw) * step, step);
    return *value.unit ? number + " " + value.unit : number;
}

std::string countOfBytes(size_t count)
{
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string bytesText(const Bytes& bytes)
{
    std::string text = hexDump(bytes, bytes.size());
    return text.substr(0, text.size() - 1);
}

void addRecord(Block& block, const FruRecord& record, size_t number)
{
    block.row("Multi-record " + std::to_string(number),
              std::string{record.typeName()} + " (" + hexNumber(record.type) +
                  "), " + countOfBytes(record.data.size()) + " at " +
                  hexNumber(record.offset));
    for (const FruValue& value : record.values)
        block.row(std::string{"  "} + value.label, textOf(value));
    if (!record.isAllInWords())
        block.row("  Bytes", bytesText(record.data));
}

std::string textOf(const Ipmi::IpmiFruField& field)
{
    if (field.value.empty())
        return field.name == "manufacturing date" ? "unspecified" : "-";
    return field.binary ? field.value + " (binary)" : field.value;
}

std::string problemKey(Kind kind)
{
    return kind == Kind::MULTI ? "Records' problem"
                               : fieldLabel(kind, "problem");
}

void addArea(Block& block, const Ipmi::IpmiFruArea& area)
{
    if (area.kind == Kind::INTERNAL)
        block.row("Internal use area", countOfBytes(area.bytes.size()) +
                                           " at " + hexNumber(area.offset));
    for (const Ipmi::IpmiFruField& field : area.fields)
        block.row(fieldLabel(area.kind, field.name), textOf(field));
    if (area.kind == Kind::PRODUCT && area.fields.empty() &&
        area.problems.empty())
        block.row("Product area", "without fields");
    size_t number = 0;
    for (const FruRecord& record : fruRecordsOf(area))
        addRecord(block, record, ++number);
    for (const std::string& problem : area.problems)
        block.row(problemKey(area.kind), problem, Colour::bad);
}

void addContents(Block& block, const Ipmi::IpmiFruContents& contents)
{
    for (const std::string& problem : contents.problems)
        block.row("Problem", problem, Colour::bad);
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        addArea(block, area);
    if (contents.areas.empty() && contents.problems.empty())
        block.row("Areas", "none");
}

std::string sizeText(const Ipmi::IpmiFruContents& contents)
{
    return std::to_string(contents.size) + " bytes" +
           (contents.byWords ? ", accessed by words: may be misread" : "");
}

void addDevice(Block& block, const FruDevice& device)
{
    const FruLocator& locator = device.locator;
    if (locator.isRecord)
        block.row("Entity", locator.entityName + " " +
                                std::to_string(locator.entityInstance));
    if (!locator.isLogical) {
        block.row("Contents", "not read: no FRU command reaches it");
        return;
    }
    if (!device.completion.ok()) {
        block.row("Contents",
                  device.isAbsent()
                      ? "none: not present (CBh)"
                      : "not read: " +
                            inWords(commands::getFruInventoryAreaInfo,
                                    device.completion),
                  device.isAbsent() ? Colour::dim : Colour::bad);
        return;
    }
    block.row("Size", sizeText(device.contents));
    if (device.isSpd())
        block.row("Contents", "data of a memory module (SPD), not decoded");
    else
        addContents(block, device.contents);
}

std::string headOf(const FruLocator& locator)
{
    const std::string place = placeText(locator);
    return locator.name.empty() ? place + '\n'
                                : locator.name + " (" + place + ")\n";
}

} // namespace

std::string toTable(const std::vector<FruDevice>& devices,
                    const Terminal& terminal)
{
    std::string text;
    for (const FruDevice& device : devices) {
        Block block{terminal};
        addDevice(block, device);
        text +=
            (text.empty() ? "" : "\n") + headOf(device.locator) + block.text();
    }
    return text;
}

std::string countText(const std::vector<FruDevice>& devices)
{
    const auto count = [&](const auto& is) {
        return std::to_string(
            std::count_if(devices.begin(), devices.end(), is));
    };
    const std::string absent = count(std::mem_fn(&FruDevice::isAbsent)),
                      failed = count(std::mem_fn(&FruDevice::isFailed));
    return std::to_string(devices.size()) + " FRU device" +
           (devices.size() == 1 ? "" : "s") +
           (absent == "0" ? "" : ", " + absent + " not present") +
           (failed == "0" ? "" : ", " + failed + " not read to the end");
}

std::string toTable(const std::string& path,
                    const Ipmi::IpmiFruContents& contents,
                    const Terminal& terminal)
{
    Block block{terminal};
    block.row("Size", sizeText(contents));
    addContents(block, contents);
    return printable(path) + '\n' + block.text();
}

} // namespace Tool
