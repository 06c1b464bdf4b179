// vek-ipmi capture FILE
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <unistd.h>

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

/// How many of something it holds.
struct Count
{
    const char *one, *many, *key;
    size_t count;
};

std::vector<Count> countsOf(const Capture& capture)
{
    size_t sensors = 0, frus = capture.controller.frus.size();
    const auto records = [](const std::optional<CapturedRecords>& from) {
        return from ? from->records.size() : size_t{0};
    };
    if (capture.repository)
        for (const CapturedRecord& one : capture.repository->records)
            for (const CapturedAnswers& answers : one.sensors)
                sensors += answers.empty() ? 0 : 1;
    for (const CapturedController& one : capture.satellites)
        frus += one.frus.size();
    return {{"sensor data record", "sensor data records", "sensorDataRecords",
             records(capture.repository)},
            {"sensor", "sensors", "sensors", sensors},
            {"FRU device", "FRU devices", "fruDevices", frus},
            {"LAN channel", "LAN channels", "lanChannels", capture.lan.size()},
            {"event log record", "event log records", "eventLogRecords",
             records(capture.log)}};
}

// A name without a folder may be a built-in profile's.
std::string profileName(const std::string& file)
{
    const bool isPath = file.find('/') != std::string::npos;
    return printable(isPath ? file : "./" + file);
}

std::string inWords(const Capture& capture, const Arguments& arguments)
{
    std::string text = printable(arguments.file) + ": ";
    const char* separator = "";
    for (const Count& part : countsOf(capture)) {
        text += separator + std::to_string(part.count) + " " +
                (part.count == 1 ? part.one : part.many);
        separator = ", ";
    }
    return text +
           "\nTo read it: vek-ipmi --simulate=" + profileName(arguments.file) +
           " inventory\n";
}

Json inJson(const Capture& capture, const Arguments& arguments)
{
    Json json = document("capture");
    json["file"] = printable(arguments.file);
    for (const Count& part : countsOf(capture))
        json[part.key] = part.count;
    json["anonymized"] = arguments.anonymize;
    json["missing"] = Json::array();
    for (const Failure& gap : capture.gaps)
        json["missing"].push_back(gap.what);
    return json;
}

// Better said now than after minutes.
void requireFolder(const std::string& file)
{
    const auto folder = std::filesystem::path{file}.parent_path();
    if (folder.empty() || access(folder.c_str(), W_OK | X_OK) == 0)
        return;
    throw Failure{Status::failed,
                  "cannot write into " + printable(folder.string()) + ": " +
                      strerror(errno),
                  ""};
}

Status run(const Arguments& arguments, const Options& options)
{
    requireFolder(arguments.file);
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
    "FILE is a profile of the simulated controller: with --simulate=FILE the\n"
    "other subcommands show what they show of the controller itself, and so "
    "do\n"
    "other programs behind vek-ipmi-sim --profile FILE as far as they ask the\n"
    "same. What could not be read is named.\n"
    "--anonymize puts others in place of serial numbers, asset tags and "
    "custom\n"
    "fields of FRU devices, MAC and IP addresses, GUIDs, host names and the "
    "SNMP\n"
    "community. What a manufacturer has put elsewhere stays, as in its own "
    "FRU\n"
    "and event log records: look through FILE before it is passed on.";

} // namespace

void addCapture(CLI::App& app, Run& runs)
{
    CLI::App* capture = app.add_subcommand(
        "capture", "Write what the other subcommands ask for into a file, for "
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
