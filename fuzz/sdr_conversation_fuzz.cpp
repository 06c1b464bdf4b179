// A controller that answers anything, through a refresh of the repository,
// discovery and two passes of readings.
#include <algorithm>
#include <memory>
#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiSensor.h>

#include "fuzz/target.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiNode.h"
#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "tests/support/libc_seam.h"

using namespace Ipmi;

namespace
{

// The answers: a byte with how many follow in its low five bits, and those
// bytes. Bit 7 puts the header of an honest answer before them: completion
// code 0 and, for a record, the next id from the low bits. After the last one
// the controller answers D5h.
class Conversation
{
public:
    Conversation(const uint8_t* data, size_t size) : data_{data}, size_{size} {}

    std::optional<Sim::Bytes> answer(const Sim::Request& request)
    {
        ++exchanges_;
        if (at_ >= size_)
            return Sim::Bytes{0xd5};
        const uint8_t control = data_[at_++];
        Sim::Bytes bytes;
        if (control & 0x80)
            bytes = request.command == 0x23
                        ? Sim::Bytes{0, uint8_t(request.data[2] + 1), 0}
                        : Sim::Bytes{0};
        size_t wanted = control & 0x1f;
        // Honest about the length, too: else few records would ever be whole.
        if (control & 0x40 && request.data.size() > 5)
            wanted = request.data[5];
        for (; wanted > 0 && at_ < size_; --wanted)
            bytes.push_back(data_[at_++]);
        if (bytes.empty())
            return std::nullopt;
        return bytes;
    }
    size_t exchanges() const { return exchanges_; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
    size_t exchanges_ = 0;
};

void installOnce()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    Seam::setTimeScale(1e9);
    Sim::Device::setTimeScale(0);
    Sim::Device::install(std::make_unique<Sim::Controller>(
        std::make_unique<Sim::Bmc>(Sim::BmcState{}), Sim::FaultSet{}));
    Sim::Device::record(false);
    if (IpmiIfcOpenIpmiOpen(0) < 0 || IpmiIfcInitForCLI(0) != 0)
        __builtin_trap();
}

void forget()
{
    IpmiIfcSdrCleanUpHeaders(0);
    IpmiIfcSdrCleanUpAll(0);
    IpmiNode& node = g_IpmiNode[0];
    VEK::WriteLock lock{node.sdrLock};
    node.sensors->clear();
    node.sdrInfo = {};
    node.sdrHeaderCount = 0;
    std::fill_n(node.sdrReservation, 3, uint8_t{0});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    installOnce();
    Conversation conversation{data, size};
    Sim::Device::controller()->bmc().answerBy([&](const Sim::Request& request) {
        return conversation.answer(request);
    });
    IpmiIfcSdrGetInfo(0);
    for (const auto& sensor : IpmiIfc::getSensors())
        sensor->getName();
    IpmiIfcSensorUpdateReading(0);
    IpmiIfcSdrGetInfo(0);
    IpmiIfcSensorUpdateReading(0);
    // Whatever it claims, each answer costs a bounded number of exchanges:
    // four for a header, 16 chunks of four for a record, and 15 sensors of a
    // shared record.
    if (conversation.exchanges() > 1000 + size * 200)
        __builtin_trap();
    forget();
    Seam::takeLog();
    return 0;
}
