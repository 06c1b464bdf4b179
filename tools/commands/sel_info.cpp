// vek-ipmi sel info, vek-ipmi sel time
#include <CLI/CLI.hpp>

#include <ctime>
#include <memory>

#include "tools/commands/commands.h"
#include "tools/commands/missing.h"
#include "tools/commands/sel.h"
#include "tools/commands/sel_change.h"
#include "tools/commands/when.h"
#include "tools/print/completion_codes.h"
#include "tools/print/output.h"
#include "tools/print/sel_info.h"

namespace Tool
{

namespace
{

Status runInfo(bool utc, const Options& options)
{
    SelInfo info;
    {
        Device device;
        info = collectSelInfo(device);
    }
    put(options.json ? toText(toJson(info)) : toTable(info, utc));
    constexpr uint8_t unsupported = 0xC1;
    const Completion& allocation = info.allocation.completion;
    return complainOfMissing(
        {{"the allocation of the event log", commands::getSelAllocation,
          allocation, allocation.answered && allocation.code == unsupported},
         {"the event log's clock", commands::getSelTime,
          info.clock.completion}});
}

std::string inTable(const SelClock& clock, bool utc)
{
    Table table;
    addRows(table, clock, utc);
    return table.text();
}

Status showTime(Device& device, bool utc, const Options& options)
{
    const SelClock clock = collectSelClock(device);
    if (!clock.completion.ok())
        throw failureOf("the event log's clock was not read",
                        commands::getSelTime, clock.completion);
    Json json = document("sel-time");
    json.update(toJson(clock));
    put(options.json ? toText(json) : inTable(clock, utc));
    return Status::done;
}

Status runTime(bool utc, const Options& options)
{
    Device device;
    return showTime(device, utc, options);
}

// No value for now, which is the time when it is sent.
using When = std::optional<uint32_t>;

When readWhen(const std::string& text, bool utc)
{
    if (text == "now")
        return std::nullopt;
    const auto date = readDate(text, utc);
    if (!date)
        throw CLI::ValidationError("TIME", "'" + text +
                                               "' is neither 'now' "
                                               "nor a date: " +
                                               dateHelp);
    if (*date < 0 || *date >= SelTime::none ||
        !SelTime{uint32_t(*date)}.isDate())
        throw CLI::ValidationError("TIME", "'" + text +
                                               "' is no date that the log can "
                                               "hold (1987 to 2106)");
    return static_cast<uint32_t>(*date);
}

Status setTime(const When& when, bool utc, const Options& options)
{
    Device device;
    const uint32_t seconds =
        when ? *when : static_cast<uint32_t>(time(nullptr));
    Bytes data;
    for (unsigned shift = 0; shift < 32; shift += 8)
        data.push_back(static_cast<uint8_t>(seconds >> shift));
    const Completion completion =
        device.exchange(commands::setSelTime, data).completion;
    if (!completion.ok())
        throw failureOf(
            {"the event log's clock", "set", "Look with: vek-ipmi sel time"},
            commands::setSelTime, completion);
    return showTime(device, utc, options);
}

void addSet(CLI::App& app, bool& utc, Run& runs)
{
    const auto text = std::make_shared<std::string>();
    CLI::App* set = app.add_subcommand("set", "Set it, and show it");
    set->add_option("TIME", *text, std::string{"now, or "} + dateHelp)
        ->required();
    set->callback([text, &utc, &runs] {
        runs = [when = readWhen(*text, utc), utc](const Options& options) {
            return setTime(when, utc, options);
        };
    });
}

} // namespace

void addSelInfo(CLI::App& sel, Run& runs)
{
    const auto utc = std::make_shared<bool>();
    CLI::App* info =
        sel.add_subcommand("info", "Room, times, abilities and clock");
    info->add_flag("--utc", *utc, utcHelp);
    info->callback([utc, &runs] {
        runs = [utc = *utc](const Options& options) {
            return runInfo(utc, options);
        };
    });
}

void addSelTime(CLI::App& sel, Run& runs)
{
    const auto utc = std::make_shared<bool>();
    CLI::App* app = sel.add_subcommand(
        "time", "The log's clock, and how far it is from the host's");
    app->require_subcommand(0, 1);
    app->add_flag("--utc", *utc, utcHelp);
    app->add_subcommand("get", "Show it (the same as 'sel time')");
    addSet(*app, *utc, runs);
    addNotes(*app, "Examples:\n"
                   "  vek-ipmi sel time\n"
                   "  vek-ipmi sel time set now");
    app->callback([app, utc, &runs] {
        if (app->got_subcommand("set"))
            return;
        runs = [utc = *utc](const Options& options) {
            return runTime(utc, options);
        };
    });
}

} // namespace Tool
