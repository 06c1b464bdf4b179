#include <vek-ipmi/IpmiEvent.h>

#include <algorithm>
#include <string_view>

#include "ipmi/IpmiEventTexts.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t firstDiscrete = 0x02;
constexpr uint8_t lastGeneric = 0x0c;
constexpr uint8_t sensorSpecificType = 0x6f;

template <typename Rows>
const EventText* findRow(const Rows& rows, uint8_t eventClass, uint8_t type,
                         unsigned offset)
{
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto& r) {
        return r.eventClass == eventClass && r.type == type &&
               r.offset == offset;
    });
    return row == rows.end() ? nullptr : &*row;
}

// A state bit has no event data 3: "Config Error: Vendor Mismatch" is then a
// "Config Error", and without a colon the name is all that can be said.
std::string withoutDetail(const EventText& row)
{
    const std::string_view text = row.description;
    if (row.data3 == EventText::anyData3)
        return row.description;
    const size_t colon = text.find(':');
    return colon == text.npos ? row.name : std::string{text.substr(0, colon)};
}

} // namespace

std::string DescFromState(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset)
{
    const bool specific = eventReadingType == sensorSpecificType;
    if (!specific &&
        (eventReadingType < firstDiscrete || eventReadingType > lastGeneric))
        return "";
    const uint8_t eventClass =
        specific ? EventText::sensorSpecific : EventText::generic;
    const uint8_t type = specific ? sensorType : eventReadingType;
    const EventText* row = findRow(ipmi_sel_data, eventClass, type, offset);
    if (!row)
        row = findRow(laterStates, eventClass, type, offset);
    const std::string text = row ? withoutDetail(*row) : "";
    return text == "Reserved" ? "" : text;
}

} // namespace Ipmi
