/// The bytes by which a virtual machine asks for a BMC over a socket (QEMU's
/// ipmi-bmc-extern). A frame is a body and an end byte; bytes of the body that
/// look like framing travel as AAh and the byte with bit 4 set.
#ifndef VEK_SIM_LINK_CODEC_H
#define VEK_SIM_LINK_CODEC_H

#include <optional>

#include "sim/controller.h"

namespace Sim
{

/// What a frame's end byte says of its body.
enum class LinkKind : uint8_t
{
    Message = 0xA0,  ///< An IPMI message.
    Operation = 0xA1 ///< A hardware operation and its data.
};

/// Hardware operations, first byte of the body.
namespace LinkOperation
{
constexpr uint8_t noAttention = 0x00, attentionInterrupt = 0x02,
                  enableInterrupt = 0x05;
}

struct LinkFrame
{
    LinkKind kind = LinkKind::Message;
    Bytes body; ///< Without framing. Empty when it was ill-formed.
};

struct LinkRequest
{
    uint8_t sequence = 0; ///< The answer has to repeat it.
    Request request;
};

Bytes encodeFrame(const LinkFrame& frame);

/// Takes the first whole frame out of what has been received.
std::optional<LinkFrame> takeFrame(Bytes& received);

/// No value for a body that is too short or whose sum is wrong.
std::optional<LinkRequest> decodeRequest(const Bytes& body);

/// The frame of an answer, ready to send.
Bytes encodeAnswer(const LinkRequest& request, const Outcome& outcome);

} // namespace Sim

#endif
