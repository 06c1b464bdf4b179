#include "sim/link/codec.h"

#include <algorithm>
#include <numeric>

namespace Sim
{
namespace
{

constexpr uint8_t escape = 0xAA, escapeBit = 0x10;
// Sequence number, network function and LUN, command, checksum.
constexpr size_t shortestRequest = 4;

bool isEnd(uint8_t byte)
{
    return byte == uint8_t(LinkKind::Message) ||
           byte == uint8_t(LinkKind::Operation);
}

uint8_t sum(const Bytes& bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), uint8_t{0},
                           [](uint8_t a, uint8_t b) { return uint8_t(a + b); });
}

Bytes unescaped(Bytes::const_iterator at, Bytes::const_iterator end)
{
    Bytes body;
    for (; at != end; ++at) {
        if (*at != escape)
            body.push_back(*at);
        else if (++at == end)
            return {};
        else
            body.push_back(*at & uint8_t(~escapeBit));
    }
    return body;
}

} // namespace

Bytes encodeFrame(const LinkFrame& frame)
{
    Bytes bytes;
    for (uint8_t byte : frame.body) {
        if (isEnd(byte) || byte == escape) {
            bytes.push_back(escape);
            byte |= escapeBit;
        }
        bytes.push_back(byte);
    }
    bytes.push_back(uint8_t(frame.kind));
    return bytes;
}

std::optional<LinkFrame> takeFrame(Bytes& received)
{
    const auto end = std::find_if(received.begin(), received.end(), isEnd);
    if (end == received.end())
        return std::nullopt;
    LinkFrame frame{LinkKind(*end), unescaped(received.begin(), end)};
    received.erase(received.begin(), end + 1);
    return frame;
}

std::optional<LinkRequest> decodeRequest(const Bytes& body)
{
    if (body.size() < shortestRequest || sum(body) != 0)
        return std::nullopt;
    LinkRequest message;
    message.sequence = body[0];
    message.request.netFn = body[1] >> 2;
    message.request.lun = body[1] & 3;
    message.request.command = body[2];
    message.request.data.assign(body.begin() + 3, body.end() - 1);
    return message;
}

Bytes encodeAnswer(const LinkRequest& request, const Outcome& outcome)
{
    Bytes body = {request.sequence,
                  uint8_t(outcome.netFn << 2 | request.request.lun),
                  outcome.command};
    body.insert(body.end(), outcome.bytes.begin(), outcome.bytes.end());
    body.push_back(uint8_t(-sum(body)));
    return encodeFrame({LinkKind::Message, body});
}

} // namespace Sim
