#include "sim/model/ipmb.h"

#include <numeric>

namespace Sim
{
namespace
{

// Channel, then two bytes and their sum, three bytes, data and their sum.
constexpr size_t header = 7, shortest = header + 1;

uint8_t sum(const Bytes& bytes, size_t from, size_t to)
{
    return std::accumulate(bytes.begin() + std::ptrdiff_t(from),
                           bytes.begin() + std::ptrdiff_t(to), uint8_t{0},
                           [](uint8_t a, uint8_t b) { return uint8_t(a + b); });
}

} // namespace

std::optional<IpmbMessage> unwrap(const Bytes& data)
{
    if (data.size() < shortest || sum(data, 1, 4) != 0 ||
        sum(data, 4, data.size()) != 0)
        return std::nullopt;
    IpmbMessage message;
    Request& request = message.request;
    request.channel = data[0] & 0x0F;
    request.slaveAddress = data[1];
    request.netFn = data[2] >> 2;
    request.lun = data[2] & 0x03;
    message.requester = data[4];
    message.sequence = data[5];
    request.command = data[6];
    request.data.assign(data.begin() + header, data.end() - 1);
    return message;
}

Bytes wrap(const IpmbMessage& message, const Bytes& answer)
{
    const Request& request = message.request;
    const auto netFn =
        uint8_t((request.netFn | 1) << 2 | (message.sequence & 0x03));
    Bytes bytes{request.channel,
                netFn,
                uint8_t(-(message.requester + netFn)),
                request.slaveAddress,
                uint8_t((message.sequence & 0xFC) | request.lun),
                request.command};
    append(bytes, answer);
    bytes.push_back(uint8_t(-sum(bytes, 3, bytes.size())));
    return bytes;
}

} // namespace Sim
