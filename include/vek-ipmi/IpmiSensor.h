/// Sensors: a sensor data record (IPMI v2.0, 43.1 to 43.3) with what was last
/// read from the sensor.
///
/// Everything static is decoded from the record on demand; a record too short
/// for a field answers 0 (255 for the event message support). "Byte n" is byte
/// n of the record, from 0 at the header.
///
/// Threads: the objects are shared between the polling thread and callers.
/// What is read from the controller lies in relaxed atomics without a lock of
/// its own: a copy taken while the sensor is refreshed may hold bytes of two
/// readings. A sensor that the node has replaced stays valid and is no longer
/// refreshed.
///
/// Operations that send wait as IpmiIfc::sendCmd does. Those that are said to
/// send to the sensor's owner reach the controller that owns it (IPMI v2.0,
/// 43.1, byte 6 and 7); all others reach the node's own controller, whoever
/// owns the sensor: callers rely on it.
///
/// Results of commands: 0; 1 where the controller answered C1h or CDh; else
/// the completion code, 0xFF without an answer.
#ifndef VEK_IPMI_IPMISENSOR_H
#define VEK_IPMI_IPMISENSOR_H

#include <cstdint>
#include <string>
#include <vector>

#include <vek-ipmi/IpmiEntity.h>
#include <vek-ipmi/IpmiSdrRecord.h>
#include <vek-ipmi/VekRelaxed.h>

namespace Ipmi
{

/// The order of thresholds everywhere: the bit in masks and state bytes.
enum IpmiThreshold
{
    LOWER_NON_CRITICAL = 0,
    LOWER_CRITICAL = 1,
    LOWER_NON_RECOVERABLE = 2,
    UPPER_NON_CRITICAL = 3,
    UPPER_CRITICAL = 4,
    UPPER_NON_RECOVERABLE = 5,
    THRESHOLD_COUNT = 6
};

/// What was last read from a sensor. Bytes that did not come are 0.
struct IpmiSensorReading
{
    bool valid;       ///< A reading is held; ended by one that the object
                      ///< itself asks for (getReading) and does not get.
    bool attempted;   ///< The object itself asked, and was not told that the
                      ///< sensor is absent.
    uint8_t bytes[5]; ///< Get Sensor Reading answer, completion code first
                      ///< (IPMI v2.0, 35.14).
    uint8_t length;   ///< How many of the five bytes came.
    int64_t time;     ///< Microseconds since 1970 of the last good reading, in
                      ///< whole seconds; 0: none.
    uint8_t thresholds[8]; ///< Get Sensor Thresholds answer, completion code
                           ///< and readable mask first (35.9).
    uint8_t hysteresis[3]; ///< Get Sensor Hysteresis answer (35.7).
    int lastResult;  ///< Of the node's last request: 0, a completion code, -1
                     ///< when nothing was sent.
    int repeatCount; ///< How often that result came again since.
};

class IpmiSensor
{
public:
    /// @param bytes copied; may be null with a length of 0.
    /// @throws CmpiStatus rc 1 "SDR is too long" above 64 bytes.
    IpmiSensor(int length, unsigned char* bytes, int node);
    IpmiSensor(const IpmiSensor&) = delete;
    IpmiSensor& operator=(const IpmiSensor&) = delete;

    // The order of the virtual operations is part of the interface.

    virtual ~IpmiSensor();
    virtual bool isDiscrete() const = 0;
    /// @param refresh read the sensor first (sends to the owner).
    /// @return thresholds: state byte 1, a bit for each IpmiThreshold that is
    ///     passed; discrete: 16 bits, a bit for each state.
    /// @throws CmpiStatus rc 1 without a reading; but a threshold sensor of
    ///     which none was asked for, or that is absent, passes no threshold
    ///     then: getSensorState tells the difference.
    virtual int getState(bool refresh) = 0;
    /// Reads the sensor (sends to the owner) and judges it.
    /// @param state thresholds: 5 well, 10 non-critical, 25 critical or worse;
    ///     discrete: the health table's number; 0 unknown.
    /// @return 1, or 0 when there was nothing to judge.
    virtual int getSensorState(int& state) = 0;
    virtual unsigned short getAssertionEventMask() const = 0;
    virtual unsigned short getDeassertionEventMask() const = 0;
    /// Re-arms the events of the masks (IPMI v2.0, 35.12).
    virtual unsigned rearmEvents(unsigned short assertion,
                                 unsigned short deassertion) const = 0;
    /// The masks stay as they are unless flags has bit 7, event messages
    /// enabled (IPMI v2.0, 35.11); all stay after a failure.
    virtual unsigned getEventEnable(unsigned char& flags,
                                    unsigned short& assertion,
                                    unsigned short& deassertion) const = 0;
    virtual unsigned setEventEnable(unsigned char flags,
                                    unsigned short assertion,
                                    unsigned short deassertion) const = 0;

    /// Re-arms all events.
    unsigned rearmEvents() const;

    // The record.

    unsigned char getSensorNumber() const { return number_; }
    unsigned short getSensorRecordNumber() const { return recordId_; }
    /// Slave address, or with bit 0 set a software id.
    unsigned char getOwnerId() const;
    unsigned char getLun() const;
    unsigned char getChannel() const;
    unsigned char getSensorType() const;
    unsigned char getEventReadingType() const;
    unsigned char getRateUnit() const;
    unsigned char getModifierUnitUse() const;
    unsigned char getBaseUnit() const;
    unsigned char getModifierUnit() const;
    /// 0 for every full record: callers rely on it. The text below tells it.
    unsigned char getSensorDirection() const;
    std::string getSensorDirectionString() const;
    unsigned char getHysteresisSupport() const;
    unsigned char getThresholdAccessSupport() const;
    unsigned char getEventMessageSupport() const;
    /// Bits 0 to 6: initialise scanning, events, (0), hysteresis, type;
    /// scanning, event generation on at start; 7 ignore if absent; 8
    /// auto-re-arm; 12 percentage.
    unsigned short getFlags() const;
    /// False for every full record, whatever its linearisation.
    bool isLinear() const;
    bool isAnalog() const;
    /// Has conversion factors: the operations on real values work.
    bool isConvertible() const;
    const unsigned char* getSdr() const { return record_.bytes(); }
    void RawRecord(const unsigned char*& bytes, int& length) const;
    IpmiEntity getEntity() const;
    int getNode() const { return node_; }
    /// As IpmiIfc::getManufacturerId for the sensor's node.
    int getManufacturerId(unsigned char* id, unsigned char& len) const;
    /// Prints the record to standard output.
    void dump() const;

    // Names.

    std::string getSensorTypeString() const;
    /// A compact record without modifier unit on a node in command-line mode
    /// answers a class of states instead of the unit.
    std::string getBaseUnitString() const;
    std::string getModifierUnitString() const;
    /// The record's own name in UTF-8: 8-bit, 6-bit packed and BCD plus texts
    /// decoded, what cannot be printed as \xHH or \uHHHH; a shared record's
    /// instance behind it ("Fan 3", "DIMM C"; IPMI v2.0, 43.2).
    std::string getIdString() const;
    /// "NUMBER.HIGH.LOW" in decimal, with the bytes of the sensor's generator
    /// id (owner in the low byte, LUN and channel in the high byte): unique on
    /// the node, the same after every re-read, and the DeviceID of event
    /// records.
    std::string getDeviceId() const;
    /// The id string, or "TYPE #NUMBER" for a record without one.
    std::string getName() const;
    /// "ENTITY INSTANCE: TYPE", as "Power Supply 1: Voltage".
    std::string getDescription() const;
    /// The asserted states of the last reading in words, lowest bit first;
    /// empty when none is asserted or there is no reading. Sends nothing.
    std::vector<std::string> getStates() const;

    // The last reading.

    /// Sends nothing.
    IpmiSensorReading lastReading() const;
    bool readingStateUnavailable() const;
    bool scanningDisabled() const;
    bool hasReadingTime() const;
    /// "2026-01-31T12:00:00Z".
    void getReadingTime(std::string& text) const;

    /// Each reads the sensor (sends to the owner); the raw byte, 0 without a
    /// reading. The argument of the second is ignored.
    unsigned char getReading();
    unsigned char getReading(bool);

    /// Stores the answer of Get Sensor Reading (5 bytes) as read now.
    void setReading(const unsigned char* bytes);
    /// How many of the bytes the controller sent.
    void setReadingLength(int length);
    /// Stores the answer of Get Sensor Thresholds (8 bytes).
    void setThresholdReading(const unsigned char* bytes);
    /// Keeps the result of a request for the sensor's reading, and how often
    /// the same came in a row.
    void noteResult(int result);

    // Real values, in getBaseUnit().

    /// 0.0, with a log line, for a record without conversion factors.
    double convertRawValue(unsigned raw) const;
    /// Clamped to what the record's analog format can hold; 0 for 0.0 and for
    /// what is not a number. Not the exact inverse: 0.0 is always raw 0, and
    /// two linearisations are undone as callers know it.
    int convertToRawValue(double value) const;
    double getReading(unsigned raw) const { return convertRawValue(raw); }

    /// Each asks the controller; the argument is ignored.
    /// @throws CmpiStatus rc 1 when the threshold cannot be read.
    double getLowerNonCriticalThreshold(bool) const;
    double getLowerCriticalThreshold(bool) const;
    double getLowerNonRecoverableThreshold(bool) const;
    double getUpperNonCriticalThreshold(bool) const;
    double getUpperCriticalThreshold(bool) const;
    double getUpperNonRecoverableThreshold(bool) const;

    /// A value of 0.0 and one that is not settable leave that threshold alone.
    unsigned setThresholds(double lowerNonCritical, double lowerCritical,
                           double lowerNonRecoverable, double upperNonCritical,
                           double upperCritical, double upperNonRecoverable);
    /// To the record's defaults; 1 for a record without them.
    unsigned restoreDefaultThresholds() const;

    /// @throws CmpiStatus rc 1 for a record that is not a full one; the last
    ///     three only when its byte 30 says that the value is given.
    double getMinReadable() const;
    double getMaxReadable() const;
    double getNormalMin() const;
    double getNormalMax() const;
    double getNominalReading() const;
    bool isNominalReadingSet() const;
    bool isNormalMaxSet() const;
    bool isNormalMinSet() const;

protected:
    unsigned char byteAt(unsigned at) const;
    unsigned short wordAt(unsigned at) const;
    /// A full or compact record: those have masks and units.
    bool hasMasks() const;

    /// Reads the sensor; sends to the owner.
    void getSDReading();

    unsigned rearmEvents(unsigned short assertion, unsigned short deassertion,
                         unsigned char highMask) const;
    unsigned getEventEnable(unsigned char& flags, unsigned short& assertion,
                            unsigned short& deassertion,
                            unsigned char highMask) const;
    unsigned setEventEnable(unsigned char flags, unsigned short assertion,
                            unsigned short deassertion,
                            unsigned char highMask) const;
    /// One exchange; C1h and CDh become 1.
    unsigned sendToSensor(unsigned char command, unsigned char* request,
                          unsigned short size, unsigned char* answer,
                          unsigned short answerSize) const;

    using Byte = VEK::Relaxed<uint8_t>;
    void copyHysteresis(const unsigned char* bytes);

    IpmiSdrRecord record_;
    Byte reading_[5];
    VEK::Relaxed<int64_t> readingTime_{0};
    VEK::Relaxed<uint8_t> valid_{0};
    VEK::Relaxed<uint8_t> attempted_{0};
    // Cleared with the first exception of their kind, and read by nobody yet.
    VEK::Relaxed<uint8_t> notAvailableFlag_{1};
    VEK::Relaxed<uint8_t> requestFailedFlag_{1};
    Byte thresholdReading_[8];
    Byte hysteresis_[3];
    int node_;
    unsigned char number_ = 0;
    unsigned short recordId_ = 0;
    VEK::Relaxed<uint8_t> readingLength_{0};
    VEK::Relaxed<int> lastResult_{0};
    VEK::Relaxed<int> repeatCount_{0};

private:
    double readThreshold(unsigned threshold) const;
};

/// Event/reading type 01h.
class IpmiThresholdSensor : public IpmiSensor
{
public:
    using IpmiSensor::IpmiSensor;
    using IpmiSensor::rearmEvents;

    bool isDiscrete() const override { return false; }
    int getState(bool refresh) override;
    int getSensorState(int& state) override;
    unsigned short getAssertionEventMask() const override;
    unsigned short getDeassertionEventMask() const override;
    unsigned rearmEvents(unsigned short assertion,
                         unsigned short deassertion) const override;
    unsigned getEventEnable(unsigned char& flags, unsigned short& assertion,
                            unsigned short& deassertion) const override;
    unsigned setEventEnable(unsigned char flags, unsigned short assertion,
                            unsigned short deassertion) const override;

    /// A bit for each IpmiThreshold; the first two for lower and upper ones
    /// alone, from non-critical in bit 0.
    unsigned char getLowerThresholdReadingMask() const;
    unsigned char getUpperThresholdReadingMask() const;
    unsigned char getReadableMask() const;
    unsigned char getSettableMask() const;

    /// Raw values. @param fetch ask the controller first.
    unsigned getHysteresis(unsigned char& positive, unsigned char& negative,
                           bool fetch);
    /// Does not change what getHysteresis holds.
    unsigned setHysteresis(unsigned char positive,
                           unsigned char negative) const;
    /// Asks the controller, if the sensor has a hysteresis.
    void cacheHysteresis();
    void cacheHysteresis(unsigned char positive, unsigned char negative);
};

/// Every other event/reading type.
class IpmiDiscreteSensor : public IpmiSensor
{
public:
    using IpmiSensor::IpmiSensor;
    using IpmiSensor::rearmEvents;

    bool isDiscrete() const override { return true; }
    int getState(bool refresh) override;
    int getSensorState(int& state) override;
    unsigned short getAssertionEventMask() const override;
    unsigned short getDeassertionEventMask() const override;
    unsigned rearmEvents(unsigned short assertion,
                         unsigned short deassertion) const override;
    unsigned getEventEnable(unsigned char& flags, unsigned short& assertion,
                            unsigned short& deassertion) const override;
    unsigned setEventEnable(unsigned char flags, unsigned short assertion,
                            unsigned short deassertion) const override;

    /// A bit for each state that the sensor can report.
    unsigned short getReadingMask() const;
};

/// "Unspecified", "input", "output", "reserved"; empty above 3.
std::string DescFromDirection(unsigned char direction);

/// Name of a sensor type (IPMI v2.0, table 42-3), "OEM Reserved #c0" above
/// 2Ch.
std::string DescFromType(unsigned char type);

/// Name of a unit (IPMI v2.0, table 43-15); empty above 90. Whatever the
/// node's mode.
std::string DescFromUnit(unsigned char unit);

} // namespace Ipmi

#endif
