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

unsigned entriesOfNode()
{
    const Ipmi::ipmiifc_sel_info info = Ipmi::IpmiIfc::getRawSelHeader();
    return info.entryCount[0] | info.entryCount[1] * 0x100u;
}

} // namespace

std::string selProgressText()
{
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    if (progress.total == 0)
        return "asking for the event log ...";
    return "reading the event log: " + std::to_string(progress.read) + " of " +
           std::to_string(progress.total);
}

SelState askForSel()
{
    constexpr Command command = commands::getSelInfo;
    constexpr int noAnswer = 0xFF;
    uint8_t answer[sizeof(Ipmi::ipmiifc_sel_info)] = {};
    uint16_t length = sizeof answer;
    const int code = Ipmi::IpmiIfc::sendCmd(command.code, command.netFn, 0,
                                            nullptr, &length, answer);
    SelState state;
    state.completion = {static_cast<uint8_t>(code), code != noAnswer};
    // Times of 0 in a cut answer would be those of another log.
    if (code == 0 && length == sizeof answer)
        memcpy(&state.info, answer, sizeof answer);
    return state;
}

void requireSel(const SelState& state)
{
    constexpr uint8_t invalidCommand = 0xC1;
    if (state.completion.answered && state.completion.code == invalidCommand)
        throw failureOf(unread, commands::getSelInfo, state.completion);
    if (state.isUsable())
        checkVersion(state.info.selVersion);
}

bool nodeHoldsSel()
{
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    if (Ipmi::IpmiIfc::getRawSelHeader().selVersion == 0)
        return false;
    // A log that grows while it is read has a record more than was announced,
    // which the next poll reads.
    return progress.complete || entriesOfNode() == 0 ||
           (progress.failed == 0 && progress.read >= entriesOfNode());
}

SelLog selSoFar()
{
    const Ipmi::IpmiSelProgress progress = Ipmi::IpmiIfcSelGetProgress(0);
    SelLog log;
    log.records = Ipmi::IpmiIfc::getSelData();
    log.total = entriesOfNode();
    log.failed = progress.failed;
    log.complete = progress.complete || log.total == 0;
    return log;
}

SelLog readSel(Device& device)
{
    const auto read = [] {
        return Ipmi::IpmiIfcSelGetInfo(0, nullptr) == 0 ? 0x00 : 0xFF;
    };
    // What grew meanwhile is read once more; then all that the controller
    // counted at first is a log as well.
    for (int tries = 0;; ++tries) {
        if (!device.ask(read, selProgressText).ok())
            throw whyNotRead(device);
        checkVersion(Ipmi::IpmiIfc::getRawSelHeader().selVersion);
        SelLog log = selSoFar();
        const bool grew =
            !log.complete && log.failed == 0 && log.records.size() >= log.total;
        log.complete = log.complete || (grew && tries > 0);
        if (!grew || tries > 0)
            return log;
    }
}

} // namespace Tool
