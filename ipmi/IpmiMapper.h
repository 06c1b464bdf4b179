/// Health of discrete sensors: a table read from a file, and its lookup.
#ifndef VEK_IPMI_PRIVATE_IPMIMAPPER_H
#define VEK_IPMI_PRIVATE_IPMIMAPPER_H

#include <cstdint>
#include <istream>
#include <map>
#include <vector>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiHealth.h>

namespace Ipmi
{

/// A line of the table: class, type, status bit, digital value and, behind a
/// colon, the health state; "*" for any type or any status bit.
struct HealthTableEntry
{
    uint16_t sensorClass = 0; ///< Event/reading type (IPMI v2.0, table 42-1).
    uint16_t sensorType = 0;  ///< Table 42-3.
    uint16_t statusBit = 255;
    uint8_t digitalValue = 0;
    uint16_t healthState = 1;
    uint8_t noHealthSection = 1;
    uint8_t anySensorType = 0;
    uint8_t anyStatusBit = 0;
};

/// Skips white space up to the end or to another character, which stays.
std::istream& eatwhite(std::istream& in);

/// Reads one line; what a line does not hold keeps its default.
std::istream& operator>>(std::istream& in, HealthTableEntry& entry);

using HealthByStatusBit = std::map<uint16_t, HealthTableEntry>;
using HealthBySensorType = std::map<uint16_t, HealthByStatusBit>;

/// Filled once by LoadSensorHealthDataFile and read without a lock from then
/// on. Any type is filed as 0, any status bit as 255.
extern std::vector<HealthTableEntry> healthList;
extern std::map<uint16_t, HealthBySensorType> sensorHealthMap;

/// Adds the lines of a stream to both tables. Returns the number of lines.
unsigned readHealthTable(std::istream& in);

/// One sensor's state on its way through the table.
class IpmiMapper
{
public:
    IpmiMapper(unsigned char sensorClass, unsigned char sensorType,
               unsigned char statusBit, unsigned char sensorNumber,
               unsigned short stateBits);

    /// Looks the sensor's rule up; construction does so.
    void init();
    bool isMatch(const HealthTableEntry& entry) const;
    uint8_t GetSensorSpecificStatusBit() const;
    int getHealthState() const;
    int getHealthStateFromSensorHealthMap() const;
    int getDigitalDiscrete(unsigned short state) const;

private:
    const HealthByStatusBit* rulesOfSensor() const;

    uint8_t sensorClass_;
    uint8_t sensorType_;
    uint8_t statusBit_;
    uint8_t sensorNumber_;
    uint16_t stateBits_;
    HealthTableEntry entry_;
};

} // namespace Ipmi

#endif
