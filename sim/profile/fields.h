/// One description of an area's JSON for both directions: an area's function
/// names its fields, a FieldReader fills them from JSON and a FieldWriter
/// makes JSON of them.
#ifndef VEK_SIM_PROFILE_FIELDS_H
#define VEK_SIM_PROFILE_FIELDS_H

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "sim/model/message.h"

namespace Sim
{

/// A word of the profile and the value it stands for.
struct Word
{
    const char* text;
    uint16_t value;
};

template <class Item>
struct View
{
    template <size_t count>
    constexpr View(const Item (&items)[count]) : first{items}, size{count}
    {}
    constexpr View() : first{nullptr}, size{0} {}
    const Item* begin() const { return first; }
    const Item* end() const { return first + size; }
    const Item* first;
    size_t size;
};
using Words = View<Word>;

/// A reading leaves a field whose key is absent or wrong as it was.
class Fields
{
public:
    enum class Base
    {
        Decimal,
        Hexadecimal
    }; ///< How a number is written.
    /// Why a text cannot stand; empty when it can.
    using Refusal = std::function<std::string(const std::string&)>;

    virtual ~Fields() = default;

    /// Whether fields are filled; else they are written out.
    virtual bool reads() const = 0;
    /// Whether there is such a key to read.
    virtual bool has(const char* key) const = 0;

    template <class Number>
    void number(const char* key, Number& value, Base base,
                uint32_t max = std::numeric_limits<Number>::max())
    {
        uint32_t wide = value;
        doNumber(key, wide, base, max);
        value = Number(wide);
    }
    /// A number that may be negative.
    template <class Number>
    void integer(const char* key, Number& value, int32_t min, int32_t max)
    {
        int32_t wide = value;
        doInteger(key, wide, min, max);
        value = Number(wide);
    }
    virtual void flag(const char* key, bool& value) = 0;
    void text(const char* key, std::string& value, const Refusal& refusal)
    {
        std::optional<std::string> held{value};
        text(key, held, refusal);
        value = *held;
    }
    /// No value where the key is absent.
    virtual void text(const char* key, std::optional<std::string>& value,
                      const Refusal& refusal) = 0;
    /// As "55 00"; between `least` and `most` bytes.
    virtual void bytes(const char* key, Bytes& value, size_t least,
                       size_t most) = 0;
    virtual void choice(const char* key, uint8_t& value, Words words) = 0;
    /// A word, or any number up to `max` for which there may be none.
    virtual void code(const char* key, uint32_t& value, uint32_t max,
                      Words words) = 0;
    /// A list of words, each of which sets its bits.
    template <class Number>
    void bits(const char* key, Number& value, Words words)
    {
        uint32_t wide = value;
        doBits(key, wide, words);
        value = Number(wide);
    }
    virtual void texts(const char* key, std::vector<std::string>& values,
                       const Refusal& refusal) = 0;

    /// Where a `shorthand` is given, a string may stand for an object with
    /// this key alone, in lists too.
    template <class Part>
    void object(const char* key, Part& part, void (*describe)(Fields&, Part&),
                const char* shorthand = nullptr)
    {
        doObject(
            key, true, [&](Fields& io) { describe(io, part); }, shorthand);
    }
    template <class Part>
    void object(const char* key, std::optional<Part>& part,
                void (*describe)(Fields&, Part&))
    {
        doObject(
            key, part.has_value(),
            [&](Fields& io) {
                if (!part)
                    part.emplace();
                describe(io, *part);
            },
            nullptr);
    }
    template <class Part>
    void list(const char* key, std::vector<Part>& parts,
              void (*describe)(Fields&, Part&), const char* shorthand = nullptr)
    {
        doList(
            key, parts.size(),
            [&](Fields& io, size_t at) {
                if (at >= parts.size())
                    parts.resize(at + 1);
                describe(io, parts[at]);
            },
            shorthand);
    }
    /// A key that the profile has to state.
    virtual void require(const char* key) = 0;
    /// A mistake that only the area can see.
    virtual void refuse(const char* key, const std::string& reason) = 0;

protected:
    virtual void doNumber(const char* key, uint32_t& value, Base base,
                          uint32_t max) = 0;
    virtual void doInteger(const char* key, int32_t& value, int32_t min,
                           int32_t max) = 0;
    virtual void doBits(const char* key, uint32_t& value, Words words) = 0;
    virtual void doObject(const char* key, bool present,
                          const std::function<void(Fields&)>& describe,
                          const char* shorthand) = 0;
    virtual void doList(const char* key, size_t count,
                        const std::function<void(Fields&, size_t)>& describe,
                        const char* shorthand) = 0;
};

} // namespace Sim

#endif
