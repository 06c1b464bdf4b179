#include "tools/collect/info.h"

#include <cstring>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

std::array<uint8_t, 16> readDeviceId(Device& device)
{
    const Completion completion =
        device.ask([] { return Ipmi::IpmiIfcReadDeviceId(0); });
    if (!completion.ok())
        throw failureOf("Get Device ID failed", commands::getDeviceId,
                        completion);
    Ipmi::ipmiifc_device_id id{};
    static_assert(sizeof id == 16);
    if (Ipmi::IpmiIfc::getManagementControllerInfo(id))
        throw Failure{Status::failed, "Get Device ID's answer is unusable", ""};
    std::array<uint8_t, 16> bytes;
    memcpy(bytes.data(), &id, bytes.size());
    return bytes;
}

SelfTest readSelfTest(Device& device)
{
    SelfTest test;
    test.completion = device.ask([] { return Ipmi::IpmiIfcReadSelfTest(0); });
    if (test.completion.ok())
        Ipmi::IpmiIfc::getSelfTestResults(test.result, test.detail);
    return test;
}

std::string nameOfManufacturer(uint32_t number)
{
    const std::string name = Ipmi::IpmiIfc::getManufacturerName(number);
    return name == "Unknown" ? "" : name;
}

} // namespace

uint32_t manufacturerNumber(const Info& info)
{
    const auto& id = info.deviceId;
    return id[7] | id[8] << 8 | (id[9] & 0x0Fu) << 16;
}

Info collectInfo(Device& device)
{
    Info info;
    info.deviceId = readDeviceId(device);
    info.manufacturer = nameOfManufacturer(manufacturerNumber(info));
    info.selfTest = readSelfTest(device);
    info.os = collectOs(device);
    return info;
}

} // namespace Tool
