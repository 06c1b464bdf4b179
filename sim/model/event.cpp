#include "sim/model/event.h"

#include "sim/model/record.h"
#include "sim/model/sel.h"
#include "sim/model/sensor.h"

namespace Sim
{
namespace
{

constexpr int eventOffsets = 15;

EventMessage makeEvent(const Sensor& sensor, int offset, bool asserted)
{
    EventMessage event;
    event.sensorType = sensor.type;
    event.sensor = sensor.number;
    event.eventType =
        uint8_t(sensor.eventType | (asserted ? 0 : EventMessage::deassertion));
    event.data[0] = uint8_t(offset);
    if (sensor.hasThresholds()) {
        // IPMI v2.0, table 29-6: the reading and the threshold are with it.
        constexpr uint8_t bothGiven = 0x50;
        event.data = {uint8_t(bothGiven | offset), sensor.reading,
                      sensor.thresholds.at(size_t(offset) / 2)};
    }
    return event;
}

bool tells(const Sensor& sensor)
{
    constexpr uint8_t enabled = Sensor::scanning | Sensor::eventMessages;
    return sensor.sendsEvents() && (sensor.enables & enabled) == enabled;
}

} // namespace

Bytes toRecord(const EventMessage& event, uint32_t time)
{
    Bytes record{0, 0, sel::event};
    append32(record, time);
    append16(record, event.generator);
    append(record,
           {event.revision, event.sensorType, event.sensor, event.eventType,
            event.data[0], event.data[1], event.data[2]});
    return record;
}

std::vector<EventMessage> takeEvents(Sensor& sensor)
{
    if (!sensor.present || sensor.unavailable)
        return {};
    const uint16_t told = sensor.told.value_or(sensor.condition());
    sensor.told = sensor.condition();
    if (told == *sensor.told || !tells(sensor))
        return {};
    const uint16_t before = sensor.eventsOf(told);
    const uint16_t now = sensor.assertedEvents();
    const unsigned gone = before & ~now & sensor.deassertions;
    const unsigned come = now & ~before & sensor.assertions;
    // The worst threshold is the first to be left and the last to be reached.
    std::vector<EventMessage> events;
    for (int offset = eventOffsets - 1; offset >= 0; --offset)
        if (gone >> offset & 1)
            events.push_back(makeEvent(sensor, offset, false));
    for (int offset = 0; offset < eventOffsets; ++offset)
        if (come >> offset & 1)
            events.push_back(makeEvent(sensor, offset, true));
    return events;
}

} // namespace Sim
