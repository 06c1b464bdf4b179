// A health table as an administrator may have left it: through the library,
// every kind of sensor, and the checker, which must read each line alike.
#include <sstream>

#include "fuzz/target.h"
#include "ipmi/IpmiMapper.h"
#include "tests/support/libc_seam.h"
#include "tools/collect/health_table.h"

using namespace Ipmi;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text{reinterpret_cast<const char*>(data), size};
    healthList.clear();
    sensorHealthMap.clear();
    std::istringstream forLibrary{text};
    readHealthTable(forLibrary);
    for (const unsigned sensorClass : {0u, 1u, 3u, 7u, 11u, 0x6fu, 0x70u})
        for (const unsigned type : {0u, 1u, 8u, 12u, 0x2cu, 0xffu})
            for (const unsigned state : {0u, 1u, 2u, 0x4001u, 0x7fffu, 0xffffu})
                getSensorHealthState(uint8_t(sensorClass), uint8_t(type), 1,
                                     static_cast<uint16_t>(state));
    std::istringstream forChecker{text};
    Tool::checkHealthTable(forChecker);
    Seam::takeLog();
    return 0;
}
