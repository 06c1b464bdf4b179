// vek-ipmi identify [SECONDS|--force|--off]
#include <CLI/CLI.hpp>

#include <memory>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/commands/commands.h"
#include "tools/commands/number.h"
#include "tools/device.h"
#include "tools/print/completion_codes.h"
#include "tools/print/json.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

struct Light
{
    uint8_t seconds = 15; // what the standard has for a request without it
    bool forced = false;

    bool on() const { return forced || seconds != 0; }
};

[[noreturn]] void refuse(const Completion& completion)
{
    // The library gives C1h and CDh as 1, which no controller sends here.
    constexpr uint8_t notSupported = 1;
    if (completion.code == notSupported)
        throw Failure{Status::refused,
                      "the controller does not support identification (C1h "
                      "or CDh: command not supported)",
                      ""};
    throw failureOf("identification failed", commands::chassisIdentify,
                    completion);
}

std::string inTable(const Light& light)
{
    if (!light.on())
        return "identification off\n";
    if (light.forced)
        return "identification on until vek-ipmi identify --off\n";
    return "identification on for " + std::to_string(light.seconds) + " s\n";
}

Json inJson(const Light& light)
{
    Json json = document("identify");
    json["on"] = light.on();
    json["seconds"] =
        light.forced || !light.on() ? Json(nullptr) : Json(light.seconds);
    return json;
}

Status runIdentify(const Light& light, const Options& options)
{
    {
        Device device;
        const Completion completion = device.ask([&] {
            return Ipmi::IpmiIfc::identifyChassis(light.seconds, light.forced);
        });
        if (!completion.ok())
            refuse(completion);
    }
    put(options.json ? toText(inJson(light)) : inTable(light));
    return Status::done;
}

} // namespace

void addIdentify(CLI::App& app, Run& run)
{
    struct Arguments
    {
        std::string seconds;
        bool force = false, off = false;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* identify = app.add_subcommand(
        "identify", "Make the chassis identify itself, by a light or a sound");
    CLI::Option* seconds =
        identify->add_option("SECONDS", arguments->seconds,
                             "For how long: 1 to 255 (0 turns it off), 15 when "
                             "not given");
    CLI::Option* force = identify->add_flag("--force", arguments->force,
                                            "Until it is turned off");
    CLI::Option* off =
        identify->add_flag("--off", arguments->off, "Turn it off");
    seconds->excludes(force)->excludes(off);
    force->excludes(off);
    identify->callback([arguments, seconds, &run] {
        Light light;
        if (seconds->count() != 0)
            light.seconds = toByte("SECONDS", arguments->seconds);
        if (arguments->off)
            light.seconds = 0;
        light.forced = arguments->force;
        run = [light](const Options& options) {
            return runIdentify(light, options);
        };
    });
}

} // namespace Tool
