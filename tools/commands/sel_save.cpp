// vek-ipmi sel save FILE
#include <CLI/CLI.hpp>

#include <memory>

#include "tools/collect/sel_file.h"
#include "tools/commands/commands.h"
#include "tools/commands/sel.h"
#include "tools/print/json.h"
#include "tools/print/output.h"

namespace Tool
{

namespace
{

struct Arguments
{
    std::string file;
    bool noSensors = false;
};

struct Saved
{
    std::string log, sensors; ///< Paths; the second may be empty.
    size_t records = 0;
};

// Names from before, perhaps another server's, would be false beside a log
// without any; and what was partial is no longer needed.
void removeStale(const SelContents& contents, const Saved& saved)
{
    const std::string sensors = sensorsBeside(saved.log);
    if (!isOrBecomesFile(saved.log))
        return;
    if (contents.log.complete) {
        removeOld(saved.log + partialEnding);
        removeOld(sensorsBeside(saved.log + partialEnding));
    }
    if (!contents.hasAllSensors)
        return;
    removeOld(sensors + partialEnding);
    if (saved.sensors.empty())
        removeOld(sensors);
}

Saved save(const SelContents& contents, const std::string& path)
{
    Saved saved;
    saved.log = pathFor(path, contents.log.complete);
    saved.records = contents.log.records.size();
    std::vector<FileContents> files{{saved.log, toBytes(contents.log)}};
    if (!contents.sensorRecords.empty() && isOrBecomesFile(saved.log)) {
        saved.sensors =
            pathFor(sensorsBeside(saved.log), contents.hasAllSensors);
        files.push_back({saved.sensors, toBytes(contents.sensorRecords)});
    }
    writeFiles(files);
    removeStale(contents, saved);
    return saved;
}

std::string inWords(const Saved& saved)
{
    std::string text = std::to_string(saved.records) +
                       (saved.records == 1 ? " record" : " records") + " in " +
                       saved.log;
    if (!saved.sensors.empty())
        text += ", the names of their sensors in " + saved.sensors;
    return text + '\n';
}

Json inJson(const Saved& saved)
{
    Json json = document("sel-save");
    json["file"] = printable(saved.log);
    json["records"] = saved.records;
    json["sensorFile"] =
        saved.sensors.empty() ? Json(nullptr) : Json(printable(saved.sensors));
    return json;
}

Status run(const Arguments& arguments, const Options& options)
{
    const SelContents contents = readContents(
        [&](const Ipmi::IpmiSelData&) { return !arguments.noSensors; });
    const Saved saved = save(contents, arguments.file);
    // What goes to standard output is the log alone.
    if (isOrBecomesFile(arguments.file))
        put(options.json ? toText(inJson(saved)) : inWords(saved));
    return complainOf(contents.gaps);
}

constexpr char notes[] =
    "FILE holds 16 bytes a record, as 'ipmitool sel writeraw' writes it.\n"
    "FILE.sdr holds the sensor data records, as 'ipmitool sdr dump' writes "
    "them:\nwith these 'vek-ipmi sel list --file FILE' knows the sensors. What "
    "is there\nalready is replaced when all is read and written. What could "
    "not "
    "be read to\nits end goes to FILE.partial or FILE.sdr.partial, which a "
    "later whole one\nremoves. Without sensors a FILE.sdr from before is "
    "removed.";

} // namespace

void addSelSave(CLI::App& sel, Run& runs)
{
    CLI::App* save = sel.add_subcommand(
        "save", "Write the records into a file, for 'sel list --file'");
    const auto arguments = std::make_shared<Arguments>();
    save->add_option("FILE", arguments->file, "Where to")->required();
    save->add_flag("--no-sensors", arguments->noSensors,
                   "Without FILE.sdr: the sensors are not read");
    addNotes(*save, notes);
    save->callback([arguments, &runs] {
        runs = [arguments](const Options& options) {
            return run(*arguments, options);
        };
    });
}

} // namespace Tool
