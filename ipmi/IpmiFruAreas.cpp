// The fields of chassis, board and product info areas.
#include <ctime>
#include <iterator>
#include <syslog.h>

#include <vek-ipmi/IpmiFruOptional.h>

#include "ipmi/IpmiFruRecord.h"

namespace Ipmi
{

namespace
{

// Where the first type/length byte is.
constexpr unsigned chassisFields = 3;
constexpr unsigned boardFields = 6;
constexpr unsigned productFields = 3;

// System enclosure types of SMBIOS, from 00h on.
constexpr const char* chassis_type_desc[] = {
    "Unspecified",
    "Other",
    "Unknown",
    "Desktop",
    "Low Profile Desktop",
    "Pizza Box",
    "Mini Tower",
    "Tower",
    "Portable",
    "LapTop",
    "Notebook",
    "Hand Held",
    "Docking Station",
    "All in One",
    "Sub Notebook",
    "Space-saving",
    "Lunch Box",
    "Main Server Chassis",
    "Expansion Chassis",
    "SubChassis",
    "Bus Expansion Chassis",
    "Peripheral Chassis",
    "RAID Chassis",
    "Rack Mount Chassis",
    "Sealed-case PC",
    "multi-system",
    "Compact PCI",
    "Advanced TCA",
    "Blade",
    "Blade Enclosure",
    "Tablet",
    "Convertible",
    "Detachable",
    "IoT Gateway",
    "Embedded PC",
    "Mini PC",
    "Stick PC",
};
static_assert(std::size(chassis_type_desc) == 0x25);

std::string orNotAvailable(std::string text)
{
    return text.empty() ? "n/a" : text;
}

} // namespace

void IpmiFruChassis::dump() const
{
    print("Chassis Info Area");
}

// Callers compare the two spellings of what is unknown.
std::string IpmiFruChassis::getType() const
{
    constexpr size_t typeAt = 2;
    const RecordView area = viewOf(*this);
    const size_t type = area.u8(typeAt);
    if (type > std::size(chassis_type_desc))
        return "Unknown";
    if (!isKnown()) {
        if ((area.u8(0) & 0x0f) == 0)
            return "";
        syslog(LOG_ERR,
               "%s: return unknown, fru format not handled (area_ver = 0x%x",
               __func__, area.u8(0));
        return "unknown";
    }
    if (type == std::size(chassis_type_desc))
        return "unknown";
    std::string text = chassis_type_desc[type];
    return toAsciiAndTrim(text);
}

std::string IpmiFruChassis::getPartNumber() const
{
    return field(chassisFields, 0);
}

std::string IpmiFruChassis::getSerialNumber() const
{
    const uint8_t partNumber = viewOf(*this).u8(chassisFields);
    if (!isKnown() || partNumber == fruEndMark)
        return "n/a";
    std::string text = getFruAreaString(chassisFields + (partNumber & 0x3f));
    return orNotAvailable(toAsciiAndTrim(text));
}

std::string IpmiFruChassis::getManufacturer() const
{
    return "n/a";
}

void IpmiFruBoard::dump() const
{
    print("Board Info Area");
}

std::string IpmiFruBoard::getManufacturer() const
{
    return orNotAvailable(field(boardFields, 0));
}

std::string IpmiFruBoard::getName() const
{
    return field(boardFields, 1);
}

std::string IpmiFruBoard::getSerialNumber() const
{
    return orNotAvailable(field(boardFields, 2));
}

std::string IpmiFruBoard::getPartNumber() const
{
    return field(boardFields, 3);
}

std::string IpmiFruBoard::getMfgDateTime8601() const
{
    constexpr size_t dateAt = 3, dateSize = 3;
    constexpr int64_t start = 820454400; // 1996-01-01
    const RecordView area = viewOf(*this);
    if (!isKnown() || !area.has(dateAt, dateSize))
        return "N/A";
    const int64_t minutes = area.u16(dateAt) | int64_t{area.u8(dateAt + 2)}
                                                   << 16;
    const auto seconds = static_cast<time_t>(start + minutes * 60);
    tm fields;
    char text[24];
    if (!gmtime_r(&seconds, &fields) ||
        strftime(text, sizeof text, "%FT%T", &fields) == 0)
        return "";
    return text;
}

void IpmiFruBoard::setMultiRecord(std::shared_ptr<IpmiFruMulti> multi)
{
    hasMulti_ = multi != nullptr;
    multi_ = std::move(multi);
}

void IpmiFruProduct::dump() const
{
    print("Product Info Area");
}

std::string IpmiFruProduct::getManufacturer() const
{
    return orNotAvailable(field(productFields, 0));
}

std::string IpmiFruProduct::getName() const
{
    return field(productFields, 1);
}

std::string IpmiFruProduct::getPartNumber() const
{
    return field(productFields, 2);
}

std::string IpmiFruProduct::getVersion() const
{
    return field(productFields, 3);
}

std::string IpmiFruProduct::getSerialNumber() const
{
    return orNotAvailable(field(productFields, 4));
}

std::string IpmiFruProduct::getAssetTag() const
{
    return field(productFields, 5);
}

} // namespace Ipmi
