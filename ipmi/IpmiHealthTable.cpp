// Reading the sensor health table. The format has no comments; a line without
// a health section is counted and dropped.
#include <cctype>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>
#include <syslog.h>
#include <vek-ipmi/VekMutex.h>

#include "ipmi/IpmiMapper.h"

namespace Ipmi
{

namespace
{

constexpr char healthTablePath[] = "/etc/sfcb/vek/sensor_health";

VEK::Mutex loadMutex;

void dropSeparator(std::istream& line)
{
    char separator;
    line >> separator;
}

// A number or "*", and the separator behind it.
void readNumberOrAny(std::istream& line, uint16_t& number, uint8_t& any)
{
    eatwhite(line);
    if (line.peek() == '*') {
        line.get();
        any = 1;
        eatwhite(line);
    } else {
        line >> number;
    }
    dropSeparator(line);
}

void readHealthSection(std::istream& line, HealthTableEntry& entry)
{
    entry.noHealthSection = 0;
    char next = 0;
    eatwhite(line);
    if (!line.get(next) || next == ':')
        return;
    line.putback(next);
    uint16_t health;
    if (line >> health)
        entry.healthState = health;
    dropSeparator(line);
}

} // namespace

std::istream& eatwhite(std::istream& in)
{
    char next;
    while (in.get(next))
        if (!isspace(static_cast<unsigned char>(next))) {
            in.putback(next);
            break;
        }
    return in;
}

std::istream& operator>>(std::istream& in, HealthTableEntry& entry)
{
    std::string text;
    std::getline(in, text);
    std::istringstream line{text};
    line >> entry.sensorClass;
    dropSeparator(line);
    readNumberOrAny(line, entry.sensorType, entry.anySensorType);
    readNumberOrAny(line, entry.statusBit, entry.anyStatusBit);
    char digit = '0';
    line >> digit;
    entry.digitalValue = static_cast<uint8_t>(digit - '0');
    char separator = 0;
    line >> separator;
    if (separator == ':')
        readHealthSection(line, entry);
    else
        entry.noHealthSection = 1;
    return in;
}

unsigned readHealthTable(std::istream& in)
{
    unsigned lines = 0;
    do {
        HealthTableEntry entry;
        in >> entry;
        ++lines;
        if (entry.noHealthSection)
            continue;
        healthList.push_back(entry);
        if (entry.digitalValue)
            sensorHealthMap[entry.sensorClass][entry.sensorType].emplace(
                entry.statusBit, entry);
    } while (in.good());
    return lines;
}

void LoadSensorHealthDataFile()
{
    VEK::MutexLock lock{loadMutex};
    if (!healthList.empty())
        return;
    syslog(LOG_DEBUG, "vek-ipmi: Loading %s", healthTablePath);
    std::ifstream file{healthTablePath};
    if (!file) {
        const int reason = errno;
        syslog(LOG_ERR, "%s: open(%s) failed %d %m", __func__, healthTablePath,
               reason);
        return;
    }
    const unsigned lines = readHealthTable(file);
    syslog(LOG_DEBUG, "vek-ipmi: Read %d lines from %s, total entries %zu",
           int(lines), healthTablePath, healthList.size());
}

bool LoadSensorHealthData(std::istream& in)
{
    VEK::MutexLock lock{loadMutex};
    if (healthList.empty())
        readHealthTable(in);
    return !healthList.empty();
}

} // namespace Ipmi
