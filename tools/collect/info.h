/// What the controller says about itself.
#ifndef VEK_TOOLS_COLLECT_INFO_H
#define VEK_TOOLS_COLLECT_INFO_H

#include <array>
#include <string>

#include "tools/collect/os.h"
#include "tools/device.h"

namespace Tool
{

struct SelfTest
{
    Completion completion;
    uint8_t result = 0; ///< IPMI v2.0, 20.4; 55h: no error.
    uint8_t detail = 0;
};

struct Info
{
    std::array<uint8_t, 16> deviceId{}; ///< IPMI v2.0, 20.1, code first.
    std::string manufacturer;           ///< Empty: not in the library's list.
    SelfTest selfTest;
    OsInfo os;
};

/// @throws Failure when there is no Get Device ID answer: everything else
///     would be about nobody.
Info collectInfo(Device& device);

/// 20 bits; the standard reserves the upper four.
uint32_t manufacturerNumber(const Info& info);

} // namespace Tool

#endif
