#include "sim/controller.h"

#include "sim/fault/fault.h"
#include "sim/model/bmc.h"

namespace Sim
{

struct Controller::State
{
    std::unique_ptr<Bmc> bmc;
    FaultSet faults;
    std::chrono::microseconds latency;
    std::map<uint16_t, uint64_t> counts;
};

Controller::Controller(std::unique_ptr<Bmc> bmc, FaultSet faults,
                       std::chrono::microseconds latency)
    : state_{new State{std::move(bmc), std::move(faults), latency, {}}}
{}

Controller::~Controller() = default;

Outcome Controller::exchange(const Request& request)
{
    ++state_->counts[uint16_t(request.netFn << 8 | request.command)];
    Outcome outcome;
    outcome.netFn = request.netFn | 1;
    outcome.command = request.command;
    outcome.delay = state_->latency;
    if (auto bytes = state_->bmc->answer(request))
        outcome.bytes = std::move(*bytes);
    else
        outcome.kind = Outcome::Kind::Silence;
    return outcome;
}

int Controller::openErrno()
{
    return 0;
}

bool Controller::nextEvent(Bytes&)
{
    return false;
}

const std::map<uint16_t, uint64_t>& Controller::counts() const
{
    return state_->counts;
}

Bmc& Controller::bmc()
{
    return *state_->bmc;
}

} // namespace Sim
