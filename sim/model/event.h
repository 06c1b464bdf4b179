/// Event messages (IPMI v2.0, 29.3), and what sensors tell by them.
#ifndef VEK_SIM_MODEL_EVENT_H
#define VEK_SIM_MODEL_EVENT_H

#include <array>

#include "sim/model/message.h"

namespace Sim
{

struct Sensor; // sim/model/sensor.h

struct EventMessage
{
    static constexpr uint8_t deassertion = 0x80; ///< Of `eventType`.

    uint16_t generator = 0x20; ///< Address; LUN and channel in the high byte.
    uint8_t revision = 0x04;
    uint8_t sensorType = 0, sensor = 0;
    uint8_t eventType = 0x6F;
    std::array<uint8_t, 3> data{0xFF, 0xFF, 0xFF};
};

/// 16 bytes as the log and the event message buffer have them, without an id.
Bytes toRecord(const EventMessage& event, uint32_t time);

/// What the sensor tells of the changes since it was last asked; the first
/// time nothing. The generator is left to its controller.
std::vector<EventMessage> takeEvents(Sensor& sensor);

} // namespace Sim

#endif
