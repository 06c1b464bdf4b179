/// Multi-records of a FRU device (FRU Information Storage Definition v1.0 r1.3,
/// 16. to 18.).
#ifndef VEK_TOOLS_COLLECT_FRU_RECORD_H
#define VEK_TOOLS_COLLECT_FRU_RECORD_H

#include <optional>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiFruImage.h>

#include "tools/print/text.h"

namespace Tool
{

/// One value of a record: a number, a flag, or words.
struct FruValue
{
    const char *key, *label;
    const char* unit = "";
    std::optional<long> raw = {}; ///< A number as it stands in the record;
    long perUnit = 1;             ///< So many of raw are one of the unit.
    bool isGiven = true; ///< False: the raw one stands for "unspecified".
    std::optional<bool> flag = {};
    std::string words = {};
};

struct FruRecord
{
    unsigned offset = 0; ///< Of its header, from the device's start.
    uint8_t type = 0, version = 0;
    bool isSound = true; ///< The checksum of its data is right.
    Bytes data;
    std::vector<FruValue> values; ///< Empty for types that are not known.

    const char* typeName() const;
    /// Nothing is in its bytes that is not in its values.
    bool isAllInWords() const;
};

/// All whole records of a multi-record area, in their order.
std::vector<FruRecord> fruRecordsOf(const Ipmi::IpmiFruArea& area);

} // namespace Tool

#endif
