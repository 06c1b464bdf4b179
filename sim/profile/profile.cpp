#include "sim/profile/profile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "sim/profile/builtin.h"
#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/syntax.h"

namespace Sim
{
namespace
{

void describe(Fields& io, FixedAnswer& row)
{
    io.require("netFn");
    io.require("command");
    io.require("answer");
    io.number("netFn", row.netFn, Fields::Base::Hexadecimal, 0x3E);
    io.number("command", row.command, Fields::Base::Hexadecimal);
    io.bytes("data", row.data, 0, 270);
    io.bytes("answer", row.answer, 0, 270);
}

} // namespace

void describe(Fields& io, Profile& profile)
{
    io.require("identity");
    io.text("description", profile.description, nullptr);
    io.object("identity", profile.state.identity, describe);
    io.list("answers", profile.state.answers, describe);
    io.texts("faults", profile.faults, nullptr);
}

std::optional<Profile> readProfile(const std::string& text, Mistakes& mistakes)
{
    Mistakes found;
    const nlohmann::json json = parseJson(text, found);
    Profile profile;
    if (found.empty()) {
        FieldReader reader{json, "", found};
        describe(reader, profile);
        reader.finish();
    }
    mistakes.insert(mistakes.end(), found.begin(), found.end());
    return found.empty() ? std::make_optional(std::move(profile))
                         : std::nullopt;
}

Mistakes checkProfile(const std::string& text)
{
    Mistakes mistakes;
    readProfile(text, mistakes);
    return mistakes;
}

std::optional<std::string> findProfile(const std::string& nameOrPath,
                                       Mistakes& mistakes)
{
    for (const BuiltinProfile& builtin : builtinProfiles())
        if (nameOrPath == builtin.name)
            return builtin.text;
    errno = 0;
    std::ifstream file{nameOrPath, std::ios::binary};
    std::string text{std::istreambuf_iterator<char>{file}, {}};
    if (file && errno == 0)
        return text;
    mistakes.push_back({nameOrPath, std::strerror(errno)});
    return std::nullopt;
}

std::vector<std::string> builtinProfileNames()
{
    std::vector<std::string> names;
    for (const BuiltinProfile& builtin : builtinProfiles())
        names.push_back(builtin.name);
    return names;
}

std::unique_ptr<Bmc> loadProfile(const std::string& text, Mistakes& mistakes)
{
    auto profile = readProfile(text, mistakes);
    return profile ? std::make_unique<Bmc>(std::move(profile->state)) : nullptr;
}

std::unique_ptr<Bmc> builtinProfile(const std::string& name)
{
    for (const BuiltinProfile& builtin : builtinProfiles()) {
        Mistakes mistakes;
        if (name == builtin.name)
            return loadProfile(builtin.text, mistakes);
    }
    throw std::invalid_argument{"no built-in profile " + name};
}

} // namespace Sim
