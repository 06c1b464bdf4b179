/// Who the controller says it is (IPMI v2.0, 20.1, 20.4, 20.7, 20.8, 22.14).
#ifndef VEK_SIM_MODEL_IDENTITY_H
#define VEK_SIM_MODEL_IDENTITY_H

#include "sim/model/command.h"

namespace Sim
{

struct Identity
{
    uint8_t deviceId = 0x20;
    uint8_t deviceRevision = 0; ///< Bit 7: device SDRs; 3:0 the revision.
    uint8_t firmwareMajor = 0;  ///< Bit 7: update or self-initialisation.
    uint8_t firmwareMinor = 0;  ///< BCD.
    uint8_t ipmiVersion = 0x02; ///< BCD, low nibble major.
    uint8_t deviceSupport = 0;
    uint32_t manufacturer = 0; ///< 20 bits.
    uint16_t product = 0;
    Bytes auxiliaryFirmware; ///< 4 bytes, or none: the answer ends before.
    Bytes selfTest;          ///< 2 bytes; none: the command is not there.
    Bytes acpiPowerState;    ///< Likewise.
    Bytes deviceGuid;        ///< 16 bytes as they are sent; none: likewise.
    Bytes systemGuid;        ///< Likewise.
};

extern const Family identityFamily;

} // namespace Sim

#endif
