/// The FRU devices of a node: reading their data, their areas, all of them.
#ifndef VEK_IPMI_PRIVATE_IPMIIFCFRU_H
#define VEK_IPMI_PRIVATE_IPMIIFCFRU_H

#include <vek-ipmi/IpmiFru.h>

#include "ipmi/IpmiNode.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

/// Bytes that a pass asks for at once at first.
constexpr int largestFruRequest = 23;

/// One exchange with whom a pass over the devices is at, or else with whom the
/// node's commands go to.
Response sendToFru(ipmiifc_req& request, int flags = 0);

/// Reads `length` bytes from `offset` on, in as many exchanges as it takes.
/// `length` then says how many were stored, a failed read's included.
/// @param devAccessWord 1: the device is read by words.
/// @return 0; the completion code that ended it; -1 without a usable answer
///     and for arguments that make no sense.
int IpmiIfcReadFru(int node, unsigned char deviceId,
                   unsigned char devAccessWord, int offset, unsigned* length,
                   unsigned char* buffer);

/// Bytes of the info area at this offset; 0 when it cannot be told.
unsigned IpmiIfruInfoAreaLength(int node, unsigned char deviceId,
                                unsigned char devAccessWord, unsigned offset);

/// Adds the bytes to `sum`; whether it is then 0.
bool IpmiIfcFruChecksum(const unsigned char* data, unsigned char* sum,
                        unsigned count);

/// Each reads the area that the common header has at `offset` (in units of 8
/// bytes); null when it cannot be read or its checksum is wrong.
std::unique_ptr<IpmiFruChassis>
IpmiIfcFruChassis(uint8_t offset, IpmiNode& node, uint8_t deviceId)
    VEK_REQUIRES(node.fruMutex);
std::unique_ptr<IpmiFruBoard> IpmiIfcFruBoard(uint8_t offset, IpmiNode& node,
                                              uint8_t deviceId)
    VEK_REQUIRES(node.fruMutex);
std::unique_ptr<IpmiFruProduct>
IpmiIfcFruProduct(uint8_t offset, IpmiNode& node, uint8_t deviceId)
    VEK_REQUIRES(node.fruMutex);
std::unique_ptr<IpmiFruMulti> IpmiIfcFruMulti(uint8_t offset, IpmiNode& node,
                                              uint8_t deviceId)
    VEK_REQUIRES(node.fruMutex);
/// Bytes of the chain of multi-records at this offset. The caller holds the
/// node's FRU mutex: the analysis cannot know it by a number.
unsigned IpmiIfcFruMultiLength(int node, unsigned char deviceId,
                               unsigned offset) VEK_NO_THREAD_SAFETY_ANALYSIS;

/// The areas of one device that are kept.
IpmiFru::Areas IpmiIfcFruGetInv(int node, unsigned char fruDeviceId);

} // namespace Ipmi

#endif
