/// What travels between a front end and the simulated controller.
#ifndef VEK_SIM_MODEL_MESSAGE_H
#define VEK_SIM_MODEL_MESSAGE_H

#include <cstdint>
#include <vector>

namespace Sim
{

using Bytes = std::vector<uint8_t>;

inline void append(Bytes& bytes, const Bytes& more)
{
    for (uint8_t byte : more)
        bytes.push_back(byte);
}

/// The channel that is the system interface itself: the BMC (IPMI v2.0, 6.3).
constexpr uint8_t systemInterface = 0x0F;

/// One request, as the driver or the link delivers it.
struct Request
{
    uint8_t netFn = 0; ///< Of the request: even.
    uint8_t command = 0;
    Bytes data;
    uint8_t lun = 0;
    uint8_t channel = systemInterface; ///< Another one: the request is bridged.
    uint8_t slaveAddress = 0x20;       ///< Bridged requests: whom they are for.
};

/// Completion codes that the models use (IPMI v2.0, table 5-2).
namespace cc
{
constexpr uint8_t ok = 0x00, nodeBusy = 0xC0, invalidCommand = 0xC1,
                  invalidForLun = 0xC2, timeout = 0xC3, outOfSpace = 0xC4,
                  reservationCanceled = 0xC5, dataTruncated = 0xC6,
                  dataLengthInvalid = 0xC7, fieldTooLong = 0xC8,
                  parameterOutOfRange = 0xC9, cannotReturnBytes = 0xCA,
                  notPresent = 0xCB, invalidDataField = 0xCC,
                  illegalForSensor = 0xCD, unspecified = 0xFF;
} // namespace cc

} // namespace Sim

#endif
