/// Sensors as their controller has them (IPMI v2.0, 35).
#ifndef VEK_SIM_MODEL_SENSOR_H
#define VEK_SIM_MODEL_SENSOR_H

#include <array>
#include <map>
#include <optional>

#include "sim/model/command.h"
#include "sim/model/script.h"

namespace Sim
{

struct Sensor
{
    /// How the bits of a reading make a number, as a record spells it.
    enum class Format : uint8_t
    {
        Unsigned = 0,
        OnesComplement = 1,
        TwosComplement = 2,
        None = 3
    };
    /// Bits of the enables.
    enum Enable : uint8_t
    {
        scanning = 0x40,
        eventMessages = 0x80
    };
    /// Of hysteresis and of thresholds, as a record spells it.
    enum class Access : uint8_t
    {
        None = 0,
        Readable = 1,
        Settable = 2,
        Fixed = 3
    };

    static constexpr uint8_t thresholdEventType = 0x01;

    // What its record says; of a sensor without one, the profile.
    uint8_t number = 0, lun = 0;
    uint8_t type = 0;
    uint8_t eventType = thresholdEventType;
    uint8_t capabilities = 0; ///< Byte 12 of its record.
    Format format = Format::Unsigned;
    bool falling = false; ///< A larger raw value is a smaller reading.
    uint8_t readable = 0, settable = 0; ///< Thresholds, a bit each.
    uint8_t compared = 0;               ///< Those whose state it tells.
    std::array<uint8_t, 6> factors{};   ///< Bytes 25 to 30 of its record.

    // What it does.
    bool present = true; ///< Else CBh.
    bool unavailable = false;
    uint8_t enables = scanning | eventMessages;
    uint16_t assertions = 0, deassertions = 0; ///< Events that are enabled.
    uint8_t reading = 0; ///< Raw; a script goes before it.
    uint16_t states = 0; ///< Of a discrete sensor; likewise.
    Script script;       ///< Of raw values, signed as the format says.
    /// Lower non-critical, critical, non-recoverable, then the upper ones.
    std::array<uint8_t, 6> thresholds{};
    uint8_t positiveHysteresis = 0, negativeHysteresis = 0;
    uint8_t exceeded = 0; ///< Thresholds, with hysteresis, at the last look.
    /// `exceeded`, or the states, when events were taken last.
    std::optional<uint16_t> told;
    /// By command: instead of what it would answer. Empty: silence.
    std::map<uint8_t, Bytes> answers;

    bool hasThresholds() const { return eventType == thresholdEventType; }
    Access hysteresisAccess() const { return Access(capabilities >> 4 & 3); }
    Access thresholdAccess() const { return Access(capabilities >> 2 & 3); }
    bool sendsEvents() const { return (capabilities & 3) != 3; }

    int toNumber(uint8_t raw) const;
    uint8_t toRaw(int value) const; ///< Clamped to the format's range.

    /// Moves on to what it reads `seconds` after the controller's start.
    void update(int64_t seconds);
    uint16_t condition() const { return hasThresholds() ? exceeded : states; }
    /// Events that such a condition asserts, a bit each.
    uint16_t eventsOf(uint16_t condition) const;
    uint16_t assertedEvents() const { return eventsOf(condition()); }

private:
    using Comparison = std::array<uint8_t, 13>;
    Comparison comparison() const;
    void compare();

    Comparison settled_{}; ///< What was compared last, with its result.
};

/// Sensors of different LUNs may have one number.
constexpr uint16_t sensorKey(uint8_t lun, uint8_t number)
{
    return uint16_t(lun << 8 | number);
}
using Sensors = std::map<uint16_t, Sensor>;

extern const Family sensorFamily;

} // namespace Sim

#endif
