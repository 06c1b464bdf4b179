// Thresholds of a sensor. All requests go to the node's own controller,
// whoever owns the sensor.
#include <syslog.h>

#include <vek-ipmi/CmpiStatus.h>
#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiSensorRecord.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t sensorEvent = 0x04;

enum : uint8_t
{
    setSensorThresholds = 0x26,
    getSensorThresholds = 0x27
};

enum : int
{
    invalidCommand = 0xc1,
    illegalForSensor = 0xcd
};

// In requests and answers the six thresholds stand behind a number or a code,
// and a mask.
constexpr unsigned firstThreshold = 2;

constexpr const char* unreadable[THRESHOLD_COUNT] = {
    "Threshold sensor does not support lower non-critical",
    "Threshold sensor does not support lower critical",
    "Threshold sensor does not support lower non-recoverable",
    "Threshold sensor does not support upper non-critical",
    "Threshold sensor does not support upper critical",
    "Threshold sensor does not support upper non-recoverable",
};

[[noreturn]] void refuse(const char* text)
{
    throw CmpiStatus(CMPI_RC_ERR_FAILED, text);
}

// The record's defaults stand in the opposite order.
unsigned defaultAt(unsigned threshold)
{
    constexpr unsigned positions[THRESHOLD_COUNT] = {5, 4, 3, 2, 1, 0};
    return at::defaultThresholds + positions[threshold];
}

} // namespace

double IpmiSensor::readThreshold(unsigned threshold) const
{
    const unsigned bit = 1u << threshold;
    if (getThresholdAccessSupport() == 0 ||
        byteAt(at::eventType) != thresholdEventType)
        refuse("Not a threshold sensor");
    if (!(byteAt(at::readableMask) & bit))
        refuse(unreadable[threshold]);
    uint8_t request[1] = {number_};
    uint8_t answer[ipmiifc_resp::capacity] = {};
    uint16_t length = sizeof answer;
    const int code = IpmiIfc::sendCmd(node_, getSensorThresholds, sensorEvent,
                                      sizeof request, request, &length, answer);
    if (code == invalidCommand || code == illegalForSensor) {
        syslog(LOG_DEBUG, "invalid command to sensor(0x%x), cc = 0x%x", number_,
               unsigned(code));
        refuse("Failed to get threshold reading");
    }
    // Any other failure leaves zeroes: callers get the value of raw 0.
    return convertRawValue(answer[1] & bit ? answer[firstThreshold + threshold]
                                           : 0);
}

double IpmiSensor::getLowerNonCriticalThreshold(bool) const
{
    return readThreshold(LOWER_NON_CRITICAL);
}

double IpmiSensor::getLowerCriticalThreshold(bool) const
{
    return readThreshold(LOWER_CRITICAL);
}

double IpmiSensor::getLowerNonRecoverableThreshold(bool) const
{
    return readThreshold(LOWER_NON_RECOVERABLE);
}

double IpmiSensor::getUpperNonCriticalThreshold(bool) const
{
    return readThreshold(UPPER_NON_CRITICAL);
}

double IpmiSensor::getUpperCriticalThreshold(bool) const
{
    return readThreshold(UPPER_CRITICAL);
}

double IpmiSensor::getUpperNonRecoverableThreshold(bool) const
{
    return readThreshold(UPPER_NON_RECOVERABLE);
}

unsigned
IpmiSensor::setThresholds(double lowerNonCritical, double lowerCritical,
                          double lowerNonRecoverable, double upperNonCritical,
                          double upperCritical, double upperNonRecoverable)
{
    if (getThresholdAccessSupport() == 0)
        return 1;
    const double values[THRESHOLD_COUNT] = {
        lowerNonCritical, lowerCritical, lowerNonRecoverable,
        upperNonCritical, upperCritical, upperNonRecoverable};
    uint8_t request[firstThreshold + THRESHOLD_COUNT] = {number_};
    for (unsigned i = 0; i < THRESHOLD_COUNT; ++i) {
        const auto bit = static_cast<uint8_t>(1u << i);
        // What is not a number is not 0 either, and is set as raw 0.
        if (values[i] == 0.0 || !(byteAt(at::settableMask) & bit))
            continue;
        request[1] |= bit;
        request[firstThreshold + i] = uint8_t(convertToRawValue(values[i]));
    }
    uint8_t answer[1];
    return sendToSensor(setSensorThresholds, request, sizeof request, answer,
                        sizeof answer);
}

unsigned IpmiSensor::restoreDefaultThresholds() const
{
    if (getThresholdAccessSupport() == 0 ||
        byteAt(at::recordType) != fullRecord ||
        byteAt(at::eventType) != thresholdEventType)
        return 1;
    uint8_t request[firstThreshold + THRESHOLD_COUNT] = {number_};
    for (unsigned i = 0; i < THRESHOLD_COUNT; ++i) {
        const auto bit = static_cast<uint8_t>(1u << i);
        if (!(byteAt(at::settableMask) & bit))
            continue;
        request[1] |= bit;
        request[firstThreshold + i] = byteAt(defaultAt(i));
    }
    uint8_t answer[1];
    return sendToSensor(setSensorThresholds, request, sizeof request, answer,
                        sizeof answer);
}

} // namespace Ipmi
