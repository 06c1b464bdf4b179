#include "ipmi/IpmiIdentity.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "ipmi/IpmiNode.h"

namespace Ipmi
{

VEK::Mutex manNameInitMut;

namespace
{

ManufacturerNames manufacturerNames;
std::atomic<bool> manNameInit{false};

std::string hexadecimal(unsigned value)
{
    char text[16];
    snprintf(text, sizeof text, "%x", value);
    return text;
}

// A text about the device id, or "n/a" while none is held.
template <typename Describe>
std::string describeDevice(Describe describe)
{
    ipmiifc_device_id id;
    if (IpmiIfc::getManagementControllerInfo(0, id) != 0)
        return "n/a";
    return describe(id);
}

} // namespace

int IpmiIfcRhGetDeviceId(ipmiifc_resp* resp)
{
    if (resp->cc != 0)
        return -1;
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.infoMutex};
    VEK::MutexLock bytes{node.identityMutex};
    memcpy(&node.deviceId, resp->data, sizeof node.deviceId);
    node.deviceIdAnswered = true;
    return 0;
}

int IpmiIfcRhGetSelfTest(ipmiifc_resp* resp)
{
    if (resp->cc != 0)
        return -1;
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.infoMutex};
    VEK::MutexLock bytes{node.identityMutex};
    std::copy_n(resp->data, sizeof node.selfTest, node.selfTest);
    return 0;
}

int IpmiIfc::getManagementControllerInfo(int, ipmiifc_device_id& out)
{
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.identityMutex};
    if (!node.deviceIdAnswered || node.deviceId.completionCode != 0)
        return 1;
    out = node.deviceId;
    return 0;
}

int IpmiIfc::getManagementControllerInfo(ipmiifc_device_id& out)
{
    return getManagementControllerInfo(0, out);
}

int IpmiIfc::getManufacturerId(int node, uint8_t* id, uint8_t& len)
{
    ipmiifc_device_id device;
    if (getManagementControllerInfo(node, device) != 0)
        return 1;
    std::copy_n(device.manufacturerId, 3, id);
    len = 1; // Not 3: callers rely on it.
    return 0;
}

int IpmiIfc::getManufacturerId(uint8_t* id, uint8_t& len)
{
    return getManufacturerId(0, id, len);
}

const char* IpmiIfc::getManufacturerName(unsigned id)
{
    if (!manNameInit) {
        VEK::MutexLock lock{manNameInitMut};
        if (!manNameInit) {
            fillManufacturerNames(manufacturerNames);
            manNameInit = true;
        }
    }
    const auto found = manufacturerNames.find(IPMI_OEM(id));
    return found == manufacturerNames.end() ? "Unknown" : found->second;
}

int IpmiIfc::getSelfTestResults(int, uint8_t& result, uint8_t& detail)
{
    IpmiNode& node = g_IpmiNode[0];
    VEK::MutexLock lock{node.identityMutex};
    // No result is coded 0 (IPMI v2.0, 20.4): nothing was read yet.
    if (node.selfTest[1] == 0)
        return 1;
    result = node.selfTest[1];
    detail = node.selfTest[2];
    return 0;
}

int IpmiIfc::getSelfTestResults(uint8_t& result, uint8_t& detail)
{
    return getSelfTestResults(0, result, detail);
}

std::string IpmiIfc::GetBmcManufacturer()
{
    return describeDevice([](const ipmiifc_device_id& id) {
        const uint8_t* bytes = id.manufacturerId;
        return getManufacturerName(bytes[0] | unsigned(bytes[1]) << 8 |
                                   unsigned(bytes[2]) << 16);
    });
}

std::string IpmiIfc::GetBmcIpmiVersion()
{
    return describeDevice([](const ipmiifc_device_id& id) {
        return std::to_string(id.ipmiVersion & 0x0f) + "." +
               std::to_string(id.ipmiVersion >> 4);
    });
}

std::string IpmiIfc::GetBmcFWVersion()
{
    // Six bits of the major revision where the standard has seven, and a
    // minor revision without its leading 0: callers compare these texts.
    return describeDevice([](const ipmiifc_device_id& id) {
        return std::to_string(id.firmwareRevision1 & 0x3f) + "." +
               hexadecimal(id.firmwareRevision2);
    });
}

int IpmiIfc::identifyChassis(int node, uint8_t interval, uint8_t force)
{
    constexpr uint8_t chassis = 0x00;
    constexpr uint8_t chassisIdentify = 0x04;
    const bool forced = force & 1;
    uint8_t request[2] = {forced ? uint8_t{0} : interval, uint8_t(forced)};
    uint8_t answer[1];
    uint16_t size = sizeof answer;
    const int code = sendCmd(node, chassisIdentify, chassis, sizeof request,
                             request, &size, answer);
    const bool unsupported = code == 0xc1 || code == 0xcd;
    return unsupported ? 1 : code;
}

int IpmiIfc::identifyChassis(uint8_t interval, uint8_t force)
{
    return identifyChassis(0, interval, force);
}

int IpmiIfc::convertToGeneratorId(int address, int channel, int lun)
{
    return (address & 0xff) | ((lun & 3) << 8) |
           static_cast<int>((static_cast<unsigned>(channel) << 12) & 0xffff);
}

} // namespace Ipmi
