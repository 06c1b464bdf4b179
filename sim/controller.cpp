#include "sim/controller.h"

#include <utility>

#include "sim/fault/action.h"
#include "sim/model/bmc.h"
#include "sim/profile/profile.h"

namespace Sim
{

struct Controller::State
{
    std::unique_ptr<Bmc> bmc;
    FaultSet faults;
    std::chrono::microseconds latency;
    std::map<uint16_t, uint64_t> counts;
    AnswerMemory memory;
    std::chrono::microseconds bridged{0}; ///< Delay of a message sent on.
};

namespace
{

using Phase = FaultAction::Phase;
using Faults = std::vector<const Fault*>;

bool apply(Phase phase, const Faults& due, FaultAction::Context& context)
{
    bool applied = false;
    for (const Fault* fault : due) {
        if (fault->action->phase != phase)
            continue;
        fault->action->apply(*fault, context);
        applied = true;
    }
    return applied;
}

void askModel(FaultAction::Context& context)
{
    if (context.answered)
        return;
    if (auto bytes = context.bmc.answer(context.request))
        context.outcome.bytes = std::move(*bytes);
    else
        context.outcome.kind = Outcome::Kind::Silence;
}

/// Lets an answer that was withheld from an earlier request go first.
void takeTurns(FaultAction::Context& context)
{
    std::optional<Outcome> late;
    late.swap(context.memory.withheld);
    if (context.outOfTurn)
        context.memory.withheld = context.outcome;
    if (late)
        replaceAnswer(context.outcome, *late);
    else if (context.outOfTurn)
        context.outcome.kind = Outcome::Kind::Silence;
}

} // namespace

Controller::Controller(std::unique_ptr<Bmc> bmc, FaultSet faults,
                       std::chrono::microseconds latency)
    : state_{new State{std::move(bmc), std::move(faults), latency, {}, {}}}
{
    // What the BMC sends on to others is seen, counted and spoilt as if the
    // front end had sent it there.
    state_->bmc->setBridge([this](const Request& request) {
        const Outcome outcome = exchange(request);
        state_->bridged = outcome.delay;
        return outcome.kind == Outcome::Kind::Answer
                   ? std::make_optional(outcome.bytes)
                   : std::nullopt;
    });
}

Controller::~Controller() = default;

void Controller::setFaults(FaultSet faults)
{
    state_->faults = std::move(faults);
}

Outcome Controller::exchange(const Request& request)
{
    Outcome outcome;
    outcome.netFn = request.netFn | 1;
    outcome.command = request.command;
    FaultAction::Context context{request, *state_->bmc, state_->memory,
                                 outcome, false,        false};
    const Faults due = state_->faults.due(request);
    if (apply(Phase::Send, due, context))
        return outcome;

    ++state_->counts[uint16_t(request.netFn << 8 | request.command)];
    outcome.delay = state_->latency;
    apply(Phase::Controller, due, context);
    askModel(context);
    outcome.delay += std::exchange(state_->bridged, {});
    const Outcome right = outcome;
    takeTurns(context);
    apply(Phase::Answer, due, context);
    if (right.kind == Outcome::Kind::Answer)
        state_->memory.remember(request, right);
    return outcome;
}

int Controller::openErrno()
{
    const Faults due = state_->faults.dueAtOpen();
    return due.empty() ? 0 : int(due.front()->value);
}

bool Controller::nextEvent(Bytes& event)
{
    return state_->bmc->takeEvent(event);
}

const std::map<uint16_t, uint64_t>& Controller::counts() const
{
    return state_->counts;
}

Bmc& Controller::bmc()
{
    return *state_->bmc;
}

namespace
{

/// Mistakes say which rule they are about.
void addRules(const std::vector<std::string>& rules, FaultSet& faults,
              Mistakes& mistakes)
{
    for (const std::string& rule : rules) {
        Mistake mistake;
        if (auto fault = parseFault(rule, mistake))
            faults.add(*fault);
        else
            mistakes.push_back(
                {"fault \"" + rule + "\", " + mistake.place, mistake.reason});
    }
}

} // namespace

std::unique_ptr<Controller> makeController(const Setup& setup,
                                           Mistakes& mistakes)
{
    Mistakes found;
    std::optional<Profile> profile;
    if (auto text = findProfile(setup.profile, found))
        profile = readProfile(*text, found);
    FaultSet faults;
    if (profile)
        addRules(profile->faults, faults, found);
    addRules(setup.faults, faults, found);
    mistakes.insert(mistakes.end(), found.begin(), found.end());
    if (!profile || !found.empty())
        return nullptr;
    return std::make_unique<Controller>(
        std::make_unique<Bmc>(std::move(profile->state)), std::move(faults),
        setup.latency);
}

} // namespace Sim
