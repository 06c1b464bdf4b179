/// Where a sensor's record holds what (IPMI v2.0, 43.1 to 43.3).
#ifndef VEK_IPMI_PRIVATE_IPMISENSORRECORD_H
#define VEK_IPMI_PRIVATE_IPMISENSORRECORD_H

#include <cstdint>

namespace Ipmi
{

enum SensorRecordType : uint8_t
{
    fullRecord = 0x01,
    compactRecord = 0x02,
    eventOnlyRecord = 0x03
};

/// Event/reading types (IPMI v2.0, table 42-1).
constexpr uint8_t thresholdEventType = 0x01;
constexpr uint8_t sensorSpecificEventType = 0x6f;

/// Offsets from the header's first byte on; those without a record's name are
/// the full record's and, up to modifierUnit, the compact record's.
namespace at
{
enum : unsigned
{
    recordId = 0,
    recordType = 3,
    owner = 5,
    ownerLun = 6, ///< Channel in bits 7..4, LUN in bits 1..0.
    number = 7,
    entity = 8,
    entityInstance = 9,
    initialization = 10,
    capabilities = 11,
    sensorType = 12,
    eventType = 13,
    assertionMask = 14,
    deassertionMask = 16,
    readingMask = 18,
    readableMask = 18,
    settableMask = 19,
    units = 20, ///< Analog format, rate, modifier use, percentage.
    baseUnit = 21,
    modifierUnit = 22,
    linearization = 23,
    mLow = 24,
    mHigh = 25,
    bLow = 26,
    bHigh = 27,
    direction = 28,
    exponents = 29,
    analogFlags = 30,
    nominalReading = 31,
    normalMaximum = 32,
    normalMinimum = 33,
    maximumReading = 34,
    minimumReading = 35,
    defaultThresholds = 36, ///< Upper non-recoverable first.
    idString = 47,

    compactSharing = 23,
    compactIdString = 31,

    eventOnlySensorType = 10,
    eventOnlyEventType = 11,
    eventOnlySharing = 12,
    eventOnlyIdString = 16
};
} // namespace at

} // namespace Ipmi

#endif
