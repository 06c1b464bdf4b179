#include "sim/model/bmc.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace Sim
{
namespace
{

// A new area is one line here.
const Family* const families[] = {
    &identityFamily, &systemInfoFamily, &chassisFamily,
    &channelFamily,  &messagingFamily,
};

template <class Wanted>
const Command* findWhere(const Wanted& wanted)
{
    for (const Family* family : families) {
        auto row = std::find_if(family->first, family->last, wanted);
        if (row != family->last)
            return row;
    }
    return nullptr;
}

bool offers(const Bmc& bmc, const Command* command)
{
    return std::any_of(
        std::begin(families), std::end(families), [&](const Family* family) {
            return !std::less<>{}(command, family->first) &&
                   std::less<>{}(command, family->last) && family->present(bmc);
        });
}

bool matches(const FixedAnswer& row, const Request& request)
{
    return row.netFn == request.netFn && row.command == request.command &&
           row.data.size() <= request.data.size() &&
           std::equal(row.data.begin(), row.data.end(), request.data.begin());
}

} // namespace

const Channel* BmcState::channel(uint8_t number) const
{
    auto found =
        std::find_if(channels.begin(), channels.end(),
                     [&](const Channel& c) { return c.number == number; });
    return found == channels.end() ? nullptr : &*found;
}

const Command* findCommand(uint8_t netFn, uint8_t code)
{
    return findWhere([&](const Command& row) {
        return row.netFn == netFn && row.code == code;
    });
}

const Command* findCommand(const char* name)
{
    return findWhere(
        [&](const Command& row) { return !std::strcmp(row.name, name); });
}

Bmc::Bmc(BmcState state)
    : initial_{std::move(state)}, state_{initial_}, clock_{[] {
          return int64_t{std::time(nullptr)};
      }}
{}

std::optional<Bytes> Bmc::answer(const Request& request)
{
    if (request.channel != systemInterface)
        return std::nullopt;
    for (const FixedAnswer& row : state_.answers)
        if (matches(row, request))
            return row.answer.empty() ? std::nullopt
                                      : std::make_optional(row.answer);
    if (request.lun != 0)
        return Bytes{cc::invalidForLun};
    const Command* command = findCommand(request.netFn, request.command);
    if (!command || !offers(*this, command))
        return Bytes{cc::invalidCommand};
    if (request.data.size() < command->minData ||
        request.data.size() > command->maxData)
        return Bytes{cc::dataLengthInvalid};
    return command->run(*this, request.data);
}

void Bmc::reset()
{
    state_ = initial_;
}

void Bmc::queueEvent(Bytes event)
{
    if (state_.messaging)
        state_.messaging->events.push_back(std::move(event));
}

bool Bmc::takeEvent(Bytes& event)
{
    if (!state_.messaging || state_.messaging->events.empty())
        return false;
    event = std::move(state_.messaging->events.front());
    state_.messaging->events.pop_front();
    return true;
}

} // namespace Sim
