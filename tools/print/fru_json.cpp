// FRU devices as JSON.
#include "tools/collect/fru_record.h"
#include "tools/print/fru.h"
#include "tools/print/fru_words.h"

namespace Tool
{

namespace
{

using Kind = Ipmi::IpmiFruArea::Kind;

std::string hexOf(const Bytes& bytes)
{
    std::string text;
    for (const uint8_t byte : bytes)
        text += hexByte(byte);
    return text;
}

// What people see, too: the number in its unit.
Json numberOf(const FruValue& value)
{
    if (!value.isGiven)
        return nullptr;
    if (value.perUnit == 1)
        return *value.raw;
    // The nearest to what is meant, which a product with 0.01 need not be.
    return static_cast<double>(*value.raw) / static_cast<double>(value.perUnit);
}

Json toJson(const FruValue& value)
{
    Json json = {{"key", value.key}, {"name", value.label}};
    if (value.raw) {
        json["value"] = numberOf(value);
        json["unit"] = *value.unit ? Json(value.unit) : Json(nullptr);
        json["raw"] = *value.raw;
    } else {
        json["value"] = value.flag ? Json(*value.flag) : Json(value.words);
    }
    return json;
}

Json toJson(const FruRecord& record)
{
    Json json = {{"offset", record.offset},
                 {"type", {{"code", record.type}, {"name", record.typeName()}}},
                 {"version", record.version},
                 {"checksumGood", record.isSound},
                 {"values", Json::array()},
                 {"data", hexOf(record.data)}};
    for (const FruValue& value : record.values)
        json["values"].push_back(toJson(value));
    return json;
}

// An empty text is a field that is there and empty.
Json toJson(Kind kind, const Ipmi::IpmiFruField& field)
{
    const bool isNone = field.name == "manufacturing date" && field.value == "";
    return {{"key", fieldKey(field.name)},
            {"name", fieldLabel(kind, field.name)},
            {"value", isNone ? Json(nullptr) : Json(field.value)},
            {"binary", field.binary}};
}

Json toJson(const Ipmi::IpmiFruArea& area)
{
    Json json = {{"kind", kindWord(area.kind)},
                 {"offset", area.offset},
                 {"length", area.bytes.size()},
                 {"problems", area.problems}};
    switch (area.kind) {
    case Kind::INTERNAL:
        json["data"] = hexOf(area.bytes);
        break;
    case Kind::MULTI:
        json["records"] = Json::array();
        for (const FruRecord& record : fruRecordsOf(area))
            json["records"].push_back(toJson(record));
        break;
    default:
        json["fields"] = Json::array();
        for (const Ipmi::IpmiFruField& field : area.fields)
            json["fields"].push_back(toJson(area.kind, field));
        break;
    }
    return json;
}

Json contentsWord(const FruDevice& device)
{
    if (!device.completion.ok() || device.contents.headerResult != 0)
        return nullptr;
    return device.isSpd() ? "spd" : "fru";
}

Json entityJson(const FruLocator& locator)
{
    if (!locator.isRecord)
        return nullptr;
    return {{"id", locator.entityId},
            {"instance", locator.entityInstance},
            {"name", locator.entityName}};
}

// Of a file there is none.
Json areasJson(const Ipmi::IpmiFruContents& contents)
{
    Json areas = Json::array();
    for (const Ipmi::IpmiFruArea& area : contents.areas) {
        Json json = toJson(area);
        json["completion"] = area.result == Ipmi::fruRunsPastEnd
                                 ? Json(nullptr)
                                 : Tool::toJson(commands::readFruData,
                                                completionOf(area.result));
        areas.push_back(std::move(json));
    }
    return areas;
}

Json toJson(const FruDevice& device)
{
    const FruLocator& locator = device.locator;
    const bool isRead = device.completion.ok();
    Json json;
    json["deviceId"] = locator.deviceId;
    json["name"] = locator.name.empty() ? Json(nullptr) : Json(locator.name);
    json["logical"] = locator.isLogical;
    json["controller"] = {{"address", locator.address},
                          {"channel", locator.channel},
                          {"lun", locator.lun}};
    json["entity"] = entityJson(locator);
    json["completion"] =
        locator.isLogical
            ? Tool::toJson(commands::getFruInventoryAreaInfo, device.completion)
            : Json(nullptr);
    json["present"] = device.isAbsent() ? Json(false)
                      : isRead          ? Json(true)
                                        : Json(nullptr);
    json["complete"] = !device.isFailed();
    json["contents"] = contentsWord(device);
    json["access"] = !isRead                   ? Json(nullptr)
                     : device.contents.byWords ? Json("word")
                                               : Json("byte");
    json.update(Tool::toJson(device.contents));
    json["areas"] = areasJson(device.contents);
    if (!isRead)
        json["size"] = nullptr;
    if (device.isSpd())
        json["problems"] = Json::array();
    return json;
}

} // namespace

Json toJson(const Ipmi::IpmiFruContents& contents)
{
    Json json = {{"size", contents.size},
                 {"problems", contents.problems},
                 {"areas", Json::array()}};
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        json["areas"].push_back(toJson(area));
    return json;
}

Json toJson(const std::vector<FruDevice>& devices)
{
    Json json = Json::array();
    for (const FruDevice& device : devices)
        json.push_back(toJson(device));
    return json;
}

} // namespace Tool
