// Units and types of sensors in words. The texts are as callers know them,
// uneven capitals included.
#include <cstdio>
#include <iterator>

#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiSensorRecord.h"

namespace Ipmi
{

namespace
{

// IPMI v2.0, table 43-15.
constexpr const char* unit_desc[] = {
    // 0
    "unspecified", "degrees C", "degrees F", "degrees K", "Volts", "Amps",
    "Watts", "Joules", "Coulombs", "VA",
    // 10
    "Nits", "lumen", "lux", "Candela", "kPa", "PSI", "Newton", "CFM", "RPM",
    "Hz",
    // 20
    "microsecond", "millisecond", "second", "minute", "hour", "day", "week",
    "mil", "inches", "feet",
    // 30
    "cu in", "cu feet", "mm", "cm", "m", "cu cm", "cu m", "liters",
    "fluid ounce", "radians",
    // 40
    "steradians", "revolutions", "cycles", "gravities", "ounce", "pound",
    "ft-lb", "oz-in", "gauss", "gilberts",
    // 50
    "henry", "millihenry", "farad", "microfarad", "ohms", "siemens", "mole",
    "becquerel", "PPM", "reserved",
    // 60
    "Decibels", "DbA", "DbC", "gray", "sievert", "color temp deg K", "bit",
    "kilobit", "megabit", "gigabit",
    // 70
    "byte", "kilobyte", "megabyte", "gigabyte", "word", "dword", "qword",
    "line", "hit", "miss",
    // 80
    "retry", "reset", "overflow", "underrun", "collision", "packets",
    "messages", "characters", "error", "correctable error",
    "uncorrectable error"};
static_assert(std::size(unit_desc) == 91);

// IPMI v2.0, table 42-3. 11h and 23h are not told apart.
constexpr const char* sensor_type_desc[] = {
    // 00h
    "reserved", "Temperature", "Voltage", "Current", "Fan", "Physical Security",
    "Platform Security", "Processor",
    // 08h
    "Power Supply", "Power Unit", "Cooling Device", "Other", "Memory",
    "Drive Slot / Bay", "POST Memory Resize", "System Firmware",
    // 10h
    "Event Logging Disabled", "Watchdog", "System Event", "Critical Interrupt",
    "Button", "Module / Board", "Microcontroller", "Add-in Card",
    // 18h
    "Chassis", "Chip Set", "Other FRU", "Cable / Interconnect", "Terminator",
    "System Boot Initiated", "Boot Error", "OS Boot",
    // 20h
    "OS Critical Stop", "Slot / Connector", "System ACPI Power State",
    "Watchdog", "Platform Alert", "Entity Presence", "Monitor ASIC", "LAN",
    // 28h
    "Management Subsystem Health", "Battery", "Session Audit", "Version Change",
    "FRU State"};
static_assert(std::size(sensor_type_desc) == 0x2d);

struct TypeText
{
    uint8_t sensorType;
    const char* text;
};

// What command-line mode answers for a unit. The keys are sensor types although
// the texts name event/reading types: scripts read them so.
constexpr TypeText commandLineUnits[] = {
    {1, "threshold"},
    {2, "DMI-discrete"},
    {3, "assert-discrete"},
    {4, "predictive-discrete"},
    {5, "limit-discrete"},
    {6, "performance-discrete"},
    {7, "severity-discrete"},
    {8, "available-discrete"},
    {9, "enabled-discrete"},
    {10, "availability-discrete"},
    {11, "redundancy-discrete"},
    {12, "ACPI-discrete"},
    {13, "int-drive"},
    {27, "present-discrete"},
    {35, "watchdog"},
    {111, "sensor-discrete"},
};

const char* commandLineUnit(uint8_t sensorType)
{
    for (const TypeText& row : commandLineUnits)
        if (row.sensorType == sensorType)
            return row.text;
    return "unspecified";
}

} // namespace

std::string DescFromUnit(unsigned char unit)
{
    return unit < std::size(unit_desc) ? unit_desc[unit] : "";
}

std::string DescFromType(unsigned char type)
{
    if (type < std::size(sensor_type_desc))
        return sensor_type_desc[type];
    char text[32];
    snprintf(text, sizeof text, "OEM Reserved #%02x", type);
    return text;
}

std::string DescFromDirection(unsigned char direction)
{
    constexpr const char* texts[] = {"Unspecified", "input", "output",
                                     "reserved"};
    return direction < std::size(texts) ? texts[direction] : "";
}

std::string IpmiSensor::getSensorTypeString() const
{
    const bool known = hasMasks() || byteAt(at::recordType) == eventOnlyRecord;
    return known ? DescFromType(getSensorType()) : std::string{};
}

std::string IpmiSensor::getModifierUnitString() const
{
    return hasMasks() ? DescFromUnit(byteAt(at::modifierUnit)) : std::string{};
}

std::string IpmiSensor::getBaseUnitString() const
{
    constexpr unsigned highestUnit = 144;
    const uint8_t unit = byteAt(at::baseUnit);
    if (!hasMasks() || unit > highestUnit)
        return {};
    if (byteAt(at::recordType) == compactRecord &&
        byteAt(at::modifierUnit) == 0 && _getState(node_) == IpmiIfc::STATE_CLI)
        return commandLineUnit(getSensorType());
    return DescFromUnit(unit);
}

} // namespace Ipmi
