/// The SDR repository (IPMI v2.0, 33).
#ifndef VEK_SIM_MODEL_SDR_H
#define VEK_SIM_MODEL_SDR_H

#include <optional>

#include "sim/model/command.h"
#include "sim/model/sensor.h"

namespace Sim
{

struct SdrRecord
{
    uint16_t id = 0; ///< By which it is asked for; its header may say another.
    Bytes bytes;     ///< With the header, and as wrong as one likes.
    /// What its sensors do, by offset of the share; none: what sensorsOf says.
    std::vector<Sensor> sensors;
};

struct Repository
{
    enum Operation : uint8_t
    {
        allocationInfo = 0x01,
        reserveSupported = 0x02,
        partialAdd = 0x04,
        deleteSupported = 0x08
    };

    uint8_t version = 0x51;
    uint16_t freeSpace = 0xFFFF; ///< Bytes; FFFFh: unspecified.
    uint32_t added = 0;          ///< Seconds since 1970.
    uint32_t erased = 0;
    uint8_t operations = allocationInfo | reserveSupported;
    uint8_t readLimit = 0; ///< More bytes at once are CAh; 0: no limit.
    std::vector<SdrRecord> records;

    uint16_t reservation = 0; ///< 0: nobody holds one.
    uint16_t lastReservation = 0;
    std::optional<SdrRecord> gone; ///< By a change, until the next.

    /// Cancels the one before.
    uint16_t reserve();
    /// A change cancels the reservation, and is stamped unless told not to.
    void add(SdrRecord record, int64_t now, bool stamped = true);
    /// The last record goes, and comes back with the next change.
    void change(int64_t now, bool stamped = true);
};

extern const Family sdrFamily;

} // namespace Sim

#endif
