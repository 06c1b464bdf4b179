// The event log with its sensors, from the controller or from files.
#include <algorithm>

#include "tools/collect/known_sensors.h"
#include "tools/collect/sel_file.h"
#include "tools/commands/discovery.h"
#include "tools/commands/sel.h"

namespace Tool
{

namespace
{

constexpr char unnamed[] = "Sensors that are not known stand by type and "
                           "number.";

void noteLog(SelContents& contents)
{
    const SelLog& log = contents.log;
    if (log.complete)
        return;
    contents.gaps.push_back(
        {Status::failed,
         "only " + std::to_string(log.records.size()) + " of " +
             std::to_string(log.total) + " records of the event log were read" +
             (log.failed == 0 ? ""
                              : " (" + std::to_string(log.failed) +
                                    " attempts were given up)"),
         "Try again; --verbose shows the codes that the controller gave."});
}

void readSensors(Device& device, SelContents& contents)
{
    contents.hasAllSensors = readForNames(device, unnamed, contents.gaps);
    contents.sensorRecords = sensorRecordsOfNode();
}

} // namespace

SelContents readContents(const SelWish& named, bool always)
{
    Device device;
    SelContents contents;
    contents.log = readSel(device);
    noteLog(contents);
    const auto& records = contents.log.records;
    if (always ||
        std::any_of(records.begin(), records.end(), [&](const auto& record) {
            return record->isSelEventRecord() && named(*record);
        }))
        readSensors(device, contents);
    return contents;
}

SelContents loadContents(const std::string& log, const std::string& sensors)
{
    SelContents contents;
    const Bytes bytes = readFile(log);
    contents.log = selOf(bytes);
    if (!contents.log.complete)
        contents.gaps.push_back(
            {Status::failed,
             log + " ends within a record: " + std::to_string(bytes.size()) +
                 " bytes are no multiple of 16",
             "Save it again, if that controller is still there."});
    if (!sensors.empty() &&
        !sensorRecordsOf(readFile(sensors), contents.sensorRecords))
        contents.gaps.push_back({Status::failed,
                                 sensors + " ends within a sensor data record",
                                 unnamed});
    return contents;
}

std::string sensorsBeside(const std::string& log)
{
    return log + ".sdr";
}

} // namespace Tool
