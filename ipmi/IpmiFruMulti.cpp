// The chain of a FRU device's multi-records, and the values in them.
#include <functional>
#include <iterator>
#include <sstream>
#include <syslog.h>

#include <vek-ipmi/IpmiFruOptional.h>

#include "ipmi/IpmiFruRecord.h"
#include "ipmi/RecordView.h"

namespace Ipmi
{

namespace
{

enum RecordType : uint8_t
{
    powerSupply = 0x00,
    dcOutput = 0x01,
    dcLoad = 0x02,
    managementAccess = 0x03,
    extendedCompatibility = 0x05
};

/// How a field becomes text. A function gets the field's bytes; it stands for
/// a field of one byte or two.
using Text = std::string (*)(RecordView bytes);

std::string number(unsigned value)
{
    return std::to_string(value);
}

std::string byteText(RecordView b)
{
    return number(b.u8(0));
}

// By way of a floating point number of six digits, which holds every value.
std::string wordText(RecordView b)
{
    std::ostringstream text;
    text << double(b.u16(0));
    return text.str();
}

std::string signedText(RecordView b)
{
    std::ostringstream text;
    text << double(int16_t(b.u16(0)));
    return text.str();
}

std::string capacityText(RecordView b)
{
    return number(b.u16(0) & 0x0fffu);
}

std::string topBitsText(RecordView b)
{
    return number(b.u16(0) >> 12);
}

std::string outputText(RecordView b)
{
    return number(b.u8(0) & 0x0f);
}

std::string standbyText(RecordView b)
{
    return b.u8(0) & 0x80 ? "yes" : "no";
}

template <unsigned bit>
std::string flagText(RecordView b)
{
    return b.u8(0) >> bit & 1 ? "true" : "false";
}

// Callers compare it, misspelt as it is.
std::string hotSwapText(RecordView b)
{
    return b.u8(0) >> 3 & 1 ? "true" : "fase";
}

std::string voltageText(unsigned nibble)
{
    constexpr const char* combined_voltage_desc[] = {"12 V", "-12 V", "5 V",
                                                     "3.3 V"};
    return nibble < std::size(combined_voltage_desc)
               ? combined_voltage_desc[nibble]
               : "n/a";
}

std::string highVoltageText(RecordView b)
{
    return voltageText(b.u8(0) >> 4);
}

std::string lowVoltageText(RecordView b)
{
    return voltageText(b.u8(0) & 0x0f);
}

// From the flags on; what the tachometer's lower threshold tells.
std::string tachometerText(RecordView b)
{
    constexpr size_t thresholdAt = 6;
    const bool isPredictive = b.u8(0) & 0x01, bit4 = b.u8(0) & 0x10;
    if (!isPredictive)
        return "";
    if (b.u8(thresholdAt) != 0)
        return bit4 ? "Two pulses per rotation" : "One pulse per rotation";
    return bit4 ? "Failure on pin de-assertion" : "Failure on pin assertion";
}

struct Key
{
    uint8_t at;   ///< Of the record's data.
    uint8_t size; ///< Bytes that it needs from there on.
    Text text;
    FruKeyInfo info;
};

// By FruKey. 18.1 to 18.3.
constexpr Key keys[] = {
    {0, 2, capacityText, {powerSupply, "overall capacity", "W"}},
    {2, 2, wordText, {powerSupply, "peak VA", "VA"}},
    {4, 1, byteText, {powerSupply, "inrush current", "A"}},
    {5, 1, byteText, {powerSupply, "inrush interval", "ms"}},
    {6, 2, wordText, {powerSupply, "low end input voltage range 1", "10 mV"}},
    {8, 2, wordText, {powerSupply, "high end input voltage range 1", "10 mV"}},
    {10, 2, wordText, {powerSupply, "low end input voltage range 2", "10 mV"}},
    {12, 2, wordText, {powerSupply, "high end input voltage range 2", "10 mV"}},
    {14, 1, byteText, {powerSupply, "low end input frequency", "Hz"}},
    {15, 1, byteText, {powerSupply, "high end input frequency", "Hz"}},
    {16, 1, byteText, {powerSupply, "A/C dropout tolerance", "ms"}},
    {17, 1, flagText<4>, {powerSupply, "tachometer pulses, or polarity", ""}},
    {17, 1, hotSwapText, {powerSupply, "hot swap support", ""}},
    {17, 1, flagText<3>, {powerSupply, "hot swap support (again)", ""}},
    {17, 1, flagText<1>, {powerSupply, "power factor correction", ""}},
    {17, 1, flagText<0>, {powerSupply, "predictive fail support", ""}},
    {18, 2, topBitsText, {powerSupply, "hold-up time", "s"}},
    {18, 2, capacityText, {powerSupply, "peak capacity", "W"}},
    {20, 1, highVoltageText, {powerSupply, "combined wattage voltage 1", ""}},
    {20, 1, lowVoltageText, {powerSupply, "combined wattage voltage 2", ""}},
    {21, 2, wordText, {powerSupply, "total combined wattage", "W"}},
    {17, 7, tachometerText, {powerSupply, "predictive fail tachometer", ""}},

    {0, 1, standbyText, {dcOutput, "standby", ""}},
    {0, 1, outputText, {dcOutput, "output number", ""}},
    {1, 2, signedText, {dcOutput, "nominal voltage", "10 mV"}},
    {3, 2, signedText, {dcOutput, "maximum negative deviation", "10 mV"}},
    {5, 2, signedText, {dcOutput, "maximum positive deviation", "10 mV"}},
    {7, 2, wordText, {dcOutput, "ripple and noise", "mV"}},
    {9, 2, wordText, {dcOutput, "minimum current draw", "mA"}},
    {11, 2, wordText, {dcOutput, "maximum current draw", "mA"}},

    {0, 1, outputText, {dcLoad, "output number", ""}},
    {1, 2, signedText, {dcLoad, "nominal voltage", "10 mV"}},
    {3, 2, signedText, {dcLoad, "minimum voltage", "10 mV"}},
    {5, 2, signedText, {dcLoad, "maximum voltage", "10 mV"}},
    {7, 2, wordText, {dcLoad, "ripple and noise", "mV"}},
    {9, 2, wordText, {dcLoad, "minimum current load", "mA"}},
    {11, 2, wordText, {dcLoad, "maximum current load", "mA"}},
};
static_assert(std::size(keys) == FRU_KEY_COUNT);

const Key* keyOf(int key, uint8_t recordType)
{
    return key >= 0 && key < FRU_KEY_COUNT &&
                   keys[key].info.recordType == recordType
               ? &keys[key]
               : nullptr;
}

std::string valueOf(RecordView data, uint8_t recordType, FruKey key)
{
    const Key* const row = keyOf(key, recordType);
    return row && data.has(row->at, row->size)
               ? row->text(data.part(row->at, row->size))
               : "";
}

// Sizes of whole records, by the standard.
constexpr unsigned powerSupplySize = 24;
constexpr unsigned dcOutputSize = 13;
constexpr unsigned dcLoadSize = 13;

} // namespace

const FruKeyInfo* getFruKeyInfo(int key)
{
    return key >= 0 && key < FRU_KEY_COUNT ? &keys[key].info : nullptr;
}

void IpmiFruMulti::dump() const {}

unsigned IpmiFruMulti::dataOf(unsigned char recordType,
                              const char* caller) const
{
    const RecordView chain{bytes(), size_t(size())};
    for (size_t at = 0; chain.has(at, fruRecordHeaderSize);) {
        const FruRecordHeader header{chain.part(at, fruRecordHeaderSize)};
        if (header.type() == recordType)
            return unsigned(at + fruRecordHeaderSize);
        if (header.dataSize() == 0) {
            syslog(LOG_ERR,
                   "%s: Multi FRU record len is equal to zero, not valid.",
                   caller);
            return 0;
        }
        if (header.isLast())
            return 0;
        at += fruRecordHeaderSize + header.dataSize();
    }
    return 0;
}

// The header in front of the data says it, as far as the chain's bytes go.
unsigned IpmiFruMulti::sizeOfData(const unsigned char* data,
                                  unsigned standardSize) const
{
    const std::less<> before;
    const unsigned char* const end = bytes() + size();
    if (!bytes() || before(data, bytes()) || before(end, data))
        return standardSize;
    if (data - bytes() < ptrdiff_t{fruRecordHeaderSize})
        return unsigned(end - data);
    const FruRecordHeader header{
        RecordView{data - fruRecordHeaderSize, fruRecordHeaderSize}};
    return unsigned(std::min<ptrdiff_t>(header.dataSize(), end - data));
}

bool IpmiFruMulti::isMultiRecordTypePresent(unsigned char recordType) const
{
    return dataOf(recordType, __func__) != 0;
}

std::string IpmiFruMulti::getValue(unsigned char recordType, FruKey key) const
{
    const unsigned at = dataOf(recordType, __func__);
    if (at == 0)
        return "";
    const unsigned char* const data = bytes() + at;
    switch (recordType) {
    case powerSupply:
        return getPowerSupplyValue(data, key);
    case dcOutput:
        return getDCOutputValue(data, key);
    case dcLoad:
        return getDCLoad(data, key);
    case managementAccess:
        return getManagementAccessValue(data, key);
    case extendedCompatibility:
        return getExtendedCompatValue(data, key);
    default:
        return "";
    }
}

std::string IpmiFruMulti::getPowerSupplyValue(const unsigned char* data,
                                              FruKey key) const
{
    if (!data)
        return "";
    return valueOf({data, sizeOfData(data, powerSupplySize)}, powerSupply, key);
}

std::string IpmiFruMulti::getDCOutputValue(const unsigned char* data,
                                           FruKey key) const
{
    if (!data)
        return "";
    return valueOf({data, sizeOfData(data, dcOutputSize)}, dcOutput, key);
}

std::string IpmiFruMulti::getDCLoad(const unsigned char* data, FruKey key) const
{
    if (!data)
        return "";
    return valueOf({data, sizeOfData(data, dcLoadSize)}, dcLoad, key);
}

std::string IpmiFruMulti::getManagementAccessValue(const unsigned char*,
                                                   FruKey) const
{
    return "";
}

std::string IpmiFruMulti::getExtendedCompatValue(const unsigned char*,
                                                 FruKey) const
{
    return "";
}

std::string IpmiFruMulti::getOEMValue(const unsigned char*, FruKey) const
{
    return "";
}

} // namespace Ipmi
