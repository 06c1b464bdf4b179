// A sensor as JSON.
#include "tools/print/sensor.h"
#include "tools/print/state.h"
#include "tools/print/support.h"
#include "tools/print/value.h"

namespace Tool
{

namespace
{

Json textOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

Json unitJson(const Unit& unit)
{
    const auto named = [](uint8_t code) {
        return Json{{"code", code}, {"name", Ipmi::DescFromUnit(code)}};
    };
    return {{"text", unit.text},
            {"base", named(unit.base)},
            {"modifier", named(unit.modifier)},
            {"modifierUse", unit.modifierUse},
            {"rate", unit.rate},
            {"percentage", unit.percentage}};
}

Json numbersJson(const Sensor& sensor)
{
    return {{"number", sensor.number},     {"owner", sensor.owner},
            {"lun", sensor.lun},           {"channel", sensor.channel},
            {"recordId", sensor.recordId}, {"recordType", sensor.recordType}};
}

Json masksJson(const Sensor& sensor)
{
    return {{"assertionEvents", sensor.assertionMask},
            {"deassertionEvents", sensor.deassertionMask},
            {"states", sensor.readingMask},
            {"readableThresholds", sensor.readableMask},
            {"settableThresholds", sensor.settableMask}};
}

Json limitsJson(const Limits& limits)
{
    return {{"minimum", toJson(limits.minimum)},
            {"maximum", toJson(limits.maximum)},
            {"normalMinimum", toJson(limits.normalMinimum)},
            {"normalMaximum", toJson(limits.normalMaximum)},
            {"nominal", toJson(limits.nominal)}};
}

Json answerJson(const Sensor& sensor)
{
    Json json;
    json["condition"] = conditionWord(sensor);
    json["lastResult"] =
        sensor.lastResult < 0 ? Json(nullptr) : Json(sensor.lastResult);
    json["answer"] =
        sensor.answer.empty() ? Json(nullptr) : Json(sensor.answer);
    json["time"] = textOrNull(sensor.time);
    json["reading"] = toJson(sensor.reading);
    json["stateBits"] = sensor.condition == Condition::read
                            ? Json(sensor.stateBits)
                            : Json(nullptr);
    json["states"] = sensor.states;
    return json;
}

} // namespace

Json thresholdsJson(const Sensor& sensor)
{
    Json json = Json::object();
    if (sensor.discrete)
        return json;
    for (unsigned i = 0; i < sensor.thresholds.size(); ++i) {
        const Threshold& threshold = sensor.thresholds[i];
        Json row = {{"readable", threshold.readable},
                    {"settable", threshold.settable}};
        row["current"] = toJson(threshold.value);
        row["default"] = toJson(threshold.defaultValue);
        json[thresholdKey(i)] = row;
    }
    return json;
}

Json hysteresisJson(const Sensor& sensor)
{
    const auto side = [&](uint8_t Hysteresis::*which) {
        return sensor.hysteresis
                   ? toJson(differenceOf(sensor, *sensor.hysteresis.*which))
                   : Json(nullptr);
    };
    return {{"support", supportWord(sensor.hysteresisSupport)},
            {"positive", side(&Hysteresis::positive)},
            {"negative", side(&Hysteresis::negative)}};
}

Json toJson(const Sensor& sensor)
{
    Json json;
    json["deviceId"] = sensor.deviceId;
    json["name"] = sensor.name;
    json["idString"] = textOrNull(sensor.idString);
    json["description"] = sensor.description;
    json["type"] = {{"code", sensor.type}, {"name", sensor.typeName}};
    json["eventReadingType"] = sensor.eventReadingType;
    json["discrete"] = sensor.discrete;
    json.update(numbersJson(sensor));
    json["entity"] = {{"id", sensor.entityId},
                      {"instance", sensor.entityInstance},
                      {"name", sensor.entityName}};
    json["direction"] = textOrNull(sensor.direction);
    json["unit"] = unitJson(sensor.unit);
    json.update(answerJson(sensor));
    json["health"] = {{"word", healthWord(sensor.health)},
                      {"number", sensor.healthNumber}};
    json["thresholdAccess"] = supportWord(sensor.thresholdAccess);
    json["thresholds"] = thresholdsJson(sensor);
    json["hysteresis"] = hysteresisJson(sensor);
    json["eventSupport"] = eventSupportWord(sensor.eventSupport);
    json["masks"] = masksJson(sensor);
    json["flags"] = flagWords(sensor.flags);
    json["limits"] = limitsJson(sensor.limits);
    return json;
}

} // namespace Tool
