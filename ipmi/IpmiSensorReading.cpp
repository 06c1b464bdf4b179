// What a sensor reports: its reading, its state and its health.
#include <algorithm>
#include <ctime>
#include <exception>
#include <iterator>
#include <syslog.h>

#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiMapper.h"
#include "ipmi/IpmiSensorRecord.h"
#include "ipmi/IpmiTransport.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t sensorEvent = 0x04;
constexpr uint8_t getSensorReading = 0x2d;
constexpr uint8_t notPresent = 0xcb;
constexpr int64_t microsecondsPerSecond = 1000000;

constexpr unsigned char readingUnavailable = 0x20;
constexpr unsigned char scanningEnabled = 0x40;

int64_t wholeSecondsNow()
{
    return int64_t(time(nullptr)) * microsecondsPerSecond;
}

template <size_t count>
void store(VEK::Relaxed<uint8_t> (&to)[count], const unsigned char* from)
{
    for (size_t i = 0; i < count; ++i)
        to[i] = from[i];
}

template <size_t count>
void load(uint8_t (&to)[count], const VEK::Relaxed<uint8_t> (&from)[count])
{
    std::copy(std::begin(from), std::end(from), to);
}

} // namespace

IpmiSensorReading IpmiSensor::lastReading() const
{
    IpmiSensorReading last{};
    last.valid = valid_;
    last.attempted = attempted_;
    load(last.bytes, reading_);
    last.length = readingLength_;
    last.time = readingTime_;
    load(last.thresholds, thresholdReading_);
    load(last.hysteresis, hysteresis_);
    last.lastResult = lastResult_;
    last.repeatCount = repeatCount_;
    return last;
}

bool IpmiSensor::readingStateUnavailable() const
{
    return !valid_ || reading_[2] & readingUnavailable;
}

bool IpmiSensor::scanningDisabled() const
{
    return valid_ && !(reading_[2] & scanningEnabled);
}

bool IpmiSensor::hasReadingTime() const
{
    return readingTime_ != 0;
}

void IpmiSensor::getReadingTime(std::string& text) const
{
    const auto seconds = time_t(readingTime_ / microsecondsPerSecond);
    tm fields{};
    char buffer[33] = "";
    gmtime_r(&seconds, &fields);
    strftime(buffer, sizeof buffer, "%FT%TZ", &fields);
    text = buffer;
}

void IpmiSensor::setReading(const unsigned char* bytes)
{
    store(reading_, bytes);
    valid_ = 1;
    readingTime_ = wholeSecondsNow();
}

void IpmiSensor::setReadingLength(int length)
{
    const int most = int(sizeof reading_);
    readingLength_ = static_cast<uint8_t>(std::clamp(length, 0, most));
}

void IpmiSensor::setThresholdReading(const unsigned char* bytes)
{
    store(thresholdReading_, bytes);
}

void IpmiSensor::copyHysteresis(const unsigned char* bytes)
{
    store(hysteresis_, bytes);
}

void IpmiSensor::noteResult(int result)
{
    repeatCount_ = result == lastResult_ ? repeatCount_ + 1 : 0;
    lastResult_ = result;
}

void IpmiSensor::getSDReading()
{
    // Room for what longer answers carry behind the five bytes of a reading:
    // a cut one would be told by a code that a controller may also send.
    uint8_t answer[ipmiifc_resp::capacity] = {};
    attempted_ = 1;
    store(reading_, answer);
    if (getOwnerId() & 0x01) // a software id: nobody to ask
        return;
    uint8_t number = number_;
    uint16_t length = sizeof answer;
    int code;
    {
        TargetUse owner{getOwnerId(), getChannel(), getLun()};
        code = IpmiIfc::sendCmd(node_, getSensorReading, sensorEvent, 1,
                                &number, &length, answer);
    }
    valid_ = code == 0;
    if (code == 0) {
        store(reading_, answer);
        readingTime_ = wholeSecondsNow();
        setReadingLength(length);
    } else if (code == notPresent) {
        attempted_ = 0;
        return;
    } else {
        syslog(LOG_WARNING,
               "IpmiSensor::getSDReading: unexpected return cc code for node: "
               "%d cmd: %d/%d was 0x%x",
               node_, getSensorReading, sensorEvent, unsigned(code));
    }
    if (attempted_ && !valid_)
        syslog(LOG_WARNING,
               "IpmiSensor::getSDReading no value read for sensor %d", number_);
}

unsigned char IpmiSensor::getReading()
{
    getSDReading();
    return valid_ && reading_[0] == 0 ? uint8_t(reading_[1]) : uint8_t{0};
}

unsigned char IpmiSensor::getReading(bool)
{
    return getReading();
}

namespace
{

[[noreturn]] void fail(VEK::Relaxed<uint8_t>& flag, const char* text)
{
    flag = 0;
    throw CmpiStatus(CMPI_RC_ERR_FAILED, text);
}

} // namespace

int IpmiThresholdSensor::getState(bool refresh)
{
    if (refresh)
        getSDReading();
    if (attempted_ && !valid_)
        fail(notAvailableFlag_, "Threshold Sensor reading not available");
    if (reading_[0] != 0)
        fail(requestFailedFlag_, "Threshold Sensor reading request failed");
    return reading_[3];
}

// Asks whether the reading is valid alone, where thresholds also ask whether
// one was attempted: callers know both.
int IpmiDiscreteSensor::getState(bool refresh)
{
    if (refresh)
        getSDReading();
    if (!valid_)
        fail(notAvailableFlag_, "Discrete Sensor reading not available");
    if (reading_[0] != 0)
        fail(requestFailedFlag_, "Discrete Sensor reading request failed");
    return reading_[3] | reading_[4] << 8;
}

int IpmiThresholdSensor::getSensorState(int& state)
{
    constexpr unsigned criticalOrWorse =
        1u << LOWER_CRITICAL | 1u << LOWER_NON_RECOVERABLE |
        1u << UPPER_CRITICAL | 1u << UPPER_NON_RECOVERABLE;
    constexpr unsigned nonCritical =
        1u << LOWER_NON_CRITICAL | 1u << UPPER_NON_CRITICAL;
    state = 0;
    getSDReading();
    if (!attempted_)
        return 0;
    if (!valid_)
        return 1;
    const unsigned passed = reading_[3];
    state = passed & criticalOrWorse ? 25 : passed & nonCritical ? 10 : 5;
    return 1;
}

int IpmiDiscreteSensor::getSensorState(int& state)
{
    state = 0;
    getSDReading();
    if (!attempted_)
        return 0;
    if (!valid_)
        return 1;
    unsigned bits = reading_[3];
    if (readingLength_ > 4)
        bits += (reading_[4] & 0x7fu) << 8;
    try {
        const int health =
            getSensorHealthState(getEventReadingType(), getSensorType(),
                                 number_, static_cast<unsigned short>(bits));
        state = health & 0xffff;
    } catch (const std::exception&) {
        return 0;
    }
    return 1;
}

} // namespace Ipmi
