#include "sim/profile/profile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "sim/fault/fault.h"
#include "sim/profile/builtin.h"
#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/field_writer.h"
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

std::string refuseRule(const std::string& rule)
{
    Mistake mistake;
    return parseFault(rule, mistake) ? ""
                                     : mistake.place + ": " + mistake.reason;
}

void refuseTwins(Fields& io, const std::vector<Channel>& channels)
{
    std::set<uint8_t> seen;
    for (const Channel& channel : channels)
        if (!seen.insert(channel.number).second)
            io.refuse("channels", "channel " + std::to_string(channel.number) +
                                      " stands twice");
}

void describeSatellite(Fields& io, BmcState& state)
{
    io.require("address");
    io.require("identity");
    io.number("channel", state.busChannel, Fields::Base::Decimal, 0x0B);
    io.number("address", state.address, Fields::Base::Hexadecimal);
    io.object("identity", state.identity, Sim::describe);
    describeSensors(io, state.sensors);
    describeFrus(io, state.frus);
    io.list("answers", state.answers, describe);
}

} // namespace

void describe(Fields& io, Profile& profile)
{
    io.require("identity");
    io.text("description", profile.description, nullptr);
    io.object("identity", profile.state.identity, describe);
    io.object("systemInfo", profile.state.systemInfo, describe);
    io.object("chassis", profile.state.chassis, describe);
    io.object("messaging", profile.state.messaging, describe);
    io.list("channels", profile.state.channels, describe);
    refuseTwins(io, profile.state.channels);
    io.object("repository", profile.state.repository, describe);
    io.object("eventLog", profile.state.eventLog, describe);
    describeSensors(io, profile.state.sensors);
    describeFrus(io, profile.state.frus);
    describeLan(io, profile.state.lan);
    io.list("satellites", profile.state.satellites, describeSatellite);
    io.list("answers", profile.state.answers, describe);
    io.texts("faults", profile.faults, refuseRule);
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

std::string writeProfile(const Profile& profile)
{
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    FieldWriter writer{json};
    Profile copy = profile;
    describe(writer, copy);
    constexpr int indent = 2;
    // A client may have written texts that are not UTF-8.
    return json.dump(indent, ' ', false,
                     nlohmann::ordered_json::error_handler_t::replace) +
           '\n';
}

Mistakes checkProfile(const std::string& text)
{
    Mistakes mistakes;
    readProfile(text, mistakes);
    return mistakes;
}

// A C++ stream would not say that the path is a directory.
std::optional<std::string> readFile(const std::string& path)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file{std::fopen(path.c_str(), "rbe"),
                                               std::fclose};
    if (!file)
        return std::nullopt;
    std::string text;
    char piece[4096];
    while (size_t size = std::fread(piece, 1, sizeof piece, file.get()))
        text.append(piece, size);
    return std::ferror(file.get()) ? std::nullopt : std::make_optional(text);
}

std::optional<std::string> findProfile(const std::string& nameOrPath,
                                       Mistakes& mistakes)
{
    for (const BuiltinProfile& builtin : builtinProfiles())
        if (nameOrPath == builtin.name)
            return builtin.text;
    if (auto text = readFile(nameOrPath))
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
