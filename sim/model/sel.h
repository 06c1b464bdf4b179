/// The system event log (IPMI v2.0, 30.5, 30.6, 31 and 32).
#ifndef VEK_SIM_MODEL_SEL_H
#define VEK_SIM_MODEL_SEL_H

#include <optional>

#include "sim/model/command.h"
#include "sim/model/event.h"
#include "sim/model/record.h"

namespace Sim
{

namespace sel
{
/// Record types: events; from `oem` on with, from `oemUntimed` on without a
/// time stamp (IPMI v2.0, 32.1 to 32.3).
constexpr uint8_t event = 0x02, oem = 0xC0, oemUntimed = 0xE0;
constexpr size_t recordSize = 16;
constexpr uint32_t never = 0xFFFFFFFF; ///< Nothing was added, or erased.
} // namespace sel

struct SelRecord
{
    uint16_t id = 0; ///< By which it is asked for; its bytes may say another.
    Bytes bytes;     ///< As wrong as one likes.
};

struct EventLog
{
    enum Operation : uint8_t
    {
        allocationInfo = 0x01,
        reserveSupported = 0x02,
        partialAdd = 0x04,
        deleteSupported = 0x08,
        overflow = 0x80 ///< An event found no place since the last clear.
    };

    uint8_t version = 0x51;
    uint32_t added = sel::never; ///< Seconds since 1970.
    uint32_t erased = sel::never;
    uint8_t operations = allocationInfo | reserveSupported | deleteSupported;
    uint16_t capacity = 512;      ///< Records.
    bool ring = false;            ///< When it is full, the oldest record goes.
    uint8_t readLimit = 0;        ///< More bytes at once are CAh; 0: no limit.
    uint16_t allocationUnit = 16; ///< Bytes; 0: unspecified.
    uint32_t eraseSeconds = 0;    ///< How long a clear is in progress.
    bool logsClear = false;       ///< A clear leaves a record of itself.
    int32_t timeOffset = 0;       ///< Its clock against the model's.
    int16_t utcOffset = 0x07FF;   ///< Minutes; 7FFh: unspecified.
    uint16_t softwareProcessed = 0xFFFF, bmcProcessed = 0xFFFF; ///< Ids.
    std::vector<SelRecord> records;

    uint16_t reservation = 0; ///< 0: nobody holds one.
    uint16_t lastReservation = 0;
    uint16_t lastId = 0;
    bool idsCameRound = false; ///< From here on an id may be in use.
    int64_t erasedAt = 0;      ///< When a clear is done, by the model's clock.

    /// What its clock shows when the model's shows this.
    uint32_t time(int64_t now) const { return uint32_t(now + timeOffset); }
    bool isErasing(int64_t now) const { return now < erasedAt; }

    /// Cancels the one before.
    uint16_t reserve();
    /// The record gets the next id. No value when there is no place for it.
    std::optional<uint16_t> add(Bytes record, int64_t now);
    /// By id; FFFFh is the last. False when it is not there.
    bool remove(uint16_t id, int64_t now, uint16_t& removed);
    void clear(int64_t now);
    /// 0000h and FFFFh are the first and the last.
    std::vector<SelRecord>::const_iterator find(uint16_t id) const;

private:
    uint16_t takeId();
};

extern const Family selFamily;

} // namespace Sim

#endif
