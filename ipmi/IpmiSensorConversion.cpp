// Raw readings and real values (IPMI v2.0, 36.3).
#include <algorithm>
#include <cmath>
#include <syslog.h>

#include <vek-ipmi/CmpiStatus.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiSensorRecord.h"

namespace Ipmi
{

namespace
{

enum AnalogFormat
{
    unsignedFormat = 0,
    onesComplement = 1,
    twosComplement = 2,
    noNumericReading = 3
};

enum Linearization
{
    linear = 0,
    naturalLog = 1,
    log10Of = 2,
    log2Of = 3,
    eToThe = 4,
    tenToThe = 5,
    twoToThe = 6,
    oneOver = 7,
    square = 8,
    cube = 9,
    squareRoot = 10,
    cubeRoot = 11
};

constexpr double ln2 = 0.6931471805599453;
constexpr double eSquared = 7.38905609893065;

int signExtended(unsigned value, unsigned bits)
{
    const unsigned sign = 1u << (bits - 1);
    return int(value ^ sign) - int(sign);
}

int tenBits(unsigned low, unsigned high)
{
    return signExtended(low | (high & 0xc0) << 2, 10);
}

struct Factors
{
    int m;
    int b;
    int bExponent;
    int rExponent;
};

Factors decodeFactors(unsigned mLow, unsigned mHigh, unsigned bLow,
                      unsigned bHigh, unsigned exponents)
{
    return {tenBits(mLow, mHigh), tenBits(bLow, bHigh),
            signExtended(exponents & 0x0f, 4), signExtended(exponents >> 4, 4)};
}

long double power10(int exponent)
{
    return std::pow(10.0L, exponent);
}

double signedReading(unsigned raw, unsigned format)
{
    const unsigned byte = raw & 0xff;
    switch (format) {
    case onesComplement:
        return signExtended((byte + (byte >> 7)) & 0xff, 8);
    case twosComplement:
        return signExtended(byte, 8);
    default:
        return raw;
    }
}

long double linearized(long double y, unsigned code)
{
    switch (code) {
    case naturalLog:
        return std::log(y);
    case log10Of:
        return std::log10(y);
    case log2Of:
        return std::log(y) / ln2;
    case eToThe:
        return std::exp(y);
    case tenToThe:
        return std::pow(10.0L, y);
    case twoToThe:
        return std::pow(2.0L, y);
    case oneOver:
        return 1.0L / y;
    case square:
        return y * y;
    case cube:
        return y * y * y;
    case squareRoot:
        return std::sqrt(y);
    case cubeRoot:
        return std::cbrt(y);
    default: // linear, and non-linear ones whose factors vary with the reading
        return y;
    }
}

double withoutLinearization(double v, unsigned code)
{
    switch (code) {
    case naturalLog:
        return std::exp(v);
    case log10Of:
        return std::pow(10.0, v);
    case log2Of:
        // Not 2 to the power v: callers have set thresholds by it for long.
        return std::exp(v) * eSquared;
    case eToThe:
        return std::log(v);
    case tenToThe:
        return std::log10(v);
    case twoToThe:
        return std::log(v) / ln2;
    case oneOver:
        // Never a number: thresholds of such a sensor end up as 0, as callers
        // know them.
        return std::log(v) / std::log(-1.0);
    case square:
        return std::sqrt(v);
    case cube:
        return std::cbrt(v);
    case squareRoot:
        return v * v;
    case cubeRoot:
        return std::pow(v, 3.0);
    default:
        return v;
    }
}

int clampedToFormat(double raw, unsigned format)
{
    if (std::isnan(raw))
        return 0;
    const double least = format == unsignedFormat ? 0 : -128;
    const double most = format == unsignedFormat ? 255 : 127;
    return int(std::clamp(raw, least, most));
}

} // namespace

double IpmiSensor::convertRawValue(unsigned raw) const
{
    if (byteAt(at::recordType) != fullRecord) {
        syslog(LOG_ERR, "%s: request but not a full sensor", __func__);
        return 0.0;
    }
    const unsigned format = byteAt(at::units) >> 6;
    if (format == noNumericReading) {
        syslog(LOG_ERR, "%s: request against non-threshold sensor", __func__);
        return 0.0;
    }
    const Factors factors =
        decodeFactors(byteAt(at::mLow), byteAt(at::mHigh), byteAt(at::bLow),
                      byteAt(at::bHigh), byteAt(at::exponents));
    const long double x = signedReading(raw, format);
    const long double y =
        (factors.m * x + factors.b * power10(factors.bExponent)) *
        power10(factors.rExponent);
    return double(linearized(y, byteAt(at::linearization) & 0x7f));
}

int IpmiSensor::convertToRawValue(double value) const
{
    // 0 is raw 0 even where the record's offset makes it something else:
    // callers pass 0 for a threshold that they leave alone.
    if (value == 0.0 || byteAt(at::recordType) != fullRecord)
        return 0;
    const double v =
        withoutLinearization(value, byteAt(at::linearization) & 0x7f);
    const Factors factors =
        decodeFactors(byteAt(at::mLow), byteAt(at::mHigh), byteAt(at::bLow),
                      byteAt(at::bHigh), byteAt(at::exponents));
    const unsigned format = byteAt(at::units) >> 6;
    if (format == noNumericReading ||
        (format == unsignedFormat && factors.m == 0))
        return 0;
    const long double m = factors.m;
    long double r = v / (power10(factors.rExponent) * m) -
                    power10(factors.bExponent) * factors.b / m;
    // One less whatever the sign, where only negative values need it: callers
    // compare with raw values that were computed so.
    if (format == onesComplement)
        r -= 1;
    return clampedToFormat(double(std::floor(r + 0.5L)), format);
}

namespace
{

[[noreturn]] void refuse(const char* text)
{
    throw CmpiStatus(CMPI_RC_ERR_FAILED, text);
}

constexpr uint8_t nominalGiven = 0x01;
constexpr uint8_t normalMaximumGiven = 0x02;
constexpr uint8_t normalMinimumGiven = 0x04;

} // namespace

double IpmiSensor::getMinReadable() const
{
    if (byteAt(at::recordType) != fullRecord)
        refuse("Not a Full sensor");
    return convertRawValue(byteAt(at::minimumReading));
}

double IpmiSensor::getMaxReadable() const
{
    if (byteAt(at::recordType) != fullRecord)
        refuse("Not a Full sensor");
    return convertRawValue(byteAt(at::maximumReading));
}

// These three refuse only a record that is not full and yet has the flag; a
// full record's byte counts whatever the flag says. Callers ask is...Set first.

double IpmiSensor::getNormalMin() const
{
    if (byteAt(at::recordType) != fullRecord &&
        byteAt(at::analogFlags) & normalMinimumGiven)
        refuse("Not a Full sensor or available");
    return convertRawValue(byteAt(at::normalMinimum));
}

double IpmiSensor::getNormalMax() const
{
    if (byteAt(at::recordType) != fullRecord &&
        byteAt(at::analogFlags) & normalMaximumGiven)
        refuse("Not a Full sensor or normal max not available");
    return convertRawValue(byteAt(at::normalMaximum));
}

double IpmiSensor::getNominalReading() const
{
    if (byteAt(at::recordType) != fullRecord &&
        byteAt(at::analogFlags) & nominalGiven)
        refuse("Not a Full sensor or no nominal reading");
    return convertRawValue(byteAt(at::nominalReading));
}

bool IpmiSensor::isNominalReadingSet() const
{
    return byteAt(at::recordType) == fullRecord &&
           byteAt(at::analogFlags) & nominalGiven;
}

bool IpmiSensor::isNormalMaxSet() const
{
    return byteAt(at::recordType) == fullRecord &&
           byteAt(at::analogFlags) & normalMaximumGiven;
}

bool IpmiSensor::isNormalMinSet() const
{
    return byteAt(at::recordType) == fullRecord &&
           byteAt(at::analogFlags) & normalMinimumGiven;
}

} // namespace Ipmi
