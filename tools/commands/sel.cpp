// vek-ipmi sel [list]
#include <CLI/CLI.hpp>

#include <ctime>
#include <filesystem>
#include <memory>

#include "tools/collect/health_source.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/commands/sel_filter.h"
#include "tools/commands/when.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string since, severity, sensor, file, sdr;
    bool raw = false, utc = false, noSensors = false;
};

int64_t readSince(const std::string& text, bool utc)
{
    const auto duration = readDuration(text);
    const auto date =
        duration ? time(nullptr) - *duration : readDate(text, utc);
    if (date)
        return *date;
    throw CLI::ValidationError(
        "--since", "'" + text + "' is neither a date (" + dateHelp +
                       ") nor a time that has passed (30s, 5m, 2h, 3d, 1w)");
}

SelFilter filterOf(const Arguments& arguments)
{
    SelFilter filter;
    filter.sensor = arguments.sensor;
    if (!arguments.since.empty())
        filter.since = readSince(arguments.since, arguments.utc);
    if (arguments.severity.empty())
        return filter;
    const auto severity = readSeverity(arguments.severity);
    if (!severity)
        throw CLI::ValidationError("--severity", "'" + arguments.severity +
                                                     "' is none of " +
                                                     severityHelp);
    filter.least = *severity;
    return filter;
}

SelContents contentsOf(const Arguments& arguments, const SelFilter& filter)
{
    if (arguments.file.empty())
        return readContents(
            [&](const Ipmi::IpmiSelData& record) {
                return !arguments.noSensors && !arguments.raw &&
                       filter.passes({record.messageTimeStamp()});
            },
            // Whether there is one of that name they alone tell.
            !arguments.noSensors && !arguments.sensor.empty());
    std::string sensors = arguments.sdr;
    if (sensors.empty() && !arguments.noSensors &&
        std::filesystem::exists(sensorsBeside(arguments.file)))
        sensors = sensorsBeside(arguments.file);
    return loadContents(arguments.file, sensors);
}

std::string textOf(const SelListing& listing, const Arguments& arguments,
                   const Options& options)
{
    if (options.json)
        return toText(toJson(listing));
    return arguments.raw ? rawLines(listing)
                         : toTable(listing, Terminal::ofOutput());
}

// A name that fits nothing may be that of a sensor that was not read.
void chooseAmong(SelListing& listing, const SelFilter& filter,
                 const KnownSensors& sensors, const std::vector<Failure>& gaps)
{
    try {
        choose(listing, filter, sensors);
    } catch (Failure& failure) {
        if (complainOf(gaps) != Status::done)
            failure.status = Status::failed;
        throw;
    }
}

Status run(const Arguments& arguments, const SelFilter& filter,
           const Options& options)
{
    loadHealthTable();
    SelContents contents = contentsOf(arguments, filter);
    const KnownSensors sensors{contents.sensorRecords};
    SelListing listing;
    for (const auto& record : contents.log.records)
        listing.records.push_back(collectSelRecord(*record, sensors));
    listing.log = std::move(contents.log);
    listing.utc = arguments.utc;
    chooseAmong(listing, filter, sensors, contents.gaps);
    put(textOf(listing, arguments, options));
    return complainOf(contents.gaps);
}

// An unset variable of a script is no filter.
const CLI::Validator notEmpty{[](const std::string& text) {
                                  return std::string{
                                      text.empty() ? "must not be empty" : ""};
                              },
                              ""};

void addOptions(CLI::App& app, Arguments& arguments)
{
    app.add_option("--since", arguments.since,
                   std::string{"Only records from then on: 30s, 5m, 2h, 3d or "
                               "1w ago, or "} +
                       dateHelp)
        ->check(notEmpty);
    app.add_option("--severity", arguments.severity,
                   std::string{"Only what is at least that bad: "} +
                       severityHelp)
        ->check(notEmpty);
    app.add_option("--sensor", arguments.sensor,
                   "Only events of this sensor: its name, its number (decimal "
                   "or 0x..), or its device id")
        ->check(notEmpty);
    app.add_flag("--raw", arguments.raw, "The 16 bytes of each record");
    app.add_flag("--utc", arguments.utc, utcHelp);
    app.add_flag("--no-sensors", arguments.noSensors,
                 "Do not read the sensors' records, which takes longer than "
                 "the log; sensors stand by type and number then");
    CLI::Option* file =
        app.add_option("--file", arguments.file,
                       "List a saved log; nothing is sent to a controller")
            ->check(notEmpty);
    app.add_option("--sdr", arguments.sdr,
                   "Sensor data records for its names (FILE.sdr, if that is "
                   "there)")
        ->needs(file)
        ->check(notEmpty);
}

constexpr char examples[] =
    "What ended is never more than info. A threshold's event is as bad as the\n"
    "threshold; of other states the table in /etc/sfcb/vek/sensor_health\n"
    "decides (sensor_health(5)), or the packaged one; '-' is what it does not\n"
    "tell.\n\n"
    "Examples:\n"
    "  vek-ipmi sel --since 2d --severity warning\n"
    "  vek-ipmi sel --sensor \"Inlet Temp\" --utc\n"
    "  vek-ipmi sel list --file sel.bin\n"
    "  vek-ipmi sel watch";

// Options of the list are sel's own as well, and no other subcommand's.
void refuseListOptions(const CLI::App& sel)
{
    for (const CLI::Option* option :
         sel.get_options([](const CLI::Option* o) { return o->count() != 0; }))
        throw CLI::ExtrasError({option->get_name()});
}

} // namespace

void addSel(CLI::App& app, Run& runs)
{
    CLI::App* sel = app.add_subcommand("sel", "The system event log");
    sel->require_subcommand(0, 1);
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*sel, *arguments);
    addNotes(*sel, examples);
    CLI::App* list =
        sel->add_subcommand("list", "All records in words (the same as 'sel')");
    addOptions(*list, *arguments);
    addSelInfo(*sel, runs);
    addSelWatch(*sel, runs);
    addSelSave(*sel, runs);
    addSelTime(*sel, runs);
    addSelClear(*sel, runs);
    addSelDelete(*sel, runs);
    sel->callback([sel, list, arguments, &runs] {
        if (!sel->get_subcommands().empty() && !sel->got_subcommand(list)) {
            refuseListOptions(*sel);
            return;
        }
        runs = [arguments,
                filter = filterOf(*arguments)](const Options& options) {
            return run(*arguments, filter, options);
        };
    });
}

} // namespace Tool
