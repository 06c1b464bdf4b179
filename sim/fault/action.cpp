#include "sim/fault/action.h"

#include "sim/fault/argument.h"
#include "sim/model/bmc.h"

namespace Sim
{
namespace
{

using Context = FaultAction::Context;
using Phase = FaultAction::Phase;
using Kind = Outcome::Kind;

Expected wholeNumber(Fault& fault, const std::string& argument)
{
    return parseWhole(argument, fault.value);
}

Expected hexByte(Fault& fault, const std::string& argument)
{
    uint8_t byte = 0;
    const Expected expected = parseHexByte(argument, byte);
    fault.value = byte;
    return expected;
}

Expected hexWord(Fault& fault, const std::string& argument)
{
    return parseHexWord(argument, fault.value);
}

Expected recordCount(Fault& fault, const std::string& argument)
{
    const Expected expected = parseWhole(argument, fault.value);
    return expected || fault.value > 0xFFFF ? "a number from 0 to 65535"
                                            : nullptr;
}

Expected errnoName(Fault& fault, const std::string& argument)
{
    return parseErrno(argument, fault.value);
}

Expected flipped(Fault& fault, const std::string& argument)
{
    return parseFlip(argument, fault.value, fault.mask);
}

Expected nothing(Fault&, const std::string& argument)
{
    return parseNothing(argument);
}

Expected answerSize(Fault& fault, const std::string& argument)
{
    const Expected expected = parseWhole(argument, fault.value);
    return expected || fault.value > 272 ? "a size from 0 to 272" : nullptr;
}

template <Kind kind>
void become(const Fault&, Context& context)
{
    context.outcome.kind = kind;
}

void failWithErrno(const Fault& fault, Context& context)
{
    context.outcome.kind = Kind::SendErrno;
    context.outcome.errnoValue = int(fault.value);
}

void vanish(const Fault& fault, Context& context)
{
    context.outcome.kind = Kind::Vanish;
    context.outcome.delay = std::chrono::milliseconds{fault.value};
}

void reset(const Fault&, Context& context)
{
    context.bmc.reset();
}

void refuse(const Fault& fault, Context& context)
{
    context.outcome.bytes = {uint8_t(fault.value)};
    context.answered = true;
}

void cut(const Fault& fault, Context& context)
{
    if (context.outcome.bytes.size() > fault.value)
        context.outcome.bytes.resize(fault.value);
}

void pad(const Fault& fault, Context& context)
{
    if (context.outcome.bytes.size() < fault.value)
        context.outcome.bytes.resize(fault.value);
}

void flip(const Fault& fault, Context& context)
{
    if (fault.value < context.outcome.bytes.size())
        context.outcome.bytes[fault.value] ^= fault.mask;
}

void setWord(Bytes& answer, size_t at, uint32_t value)
{
    if (at + 2 > answer.size())
        return;
    answer[at] = uint8_t(value);
    answer[at + 1] = uint8_t(value >> 8);
}

/// Where the answers of Get SDR and of its like name the next record.
void nameNext(const Fault& fault, Context& context)
{
    setWord(context.outcome.bytes, 1, fault.value);
}

/// Where an entry of the event log has its own id.
void nameRecord(const Fault& fault, Context& context)
{
    setWord(context.outcome.bytes, 3, fault.value);
}

/// Where a repository's, and the log's, information tells how many records
/// there are.
void lieAboutCount(const Fault& fault, Context& context)
{
    setWord(context.outcome.bytes, 2, fault.value);
}

template <bool stamped>
void changeRepository(const Fault&, Context& context)
{
    if (auto& repository = context.bmc.state().repository)
        repository->change(context.bmc.now(), stamped);
}

bool isOfEventLog(const Request& request)
{
    return request.netFn == 0x0A && request.command >= 0x40;
}

void reserveAsOther(const Fault&, Context& context)
{
    BmcState& state = context.bmc.state();
    if (isOfEventLog(context.request)) {
        if (state.eventLog)
            state.eventLog->reserve();
    } else if (state.repository) {
        state.repository->reserve();
    }
}

void addEvent(const Fault&, Context& context)
{
    constexpr uint8_t systemEvent = 0x12, systemBoot = 0x01;
    EventMessage event;
    event.sensorType = systemEvent;
    event.data[0] = systemBoot;
    context.bmc.logEvent(event);
}

void clearEventLog(const Fault&, Context& context)
{
    if (context.bmc.state().eventLog)
        context.bmc.clearEventLog();
}

void changeNetFn(const Fault& fault, Context& context)
{
    context.outcome.netFn = uint8_t(fault.value);
}

void changeCommand(const Fault& fault, Context& context)
{
    context.outcome.command = uint8_t(fault.value);
}

void delayAnswer(const Fault& fault, Context& context)
{
    context.outcome.delay += std::chrono::milliseconds{fault.value};
}

bool sameRequest(const Request& a, const Request& b)
{
    return a.netFn == b.netFn && a.command == b.command && a.data == b.data;
}

/// The first answer of the controller has nothing before it to repeat.
void repeatOther(const Fault&, Context& context)
{
    const AnswerMemory& memory = context.memory;
    const auto& other =
        memory.last && !sameRequest(memory.last->request, context.request)
            ? memory.last
            : memory.lastOther;
    if (other)
        replaceAnswer(context.outcome, other->outcome);
}

void withhold(const Fault&, Context& context)
{
    context.outOfTurn = true;
}

constexpr FaultAction actions[] = {
    {"open-errno", Phase::Open, errnoName, failWithErrno},
    {"send-errno", Phase::Send, errnoName, failWithErrno},
    {"vanish", Phase::Send, wholeNumber, vanish},
    {"reset", Phase::Controller, nothing, reset},
    {"change", Phase::Controller, nothing, changeRepository<true>},
    {"change-unstamped", Phase::Controller, nothing, changeRepository<false>},
    {"other-reader", Phase::Controller, nothing, reserveAsOther},
    {"add-event", Phase::Controller, nothing, addEvent},
    {"clear-sel", Phase::Controller, nothing, clearEventLog},
    {"cc", Phase::Controller, hexByte, refuse},
    {"out-of-turn", Phase::Controller, nothing, withhold},
    {"cut", Phase::Answer, answerSize, cut},
    {"pad", Phase::Answer, answerSize, pad},
    {"flip", Phase::Answer, flipped, flip},
    {"next-id", Phase::Answer, hexWord, nameNext},
    {"record-id", Phase::Answer, hexWord, nameRecord},
    {"entries", Phase::Answer, recordCount, lieAboutCount},
    {"answer-netfn", Phase::Answer, hexByte, changeNetFn},
    {"answer-cmd", Phase::Answer, hexByte, changeCommand},
    {"delay", Phase::Answer, wholeNumber, delayAnswer},
    {"silence", Phase::Answer, nothing, become<Kind::Silence>},
    {"lost", Phase::Answer, nothing, become<Kind::Lost>},
    {"stale", Phase::Answer, nothing, repeatOther},
};

} // namespace

void AnswerMemory::remember(const Request& request, const Outcome& outcome)
{
    if (last && !sameRequest(last->request, request))
        lastOther = std::move(last);
    last = Exchange{request, outcome};
}

void replaceAnswer(Outcome& outcome, const Outcome& answer)
{
    const auto delay = outcome.delay;
    outcome = answer;
    outcome.delay = delay;
}

const FaultAction* findFaultAction(const std::string& key)
{
    for (const FaultAction& action : actions)
        if (key == action.key)
            return &action;
    return nullptr;
}

std::vector<std::string> faultActionKeys()
{
    std::vector<std::string> keys;
    for (const FaultAction& action : actions)
        keys.push_back(action.key);
    return keys;
}

} // namespace Sim
