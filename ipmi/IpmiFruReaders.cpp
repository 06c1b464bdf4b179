// The areas of a FRU device, read whole.
#include <syslog.h>
#include <vector>

#include "ipmi/IpmiFruRecord.h"
#include "ipmi/IpmiIfcFru.h"

namespace Ipmi
{

namespace
{

/// Areas begin at, and are measured in, so many bytes.
constexpr unsigned areaUnit = 8;

/// Offsets are of 16 bits.
constexpr unsigned endOfOffsets = 0x10000;

/// The words of an area's log lines, as they are known.
struct AreaWords
{
    const char* function;
    const char* area;
    int invalidOffset;      ///< Priority of that line.
    const char* beforeSize; ///< One area has two blanks there.
};
constexpr AreaWords chassisWords{"IpmiIfcFruChassis", "Chassis", LOG_ERR, ""};
constexpr AreaWords boardWords{"IpmiIfcFruBoard", "Board", LOG_INFO, " "};
constexpr AreaWords productWords{"IpmiIfcFruProduct", "product", LOG_INFO, ""};

unsigned char accessOf(const IpmiNode& node) VEK_REQUIRES(node.fruMutex)
{
    return node.fruDeviceHeader.accessType & 1;
}

// Whether the area's bytes, of which there are as many as are wanted, are as
// its checksum says.
bool readBytes(const AreaWords& words, IpmiNode& node, uint8_t deviceId,
               unsigned at, std::vector<uint8_t>& bytes)
    VEK_REQUIRES(node.fruMutex)
{
    auto length = unsigned(bytes.size());
    const int result = IpmiIfcReadFru(numberOf(node), deviceId, accessOf(node),
                                      int(at), &length, bytes.data());
    if (result != 0) {
        syslog(LOG_ERR,
               "%s: Reading FRU %s Info details for 0x%x FAILED cc=0x%x",
               words.function, words.area, deviceId, unsigned(result));
        return false;
    }
    uint8_t sum = 0;
    if (IpmiIfcFruChecksum(bytes.data(), &sum, unsigned(bytes.size())))
        return true;
    syslog(LOG_ERR, "%s: checksum of record failed. Checksum = %d",
           words.function, sum);
    return false;
}

template <typename Area>
std::unique_ptr<Area> readArea(const AreaWords& words, uint8_t offset,
                               IpmiNode& node, uint8_t deviceId)
    VEK_REQUIRES(node.fruMutex)
{
    const unsigned at = offset * areaUnit;
    if (at < areaUnit) {
        syslog(words.invalidOffset, "%s: invalid offset.", words.function);
        return nullptr;
    }
    const unsigned size =
        IpmiIfruInfoAreaLength(numberOf(node), deviceId, accessOf(node), at);
    if (size == 0) {
        syslog(LOG_ERR, "%s: Reading FRU %s Info Area length for 0x%x FAILED",
               words.function, words.area, deviceId);
        return nullptr;
    }
    syslog(LOG_INFO, "%s: Get FRU %s Info Area length %s0x%x at offset 0x%x",
           words.function, words.area, words.beforeSize, size, at);
    std::vector<uint8_t> bytes(size);
    if (!readBytes(words, node, deviceId, at, bytes))
        return nullptr;
    return std::make_unique<Area>(size, bytes.data());
}

// Header by header.
bool isSound(const std::vector<uint8_t>& chain)
{
    const RecordView view{chain.data(), chain.size()};
    size_t at = 0;
    for (int record = 0; view.has(at, fruRecordHeaderSize); ++record) {
        const FruRecordHeader header{view.part(at, fruRecordHeaderSize)};
        uint8_t sum = 0;
        if (!IpmiIfcFruChecksum(chain.data() + at, &sum, fruRecordHeaderSize)) {
            syslog(LOG_ERR,
                   "IpmiIfcFruMulti: checksum of header failed. Checksum = "
                   "0x%x",
                   sum);
            return false;
        }
        if (header.dataSize() == 0) {
            syslog(LOG_ERR,
                   "IpmiIfcFruMulti: record len is equal to zero, not valid.");
            return false;
        }
        syslog(LOG_DEBUG, "IpmiIfcFruMulti: record %d data checksum=0x%x ",
               record, header.dataChecksum());
        if (header.isLast())
            return true;
        at += fruRecordHeaderSize + header.dataSize();
    }
    return false;
}

} // namespace

std::unique_ptr<IpmiFruChassis>
IpmiIfcFruChassis(uint8_t offset, IpmiNode& node, uint8_t deviceId)
{
    return readArea<IpmiFruChassis>(chassisWords, offset, node, deviceId);
}

std::unique_ptr<IpmiFruBoard> IpmiIfcFruBoard(uint8_t offset, IpmiNode& node,
                                              uint8_t deviceId)
{
    return readArea<IpmiFruBoard>(boardWords, offset, node, deviceId);
}

std::unique_ptr<IpmiFruProduct>
IpmiIfcFruProduct(uint8_t offset, IpmiNode& node, uint8_t deviceId)
{
    return readArea<IpmiFruProduct>(productWords, offset, node, deviceId);
}

unsigned IpmiIfcFruMultiLength(int number, unsigned char deviceId,
                               unsigned offset)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return 0;
    unsigned total = 0;
    while (offset + total < endOfOffsets) {
        uint8_t bytes[fruRecordHeaderSize];
        unsigned length = sizeof bytes;
        const int result = IpmiIfcReadFru(number, deviceId, accessOf(*node),
                                          int(offset + total), &length, bytes);
        if (result != 0) {
            syslog(LOG_ERR,
                   "IpmiIfcFruMultiLength: Reading FRU Multi Record Header for "
                   "0x%x at offset 0x%x FAILED cc=0x%x",
                   deviceId, offset + total, unsigned(result));
            return total;
        }
        const FruRecordHeader header{RecordView{bytes, sizeof bytes}};
        total += fruRecordHeaderSize + header.dataSize();
        if (header.dataSize() == 0) {
            syslog(LOG_INFO,
                   "IpmiIfcFruMultiLength: record len is equal to zero, not "
                   "valid.");
            return total;
        }
        if (header.isLast())
            return total;
    }
    return total;
}

std::unique_ptr<IpmiFruMulti> IpmiIfcFruMulti(uint8_t offset, IpmiNode& node,
                                              uint8_t deviceId)
{
    const unsigned at = offset * areaUnit;
    if (at < areaUnit) {
        syslog(LOG_ERR, "IpmiIfcFruMulti: invalid offset.");
        return nullptr;
    }
    unsigned length = IpmiIfcFruMultiLength(numberOf(node), deviceId, at);
    if (length == 0) {
        syslog(LOG_ERR, "IpmiIfcFruMulti: FRU Multirecord len is equal to "
                        "zero, not valid.");
        return nullptr;
    }
    syslog(LOG_INFO, "IpmiIfcFruMulti: FRU device 0x%x Multirecord len = %d",
           deviceId, int(length));
    if (at + length > endOfOffsets) {
        syslog(LOG_ERR, "IpmiIfcFruMulti: the chain has no end.");
        return nullptr;
    }
    std::vector<uint8_t> chain(length);
    const int result = IpmiIfcReadFru(numberOf(node), deviceId, accessOf(node),
                                      int(at), &length, chain.data());
    if (result != 0) {
        syslog(LOG_ERR,
               "IpmiIfcFruMulti: Reading FRU Multi Record for 0x%x FAILED "
               "cc=0x%x",
               deviceId, unsigned(result));
        return nullptr;
    }
    return isSound(chain) ? std::make_unique<IpmiFruMulti>(length, chain.data())
                          : nullptr;
}

} // namespace Ipmi
