#include "tools/print/fru_words.h"

namespace Tool
{

namespace
{

using Kind = Ipmi::IpmiFruArea::Kind;

// By Kind.
constexpr struct
{
    const char *word, *label;
} kinds[] = {
    {"internal", "Internal use"}, {"chassis", "Chassis"},    {"board", "Board"},
    {"product", "Product"},       {"multi", "Multi-record"},
};

struct FieldName
{
    const char *library, *key, *label;
};

constexpr FieldName fieldNames[] = {
    {"type", "type", "type"},
    {"manufacturing date", "date", "date"},
    {"manufacturer", "manufacturer", "manufacturer"},
    {"product name", "productName", "product name"},
    {"serial number", "serialNumber", "serial number"},
    {"part number", "partNumber", "part number"},
    {"part/model number", "partNumber", "part number"},
    {"version", "version", "version"},
    {"asset tag", "assetTag", "asset tag"},
    {"FRU file id", "fruFileId", "FRU file ID"},
};

const FieldName* findName(const std::string& name)
{
    for (const FieldName& row : fieldNames)
        if (name == row.library)
            return &row;
    return nullptr;
}

} // namespace

const char* kindWord(Kind kind)
{
    return kinds[kind].word;
}

std::string fieldKey(const std::string& name)
{
    if (const FieldName* row = findName(name))
        return row->key;
    std::string key = name; // "custom 1"
    const size_t blank = key.find(' ');
    return blank == std::string::npos ? key : key.erase(blank, 1);
}

std::string fieldLabel(Kind kind, const std::string& name)
{
    const FieldName* row = findName(name);
    const std::string label = row ? row->label : name;
    const bool isDouble = kind == Kind::PRODUCT && label == "product name";
    return std::string{kinds[kind].label} + " " + (isDouble ? "name" : label);
}

std::string fruNumber(const FruLocator& locator)
{
    std::string id = std::to_string(locator.deviceId);
    if (locator.isOwn())
        return id;
    return id + "@0x" + hexByte(locator.address) + "/" +
           std::to_string(locator.channel) +
           (locator.lun == 0 ? "" : "." + std::to_string(locator.lun));
}

std::string placeText(const FruLocator& locator)
{
    if (!locator.isLogical)
        return "physical device " + hexNumber(locator.deviceId);
    std::string text = "FRU device " + std::to_string(locator.deviceId);
    if (locator.isOwn())
        return text;
    text += " of " + hexNumber(locator.address);
    if (locator.channel != 0)
        text += " on channel " + std::to_string(locator.channel);
    return locator.lun == 0 ? text
                            : text + ", LUN " + std::to_string(locator.lun);
}

std::string nameText(const FruLocator& locator)
{
    return locator.name.empty()
               ? placeText(locator)
               : "'" + locator.name + "' (" + placeText(locator) + ")";
}

} // namespace Tool
