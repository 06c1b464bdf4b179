#include "sim/model/bmc.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "sim/model/sdr_record.h"

namespace Sim
{
namespace
{

constexpr uint8_t netFnSensor = 0x04;

// A new area is one line here.
const Family* const families[] = {
    &identityFamily,  &systemInfoFamily, &chassisFamily, &channelFamily,
    &messagingFamily, &sdrFamily,        &selFamily,     &sensorFamily,
    &fruFamily,       &lanFamily,
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

/// By its thresholds, hysteresis or events: a set, or a re-arm.
bool changesSensor(const Request& request)
{
    return request.netFn == netFnSensor && request.command >= 0x24 &&
           request.command <= 0x2A;
}

bool matches(const FixedAnswer& row, const Request& request)
{
    return row.netFn == request.netFn && row.command == request.command &&
           row.data.size() <= request.data.size() &&
           std::equal(row.data.begin(), row.data.end(), request.data.begin());
}

BmcState* findOwner(BmcState& state, const Owner& owner)
{
    if (owner.isBmc())
        return &state;
    for (BmcState& satellite : state.satellites)
        if (satellite.busChannel == owner.channel &&
            satellite.address == owner.address)
            return &satellite;
    return nullptr;
}

void placeSensors(BmcState& state)
{
    if (!state.repository)
        return;
    for (const SdrRecord& record : state.repository->records) {
        BmcState* owner = findOwner(state, ownerOf(record.bytes));
        if (!owner)
            continue;
        for (const Sensor& sensor :
             record.sensors.empty() ? sensorsOf(record.bytes) : record.sensors)
            owner->sensors.emplace(sensorKey(sensor.lun, sensor.number),
                                   sensor);
    }
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
    : initial_{std::move(state)}, clock_{[] {
          return int64_t{std::time(nullptr)};
      }}
{
    placeSensors(initial_);
    start();
}

std::optional<Bytes> Bmc::answer(const Request& request)
{
    if (script_)
        return script_(request);
    watchSensors();
    Bmc* other = request.channel == systemInterface
                     ? this
                     : reach(request.channel, request.slaveAddress);
    auto answer = other ? other->answerHere(request) : std::nullopt;
    if (changesSensor(request))
        watchSensors();
    return answer;
}

std::optional<Bytes> Bmc::answerHere(const Request& request)
{
    for (const FixedAnswer& row : state_.answers)
        if (matches(row, request))
            return row.answer.empty() ? std::nullopt
                                      : std::make_optional(row.answer);
    // Only sensors and FRU devices are told apart by LUN.
    if (request.lun != 0 && request.netFn != netFnSensor &&
        !isOfFru(request.netFn, request.command))
        return Bytes{cc::invalidForLun};
    const Command* command = findCommand(request.netFn, request.command);
    if (!command || !offers(*this, command))
        return Bytes{cc::invalidCommand};
    if (request.data.size() < command->minData ||
        request.data.size() > command->maxData)
        return Bytes{cc::dataLengthInvalid};
    lun_ = request.lun;
    Bytes answer = command->run(*this, request.data);
    return answer.empty() ? std::nullopt : std::make_optional(answer);
}

void Bmc::start()
{
    state_ = initial_;
    satellites_.clear();
    for (BmcState& satellite : state_.satellites)
        satellites_.emplace_back(std::move(satellite));
    state_.satellites.clear();
    setClock(Clock{clock_});
    // What is so from the start is no event.
    watchSensors();
}

void Bmc::reset()
{
    start();
}

std::optional<Bytes> Bmc::bridge(const Request& request)
{
    return bridge_ ? bridge_(request) : answer(request);
}

Bmc* Bmc::reach(uint8_t channel, uint8_t address)
{
    // Some firmware loops a message to itself back; clients count on it for
    // the BMC's own sensors at other LUNs.
    if (channel == state_.busChannel && address == state_.address)
        return this;
    const auto found = std::find_if(
        satellites_.begin(), satellites_.end(), [&](const Bmc& one) {
            return one.state_.busChannel == channel &&
                   one.state_.address == address;
        });
    return found == satellites_.end() ? nullptr : &*found;
}

void Bmc::setClock(const Clock& clock)
{
    clock_ = clock;
    started_ = now();
    watched_ = 0;
    for (Bmc& satellite : satellites_)
        satellite.setClock(clock_);
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
