/// A controller whose answers come from a fuzzer's bytes.
#ifndef VEK_FUZZ_CONVERSATION_H
#define VEK_FUZZ_CONVERSATION_H

#include <optional>

#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "tests/support/libc_seam.h"

// The answers: a byte with how many follow in its low five bits, and those
// bytes. Bit 7 puts the header of an honest answer before them: completion
// code 0 and, for a record, the next id. Bit 6 makes a record's part as long
// as it was asked for, bit 5 its first bytes its id; data of a FRU device get
// a count that is true. After the last one the controller answers D5h.
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
        const bool isRecord =
            (request.command == 0x23 || request.command == 0x43) &&
            request.data.size() > 5;
        Sim::Bytes bytes;
        if (control & 0x80)
            bytes = isRecord ? Sim::Bytes{0, uint8_t(request.data[2] + 1), 0}
                             : Sim::Bytes{0};
        const size_t header = bytes.size();
        size_t wanted = control & 0x1f;
        // Honest about the length, too: else few records would ever be whole.
        if (control & 0x40 && isRecord)
            wanted = request.data[5];
        const bool isFruData =
            request.command == 0x11 && request.data.size() > 3;
        if (control & 0x40 && isFruData) {
            wanted = request.data[3];
            bytes.push_back(uint8_t(wanted));
        }
        for (; wanted > 0 && at_ < size_; --wanted)
            bytes.push_back(data_[at_++]);
        if (control & 0x20 && isRecord && request.data[4] == 0)
            for (size_t i = 0; i < 2 && header + i < bytes.size(); ++i)
                bytes[header + i] = request.data[2 + i];
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

/// A simulated device for which no time passes.
inline void installTimelessDevice()
{
    Seam::setTimeScale(1e9);
    Sim::Device::setTimeScale(0);
    Sim::Device::install(std::make_unique<Sim::Controller>(
        std::make_unique<Sim::Bmc>(Sim::BmcState{}), Sim::FaultSet{}));
    Sim::Device::record(false);
}

#endif
