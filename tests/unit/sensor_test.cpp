#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiIfcSensor.h"
#include "ipmi/IpmiSensorText.h"
#include "tests/support/libc_seam.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

template <typename Sensor = IpmiThresholdSensor>
Sensor make(RecordBytes record)
{
    return Sensor(int(record.size()), record.data(), 0);
}

// Every accessor, in a row, so that a record of any length passes them all.
template <typename Sensor>
std::vector<unsigned> allOf(const Sensor& s)
{
    return {s.getSensorNumber(),
            s.getSensorRecordNumber(),
            s.getOwnerId(),
            s.getLun(),
            s.getChannel(),
            s.getSensorType(),
            s.getEventReadingType(),
            s.getRateUnit(),
            s.getModifierUnitUse(),
            s.getBaseUnit(),
            s.getModifierUnit(),
            s.getSensorDirection(),
            s.getHysteresisSupport(),
            s.getThresholdAccessSupport(),
            s.getEventMessageSupport(),
            s.getFlags(),
            s.getAssertionEventMask(),
            s.getDeassertionEventMask(),
            s.getEntity().getId(),
            s.getEntity().getInstance(),
            s.isLinear(),
            s.isAnalog(),
            s.isConvertible()};
}

// Byte n holds 37 n + 11, so that no field passes for another.
TEST(Sensor, whatEachKindOfRecordSays)
{
    RecordBytes record(48);
    for (size_t i = 0; i < record.size(); ++i)
        record[i] = uint8_t(37 * i + 11);
    // Bytes 0 to 24: 0b 30 55 .. 9f c4 e9 0e 33 58 | 7d a2 c7 ec 11 36 5b 80
    // a5 ca | ef 14 39 5e 83
    const struct
    {
        uint8_t type;
        std::vector<unsigned> said;
        unsigned assertion, deassertion;
        const char* direction;
    } cases[] = {
        {0x01,
         {0x0e,   0x300b, 0xc4, 1,    0xe, 0xc7, 0xec, 5,
          3,      0x14,   0x39, 0,    2,   0,    2,    0x10bb,
          0x3611, 0x805b, 0x33, 0x58, 0,   0,    0},
         0x0611,
         0x005b,
         "reserved"},
        {0x02,
         {0x0e,   0x300b, 0xc4, 1,    0xe, 0xc7, 0xec, 5,
          3,      0x14,   0x39, 1,    2,   0,    2,    0x10bb,
          0x3611, 0x805b, 0x33, 0x58, 1,   0,    0},
         0x0611,
         0x005b,
         "input"},
        {0x03,
         {0x0e, 0x300b, 0xc4, 1, 0xe, 0x7d, 0xa2, 0,    0, 0, 0, 3,
          0,    0,      255,  0, 0,   0,    0x33, 0x58, 1, 0, 0},
         0,
         0,
         "reserved"},
        {0xc0,
         {0x0e, 0x300b, 0xc4, 1, 0xe, 0, 0,    0,    0, 0, 0, 0,
          0,    0,      255,  0, 0,   0, 0x33, 0x58, 1, 0, 0},
         0,
         0,
         ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.type));
        record[3] = c.type;
        EXPECT_EQ(allOf(make<IpmiDiscreteSensor>(record)), c.said);
        const auto threshold = make(record);
        EXPECT_EQ(threshold.getAssertionEventMask(), c.assertion);
        EXPECT_EQ(threshold.getDeassertionEventMask(), c.deassertion);
        EXPECT_EQ(threshold.getSensorDirectionString(), c.direction);
    }
}

// No byte outside of a record is looked at, whatever its length (the
// sanitizers watch), and what is cut off is neutral.
TEST(Sensor, recordsOfEveryLength)
{
    for (uint8_t type : {1, 2, 3})
        for (size_t length = 0; length <= 64; ++length) {
            RecordBytes record(length, 0xff);
            if (length > 3)
                record[3] = type;
            const auto sensor = make<IpmiDiscreteSensor>(record);
            allOf(sensor);
            sensor.getIdString();
            sensor.getDescription();
            sensor.convertRawValue(255);
            sensor.convertToRawValue(1);
            EXPECT_EQ(sensor.getSensorNumber(), length > 8 ? 0xff : 0);
            EXPECT_EQ(sensor.getLun(), length > 6 ? 3 : 0);
            if (length < 12) {
                EXPECT_EQ(sensor.getEventMessageSupport(), 255) << length;
            }
        }
}

TEST(Sensor, recordsThatAreTooLong)
{
    RecordBytes bytes(65, 0x11);
    IpmiSdrRecord record{64, bytes.data()};
    EXPECT_THROW(make(bytes), CmpiStatus);
    try {
        record.set(65, bytes.data());
        FAIL();
    } catch (const CmpiStatus& e) {
        EXPECT_EQ(e.rc(), CMPI_RC_ERR_FAILED);
    }
    EXPECT_EQ(record.length(), 65u) << "kept, so that callers can tell";
    EXPECT_EQ(record.bytes()[0], 0);
    EXPECT_THROW(IpmiSdrRecord{record}, CmpiStatus);
    record.set(64, bytes.data());
    record = *&record;
    EXPECT_EQ(record.bytes()[63], 0x11) << "assigned to itself";
}

// Byte 20 (format), linearisation, M, B, exponents; worked by hand.
TEST(Sensor, rawValuesAndRealOnes)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const struct
    {
        const char* what;
        uint8_t format, code, m, mHigh, b, bHigh, exponents;
        unsigned raw;
        double real;
        double wanted;
        int back;
    } cases[] = {
        {"M 2", 0x00, 0, 2, 0, 0, 0, 0x00, 50, 100, 100, 50},
        {"M 1, B 5 x 10, R -1", 0, 0, 1, 0, 5, 0, 0xf1, 10, 6, 6, 10},
        {"negative M and B", 0, 0, 0xff, 0xc0, 0xfb, 0xc0, 0, 10, -15, -15, 10},
        {"10-bit M", 0, 0, 0x00, 0x40, 0, 0, 0, 2, 512, 512, 2},
        {"two's complement", 0x80, 0, 1, 0, 0, 0, 0, 0xf0, -16, -16, -16},
        {"two's complement, too small", 0x80, 0, 1, 0, 0, 0, 0, 0x80, -128,
         -1000, -128},
        {"one's complement, -0", 0x40, 0, 1, 0, 0, 0, 0, 0xff, 0, 0, 0},
        {"one's complement, -1", 0x40, 0, 1, 0, 0, 0, 0, 0xfe, -1, -1, -2},
        {"one's complement, one less", 0x40, 0, 1, 0, 0, 0, 0, 5, 5, 5, 4},
        {"no numeric reading", 0xc0, 0, 1, 0, 0, 0, 0, 5, 0, 5, 0},
        {"ln", 0, 1, 1, 0, 0, 0, 0, 10, 2.302585092994046, 2.302585, 10},
        {"log10", 0, 2, 1, 0, 0, 0, 0, 100, 2, 2, 100},
        {"log2, undone as e to the value and two", 0, 3, 1, 0, 0, 0, 0, 8, 3, 3,
         148},
        {"e", 0, 4, 1, 0, 0, 0, 0, 1, 2.718281828459045, 2.7183, 1},
        {"exp10", 0, 5, 1, 0, 0, 0, 0, 2, 100, 100, 2},
        {"exp2", 0, 6, 1, 0, 0, 0, 0, 8, 256, 256, 8},
        {"1/x, never undone", 0, 7, 1, 0, 0, 0, 0, 4, 0.25, 0.25, 0},
        {"square", 0, 8, 1, 0, 0, 0, 0, 3, 9, 9, 3},
        {"cube", 0, 9, 1, 0, 0, 0, 0, 3, 27, 27, 3},
        {"square root", 0, 10, 1, 0, 0, 0, 0, 9, 3, 3, 9},
        {"cube root", 0, 11, 1, 0, 0, 0, 0, 27, 3, 3, 27},
        {"non-linear", 0, 0x70, 3, 0, 0, 0, 0, 5, 15, 15, 5},
        {"reserved bit", 0, 0x80, 3, 0, 0, 0, 0, 5, 15, 15, 5},
        {"M 0", 0, 0, 0, 0, 7, 0, 0, 5, 7, 3, 0},
        {"0 is raw 0", 0, 0, 1, 0, 10, 0, 0, 0, 10, 0, 0},
        {"not a number", 0, 0, 1, 0, 0, 0, 0, 0, 0, nan, 0},
        {"too large", 0, 0, 1, 0, 0, 0, 0, 0, 0, 1e30, 255},
    };
    for (const auto& c : cases) {
        const auto sensor = make(sensorRecord(1, 1,
                                              {{20, c.format},
                                               {23, c.code},
                                               {24, c.m},
                                               {25, c.mHigh},
                                               {26, c.b},
                                               {27, c.bHigh},
                                               {29, c.exponents}}));
        EXPECT_DOUBLE_EQ(sensor.convertRawValue(c.raw), c.real) << c.what;
        EXPECT_EQ(sensor.convertToRawValue(c.wanted), c.back) << c.what;
    }
    const auto compact = make(sensorRecord(2, 1, {{30, 0x02}}));
    EXPECT_EQ(compact.convertRawValue(5), 0);
    EXPECT_THROW(compact.getMinReadable(), CmpiStatus);
    EXPECT_THROW(compact.getNormalMax(), CmpiStatus);
    EXPECT_EQ(compact.getNormalMin(), 0) << "refused only with its flag";
}

TEST(Sensor, idStrings)
{
    using Record = RecordBytes;
    const struct
    {
        const char* what;
        Record record;
        const char* text;
    } cases[] = {
        {"8-bit", sensorRecord(1, 1, {}, "CPU 1"), "CPU 1"},
        {"padded", sensorRecord(1, 1, {}, std::string{"Fan \0\0", 6}), "Fan"},
        {"Latin-1 and control", sensorRecord(1, 1, {}, "\xb0\x07"),
         "\xc2\xb0\\x07"},
        {"6-bit, counted in characters",
         sensorRecord(1, 1, {{47, 0x85}}, "\x29\xdc\xa6\x12"), "IPMI2"},
        {"6-bit, counted in bytes",
         sensorRecord(1, 1, {{47, 0x83}}, "\x29\xdc\xa6"), "IPMI"},
        {"BCD plus", sensorRecord(1, 1, {{47, 0x44}}, "\x12\xab"), "12 -"},
        {"BCD plus, odd", sensorRecord(1, 1, {{47, 0x43}}, "\x12\x30"), "123"},
        {"UTF-16", sensorRecord(1, 1, {{47, 0x02}}, {"A\0\xe4\0", 4}),
         "A\\u00E4"},
        {"length beyond the record", sensorRecord(1, 1, {{47, 0xdf}}, "ab"),
         "ab"},
        {"not shared", sensorRecord(2, 1, {{23, 0x01}}, "Fan"), "Fan"},
        {"numeric", sensorRecord(2, 1, {{23, 0x03}, {24, 0x85}}, "Fan"),
         "Fan 5"},
        {"the last of them", sensorRecord(2, 1, {{23, 0x01}, {24, 7}}, "Fan"),
         "Fan 7"},
        {"alphabetic", sensorRecord(2, 1, {{23, 0x13}, {24, 27}}, "Slot"),
         "Slot AB"},
        {"event-only", sensorRecord(3, 1, {{12, 0x12}, {13, 25}}, "E"), "E Z"},
        {"without a name", sensorRecord(3, 77), ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(make(c.record).getIdString(), c.text) << c.what;
    const auto nameless = make(sensorRecord(3, 77, {{10, 4}, {6, 0x32}}));
    EXPECT_EQ(nameless.getName(), "Fan #77");
    EXPECT_EQ(nameless.getDescription(), "System Board 1: Fan");
    EXPECT_EQ(nameless.getDeviceId(), "77.50.32") << "channel 3, LUN 2";
    EXPECT_EQ(instanceModifier(701, true), "ZZ");
    EXPECT_EQ(instanceModifier(702, true), "AAA");
}

TEST(Sensor, namesOfUnitsAndTypes)
{
    EXPECT_EQ(DescFromUnit(1), "degrees C");
    EXPECT_EQ(DescFromUnit(65), "color temp deg K");
    EXPECT_EQ(DescFromUnit(90), "uncorrectable error");
    EXPECT_EQ(DescFromUnit(91), "");
    EXPECT_EQ(DescFromType(0x2c), "FRU State");
    EXPECT_EQ(DescFromType(0x2d), "OEM Reserved #2d");
    EXPECT_EQ(DescFromType(0xc0), "OEM Reserved #c0");
    const auto compact = make(sensorRecord(2, 1, {{12, 1}, {21, 4}}));
    EXPECT_EQ(compact.getBaseUnitString(), "Volts");
    _setState(0, IpmiIfc::STATE_CLI);
    EXPECT_EQ(compact.getBaseUnitString(), "threshold");
    EXPECT_EQ(make(sensorRecord(1, 1, {{12, 1}, {21, 4}})).getBaseUnitString(),
              "Volts");
    EXPECT_EQ(make(sensorRecord(2, 1, {{21, 145}})).getBaseUnitString(), "");
    EXPECT_EQ(make(sensorRecord(3, 1)).getBaseUnitString(), "");
}

TEST(Sensor, whichSensorARecordBecomes)
{
    using Kind = SensorKind;
    const struct
    {
        const char* what;
        uint8_t type;
        RecordFields fields;
        Kind kind;
    } cases[] = {
        {"threshold", 1, {}, Kind::threshold},
        {"threshold of no entity", 2, {{8, 0}}, Kind::threshold},
        {"sensor-specific", 1, {{13, 0x6f}}, Kind::discrete},
        {"last generic", 2, {{13, 0x0c}}, Kind::discrete},
        {"behind the last generic", 1, {{13, 0x0d}}, Kind::none},
        {"OEM", 2, {{13, 0x7f}}, Kind::discrete},
        {"behind OEM", 2, {{13, 0x80}}, Kind::none},
        {"discrete of no entity", 1, {{13, 3}, {8, 0}}, Kind::unlisted},
        {"of the host's firmware", 2, {{13, 3}, {8, 0x22}}, Kind::unlisted},
        {"event-only", 3, {{11, 0x6f}}, Kind::discrete},
        {"event-only OEM, by another byte",
         3,
         {{11, 0x70}, {13, 0}},
         Kind::none},
        {"event-only that passes for OEM",
         3,
         {{11, 0x0d}, {13, 0x70}},
         Kind::discrete},
    };
    for (const auto& c : cases) {
        const RecordBytes record = sensorRecord(c.type, 1, c.fields);
        EXPECT_EQ(sensorKindOf(c.type, {record.data(), record.size()}), c.kind)
            << c.what;
    }
}

// Readings as they come, and what is told of them.
TEST(Sensor, statesInWordsAndTheLastReading)
{
    using Words = std::vector<std::string>;
    const struct
    {
        const char* what;
        RecordBytes record;
        uint8_t reading[5];
        Words threshold, discrete;
    } cases[] = {
        {"well", sensorRecord(1, 1), {0, 50, 0xc0, 0, 0x80}, {}, {}},
        {"two passed",
         sensorRecord(1, 1),
         {0, 50, 0xc0, 0x18, 0},
         {"Upper Non-critical", "Upper Critical"},
         {"State 3", "State 4"}},
        {"unavailable", sensorRecord(1, 1), {0, 50, 0xe0, 0x18, 0}, {}, {}},
        {"power supply",
         sensorRecord(2, 1, {{12, 8}, {13, 0x6f}}),
         {0, 0, 0xc0, 0x03, 0x80},
         {"Lower Non-critical", "Lower Critical"},
         {"Presence Detected", "Power Supply Failure Detected"}},
        {"redundancy",
         sensorRecord(2, 1, {{13, 0x0b}}),
         {0, 0, 0xc0, 0x02, 0x80},
         {"Lower Critical"},
         {"Redundancy Lost"}},
    };
    for (const auto& c : cases) {
        auto threshold = make(c.record);
        auto discrete = make<IpmiDiscreteSensor>(c.record);
        EXPECT_TRUE(discrete.readingStateUnavailable());
        EXPECT_TRUE(discrete.getStates().empty());
        EXPECT_THROW(discrete.getState(false), CmpiStatus);
        EXPECT_EQ(threshold.getState(false), 0) << "none was attempted";
        threshold.setReading(c.reading);
        discrete.setReading(c.reading);
        EXPECT_EQ(threshold.getStates(), c.threshold) << c.what;
        EXPECT_EQ(discrete.getStates(), c.discrete) << c.what;
        EXPECT_EQ(discrete.getState(false), c.reading[3] | c.reading[4] << 8);
        EXPECT_FALSE(threshold.scanningDisabled());
    }
}

} // namespace
