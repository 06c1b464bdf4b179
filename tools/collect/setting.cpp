#include "tools/collect/setting.h"

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

// The library gives C1h and CDh as 1 for commands about sensors.
constexpr int unsupported = 1;

void check(const Completion& completion, Command command,
           const std::string& what)
{
    if (completion.ok())
        return;
    if (completion.answered && completion.code == unsupported)
        throw Failure{Status::refused,
                      what + ": the controller does not support it for this "
                             "sensor (C1h or CDh)",
                      ""};
    throw failureOf(what, command, completion);
}

std::shared_ptr<Ipmi::IpmiSensor> existing(const Sensor& sensor)
{
    if (auto object = objectOf(sensor))
        return object;
    throw Failure{Status::failed, "the sensor is gone", "Try again."};
}

std::shared_ptr<Ipmi::IpmiThresholdSensor> threshold(const Sensor& sensor)
{
    if (auto object = std::dynamic_pointer_cast<Ipmi::IpmiThresholdSensor>(
            existing(sensor)))
        return object;
    throw Failure{Status::usage,
                  "'" + sensor.name + "' has states instead of thresholds", ""};
}

Completion ask(Device& device, const std::function<unsigned()>& operation)
{
    return device.ask([&] { return static_cast<int>(operation()); });
}

} // namespace

void writeThresholds(Device& device, const Sensor& sensor,
                     const std::vector<PlannedThreshold>& planned)
{
    Bytes request(2 + Ipmi::THRESHOLD_COUNT);
    request[0] = sensor.number;
    for (const PlannedThreshold& plan : planned) {
        request[1] = static_cast<uint8_t>(request[1] | 1u << plan.threshold);
        request[2 + plan.threshold] = plan.value.raw;
    }
    check(device.exchange(commands::setSensorThresholds, request).completion,
          commands::setSensorThresholds, "thresholds not set");
}

void restoreThresholds(Device& device, const Sensor& sensor)
{
    const auto object = existing(sensor);
    check(ask(device, [&] { return object->restoreDefaultThresholds(); }),
          commands::setSensorThresholds, "thresholds not restored");
}

void readThresholds(Device& device, Sensor& sensor, const std::string& failed)
{
    const Answer answer =
        device.exchange(commands::getSensorThresholds, {sensor.number});
    check(answer.completion, commands::getSensorThresholds, failed);
    const auto object = existing(sensor);
    for (unsigned i = 0; i < sensor.thresholds.size(); ++i) {
        const bool here = !answer.data.empty() && 1 + i < answer.data.size() &&
                          answer.data[0] >> i & 1;
        sensor.thresholds[i].value =
            here ? std::optional<Value>{valueOf(*object, answer.data[1 + i])}
                 : std::nullopt;
    }
}

Hysteresis readHysteresis(Device& device, const Sensor& sensor)
{
    const auto object = threshold(sensor);
    Hysteresis value;
    check(ask(device,
              [&] {
                  return object->getHysteresis(value.positive, value.negative,
                                               true);
              }),
          commands::getSensorHysteresis, "hysteresis not read");
    return value;
}

void writeHysteresis(Device& device, const Sensor& sensor, Hysteresis value)
{
    const auto object = threshold(sensor);
    check(ask(device,
              [&] {
                  return object->setHysteresis(value.positive, value.negative);
              }),
          commands::setSensorHysteresis, "hysteresis not set");
}

EventEnable readEventEnable(Device& device, const Sensor& sensor)
{
    const auto object = existing(sensor);
    unsigned char flags = 0;
    unsigned short assertion = 0, deassertion = 0;
    check(ask(device,
              [&] {
                  return object->getEventEnable(flags, assertion, deassertion);
              }),
          commands::getSensorEventEnable, "events not read");
    EventEnable enable;
    enable.messages = flags & 0x80;
    enable.scanning = flags & 0x40;
    if (enable.messages) {
        enable.assertion = assertion;
        enable.deassertion = deassertion;
    }
    return enable;
}

void writeEventEnable(Device& device, const Sensor& sensor,
                      const EventEnable& enable, EventChange change)
{
    const auto object = existing(sensor);
    const auto flags = static_cast<unsigned char>(
        (enable.messages ? 0x80 : 0) | (enable.scanning ? 0x40 : 0) |
        static_cast<int>(change) << 4);
    const auto mask = [](const std::optional<unsigned>& bits) {
        return static_cast<unsigned short>(bits.value_or(0));
    };
    check(ask(device,
              [&] {
                  return object->setEventEnable(flags, mask(enable.assertion),
                                                mask(enable.deassertion));
              }),
          commands::setSensorEventEnable, "events not set");
}

void rearmEvents(Device& device, const Sensor& sensor)
{
    const auto object = existing(sensor);
    check(ask(device, [&] { return object->rearmEvents(); }),
          commands::rearmSensorEvents, "events not re-armed");
}

} // namespace Tool
