#include "tools/print/inventory.h"

#include <algorithm>

#include "tools/print/completion_codes.h"
#include "tools/print/fru.h"
#include "tools/print/fru_words.h"
#include "tools/print/info.h"
#include "tools/print/lan.h"

namespace Tool
{

namespace
{

constexpr char indentation[] = "  ";

// What is missing stands in the part itself, too: a page is passed on without
// what was said beside it. A table of FRU devices or LAN channels has its own
// words for it.
std::string section(const char* title, const std::string& part,
                    const Inventory& inventory, const std::string& text)
{
    std::string all = title + std::string{"\n"};
    for (size_t at = 0; at < text.size();) {
        const size_t end = text.find('\n', at) + 1;
        all += (end == at + 1 ? "" : indentation) + text.substr(at, end - at);
        at = end;
    }
    if (!text.empty() && (part == "fru" || part == "lan"))
        return all;
    for (const InventoryGap& gap : inventory.gaps)
        if (gap.part == part)
            all += indentation + std::string{"("} + gap.failure.what + ")\n";
    return all;
}

std::string valueOf(const Ipmi::IpmiFruArea& area, const char* key)
{
    for (const Ipmi::IpmiFruField& field : area.fields)
        if (fieldKey(field.name) == key)
            return field.value;
    return "";
}

// "Example Power PS-1100P, part PS1100-P-12, serial PSA2247001122"
std::string identityOf(const Ipmi::IpmiFruArea& area)
{
    constexpr struct
    {
        const char *key, *before;
    } parts[] = {{"type", ""},
                 {"manufacturer", ""},
                 {"productName", " "},
                 {"partNumber", ", part "},
                 {"version", ", version "},
                 {"serialNumber", ", serial "},
                 {"assetTag", ", asset tag "}};
    std::string text;
    for (const auto& part : parts)
        if (const std::string value = valueOf(area, part.key); !value.empty())
            text += part.before + value;
    return text.substr(std::min(text.size(), text.find_first_not_of(", ")));
}

/// Lines of a device, keys beside values that are broken to a width.
class Lines
{
public:
    explicit Lines(size_t width) : width_{width} {}

    void row(const std::string& key, const std::string& value)
    {
        constexpr size_t keyWidth = 10;
        std::string head = indentation + key;
        head.resize(sizeof indentation - 1 + keyWidth, ' ');
        const size_t room = std::max(width_, 2 * head.size()) - head.size();
        for (const std::string& line : wrapped(value, room)) {
            text_ += head + line + '\n';
            head.assign(head.size(), ' ');
        }
    }
    const std::string& text() const { return text_; }

private:
    size_t width_;
    std::string text_;
};

std::string capital(std::string word)
{
    word[0] = static_cast<char>(word[0] - 'a' + 'A');
    return word;
}

void addContents(Lines& lines, const Ipmi::IpmiFruContents& contents)
{
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        if (const std::string text = identityOf(area); !text.empty())
            lines.row(capital(kindWord(area.kind)), text);
    for (const std::string& problem : contents.problems)
        lines.row("Problem", problem);
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        for (const std::string& problem : area.problems)
            lines.row("Problem",
                      std::string{kindWord(area.kind)} + ": " + problem);
}

std::string whyNoContents(const FruDevice& device)
{
    if (!device.locator.isLogical)
        return "not read: no FRU command reaches it";
    if (device.isSpd())
        return "data of a memory module (SPD), not decoded";
    if (device.isAbsent())
        return "not present (CBh)";
    return device.completion.ok()
               ? ""
               : "not read: " + inWords(commands::getFruInventoryAreaInfo,
                                        device.completion);
}

std::string textOf(const FruDevice& device, size_t width)
{
    const FruLocator& locator = device.locator;
    const std::string place = placeText(locator);
    std::string head =
        locator.name.empty() ? place : locator.name + " (" + place + ")";
    if (locator.isRecord)
        head += ", " + locator.entityName + " " +
                std::to_string(locator.entityInstance);
    Lines lines{width};
    if (const std::string why = whyNoContents(device); !why.empty())
        lines.row("Contents", why);
    else
        addContents(lines, device.contents);
    return head + '\n' + lines.text();
}

std::string textOf(const std::vector<FruDevice>& devices, size_t width)
{
    std::string text;
    for (const FruDevice& device : devices)
        text += textOf(device, width);
    return text;
}

Json gapsJson(const Inventory& inventory)
{
    Json json = Json::array();
    for (const InventoryGap& gap : inventory.gaps)
        json.push_back({{"part", gap.part},
                        {"what", gap.failure.what},
                        {"failed", gap.failure.status != Status::done}});
    return json;
}

} // namespace

std::string toPage(const Inventory& inventory, TreeStyle style)
{
    style.sensors = false;
    style.width -= std::min(style.width / 2, sizeof indentation - 1);
    const bool named = !inventory.entities.empty();
    return section("Controller", "info", inventory,
                   inventory.info ? toTable(*inventory.info) : "") +
           '\n' +
           section("FRU devices", "fru", inventory,
                   textOf(inventory.knownFrus(), style.width)) +
           '\n' +
           section("Entities", "entities", inventory,
                   named ? toTree(inventory.entities, style) : "") +
           '\n' + section("LAN", "lan", inventory, toTable(inventory.lan));
}

Json toJson(const Inventory& inventory)
{
    Json json = document("inventory");
    json["info"] = inventory.info ? toJson(*inventory.info) : Json(nullptr);
    json["fru"] = document("fru");
    json["fru"]["devices"] = toJson(inventory.frus);
    json["entities"] = toJson(inventory.entities, inventory.repository);
    json["lan"] = toJson(inventory.lan);
    json["gaps"] = gapsJson(inventory);
    return json;
}

} // namespace Tool
