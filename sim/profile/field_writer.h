#ifndef VEK_SIM_PROFILE_FIELD_WRITER_H
#define VEK_SIM_PROFILE_FIELD_WRITER_H

#include <nlohmann/json_fwd.hpp>

#include "sim/profile/fields.h"

namespace Sim
{

/// Makes one JSON object of fields, in their order. What is not there (an
/// area, a text, bytes of size 0, an empty list) has no key.
class FieldWriter : public Fields
{
public:
    explicit FieldWriter(nlohmann::ordered_json& object) : object_{object} {}

    bool reads() const override { return false; }
    bool has(const char*) const override { return false; }
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
    void require(const char*) override {}
    void refuse(const char*, const std::string&) override {}

private:
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

    nlohmann::ordered_json& object_;
};

} // namespace Sim

#endif
