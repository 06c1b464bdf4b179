/// The one source of the texts of event offsets.
#ifndef VEK_IPMI_PRIVATE_IPMIEVENTTEXTS_H
#define VEK_IPMI_PRIVATE_IPMIEVENTTEXTS_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace Ipmi
{

struct EventText
{
    static constexpr uint8_t generic = 1;        ///< IPMI v2.0, table 42-2.
    static constexpr uint8_t sensorSpecific = 2; ///< Table 42-3.
    static constexpr uint8_t anyData3 = 0xff;

    uint8_t eventClass;
    uint8_t type;   ///< Event/reading type, or sensor type.
    uint8_t offset; ///< Event data 1.
    uint8_t data3;  ///< Event data 3.
    const char* name;
    const char* description; ///< May be empty; at most 63 characters.

    constexpr uint32_t code() const
    {
        return uint32_t{eventClass} << 24 | uint32_t{type} << 16 |
               uint32_t{offset} << 8 | data3;
    }
};

constexpr size_t eventTextCount = 352;
constexpr size_t laterStateCount = 16;

/// In ascending order of their codes, both.
extern const std::array<EventText, eventTextCount> ipmi_sel_data;
extern const std::array<EventText, laterStateCount> laterStates;

/// A row of the tables that captions are made of.
struct EventTypeRow
{
    static constexpr uint8_t thresholdClass = 2;

    uint8_t code; ///< Event/reading type, or sensor type.
    uint8_t offset;
    uint8_t data3; ///< EventText::anyData3 for any.
    uint8_t rowClass;
    const char* name;   ///< Null in the last row, which only ends the table.
    const char* detail; ///< May be null.
};

/// The texts of ipmi_sel_data once more; the second has a row for sensor type
/// 00h ahead of them, and one for C0h behind.
extern const std::array<EventTypeRow, 62> generic_event_types;
extern const std::array<EventTypeRow, 294> sensor_specific_types;

/// The perfect hash of ipmi_sel_data's codes (IpmiPerfectHash.h).
extern const std::array<int32_t, eventTextCount> G_array;
extern const std::array<int32_t, eventTextCount> V_array;

} // namespace Ipmi

#endif
