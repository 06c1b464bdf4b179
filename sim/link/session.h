/// One virtual machine's conversation with the controller, without its
/// socket: bytes in, frames to send out.
#ifndef VEK_SIM_LINK_SESSION_H
#define VEK_SIM_LINK_SESSION_H

#include "sim/link/codec.h"

namespace Sim
{

/// An answer later than 4 s meets a machine that has given up on it, and
/// wedges its interface for good; one that would be later than this is dropped.
constexpr std::chrono::milliseconds latestAnswer{3500};

struct LinkReply
{
    Bytes frame;
    std::chrono::microseconds delay{0};
};

struct LinkStep
{
    std::vector<LinkReply> replies;
    bool vanish = false; ///< The link drops now, for `away` (0: for good).
    std::chrono::microseconds away{0};
};

class LinkSession
{
public:
    explicit LinkSession(Controller& controller) : controller_{controller} {}

    /// A new connection: what was half received is void.
    LinkStep connected();
    LinkStep receive(const uint8_t* data, size_t size);

private:
    void handle(const LinkRequest& message, LinkStep& step);
    void noticeEvent(LinkStep& step);

    Controller& controller_;
    Bytes received_;
    bool announced_ = false; ///< That an event waits.
    bool interrupts_ = false;
};

} // namespace Sim

#endif
