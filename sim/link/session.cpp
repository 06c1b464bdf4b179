#include "sim/link/session.h"

#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

constexpr uint8_t netFnApp = 0x06, setGlobalEnables = 0x2E;
// The longest message is 272 bytes, each of which may have been escaped.
constexpr size_t mostPending = 1024;

// IPMI v2.0, 22.1.
bool enablesInterrupt(const Request& request)
{
    return request.netFn == netFnApp && request.command == setGlobalEnables &&
           !request.data.empty() &&
           request.data[0] & Messaging::receiveInterrupt;
}

LinkReply operation(uint8_t code)
{
    return {encodeFrame({LinkKind::Operation, {code}}), {}};
}

} // namespace

LinkStep LinkSession::connected()
{
    received_.clear();
    LinkStep step;
    // The machine remembers that it enabled interrupts; its side of a new
    // link does not.
    if (interrupts_)
        step.replies.push_back(operation(LinkOperation::enableInterrupt));
    announced_ = false;
    noticeEvent(step);
    return step;
}

LinkStep LinkSession::receive(const uint8_t* data, size_t size)
{
    LinkStep step;
    received_.insert(received_.end(), data, data + size);
    while (auto frame = takeFrame(received_)) {
        // The machine's operations announce what it can do; nothing of that
        // changes an answer.
        if (frame->kind == LinkKind::Message)
            if (const auto message = decodeRequest(frame->body))
                handle(*message, step);
    }
    if (received_.size() > mostPending)
        received_.clear();
    return step;
}

void LinkSession::handle(const LinkRequest& message, LinkStep& step)
{
    const Outcome outcome = controller_.exchange(message.request);
    switch (outcome.kind) {
    case Outcome::Kind::Answer:
        if (outcome.delay <= latestAnswer)
            step.replies.push_back(
                {encodeAnswer(message, outcome), outcome.delay});
        break;
    case Outcome::Kind::Vanish:
        step.vanish = true;
        step.away = outcome.delay;
        break;
    case Outcome::Kind::Silence:
    // No errno crosses the link, and the driver ends what a controller never
    // does: both look like silence.
    case Outcome::Kind::SendErrno:
    case Outcome::Kind::Lost:
        break;
    }
    // Until the interface may interrupt, the driver looks for each answer at
    // its timer's pace.
    if (enablesInterrupt(message.request)) {
        interrupts_ = true;
        step.replies.push_back(operation(LinkOperation::enableInterrupt));
    }
    noticeEvent(step);
}

/// The driver reads until nothing waits, so that only the first event or
/// message has to be announced. Attention that stayed would keep it asking,
/// and from ever giving the interface up.
void LinkSession::noticeEvent(LinkStep& step)
{
    const auto& messaging = controller_.bmc().state().messaging;
    const bool waits = messaging && messaging->flags() != 0;
    if (waits && !announced_) {
        step.replies.push_back(operation(LinkOperation::attentionInterrupt));
        // Not before the answer to the request that brought it.
        if (step.replies.size() > 1)
            step.replies.back().delay = step.replies.end()[-2].delay;
    }
    if (!waits && announced_)
        step.replies.insert(step.replies.begin(),
                            operation(LinkOperation::noAttention));
    announced_ = waits;
}

} // namespace Sim
