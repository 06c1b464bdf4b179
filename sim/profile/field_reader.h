#ifndef VEK_SIM_PROFILE_FIELD_READER_H
#define VEK_SIM_PROFILE_FIELD_READER_H

#include <nlohmann/json_fwd.hpp>

#include "sim/profile/fields.h"
#include "sim/profile/mistake.h"

namespace Sim
{

/// Fills fields from one JSON object and names each mistake in it.
class FieldReader : public Fields
{
public:
    /// `place` is the object's JSON pointer.
    FieldReader(const nlohmann::json& object, std::string place,
                Mistakes& mistakes);

    /// Call when all fields have been asked for: names the keys that were
    /// not. (Not the destructor's work: naming may throw.)
    void finish();

    bool reads() const override { return true; }
    bool has(const char* key) const override;
    void flag(const char* key, bool& value) override;
    using Fields::text;
    void text(const char* key, std::optional<std::string>& value,
              const Refusal& refusal) override;
    void bytes(const char* key, Bytes& value, size_t least,
               size_t most) override;
    void choice(const char* key, uint8_t& value, Words words) override;
    void code(const char* key, uint32_t& value, uint32_t max,
              Words words) override;
    void texts(const char* key, std::vector<std::string>& values,
               const Refusal& refusal) override;
    void require(const char* key) override;
    void refuse(const char* key, const std::string& reason) override;

private:
    using Json = nlohmann::json;

    void doNumber(const char* key, uint32_t& value, Base base,
                  uint32_t max) override;
    void doInteger(const char* key, int32_t& value, int32_t min,
                   int32_t max) override;
    void doBits(const char* key, uint32_t& value, Words words) override;
    void doObject(const char* key, bool present,
                  const std::function<void(Fields&)>& describe,
                  const char* shorthand) override;
    void doList(const char* key, size_t count,
                const std::function<void(Fields&, size_t)>& describe,
                const char* shorthand) override;

    const Json* find(const char* key);
    std::string at(const std::string& key) const;
    /// Calls `describe` for an object, or for a string that is short for one.
    void readPart(const Json& json, const std::string& place,
                  const char* shorthand,
                  const std::function<void(Fields&)>& describe);
    void mistake(const std::string& place, const std::string& reason);
    const std::string* string(const Json& json, const std::string& place);
    const Word* word(const Json& json, const std::string& place, Words words);
    /// Calls `each` for the items of the list under `key`, if it is one.
    void items(const char* key,
               const std::function<void(const Json&, const std::string& place,
                                        size_t index)>& each);

    const Json& object_;
    std::string place_;
    Mistakes& mistakes_;
    std::vector<std::string> asked_;
    bool isShort_ = false; ///< Its one key stands for the object.
};

/// Fills fields from the text of one JSON object. Throws
/// std::invalid_argument with the first mistake.
void readObject(const std::string& text,
                const std::function<void(Fields&)>& describe);

} // namespace Sim

#endif
