/// Info areas of a FRU device (FRU Information Storage Definition v1.0 r1.3).
///
/// The objects hold an area's bytes as they were read and decode fields on
/// demand, as printable text without blanks at its end. A field that the area
/// does not hold whole is missing. Values that do not change once they are
/// made (set and assignment are for who makes them); threads share them.
#ifndef VEK_IPMI_IPMIFRUOPTIONAL_H
#define VEK_IPMI_IPMIFRUOPTIONAL_H

#include <cstdint>
#include <memory>
#include <string>

namespace Ipmi
{

/// Any area.
class IpmiFruOptional
{
public:
    /// No bytes.
    IpmiFruOptional() = default;
    /// @param bytes copied; may be null with a size of 0.
    IpmiFruOptional(unsigned size, const unsigned char* bytes);
    IpmiFruOptional(const IpmiFruOptional& other);
    IpmiFruOptional& operator=(const IpmiFruOptional& other);

    // The order of the virtual operations is part of the interface.

    virtual ~IpmiFruOptional() = default;
    /// Prints the bytes to standard output.
    virtual void dump() const = 0;

    /// Puts a copy of these bytes in place of the old ones.
    void set(unsigned size, const unsigned char* bytes);

    /// The field whose type/length byte (13.) is at this byte of the area, as
    /// it stands there: 8-bit text, or 6-bit packed ASCII with a zero behind
    /// it. Empty for binary and BCD plus, and for a field that is not there.
    std::string getFruAreaString(unsigned offset) const;

    /// As dump, between two lines of its own.
    void testDump() const;

    int size() const { return size_; }
    /// As many as size says.
    const unsigned char* bytes() const { return data_.get(); }

protected:
    void print(const char* title) const;
    /// Area format version 1.
    bool isKnown() const;
    /// A field by its number, behind the area's own bytes; 0 when an end mark
    /// or the area's end comes first.
    unsigned fieldAt(unsigned first, unsigned number) const;
    std::string field(unsigned first, unsigned number) const;

private:
    int32_t size_ = 0;
    std::unique_ptr<unsigned char[]> data_;
};

/// Chassis Info Area (10.). Getters answer "" for a missing field unless they
/// say otherwise.
class IpmiFruChassis : public IpmiFruOptional
{
public:
    using IpmiFruOptional::IpmiFruOptional;
    void dump() const override;

    /// Of SMBIOS; "Unknown" or "unknown" for a type that has no name.
    std::string getType() const;
    std::string getPartNumber() const;
    /// Decoded a byte ahead of where the standard has it: callers know these
    /// texts. "n/a" when it is missing.
    std::string getSerialNumber() const;
    /// Always "n/a".
    std::string getManufacturer() const;
};

/// Product Info Area (12.).
class IpmiFruProduct : public IpmiFruOptional
{
public:
    using IpmiFruOptional::IpmiFruOptional;
    void dump() const override;

    /// "n/a" when it is missing.
    std::string getManufacturer() const;
    std::string getName() const;
    std::string getPartNumber() const;
    std::string getVersion() const;
    /// "n/a" when it is missing.
    std::string getSerialNumber() const;
    std::string getAssetTag() const;
};

/// What IpmiFruMulti::getValue reads; getFruKeyInfo names them.
enum FruKey : int
{
    // Power supply information.
    FRU_PS_OVERALL_CAPACITY = 0,
    FRU_PS_PEAK_VA = 1,
    FRU_PS_INRUSH_CURRENT = 2,
    FRU_PS_INRUSH_INTERVAL = 3,
    FRU_PS_LOW_INPUT_VOLTAGE_1 = 4,
    FRU_PS_HIGH_INPUT_VOLTAGE_1 = 5,
    FRU_PS_LOW_INPUT_VOLTAGE_2 = 6,
    FRU_PS_HIGH_INPUT_VOLTAGE_2 = 7,
    FRU_PS_LOW_INPUT_FREQUENCY = 8,
    FRU_PS_HIGH_INPUT_FREQUENCY = 9,
    FRU_PS_DROPOUT_TOLERANCE = 10,
    FRU_PS_TACHOMETER_PULSES = 11,
    FRU_PS_HOT_SWAP = 12,
    FRU_PS_HOT_SWAP_AGAIN = 13, ///< The same bit: callers rely on it.
    FRU_PS_POWER_FACTOR_CORRECTION = 14,
    FRU_PS_PREDICTIVE_FAIL = 15,
    FRU_PS_HOLD_UP_TIME = 16,
    FRU_PS_PEAK_CAPACITY = 17,
    FRU_PS_COMBINED_VOLTAGE_1 = 18,
    FRU_PS_COMBINED_VOLTAGE_2 = 19,
    FRU_PS_COMBINED_WATTAGE = 20,
    FRU_PS_TACHOMETER = 21,
    // DC output.
    FRU_DC_OUTPUT_STANDBY = 22,
    FRU_DC_OUTPUT_NUMBER = 23,
    FRU_DC_OUTPUT_NOMINAL_VOLTAGE = 24,
    FRU_DC_OUTPUT_NEGATIVE_DEVIATION = 25,
    FRU_DC_OUTPUT_POSITIVE_DEVIATION = 26,
    FRU_DC_OUTPUT_RIPPLE = 27,
    FRU_DC_OUTPUT_MINIMUM_CURRENT = 28,
    FRU_DC_OUTPUT_MAXIMUM_CURRENT = 29,
    // DC load.
    FRU_DC_LOAD_NUMBER = 30,
    FRU_DC_LOAD_NOMINAL_VOLTAGE = 31,
    FRU_DC_LOAD_MINIMUM_VOLTAGE = 32,
    FRU_DC_LOAD_MAXIMUM_VOLTAGE = 33,
    FRU_DC_LOAD_RIPPLE = 34,
    FRU_DC_LOAD_MINIMUM_CURRENT = 35,
    FRU_DC_LOAD_MAXIMUM_CURRENT = 36,
    FRU_KEY_COUNT = 37
};

/// What a key reads, for programs that print it.
struct FruKeyInfo
{
    unsigned char recordType;
    const char* name;
    const char* unit; ///< Of getValue's number; empty for texts and counts.
};
/// Null for a number that is no key.
const FruKeyInfo* getFruKeyInfo(int key);

/// Multi-record area (16. to 18.): the whole chain of records.
class IpmiFruMulti : public IpmiFruOptional
{
public:
    using IpmiFruOptional::IpmiFruOptional;
    /// Prints nothing: callers rely on it.
    void dump() const override;

    bool isMultiRecordTypePresent(unsigned char recordType) const;
    /// A field of the first record of the type, in decimal as it stands there
    /// (getFruKeyInfo tells the unit), or as a word. Empty when record or
    /// field is not there, and for record types other than 00h to 02h.
    std::string getValue(unsigned char recordType, FruKey key) const;

    /// The same of a record's data, which end with the record, and with the
    /// chain, when they are this object's, and are as long as the standard says
    /// when they are not.
    /// Null has no value.
    std::string getPowerSupplyValue(const unsigned char* data,
                                    FruKey key) const;
    std::string getDCOutputValue(const unsigned char* data, FruKey key) const;
    std::string getDCLoad(const unsigned char* data, FruKey key) const;
    /// Always empty.
    std::string getManagementAccessValue(const unsigned char* data,
                                         FruKey key) const;
    std::string getExtendedCompatValue(const unsigned char* data,
                                       FruKey key) const;
    std::string getOEMValue(const unsigned char* data, FruKey key) const;

private:
    /// 0 for none, which no record's data begin at.
    unsigned dataOf(unsigned char recordType, const char* caller) const;
    unsigned sizeOfData(const unsigned char* data, unsigned standardSize) const;
};

/// Board Info Area (11.).
class IpmiFruBoard : public IpmiFruOptional
{
public:
    using IpmiFruOptional::IpmiFruOptional;
    void dump() const override;

    /// "n/a" when it is missing.
    std::string getManufacturer() const;
    std::string getName() const;
    /// "n/a" when it is missing.
    std::string getSerialNumber() const;
    std::string getPartNumber() const;
    /// "1996-01-01T00:00:00", UTC, which also stands for a date that is not
    /// given; "N/A" for an area of an unknown version.
    std::string getMfgDateTime8601() const;

    /// The device's multi-record area, if it was read with the board.
    bool hasMultiRecord() const { return hasMulti_; }
    std::shared_ptr<IpmiFruMulti> getMultiRecord() const { return multi_; }
    void setMultiRecord(std::shared_ptr<IpmiFruMulti> multi);

private:
    std::shared_ptr<IpmiFruMulti> multi_;
    bool hasMulti_ = false;
};

/// Characters that cannot be printed become blanks, and blanks and tabs at the
/// end go, unless there is nothing else. Returns its argument.
std::string& toAsciiAndTrim(std::string& text);

} // namespace Ipmi

#endif
