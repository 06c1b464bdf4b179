#include "tools/commands/sel_filter.h"

#include <algorithm>

#include "tools/commands/number.h"
#include "tools/print/words.h"
#include "tools/status.h"

namespace Tool
{

namespace
{

// What a person may call a sensor.
struct SensorNames
{
    std::string deviceId, name, idString;
    unsigned number;
};

SensorNames namesOf(const SelRecord& record)
{
    return {record.deviceId, record.sensorName, record.idString,
            record.bytes.sensorNumber};
}

SensorNames namesOf(const Ipmi::IpmiSensor& sensor)
{
    return {sensor.getDeviceId(), sensor.getName(), sensor.getIdString(),
            sensor.getSensorNumber()};
}

using Rule = bool (*)(const SensorNames& names, const std::string& what);

// As "vek-ipmi sensor" finds one: the first rule by which something fits.
constexpr Rule rules[] = {
    [](const SensorNames& names, const std::string& what) {
        return names.deviceId == what;
    },
    [](const SensorNames& names, const std::string& what) {
        uint8_t number = 0;
        return names.name == what || names.idString == what ||
               (readByte(what, number) && names.number == number);
    },
    [](const SensorNames& names, const std::string& what) {
        return lowered(names.name) == lowered(what);
    },
};

Rule ruleFor(const std::vector<SensorNames>& all, const std::string& what)
{
    for (const Rule rule : rules)
        if (std::any_of(all.begin(), all.end(), [&](const SensorNames& names) {
                return rule(names, what);
            }))
            return rule;
    throw Failure{Status::usage,
                  "no sensor '" + what +
                      "' in the event log, nor one known "
                      "by that name",
                  "List the events with: vek-ipmi sel - the sensors with: "
                  "vek-ipmi sensors"};
}

void chooseSensor(std::vector<SelRecord>& records, const std::string& what,
                  const KnownSensors& sensors)
{
    std::vector<SensorNames> all;
    for (const SelRecord& record : records)
        if (record.isEvent)
            all.push_back(namesOf(record));
    for (const auto& known : sensors.all())
        all.push_back(namesOf(*known.second));
    const Rule fits = ruleFor(all, what);
    const auto isOther = [&](const SelRecord& record) {
        return !record.isEvent || !fits(namesOf(record), what);
    };
    records.erase(std::remove_if(records.begin(), records.end(), isOther),
                  records.end());
}

} // namespace

std::optional<Severity> readSeverity(const std::string& text)
{
    for (const Severity severity :
         {Severity::info, Severity::warning, Severity::critical,
          Severity::nonRecoverable})
        if (asWord(text) == severityWord(severity))
            return severity;
    return std::nullopt;
}

void choose(SelListing& listing, const SelFilter& filter,
            const KnownSensors& sensors)
{
    std::vector<SelRecord>& records = listing.records;
    if (!filter.sensor.empty())
        chooseSensor(records, filter.sensor, sensors);
    const auto isOut = [&](const SelRecord& record) {
        const bool late = filter.passes(record.time);
        const bool judged = record.severity != Severity::unknown ||
                            filter.least == Severity::unknown;
        listing.undated += !late && !record.time.isDate();
        listing.unjudged += late && !judged;
        return !late || record.severity < filter.least;
    };
    std::vector<SelRecord> chosen;
    for (SelRecord& record : records)
        if (!isOut(record))
            chosen.push_back(std::move(record));
    records = std::move(chosen);
}

} // namespace Tool
