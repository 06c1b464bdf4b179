/// A FRU device: what its locator record says (IPMI v2.0, 43.8), and what was
/// read from it.
#ifndef VEK_IPMI_IPMIFRU_H
#define VEK_IPMI_IPMIFRU_H

#include <memory>
#include <vector>

#include <vek-ipmi/IpmiEntity.h>
#include <vek-ipmi/IpmiFruOptional.h>
#include <vek-ipmi/IpmiSdrRecord.h>
#include <vek-ipmi/VekRelaxed.h>

namespace Ipmi
{

/// Get FRU Inventory Area Info answer (IPMI v2.0, 34.1) and whom it is of.
struct FruDeviceHeader
{
    uint8_t completionCode;
    uint8_t areaSize[2]; ///< Bytes, LS byte first.
    uint8_t accessType;  ///< Bit 0: by words.
    uint8_t deviceId;
};

/// Most bytes that one Read FRU Data asks for, of all nodes. Shrinks to what
/// controllers answer, down to 8; each pass over the FRU devices begins with
/// 23 again.
extern VEK::Relaxed<int> fru_max_req_size;

/// Getters read the locator record's bytes; 0 for those that it does not have,
/// and for FRU device 0 of a controller that has no locator record for it.
/// Only who makes it sets its areas; it is then shared between threads.
class IpmiFru
{
public:
    using Areas = std::vector<std::shared_ptr<IpmiFruOptional>>;

    IpmiFru(const IpmiSdrRecord& locator, Areas areas, int node)
        : locator_{locator}, areas_{std::move(areas)}, node_{node}
    {}
    virtual ~IpmiFru() = default;

    /// FRU device id.
    unsigned char getOwnerId() const;
    unsigned char getChannel() const;
    unsigned char getLun() const;
    /// Of the controller that the device is behind; 0: the node's own, or in a
    /// pass over all devices the one that an earlier record named.
    unsigned char getSlaveAddress() const;
    bool isLogical() const;
    IpmiEntity getEntity() const;
    const IpmiSdrRecord& getLocator() const { return locator_; }
    int getNode() const { return node_; }

    /// One area at most, of which IpmiIfc::getFruPart makes text: the chassis
    /// area, else the board's, else the multi-records, else the product's; and
    /// only one that has a name and a part number.
    Areas getOptionalRefArray() const { return areas_; }
    void setOptionalRefArray(Areas areas) { areas_ = std::move(areas); }

private:
    unsigned char byteAt(unsigned at) const;

    IpmiSdrRecord locator_;
    Areas areas_;
    int node_;
};

} // namespace Ipmi

#endif
