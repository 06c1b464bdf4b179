#include <algorithm>

#include "sim/model/bmc.h"

namespace Sim
{

void Bmc::logEvent(const EventMessage& event, int64_t secondsAgo)
{
    constexpr size_t mostWaiting = 16;
    const int64_t then = now() - secondsAgo;
    auto& log = state_.eventLog;
    auto& messaging = state_.messaging;
    const uint8_t enables =
        messaging ? messaging->enables : uint8_t{Messaging::systemEventLogging};
    const Bytes record =
        toRecord(event, log ? log->time(then) : uint32_t(then));
    if (log && enables & Messaging::systemEventLogging)
        log->add(record, then);
    if (enables & Messaging::eventMessageBuffer &&
        messaging->events.size() < mostWaiting)
        queueEvent(record);
}

void Bmc::clearEventLog()
{
    constexpr uint8_t eventLogging = 0x10, cleared = 0x02;
    state_.eventLog->clear(now());
    if (!state_.eventLog->logsClear)
        return;
    EventMessage event;
    event.sensorType = eventLogging;
    event.data[0] = cleared;
    for (const auto& [key, sensor] : state_.sensors)
        if (sensor.type == eventLogging)
            event.sensor = sensor.number;
    logEvent(event);
}

template <class Each>
void Bmc::forEachSensor(const Each& each)
{
    for (auto& [key, sensor] : state_.sensors)
        each(state_, sensor);
    for (Bmc& satellite : satellites_)
        for (auto& [key, sensor] : satellite.state_.sensors)
            each(satellite.state_, sensor);
}

void Bmc::watch(const BmcState& owner, Sensor& sensor, int64_t second)
{
    sensor.update(second);
    for (EventMessage& event : takeEvents(sensor)) {
        event.generator =
            uint16_t(owner.address | (owner.busChannel << 4 | sensor.lun) << 8);
        logEvent(event, uptime() - second);
    }
}

void Bmc::watchSensors()
{
    constexpr int64_t longest = 24 * 60 * 60;
    if (!state_.eventLog)
        return;
    const int64_t last = uptime();
    // A crossing between two requests is neither lost nor stamped too late.
    // Where nothing moves by itself, the present is enough.
    std::vector<std::pair<const BmcState*, Sensor*>> moving;
    if (last > watched_ + 1)
        forEachSensor([&](const BmcState& owner, Sensor& sensor) {
            if (!sensor.script.points.empty())
                moving.emplace_back(&owner, &sensor);
        });
    for (int64_t second = std::max(watched_ + 1, last - longest);
         !moving.empty() && second < last; ++second)
        for (const auto& [owner, sensor] : moving)
            watch(*owner, *sensor, second);
    forEachSensor([&](const BmcState& owner, Sensor& sensor) {
        watch(owner, sensor, last);
    });
    watched_ = last;
}

} // namespace Sim
