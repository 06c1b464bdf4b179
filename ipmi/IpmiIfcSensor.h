/// Discovery of a node's sensors, and their refresh.
#ifndef VEK_IPMI_PRIVATE_IPMIIFCSENSOR_H
#define VEK_IPMI_PRIVATE_IPMIIFCSENSOR_H

#include <cstdint>
#include <memory>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiIfcSdr.h"

namespace Ipmi
{

/// One request for a sensor's reading.
struct ipmiifc_sensor_reading_list
{
    ipmiifc_sensor_reading_list* next;
    ipmiifc_sdr_list* sdr; ///< The record; null once it was freed.
    uint8_t data[8];       ///< The answer, completion code first.
    int length;            ///< Bytes that came, in data or behind it.
};

/// Makes the node's sensors anew from its records. 0, or -1 for a node
/// without a record.
int IpmiIfcSensorInstantiateAll(int node);

/// One Get Sensor Reading, sent to the sensor's owner. 0 with the entry's data
/// filled; the completion code; -1 when nothing was sent or answered; -2
/// without a record.
int IpmiIfcSensorGetReading(int node, ipmiifc_sensor_reading_list* entry);

/// One Get Sensor Thresholds, sent to the sensor's owner, and the hysteresis.
/// 0; -1 when nothing was sent or answered; -2 without a record; -3 after a
/// failing completion code.
int IpmiIfcSensorGetThresholds(int node, ipmiifc_sdr_list* entry,
                               std::shared_ptr<IpmiSensor> sensor);

/// What discovery makes of a record.
enum class SensorKind
{
    none,
    threshold,
    discrete,
    unlisted ///< Discrete, built and read, but not among the node's sensors.
};

/// By the record's type, its event/reading type and its entity.
SensorKind sensorKindOf(uint8_t recordType, RecordView record);

} // namespace Ipmi

#endif
