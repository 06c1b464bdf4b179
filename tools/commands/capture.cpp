// vek-ipmi capture FILE
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/collect/anonymize.h"
#include "tools/collect/capture.h"
#include "tools/collect/sel_file.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/print/json.h"
#include "tools/print/output.h"
#include "tools/print/profile.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string file;
    bool anonymize = false;
};

Capture read()
{
    CaptureProgress progress;
    const Patience patience{[&] {
        return progress.text();
    }};
    Device device;
    return captureController(device, progress);
}

struct Part
{
    const char *one, *many;
    size_t count;
};

std::vector<Part> partsOf(const Capture& capture)
{
    size_t sensors = 0, frus = capture.controller.frus.size();
    const auto records = [](const std::optional<CapturedRecords>& from) {
        return from ? from->records.size() : size_t{0};
    };
    if (capture.repository)
        for (const CapturedRecord& one : capture.repository->records)
            sensors += one.sensors.size();
    for (const CapturedController& one : capture.satellites)
        frus += one.frus.size();
    return {{"sensor data record", "sensor data records",
             records(capture.repository)},
            {"sensor", "sensors", sensors},
            {"FRU device", "FRU devices", frus},
            {"LAN channel", "LAN channels", capture.lan.size()},
            {"event log record", "event log records", records(capture.log)}};
}

std::string inWords(const Capture& capture, const Arguments& arguments)
{
    std::string text = arguments.file + ": ";
    const char* separator = "";
    for (const Part& part : partsOf(capture)) {
        text += separator + std::to_string(part.count) + " " +
                (part.count == 1 ? part.one : part.many);
        separator = ", ";
    }
    return text + "\nTo read it: vek-ipmi --simulate=" + arguments.file +
           " inventory\n";
}

Json inJson(const Capture& capture, const Arguments& arguments)
{
    const std::vector<Part> parts = partsOf(capture);
    Json json = document("capture");
    json["file"] = printable(arguments.file);
    json["sensorDataRecords"] = parts[0].count;
    json["sensors"] = parts[1].count;
    json["fruDevices"] = parts[2].count;
    json["lanChannels"] = parts[3].count;
    json["eventLogRecords"] = parts[4].count;
    json["anonymized"] = arguments.anonymize;
    return json;
}

Status run(const Arguments& arguments, const Options& options)
{
    Capture capture = read();
    if (arguments.anonymize)
        anonymize(capture);
    const std::string profile = toProfile(capture);
    writeFiles({{arguments.file, {profile.begin(), profile.end()}}});
    if (isOrBecomesFile(arguments.file))
        put(options.json ? toText(inJson(capture, arguments))
                         : inWords(capture, arguments));
    return complainOf(capture.gaps);
}

constexpr char notes[] =
    "FILE is a profile of the simulated controller: any subcommand shows the\n"
    "same with --simulate=FILE, without the controller; so do other programs\n"
    "behind vek-ipmi-sim --profile FILE. What could not be read is named and\n"
    "left out.\n"
    "--anonymize puts others in place of serial numbers, asset tags, MAC and\n"
    "IP addresses, GUIDs, host names and the SNMP community. What a\n"
    "manufacturer has put elsewhere, as into its own FRU records, stays: look\n"
    "through FILE before it is passed on.";

} // namespace

void addCapture(CLI::App& app, Run& runs)
{
    CLI::App* capture = app.add_subcommand(
        "capture", "Write all that the controller answers into a file, for "
                   "--simulate=FILE");
    const auto arguments = std::make_shared<Arguments>();
    capture->add_option("FILE", arguments->file, "Where to")->required();
    capture->add_flag("--anonymize", arguments->anonymize,
                      "Without what tells which server it is");
    addNotes(*capture, notes);
    capture->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
