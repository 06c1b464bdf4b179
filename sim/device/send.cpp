#include <algorithm>
#include <cerrno>

#include "sim/device/driver.h"

namespace Sim
{

namespace
{

using std::chrono::milliseconds;

constexpr size_t requestBytes = 270;              ///< Over KCS.
constexpr size_t answerBytes = 270;               ///< With the completion code.
constexpr size_t bridgedBytes = requestBytes - 8; ///< Wrapped up.
constexpr size_t outstandingRequests = 100;
constexpr Duration silence = milliseconds(4000);
constexpr uint8_t netFnApp = 0x06, getMessage = 0x33, sendMessage = 0x34,
                  readEventMessageBuffer = 0x35, nakOnWrite = 0x83;

bool isDriversOwn(const ipmi_msg& message)
{
    return (message.netfn & 0x3F) == netFnApp &&
           (message.cmd == getMessage || message.cmd == sendMessage ||
            message.cmd == readEventMessageBuffer);
}

int checkLocal(const Address& to, const ipmi_msg& message)
{
    if (to.bytes.channel != IPMI_BMC_CHANNEL || to.lun() > 3)
        return -EINVAL;
    // Neither a response nor what the driver keeps for itself.
    if ((message.netfn & 1) || isDriversOwn(message))
        return -EINVAL;
    return message.data_len > requestBytes ? -EMSGSIZE : 0;
}

int checkBridged(const Address& to, const ipmi_msg& message,
                 const Interface& interface)
{
    const int channel = to.bytes.channel;
    if (channel < 0 || channel >= IPMI_NUM_CHANNELS ||
        !interface.channels[size_t(channel)].isIpmb || to.lun() > 3)
        return -EINVAL;
    return message.data_len > bridgedBytes ? -EMSGSIZE : 0;
}

int check(const Address& to, unsigned length, const ipmi_msg& message,
          const Interface& interface)
{
    if (interface.gone)
        return -ENODEV;
    if (length < Address::size)
        return -EINVAL;
    if (to.isSystemInterface())
        return checkLocal(to, message);
    return to.isIpmb() ? checkBridged(to, message, interface) : -EINVAL;
}

Request toRequest(const Address& to, const ipmi_msg& message)
{
    Request request;
    request.netFn = message.netfn & 0x3F;
    request.command = message.cmd;
    request.lun = to.lun();
    if (message.data_len > 0)
        request.data.assign(message.data, message.data + message.data_len);
    if (to.isIpmb()) {
        request.channel = uint8_t(to.bytes.channel);
        request.slaveAddress = to.bytes.slave_addr;
    }
    return request;
}

/// The answer but for its bytes and its time.
Message answerTo(const Address& to, const ipmi_req& request)
{
    Message answer;
    answer.from = to;
    if (to.isIpmb())
        answer.from.bytes.addr_type = IPMI_IPMB_ADDR_TYPE;
    answer.id = request.msgid;
    answer.netFn = (request.msg.netfn & 0x3F) | 1;
    answer.command = request.msg.cmd;
    return answer;
}

/// What the driver makes of the bytes it read.
Bytes checkAnswer(const Outcome& outcome, const Message& answer)
{
    if (outcome.netFn != answer.netFn || outcome.command != answer.command)
        return {cc::unspecified};
    Bytes bytes = outcome.bytes;
    if (bytes.size() > answerBytes) {
        bytes.resize(answerBytes);
        bytes[0] = cc::dataTruncated;
    }
    return bytes;
}

bool isAnswered(const Outcome& outcome)
{
    return outcome.kind == Outcome::Kind::Answer && !outcome.bytes.empty();
}

} // namespace

int Driver::sendWithDefaults(Handle& handle, void* argument)
{
    return send(handle, *static_cast<const ipmi_req*>(argument),
                {handle.timing.retries, handle.timing.retry_time_ms});
}

int Driver::sendWithTiming(Handle& handle, void* argument)
{
    const auto& timed = *static_cast<const ipmi_req_settime*>(argument);
    return send(handle, timed.req, {timed.retries, timed.retry_time_ms});
}

int Driver::send(Handle& handle, const ipmi_req& request, Timing timing)
{
    if (request.addr_len > sizeof(ipmi_addr))
        return -EINVAL;
    if (isFault(request.addr))
        return -EFAULT;
    const Address to = Address::copy(request.addr, request.addr_len);
    // Data that are not there count as none, whatever length is given.
    ipmi_msg message = request.msg;
    if (!message.data)
        message.data_len = 0;
    const int error = check(to, request.addr_len, message, handle.interface());
    if (error)
        return error;
    if (handle.outstanding() >= outstandingRequests)
        return -EBUSY;
    const Request sent = toRequest(to, message);
    Message answer = answerTo(to, request);
    if (sent.netFn & 1) {
        // Nobody on the bus waits for a response.
        answer.receiveType = IPMI_RESPONSE_RESPONSE_TYPE;
        answer.due = clock_.now();
        answer.data = {nakOnWrite};
        handle.deliver(std::move(answer));
        return 0;
    }
    const Outcome outcome = controller_->exchange(sent);
    if (observer_)
        observer_(sent, outcome);
    if (outcome.kind == Outcome::Kind::SendErrno)
        return -outcome.errnoValue;
    if (to.isIpmb())
        answerBridged(handle, outcome, std::move(answer), timing);
    else
        actOut(handle, outcome, std::move(answer));
    if (!handle.interface().gone)
        collectEvents();
    return 0;
}

void Driver::actOut(Handle& handle, const Outcome& outcome, Message answer)
{
    if (outcome.kind == Outcome::Kind::Vanish) {
        vanish(outcome.delay.count() ? std::optional(outcome.delay)
                                     : std::nullopt);
        return;
    }
    if (outcome.kind == Outcome::Kind::Lost) {
        answer.due = Message::never;
    } else {
        const bool inTime = isAnswered(outcome) && outcome.delay < silence;
        Time& busyUntil = handle.interface().busyUntil;
        busyUntil = std::max(busyUntil, clock_.now()) +
                    clock_.scaled(inTime ? outcome.delay : silence);
        answer.due = busyUntil;
        answer.data =
            inTime ? checkAnswer(outcome, answer) : Bytes{cc::timeout};
    }
    handle.deliver(std::move(answer));
}

/// The driver repeats a bridged request that nobody answers, and gives up.
void Driver::answerBridged(Handle& handle, const Outcome& outcome,
                           Message answer, Timing timing)
{
    if (isAnswered(outcome) || outcome.kind != Outcome::Kind::Silence) {
        actOut(handle, outcome, std::move(answer));
        return;
    }
    const int tries = (timing.retries < 0 ? 4 : timing.retries) + 1;
    const milliseconds each(timing.retryTimeMs ? timing.retryTimeMs : 2000);
    // Its second was measured to last 1024 ms.
    answer.due = clock_.now() + clock_.scaled(tries * each * 1024 / 1000);
    answer.data = {cc::timeout};
    handle.deliver(std::move(answer));
}

} // namespace Sim
