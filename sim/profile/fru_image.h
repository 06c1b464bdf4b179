/// The bytes of a FRU device and what they say (Platform Management FRU
/// Information Storage Definition v1.0, 8 to 17).
#ifndef VEK_SIM_PROFILE_FRU_IMAGE_H
#define VEK_SIM_PROFILE_FRU_IMAGE_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "sim/profile/id_string.h"

namespace Sim
{

struct FruField
{
    /// As IdEncoding, but that 0 is binary.
    uint8_t encoding = uint8_t(IdEncoding::EightBit);
    Bytes data;

    bool isEmpty() const
    {
        return encoding == uint8_t(IdEncoding::EightBit) && data.empty();
    }
};

struct FruArea
{
    uint8_t code = 0;  ///< A chassis's type, else the language.
    uint32_t date = 0; ///< Of a board: minutes since 1996; 0: unspecified.
    std::vector<FruField> fields; ///< As many as such an area has.
    std::vector<FruField> custom;
};

struct FruRecord
{
    uint8_t type = 0;
    Bytes data;
};

struct FruImage
{
    enum Area : uint8_t
    {
        chassis,
        board,
        product,
        areaCount
    };
    /// What is wrong in the bytes on purpose.
    enum Corrupt : uint16_t
    {
        headerChecksum = 0x0001,
        chassisChecksum = 0x0002, ///< Shifted by the area.
        chassisLength = 0x0010,   ///< FFh; shifted by the area.
        recordChecksum = 0x0080,  ///< The last multi-record's, as below.
        recordHeader = 0x0100,
        recordLength = 0x0200, ///< FFh.
        noLastRecord = 0x0400
    };
    static constexpr size_t fieldCounts[areaCount] = {2, 5, 7};

    Bytes internal;
    std::array<std::optional<FruArea>, areaCount> areas;
    std::vector<FruRecord> records;
    uint16_t corrupt = 0;
};

/// No value for areas that are too long, or begin too far behind.
std::optional<Bytes> buildFru(const FruImage& image);

/// No value where buildFru would not make the same bytes of it.
std::optional<FruImage> parseFru(const Bytes& bytes);

} // namespace Sim

#endif
