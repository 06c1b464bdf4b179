// Events and hysteresis of a sensor. All requests go to the node's own
// controller, whoever owns the sensor.
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
    setSensorHysteresis = 0x24,
    getSensorHysteresis = 0x25,
    setSensorEventEnable = 0x28,
    getSensorEventEnable = 0x29,
    rearmSensorEvents = 0x2a
};

constexpr uint8_t allOfThem = 0xff; // reserved for a hysteresis mask

// Bits of a mask's high byte: 12 thresholds, 15 states.
constexpr uint8_t thresholdHighMask = 0x0f;
constexpr uint8_t discreteHighMask = 0x7f;

uint8_t low(unsigned short mask)
{
    return uint8_t(mask & 0xff);
}

uint8_t high(unsigned short mask, uint8_t bits)
{
    return uint8_t(mask >> 8 & bits);
}

unsigned short word(uint8_t low, uint8_t high)
{
    return static_cast<unsigned short>(low | high << 8);
}

} // namespace

unsigned IpmiSensor::sendToSensor(unsigned char command, unsigned char* request,
                                  unsigned short size, unsigned char* answer,
                                  unsigned short answerSize) const
{
    uint16_t length = answerSize;
    const int code = IpmiIfc::sendCmd(node_, command, sensorEvent, size,
                                      request, &length, answer);
    const bool unsupported = code == 0xc1 || code == 0xcd;
    return unsupported ? 1 : unsigned(code);
}

unsigned IpmiSensor::rearmEvents() const
{
    uint8_t request[2] = {number_, 0x00};
    uint8_t answer[1];
    return sendToSensor(rearmSensorEvents, request, sizeof request, answer,
                        sizeof answer);
}

unsigned IpmiSensor::rearmEvents(unsigned short assertion,
                                 unsigned short deassertion,
                                 unsigned char highMask) const
{
    constexpr uint8_t selected = 0x80;
    uint8_t request[6] = {number_,          selected,
                          low(assertion),   high(assertion, highMask),
                          low(deassertion), high(deassertion, highMask)};
    uint8_t answer[1];
    return sendToSensor(rearmSensorEvents, request, sizeof request, answer,
                        sizeof answer);
}

unsigned IpmiSensor::getEventEnable(unsigned char& flags,
                                    unsigned short& assertion,
                                    unsigned short& deassertion,
                                    unsigned char highMask) const
{
    constexpr uint8_t messagesEnabled = 0x80;
    uint8_t request[1] = {number_};
    uint8_t answer[6] = {};
    const unsigned code = sendToSensor(getSensorEventEnable, request,
                                       sizeof request, answer, sizeof answer);
    if (code != 0)
        return code;
    flags = answer[1];
    if (flags & messagesEnabled) {
        assertion = word(answer[2], answer[3] & highMask);
        deassertion = word(answer[4], answer[5] & highMask);
    }
    return code;
}

unsigned IpmiSensor::setEventEnable(unsigned char flags,
                                    unsigned short assertion,
                                    unsigned short deassertion,
                                    unsigned char highMask) const
{
    uint8_t request[6] = {number_,          flags,
                          low(assertion),   high(assertion, highMask),
                          low(deassertion), high(deassertion, highMask)};
    uint8_t answer[1];
    return sendToSensor(setSensorEventEnable, request, sizeof request, answer,
                        sizeof answer);
}

unsigned short IpmiThresholdSensor::getAssertionEventMask() const
{
    return hasMasks() ? wordAt(at::assertionMask) & 0x0fff : 0;
}

unsigned short IpmiThresholdSensor::getDeassertionEventMask() const
{
    return hasMasks() ? wordAt(at::deassertionMask) & 0x0fff : 0;
}

unsigned IpmiThresholdSensor::rearmEvents(unsigned short assertion,
                                          unsigned short deassertion) const
{
    return IpmiSensor::rearmEvents(assertion, deassertion, thresholdHighMask);
}

unsigned IpmiThresholdSensor::getEventEnable(unsigned char& flags,
                                             unsigned short& assertion,
                                             unsigned short& deassertion) const
{
    return IpmiSensor::getEventEnable(flags, assertion, deassertion,
                                      thresholdHighMask);
}

unsigned IpmiThresholdSensor::setEventEnable(unsigned char flags,
                                             unsigned short assertion,
                                             unsigned short deassertion) const
{
    return IpmiSensor::setEventEnable(flags, assertion, deassertion,
                                      thresholdHighMask);
}

unsigned char IpmiThresholdSensor::getLowerThresholdReadingMask() const
{
    return hasMasks() ? wordAt(at::assertionMask) >> 12 & 0x07 : 0;
}

unsigned char IpmiThresholdSensor::getUpperThresholdReadingMask() const
{
    return hasMasks() ? wordAt(at::deassertionMask) >> 12 & 0x07 : 0;
}

unsigned char IpmiThresholdSensor::getReadableMask() const
{
    return hasMasks() ? byteAt(at::readableMask) & 0x3f : 0;
}

unsigned char IpmiThresholdSensor::getSettableMask() const
{
    return hasMasks() ? byteAt(at::settableMask) & 0x3f : 0;
}

unsigned IpmiThresholdSensor::getHysteresis(unsigned char& positive,
                                            unsigned char& negative, bool fetch)
{
    if (fetch) {
        uint8_t request[2] = {number_, allOfThem};
        // Room for more than the three bytes, which would be told by a code.
        uint8_t answer[ipmiifc_resp::capacity] = {};
        const unsigned code =
            sendToSensor(getSensorHysteresis, request, sizeof request, answer,
                         sizeof answer);
        if (code != 0)
            return code;
        copyHysteresis(answer);
    }
    if (hysteresis_[0] != 0)
        return hysteresis_[0];
    positive = hysteresis_[1];
    negative = hysteresis_[2];
    return 0;
}

unsigned IpmiThresholdSensor::setHysteresis(unsigned char positive,
                                            unsigned char negative) const
{
    uint8_t request[4] = {number_, allOfThem, positive, negative};
    uint8_t answer[1];
    return sendToSensor(setSensorHysteresis, request, sizeof request, answer,
                        sizeof answer);
}

void IpmiThresholdSensor::cacheHysteresis()
{
    unsigned char positive = 0;
    unsigned char negative = 0;
    if (getHysteresisSupport() && getHysteresis(positive, negative, true) == 0)
        cacheHysteresis(positive, negative);
}

void IpmiThresholdSensor::cacheHysteresis(unsigned char positive,
                                          unsigned char negative)
{
    hysteresis_[1] = positive;
    hysteresis_[2] = negative;
}

unsigned short IpmiDiscreteSensor::getAssertionEventMask() const
{
    return hasMasks() ? wordAt(at::assertionMask) : 0;
}

unsigned short IpmiDiscreteSensor::getDeassertionEventMask() const
{
    return hasMasks() ? wordAt(at::deassertionMask) : 0;
}

unsigned IpmiDiscreteSensor::rearmEvents(unsigned short assertion,
                                         unsigned short deassertion) const
{
    return IpmiSensor::rearmEvents(assertion, deassertion, discreteHighMask);
}

unsigned IpmiDiscreteSensor::getEventEnable(unsigned char& flags,
                                            unsigned short& assertion,
                                            unsigned short& deassertion) const
{
    return IpmiSensor::getEventEnable(flags, assertion, deassertion,
                                      discreteHighMask);
}

unsigned IpmiDiscreteSensor::setEventEnable(unsigned char flags,
                                            unsigned short assertion,
                                            unsigned short deassertion) const
{
    return IpmiSensor::setEventEnable(flags, assertion, deassertion,
                                      discreteHighMask);
}

unsigned short IpmiDiscreteSensor::getReadingMask() const
{
    return hasMasks() ? wordAt(at::readingMask) : 0;
}

} // namespace Ipmi
