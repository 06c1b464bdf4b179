#include "sim/profile/field_writer.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "sim/profile/hex.h"

namespace Sim
{

using Json = nlohmann::ordered_json;

void FieldWriter::flag(const char* key, bool& value)
{
    object_[key] = value;
}

void FieldWriter::text(const char* key, std::optional<std::string>& value,
                       const Refusal&)
{
    if (value)
        object_[key] = *value;
}

void FieldWriter::bytes(const char* key, Bytes& value, size_t least, size_t)
{
    if (value.size() >= least)
        object_[key] = formatBytes(value);
}

void FieldWriter::choice(const char* key, uint8_t& value, Words words)
{
    for (const Word& word : words)
        if (word.value == value)
            object_[key] = word.text;
}

void FieldWriter::code(const char* key, uint32_t& value, uint32_t max,
                       Words words)
{
    for (const Word& word : words)
        if (word.value == value) {
            object_[key] = word.text;
            return;
        }
    doNumber(key, value, Base::Hexadecimal, max);
}

void FieldWriter::doBits(const char* key, uint32_t& value, Words words)
{
    Json list = Json::array();
    for (const Word& word : words)
        if (value & word.value)
            list.push_back(word.text);
    object_[key] = std::move(list);
}

void FieldWriter::texts(const char* key, std::vector<std::string>& values,
                        const Refusal&)
{
    if (!values.empty())
        object_[key] = values;
}

void FieldWriter::doNumber(const char* key, uint32_t& value, Base base,
                           uint32_t max)
{
    if (base == Base::Decimal) {
        object_[key] = value;
        return;
    }
    Bytes bytes;
    for (; max != 0; max >>= 8)
        bytes.insert(bytes.begin(), uint8_t(value >> 8 * bytes.size()));
    std::string digits = formatBytes(bytes);
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    object_[key] = "0x" + digits;
}

void FieldWriter::doInteger(const char* key, int32_t& value, int32_t, int32_t)
{
    object_[key] = value;
}

namespace
{

Json shortened(Json part, const char* shorthand)
{
    return shorthand && part.size() == 1 && part.contains(shorthand)
               ? part[shorthand]
               : part;
}

} // namespace

void FieldWriter::doObject(const char* key, bool present,
                           const std::function<void(Fields&)>& describe,
                           const char* shorthand)
{
    if (!present)
        return;
    Json object = Json::object();
    FieldWriter part{object};
    describe(part);
    object_[key] = shortened(std::move(object), shorthand);
}

void FieldWriter::doList(const char* key, size_t count,
                         const std::function<void(Fields&, size_t)>& describe,
                         const char* shorthand)
{
    for (size_t at = 0; at < count; ++at) {
        Json item = Json::object();
        FieldWriter part{item};
        describe(part, at);
        object_[key].push_back(shortened(std::move(item), shorthand));
    }
}

} // namespace Sim
