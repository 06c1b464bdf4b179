#include "tools/collect/fru.h"

#include <algorithm>
#include <atomic>

#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/record.h"

namespace Tool
{

namespace
{

constexpr uint8_t ownAddress = 0x20;

// Of a FRU device locator record (IPMI v2.0, 43.8), from its header on.
enum LocatorAt : size_t
{
    accessAddress = 5,
    device = 6,
    accessLun = 7,     ///< Bit 7: logical; LUN in bits 4..3.
    channelNumber = 8, ///< In bits 7..4.
    deviceType = 10,
    deviceModifier = 11,
    entity = 12,
    instance = 13
};

uint8_t byteAt(const Bytes& record, size_t at)
{
    return at < record.size() ? record[at] : uint8_t{0};
}

// Table 43-12: an EEPROM, or a device behind a controller, with SPD data.
bool holdsSpd(const Bytes& record)
{
    constexpr uint8_t firstType = 0x08, lastType = 0x10, memory = 0x01;
    const uint8_t type = byteAt(record, deviceType);
    return type >= firstType && type <= lastType &&
           byteAt(record, deviceModifier) == memory;
}

FruLocator locatorOf(Bytes record)
{
    FruLocator locator;
    locator.name = nameOf(record);
    locator.isRecord = true;
    locator.deviceId = byteAt(record, device);
    const uint8_t address = byteAt(record, accessAddress);
    locator.address = address ? address : ownAddress;
    locator.channel = byteAt(record, channelNumber) >> 4;
    locator.lun = byteAt(record, accessLun) >> 3 & 3;
    locator.isLogical = byteAt(record, accessLun) & 0x80;
    locator.isMemory = holdsSpd(record);
    const Ipmi::IpmiEntity part{byteAt(record, entity),
                                byteAt(record, instance), 0, 0};
    locator.entityId = part.getId();
    locator.entityInstance = part.getInstance();
    locator.entityName = part.getName();
    record.resize(
        std::min<size_t>(record.size(), Ipmi::IpmiSdrRecord::capacity));
    locator.record = std::move(record);
    return locator;
}

std::shared_ptr<Ipmi::IpmiFru> fruOf(const FruLocator& locator)
{
    return std::make_shared<Ipmi::IpmiFru>(
        Ipmi::IpmiSdrRecord{static_cast<uint32_t>(locator.record.size()),
                            locator.record.data()},
        Ipmi::IpmiFru::Areas{}, 0);
}

// Controllers differ in what an offset counts in of a device that is accessed
// by words; the library takes it for bytes.
bool isMisread(const Ipmi::IpmiFruContents& contents)
{
    return contents.byWords &&
           (!contents.problems.empty() ||
            std::any_of(
                contents.areas.begin(), contents.areas.end(),
                [](const auto& area) { return !area.problems.empty(); }));
}

} // namespace

Completion completionOf(int result)
{
    return {static_cast<uint8_t>(result), result >= 0};
}

bool FruLocator::isOwn() const
{
    return address == ownAddress && channel == 0 && lun == 0 && isLogical;
}

bool FruDevice::isAbsent() const
{
    constexpr uint8_t notPresent = 0xCB;
    return completion.answered && completion.code == notPresent;
}

bool FruDevice::isFailed() const
{
    if (!locator.isLogical || isAbsent() || isSpd())
        return false;
    return !completion.ok() || readFailure() || isMisread(contents);
}

bool FruDevice::isSpd() const
{
    constexpr unsigned fruVersion = 0x01, erased = 0xFF;
    return locator.isMemory && completion.ok() && contents.headerResult == 0 &&
           contents.version != erased &&
           (contents.version != fruVersion || !contents.problems.empty());
}

std::optional<Completion> FruDevice::readFailure() const
{
    // What is out of range depends on what an offset counts in.
    constexpr int outOfRange = 0xC9;
    const auto isReadFailure = [this](int result) {
        return result != 0 && result != Ipmi::fruRunsPastEnd &&
               (result != outOfRange || !contents.byWords);
    };
    if (isReadFailure(contents.headerResult))
        return completionOf(contents.headerResult);
    for (const Ipmi::IpmiFruArea& area : contents.areas)
        if (isReadFailure(area.result))
            return completionOf(area.result);
    return std::nullopt;
}

FruLocator fruLocatorOf(uint8_t deviceId)
{
    constexpr uint8_t logical = 0x80;
    FruLocator locator;
    locator.deviceId = deviceId;
    locator.record = {0, 0, 0x51, 0x11, 11, 0, deviceId, logical};
    locator.record.resize(16);
    return locator;
}

std::vector<FruLocator> fruLocators()
{
    constexpr uint8_t fruLocatorType = 0x11;
    std::vector<FruLocator> locators;
    for (const Ipmi::IpmiSdrEntry& entry : Ipmi::IpmiIfc::getSdrRecords())
        if (entry.recordType == fruLocatorType)
            locators.push_back(locatorOf(entry.bytes));
    // What was read last comes first.
    std::reverse(locators.begin(), locators.end());
    const auto isDeviceZero = [](const FruLocator& locator) {
        return locator.isOwn() && locator.deviceId == 0;
    };
    if (std::none_of(locators.begin(), locators.end(), isDeviceZero))
        locators.insert(locators.begin(), fruLocatorOf(0));
    return locators;
}

// The library's reading of single devices knows nothing of the other ones: no
// device is read twice, nor before it is shown.
std::vector<FruDevice> collectFrus(Device&,
                                   const std::vector<FruLocator>& locators)
{
    std::vector<FruDevice> devices;
    std::atomic<size_t> number{0};
    const Patience patience{[&] {
        return "reading FRU devices: " + std::to_string(number) + " of " +
               std::to_string(locators.size());
    }};
    for (const FruLocator& locator : locators) {
        ++number;
        FruDevice found;
        found.locator = locator;
        if (locator.isLogical) {
            found.contents = Ipmi::IpmiIfc::getFruAreas(fruOf(locator));
            found.completion = completionOf(found.contents.result);
            if (found.isSpd()) // What looked like areas are none.
                found.contents.areas.clear();
        }
        devices.push_back(std::move(found));
    }
    return devices;
}

FruImage readFru(const FruLocator& locator)
{
    const Patience patience{[] {
        return std::string{"reading the FRU device ..."};
    }};
    FruImage image;
    const int result = Ipmi::IpmiIfc::readFruImage(fruOf(locator), image.bytes);
    image.byWords = result == Ipmi::IpmiIfc::FRU_BY_WORDS;
    image.completion = completionOf(result);
    return image;
}

} // namespace Tool
