/// The configuration of LAN channels (IPMI v2.0, 23.1 and 23.2).
#ifndef VEK_SIM_MODEL_LAN_H
#define VEK_SIM_MODEL_LAN_H

#include <map>

#include "sim/model/command.h"

namespace Sim
{

namespace lan
{
/// Parameters (IPMI v2.0, table 23-4).
enum Parameter : uint8_t
{
    setInProgress = 0,
    authenticationSupport = 1,
    authenticationEnables = 2,
    address = 3,
    addressSource = 4,
    mac = 5,
    netmask = 6,
    headerSettings = 7,
    arpControl = 10,
    arpInterval = 11,
    gateway = 12,
    gatewayMac = 13,
    backupGateway = 14,
    backupGatewayMac = 15,
    community = 16,
    destinations = 17,
    destinationType = 18,
    destinationAddress = 19,
    vlanId = 20,
    vlanPriority = 21,
    cipherSuiteSupport = 22,
    cipherSuites = 23,
    cipherSuitePrivileges = 24,
    destinationVlan = 25,
    badPasswordThreshold = 26,
    ipv6Support = 50,
    ipv6Enables = 51,
    ipv6Status = 55,
    ipv6Static = 56,
    ipv6Dynamic = 59,
    ipv6RouterControl = 64,
    ipv6Router = 65,
    ipv6RouterMac = 66,
    ipv6RouterPrefixLength = 67,
    ipv6RouterPrefix = 68
};
} // namespace lan

struct LanConfig
{
    uint8_t channel = 1;
    Bytes aliases; ///< Other channel numbers that mean this one as well.
    /// What follows the revision in an answer, by lanKey.
    std::map<uint16_t, Bytes> parameters;
};

constexpr uint16_t lanKey(uint8_t parameter, uint8_t selector = 0)
{
    return uint16_t(parameter << 8 | selector);
}

extern const Family lanFamily;

} // namespace Sim

#endif
