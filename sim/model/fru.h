/// FRU inventory devices (IPMI v2.0, 34).
#ifndef VEK_SIM_MODEL_FRU_H
#define VEK_SIM_MODEL_FRU_H

#include "sim/model/command.h"

namespace Sim
{

/// Bytes of a FRU device that cannot be written.
struct FruRange
{
    uint16_t offset = 0, count = 0;
};

struct FruDevice
{
    uint8_t device = 0; ///< Its FRU device id, at a LUN of its controller.
    uint8_t lun = 0;
    bool words = false; ///< Offsets and counts of requests are in words.
    /// A device of words that takes offsets as bytes all the same.
    bool byteOffsets = false;
    uint16_t size = 0;     ///< As it tells; bytes behind the contents are FFh.
    uint8_t readLimit = 0; ///< Bytes at once; 0: no limit.
    uint8_t limitCode = cc::cannotReturnBytes; ///< What more of them are.
    bool busy = false;
    uint32_t writeSeconds = 0; ///< How long it is busy after a write.
    std::vector<FruRange> writeProtected;
    Bytes contents; ///< As wrong as one likes.

    int64_t writtenAt = 0; ///< When a write is done, by the model's clock.

    bool isBusy(int64_t now) const { return busy || now < writtenAt; }
};

/// Which commands tell devices apart by the request's LUN as well.
bool isOfFru(uint8_t netFn, uint8_t command);

extern const Family fruFamily;

} // namespace Sim

#endif
