#include "tools/collect/sel_log.h"

#include <cstring>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

constexpr char unread[] = "the event log was not read";

// The library tells only that there was no good answer; asking again brings
// the code to light.
Failure whyNotRead(Device& device)
{
    const Completion completion =
        device.exchange(commands::getSelInfo, {}).completion;
    if (completion.ok())
        return {Status::failed, unread, "Try again."};
    return failureOf(unread, commands::getSelInfo, completion);
}

// As the library has it: 51h, or BCD with the major version in the low nibble.
bool isKnownVersion(uint8_t version)
{
    return version == 0x51 || (version & 0x0F) > 1;
}

void checkVersion(uint8_t version)
{
    if (version == 0)
        throw Failure{Status::failed, "no usable answer about the event log",
                      "--verbose says more."};
    if (!isKnownVersion(version))
        throw Failure{Status::failed,
                      "the event log is older than IPMI v1.5 (version " +
                          hexNumber(version) + ")",
                      "Update the controller's firmware."};
}

std::string progressText()
{
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    if (progress.total == 0)
        return "asking for the event log ...";
    return "reading the event log: " + std::to_string(progress.read) + " of " +
           std::to_string(progress.total);
}

bool any(const uint8_t (&bytes)[4])
{
    return bytes[0] || bytes[1] || bytes[2] || bytes[3];
}

// Of a running node's controller.
Ipmi::ipmiifc_sel_info askForSel()
{
    constexpr Command command = commands::getSelInfo;
    constexpr int noAnswer = 0xFF;
    Ipmi::ipmiifc_sel_info info{};
    uint8_t answer[sizeof info] = {};
    uint16_t length = sizeof answer;
    const int code = Ipmi::IpmiIfc::sendCmd(command.code, command.netFn, 0,
                                            nullptr, &length, answer);
    if (code != 0)
        throw failureOf(unread, command,
                        {static_cast<uint8_t>(code), code != noAnswer});
    memcpy(&info, answer, sizeof info);
    return info;
}

} // namespace

bool nodeHoldsSel()
{
    const Ipmi::ipmiifc_sel_info now = askForSel();
    checkVersion(now.selVersion);
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    if (progress.complete)
        return true;
    // A log that was never erased the node reads as records added to an empty
    // one, and takes note of its state when it has them all; of a state
    // without any time stamp it takes none.
    const bool stamped = any(now.additionTime) || any(now.eraseTime);
    return progress.total == 0 &&
           (!stamped || Ipmi::IpmiIfc::getRawSelHeader().selVersion != 0);
}

SelLog selSoFar()
{
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    const Ipmi::ipmiifc_sel_info info = Ipmi::IpmiIfc::getRawSelHeader();
    SelLog log;
    log.records = Ipmi::IpmiIfc::getSelData();
    log.total = info.entryCount[0] | info.entryCount[1] << 8;
    log.failed = progress.failed;
    log.complete = progress.complete || log.total == 0;
    return log;
}

SelLog readSel(Device& device)
{
    const auto read = [] {
        return Ipmi::IpmiIfcSelGetInfo(0, nullptr) == 0 ? 0x00 : 0xFF;
    };
    if (!device.ask(read, progressText).ok())
        throw whyNotRead(device);
    checkVersion(Ipmi::IpmiIfc::getRawSelHeader().selVersion);
    return selSoFar();
}

} // namespace Tool
