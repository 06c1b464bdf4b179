#include "sim/profile/field_reader.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "sim/profile/hex.h"
#include "sim/profile/syntax.h"

namespace Sim
{
namespace
{

std::string expected(const std::string& what, const nlohmann::json& found)
{
    return "expected " + what + ", found " + found.type_name();
}

std::string listOf(Words words)
{
    std::string list;
    for (const Word& word : words)
        list += (list.empty() ? "\"" : ", \"") + std::string{word.text} + '"';
    return list;
}

std::optional<uint32_t> numberOf(const nlohmann::json& json, uint32_t max)
{
    if (json.is_number_unsigned()) {
        const auto value = json.get<uint64_t>();
        return value <= max ? std::make_optional(uint32_t(value))
                            : std::nullopt;
    }
    if (!json.is_string())
        return std::nullopt;
    const auto& text = json.get_ref<const std::string&>();
    return text.compare(0, 2, "0x") ? std::nullopt
                                    : parseNumber(text.substr(2), 16, max);
}

} // namespace

FieldReader::FieldReader(const Json& object, std::string place,
                         Mistakes& mistakes)
    : object_{object}, place_{std::move(place)}, mistakes_{mistakes}
{
    if (!object_.is_object())
        mistake(place_, expected("an object", object_));
}

void FieldReader::finish()
{
    if (!object_.is_object())
        return;
    for (const auto& entry : object_.items()) {
        if (std::count(asked_.begin(), asked_.end(), entry.key()))
            continue;
        const std::string guess = closest(entry.key(), asked_);
        mistake(at(entry.key()),
                guess.empty() ? "unknown key"
                              : "unknown key; did you mean \"" + guess + "\"?");
    }
}

bool FieldReader::has(const char* key) const
{
    return object_.is_object() && object_.contains(key);
}

void FieldReader::flag(const char* key, bool& value)
{
    const Json* json = find(key);
    if (json && json->is_boolean())
        value = json->get<bool>();
    else if (json)
        mistake(at(key), expected("true or false", *json));
}

void FieldReader::text(const char* key, std::optional<std::string>& value,
                       const Refusal& refusal)
{
    const Json* json = find(key);
    const std::string* text = json ? string(*json, at(key)) : nullptr;
    if (!text)
        return;
    const std::string reason = refusal ? refusal(*text) : std::string{};
    if (reason.empty())
        value = *text;
    else
        mistake(at(key), reason);
}

void FieldReader::bytes(const char* key, Bytes& value, size_t least,
                        size_t most)
{
    const Json* json = find(key);
    const std::string* text = json ? string(*json, at(key)) : nullptr;
    if (!text)
        return;
    auto bytes = parseBytes(*text);
    if (!bytes) {
        mistake(at(key), "expected bytes such as \"55 00\"");
    } else if (bytes->size() < least || bytes->size() > most) {
        const std::string range =
            least == most
                ? std::to_string(least)
                : std::to_string(least) + " to " + std::to_string(most);
        mistake(at(key), "expected " + range + " bytes, found " +
                             std::to_string(bytes->size()));
    } else {
        value = std::move(*bytes);
    }
}

void FieldReader::choice(const char* key, uint8_t& value, Words words)
{
    const Json* json = find(key);
    if (!json)
        return;
    if (const Word* found = word(*json, at(key), words))
        value = uint8_t(found->value);
}

void FieldReader::code(const char* key, uint32_t& value, uint32_t max,
                       Words words)
{
    const Json* json = find(key);
    if (!json)
        return;
    if (auto number = numberOf(*json, max))
        value = *number;
    else if (!json->is_string())
        mistake(at(key),
                "expected a word or a number from 0 to " + std::to_string(max));
    else if (const Word* found = word(*json, at(key), words))
        value = found->value;
}

void FieldReader::doBits(const char* key, uint32_t& value, Words words)
{
    uint32_t bits = 0;
    bool present = false;
    items(key, [&](const Json& json, const std::string& place, size_t) {
        present = true;
        if (const Word* found = word(json, place, words))
            bits |= found->value;
    });
    if (present)
        value = bits;
}

void FieldReader::texts(const char* key, std::vector<std::string>& values,
                        const Refusal& refusal)
{
    items(key, [&](const Json& json, const std::string& place, size_t) {
        const std::string* text = string(json, place);
        if (!text)
            return;
        const std::string reason = refusal ? refusal(*text) : std::string{};
        if (reason.empty())
            values.push_back(*text);
        else
            mistake(place, reason);
    });
}

void FieldReader::require(const char* key)
{
    if (object_.is_object() && !has(key))
        mistake(place_, "\"" + std::string{key} + "\" is missing");
}

void FieldReader::refuse(const char* key, const std::string& reason)
{
    mistake(at(key), reason);
}

void FieldReader::doNumber(const char* key, uint32_t& value, Base, uint32_t max)
{
    const Json* json = find(key);
    if (!json)
        return;
    if (auto number = numberOf(*json, max))
        value = *number;
    else
        mistake(at(key), "expected a whole number from 0 to " +
                             std::to_string(max) + ", or such as \"0x1F\"");
}

void FieldReader::doInteger(const char* key, int32_t& value, int32_t min,
                            int32_t max)
{
    const Json* json = find(key);
    if (!json)
        return;
    // As a double no whole number wraps into the range.
    const double number =
        json->is_number_integer() ? json->get<double>() : min - 1.0;
    if (number >= min && number <= max)
        value = int32_t(number);
    else
        mistake(at(key), "expected a whole number from " + std::to_string(min) +
                             " to " + std::to_string(max));
}

void FieldReader::doObject(const char* key, bool,
                           const std::function<void(Fields&)>& describe,
                           const char* shorthand)
{
    if (const Json* json = find(key))
        readPart(*json, at(key), shorthand, describe);
}

void FieldReader::readPart(const Json& json, const std::string& place,
                           const char* shorthand,
                           const std::function<void(Fields&)>& describe)
{
    const bool isShort = shorthand && json.is_string();
    const Json whole = isShort ? Json{{shorthand, json}} : Json{};
    FieldReader part{isShort ? whole : json, place, mistakes_};
    part.isShort_ = isShort;
    describe(part);
    part.finish();
}

void FieldReader::doList(const char* key, size_t,
                         const std::function<void(Fields&, size_t)>& describe,
                         const char* shorthand)
{
    items(key, [&](const Json& json, const std::string& place, size_t index) {
        readPart(json, place, shorthand,
                 [&](Fields& part) { describe(part, index); });
    });
}

const nlohmann::json* FieldReader::find(const char* key)
{
    asked_.push_back(key);
    if (!object_.is_object())
        return nullptr;
    auto found = object_.find(key);
    return found == object_.end() ? nullptr : &*found;
}

std::string FieldReader::at(const std::string& key) const
{
    return isShort_ ? place_ : place_ + '/' + escapePointer(key);
}

void FieldReader::mistake(const std::string& place, const std::string& reason)
{
    mistakes_.push_back({place, reason});
}

const std::string* FieldReader::string(const Json& json,
                                       const std::string& place)
{
    if (!json.is_string())
        mistake(place, expected("a string", json));
    return json.get_ptr<const std::string*>();
}

const Word* FieldReader::word(const Json& json, const std::string& place,
                              Words words)
{
    const std::string* text = string(json, place);
    if (!text)
        return nullptr;
    auto found = std::find_if(words.begin(), words.end(),
                              [&](const Word& w) { return *text == w.text; });
    if (found != words.end())
        return found;
    mistake(place, "expected one of " + listOf(words));
    return nullptr;
}

void FieldReader::items(
    const char* key,
    const std::function<void(const Json&, const std::string&, size_t)>& each)
{
    const Json* json = find(key);
    if (!json)
        return;
    if (!json->is_array()) {
        mistake(at(key), expected("a list", *json));
        return;
    }
    for (size_t index = 0; index < json->size(); ++index)
        each((*json)[index], at(key) + '/' + std::to_string(index), index);
}

void readObject(const std::string& text,
                const std::function<void(Fields&)>& describe)
{
    Mistakes mistakes;
    const nlohmann::json json = parseJson(text, mistakes);
    FieldReader reader{json, "", mistakes};
    describe(reader);
    reader.finish();
    if (!mistakes.empty())
        throw std::invalid_argument{text + ": " + mistakes[0].place + ": " +
                                    mistakes[0].reason};
}

} // namespace Sim
