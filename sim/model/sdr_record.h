/// What a sensor data record says of its sensors (IPMI v2.0, 43.1 to 43.3).
#ifndef VEK_SIM_MODEL_SDR_RECORD_H
#define VEK_SIM_MODEL_SDR_RECORD_H

#include "sim/model/sensor.h"

namespace Sim
{

namespace sdr
{
constexpr uint8_t full = 0x01, compact = 0x02, eventOnly = 0x03,
                  entityAssociation = 0x08, deviceEntityAssociation = 0x09,
                  genericLocator = 0x10, fruLocator = 0x11, mcLocator = 0x12,
                  oem = 0xC0;
constexpr size_t header = 5; ///< Bytes: id, version, type, length.
} // namespace sdr

/// The controller that answers for a sensor.
struct Owner
{
    uint8_t channel = 0;
    uint8_t address = 0;

    bool isBmc() const { return channel == 0 && address == 0x20; }
};

/// Bytes that the record is too short for count as 0.
Owner ownerOf(const Bytes& record);

/// The sensors of one record, in good health: none for one that is no sensor
/// record, tells of events only, or is owned by software.
std::vector<Sensor> sensorsOf(const Bytes& record);

} // namespace Sim

#endif
