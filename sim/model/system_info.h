/// System information parameters (IPMI v2.0, 22.14a and 22.14b).
#ifndef VEK_SIM_MODEL_SYSTEM_INFO_H
#define VEK_SIM_MODEL_SYSTEM_INFO_H

#include <map>
#include <string>

#include "sim/model/command.h"

namespace Sim
{

struct SystemInfo
{
    struct Text
    {
        uint8_t encoding = 0; ///< 0: ASCII and Latin-1, 1: UTF-8, 2: Unicode.
        uint8_t length = 0;   ///< As the writer of block 0 stated it.
        Bytes characters;     ///< Of all blocks.
    };

    /// Characters in the blocks before `block`.
    static constexpr size_t offset(size_t block)
    {
        return block == 0 ? 0 : 14 + 16 * (block - 1);
    }

    std::map<uint8_t, Text> texts; ///< By parameter; a missing one is 80h.
    uint8_t readOnly = 0;          ///< Bit N: parameter N answers 82h to a set.
    uint8_t blocks = 17;           ///< That a text can have; 17 hold 255.
    uint8_t setInProgress = 0;     ///< Parameter 0.
};

SystemInfo::Text makeText(const std::string& utf8);
std::string toString(const SystemInfo::Text& text);

extern const Family systemInfoFamily;

} // namespace Sim

#endif
