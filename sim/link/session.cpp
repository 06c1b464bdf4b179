#include "sim/link/session.h"

namespace Sim
{
namespace
{

constexpr uint8_t netFnApp = 0x06, setGlobalEnables = 0x2E,
                  getMessageFlags = 0x31, readEventBuffer = 0x35;
constexpr uint8_t eventWaits = 0x02; // IPMI v2.0, 22.4
// The longest message is 272 bytes, each of which may have been escaped.
constexpr size_t mostPending = 1024;

bool is(const Request& request, uint8_t command)
{
    return request.netFn == netFnApp && request.command == command;
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
    if (!event_.empty())
        step.replies.push_back(operation(LinkOperation::attentionInterrupt));
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
    const Outcome outcome = exchange(message.request);
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
    const Bytes& data = message.request.data;
    if (is(message.request, setGlobalEnables) && !data.empty() && data[0] & 1) {
        interrupts_ = true;
        step.replies.push_back(operation(LinkOperation::enableInterrupt));
    }
    noticeEvent(step);
}

/// The controller hands out events once; here they wait until the driver
/// reads them.
Outcome LinkSession::exchange(const Request& request)
{
    Outcome outcome = controller_.exchange(request);
    if (event_.empty() || outcome.kind != Outcome::Kind::Answer)
        return outcome;
    if (is(request, getMessageFlags) && outcome.bytes.size() > 1)
        outcome.bytes[1] |= eventWaits;
    if (is(request, readEventBuffer)) {
        outcome.bytes = {cc::ok};
        outcome.bytes.insert(outcome.bytes.end(), event_.begin(), event_.end());
        event_.clear();
    }
    return outcome;
}

void LinkSession::noticeEvent(LinkStep& step)
{
    if (event_.empty() && controller_.nextEvent(event_))
        step.replies.push_back(operation(LinkOperation::attentionInterrupt));
}

} // namespace Sim
