/// What the controller tells of itself, and the host's operating system as it
/// knows it.
#ifndef VEK_IPMI_PRIVATE_IPMIIDENTITY_H
#define VEK_IPMI_PRIVATE_IPMIIDENTITY_H

#include <cstdint>
#include <map>
#include <string>

#include <vek-ipmi/VekMutex.h>

#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

/// Network function App (IPMI v2.0, table 5-1).
constexpr uint8_t app = 0x06;

/// System information parameters (IPMI v2.0, table 22-16).
constexpr uint8_t osNameParameter = 4;
constexpr uint8_t osVersionParameter = 5;

/// Response handlers of the start-up commands: 0, or -1 for an answer that is
/// of no use. They keep what the getters of IpmiIfc answer.
int IpmiIfcRhGetDeviceId(ipmiifc_resp* resp);
int IpmiIfcRhGetSelfTest(ipmiifc_resp* resp);
/// These read the further blocks of a long text themselves.
int IpmiIfcRhGetOS_Name(ipmiifc_resp* resp);
int IpmiIfcRhGetOS_Version(ipmiifc_resp* resp);

/// Writes one system information text in blocks. Returns 1, or 0 when a block
/// failed; the last failing block's completion code is then in ccOut.
int set_bmc_prop(const char* value, size_t length, uint8_t parameter,
                 uint8_t& ccOut);

/// IANA enterprise number.
enum IPMI_OEM : uint32_t
{
};
using ManufacturerNames = std::map<IPMI_OEM, const char*>;

/// Fills the names in (IpmiManufacturers.cpp).
void fillManufacturerNames(ManufacturerNames& names);

/// Guards the manufacturer names while they are filled in, and pollAll's
/// once-only scaling of the steps.
extern VEK::Mutex manNameInitMut;

} // namespace Ipmi

#endif
