// vek-ipmi lan
#include "tools/collect/lan.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/missing.h"
#include "tools/print/completion_codes.h"
#include "tools/print/lan.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

// Nothing at all is no partial result.
void requireAnything(const Lan& lan)
{
    if (lan.interfaces.empty())
        throw whyNoLan(lan);
    const bool isAnything =
        std::any_of(lan.interfaces.begin(), lan.interfaces.end(),
                    [](const LanInterface& one) {
                        return !one.parameters.empty() || one.gaps.empty();
                    });
    const LanInterface& first = lan.interfaces.front();
    if (!isAnything)
        throw failureOf("the configuration of LAN channel " +
                            std::to_string(first.channel) + " was not read",
                        commands::getLanConfiguration,
                        first.gaps.front().completion);
}

Status run(std::optional<uint8_t> channel, const Options& options)
{
    Lan lan;
    {
        Device device;
        lan = collectLan(device, channel);
    }
    requireAnything(lan);
    put(options.json ? toText(toJson(lan)) : toTable(lan));
    return complainOf(failuresOf(lan));
}

} // namespace

void addLan(CLI::App& app, Run& runs)
{
    CLI::App* lan = app.add_subcommand(
        "lan", "The controller's own network addresses, IPv4 and IPv6");
    const auto channel = std::make_shared<unsigned>(0);
    lan->add_option("--channel", *channel,
                    "Only that of this channel, also where the controller does "
                    "not tell which channels it has")
        ->check(CLI::Range(unsigned{lan::firstChannel},
                           unsigned{lan::lastChannel}));
    addNotes(*lan, "Without --channel all LAN channels are shown.");
    lan->callback([channel, &runs] {
        runs = [number = uint8_t(*channel)](const Options& options) {
            return run(number ? std::optional{number} : std::nullopt, options);
        };
    });
}

} // namespace Tool
