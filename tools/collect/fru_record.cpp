#include "tools/collect/fru_record.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <string_view>

namespace Tool
{

namespace
{

enum Type : uint8_t
{
    powerSupply = 0x00,
    dcOutput = 0x01,
    dcLoad = 0x02,
    managementAccess = 0x03,
    baseCompatibility = 0x04,
    extendedCompatibility = 0x05,
    extendedDcOutput = 0x09,
    extendedDcLoad = 0x0A,
    firstOem = 0xC0
};

struct TypeName
{
    uint8_t type;
    const char* name;
    size_t size; ///< Of its data, as far as they become values; 0: all or none.
};

// Table 16-2.
constexpr TypeName typeNames[] = {
    {powerSupply, "power supply", 24},
    {dcOutput, "DC output", 13},
    {dcLoad, "DC load", 13},
    {managementAccess, "management access", 0},
    {baseCompatibility, "base compatibility", 0},
    {extendedCompatibility, "extended compatibility", 0},
    {0x06, "ASF fixed SMBus device", 0},
    {0x07, "ASF legacy-device alerts", 0},
    {0x08, "ASF remote control", 0},
    {extendedDcOutput, "extended DC output", 13},
    {extendedDcLoad, "extended DC load", 13},
};

const TypeName* findType(uint8_t type)
{
    for (const TypeName& row : typeNames)
        if (row.type == type)
            return &row;
    return nullptr;
}

enum class Form
{
    number,
    flag,
    words
};

/// How a value that the library reads is shown.
struct Row
{
    Ipmi::FruKey libraryKey;
    const char *key, *label;
    Form form;
    const char* unit = "";
    long perUnit = 1;
    long unspecified = -1;
};

constexpr long centi = 100, milli = 1000;
constexpr long noByte = 0xFF;

using namespace Ipmi;

// Bits that callers of the library know twice are here once; what bit 4 of the
// flags means, the tachometer's words say.
constexpr Row rows[] = {
    {FRU_PS_OVERALL_CAPACITY, "capacity", "Capacity", Form::number, "W"},
    {FRU_PS_PEAK_VA, "peakVa", "Peak VA", Form::number, "VA"},
    {FRU_PS_INRUSH_CURRENT, "inrushCurrent", "Inrush current", Form::number,
     "A", 1, noByte},
    {FRU_PS_INRUSH_INTERVAL, "inrushInterval", "Inrush interval", Form::number,
     "ms"},
    {FRU_PS_LOW_INPUT_VOLTAGE_1, "lowInputVoltage1", "Input range 1 low",
     Form::number, "V", centi},
    {FRU_PS_HIGH_INPUT_VOLTAGE_1, "highInputVoltage1", "Input range 1 high",
     Form::number, "V", centi},
    {FRU_PS_LOW_INPUT_VOLTAGE_2, "lowInputVoltage2", "Input range 2 low",
     Form::number, "V", centi},
    {FRU_PS_HIGH_INPUT_VOLTAGE_2, "highInputVoltage2", "Input range 2 high",
     Form::number, "V", centi},
    {FRU_PS_LOW_INPUT_FREQUENCY, "lowInputFrequency", "Frequency low",
     Form::number, "Hz"},
    {FRU_PS_HIGH_INPUT_FREQUENCY, "highInputFrequency", "Frequency high",
     Form::number, "Hz"},
    {FRU_PS_DROPOUT_TOLERANCE, "dropoutTolerance", "AC dropout time",
     Form::number, "ms"},
    {FRU_PS_HOT_SWAP, "hotSwap", "Hot swap", Form::flag},
    {FRU_PS_POWER_FACTOR_CORRECTION, "powerFactorCorrection",
     "Power factor corr.", Form::flag},
    {FRU_PS_PREDICTIVE_FAIL, "predictiveFail", "Predictive fail", Form::flag},
    {FRU_PS_TACHOMETER, "tachometer", "Fail signal", Form::words},
    {FRU_PS_PEAK_CAPACITY, "peakCapacity", "Peak capacity", Form::number, "W"},
    {FRU_PS_HOLD_UP_TIME, "holdUpTime", "Held for", Form::number, "s"},
    {FRU_PS_COMBINED_WATTAGE, "combinedWattage", "Combined wattage",
     Form::number, "W"},
    {FRU_PS_COMBINED_VOLTAGE_1, "combinedVoltage1", "Combined voltage 1",
     Form::words},
    {FRU_PS_COMBINED_VOLTAGE_2, "combinedVoltage2", "Combined voltage 2",
     Form::words},

    {FRU_DC_OUTPUT_NUMBER, "outputNumber", "Output", Form::number},
    {FRU_DC_OUTPUT_STANDBY, "standby", "On standby", Form::flag},
    {FRU_DC_OUTPUT_NOMINAL_VOLTAGE, "nominalVoltage", "Nominal voltage",
     Form::number, "V", centi},
    {FRU_DC_OUTPUT_NEGATIVE_DEVIATION, "negativeDeviation",
     "Negative deviation", Form::number, "V", centi},
    {FRU_DC_OUTPUT_POSITIVE_DEVIATION, "positiveDeviation",
     "Positive deviation", Form::number, "V", centi},
    {FRU_DC_OUTPUT_RIPPLE, "ripple", "Ripple and noise", Form::number, "mV"},
    {FRU_DC_OUTPUT_MINIMUM_CURRENT, "minimumCurrent", "Minimum current",
     Form::number, "A", milli},
    {FRU_DC_OUTPUT_MAXIMUM_CURRENT, "maximumCurrent", "Maximum current",
     Form::number, "A", milli},

    {FRU_DC_LOAD_NUMBER, "outputNumber", "Output", Form::number},
    {FRU_DC_LOAD_NOMINAL_VOLTAGE, "nominalVoltage", "Nominal voltage",
     Form::number, "V", centi},
    {FRU_DC_LOAD_MINIMUM_VOLTAGE, "minimumVoltage", "Minimum voltage",
     Form::number, "V", centi},
    {FRU_DC_LOAD_MAXIMUM_VOLTAGE, "maximumVoltage", "Maximum voltage",
     Form::number, "V", centi},
    {FRU_DC_LOAD_RIPPLE, "ripple", "Ripple and noise", Form::number, "mV"},
    {FRU_DC_LOAD_MINIMUM_CURRENT, "minimumCurrent", "Minimum current",
     Form::number, "A", milli},
    {FRU_DC_LOAD_MAXIMUM_CURRENT, "maximumCurrent", "Maximum current",
     Form::number, "A", milli},
};

/// Sub-records of management access (18.4): texts, except for the last one.
constexpr uint8_t systemUniqueId = 0x07;
struct Access
{
    uint8_t type;
    const char *key, *label;
};

constexpr Access accesses[] = {
    {0x01, "systemUrl", "System URL"},
    {0x02, "systemName", "System name"},
    {0x03, "systemPingAddress", "System ping address"},
    {0x04, "componentUrl", "Component URL"},
    {0x05, "componentName", "Component name"},
    {0x06, "componentPingAddress", "Component ping addr"},
    {systemUniqueId, "systemUniqueId", "System unique ID"},
};

FruValue valueOf(const Row& row, const std::string& text)
{
    FruValue value{row.key, row.label};
    switch (row.form) {
    case Form::number:
        value.raw = strtol(text.c_str(), nullptr, 10);
        value.unit = row.unit;
        value.perUnit = row.perUnit;
        value.isGiven = *value.raw != row.unspecified;
        break;
    case Form::flag: // Of hot swap "fase", as callers know it.
        value.flag = text == "true" || text == "yes";
        break;
    case Form::words:
        value.words = text;
        break;
    }
    return value;
}

// Whose values a record's are laid out as.
uint8_t layoutOf(uint8_t type)
{
    return type == extendedDcOutput ? uint8_t{dcOutput}
           : type == extendedDcLoad ? uint8_t{dcLoad}
                                    : type;
}

void addLibraryValues(FruRecord& record, const IpmiFruMulti& multi,
                      const unsigned char* data)
{
    const uint8_t layout = layoutOf(record.type);
    for (const Row& row : rows) {
        if (getFruKeyInfo(row.libraryKey)->recordType != layout)
            continue;
        const std::string text =
            layout == powerSupply
                ? multi.getPowerSupplyValue(data, row.libraryKey)
            : layout == dcOutput ? multi.getDCOutputValue(data, row.libraryKey)
                                 : multi.getDCLoad(data, row.libraryKey);
        if (!text.empty())
            record.values.push_back(valueOf(row, text));
    }
}

// Currents of the extended types count in 10 mA, or in 100 mA.
void setCurrentUnit(FruRecord& record)
{
    constexpr uint8_t in100mA = 0x10;
    if (record.data.empty() || layoutOf(record.type) == record.type)
        return;
    for (FruValue& value : record.values)
        if (value.unit == std::string_view{"A"})
            value.perUnit = record.data[0] & in100mA ? 10 : 100;
}

// Without a combined wattage there are no voltages that share it.
void dropCombined(std::vector<FruValue>& values)
{
    const auto isKey = [](const char* key) {
        return [key](const FruValue& value) {
            return value.key == std::string_view{key};
        };
    };
    const auto wattage =
        std::find_if(values.begin(), values.end(), isKey("combinedWattage"));
    if (wattage == values.end() || wattage->raw != 0)
        return;
    for (const char* key : {"combinedVoltage1", "combinedVoltage2"})
        values.erase(std::remove_if(values.begin(), values.end(), isKey(key)),
                     values.end());
}

// What the library has no key for (18.1).
void addPowerSupplyValues(FruRecord& record)
{
    constexpr size_t flagsAt = 17, thresholdAt = 23;
    constexpr uint8_t predictiveFail = 0x01, autoSwitch = 0x04;
    if (record.data.size() <= flagsAt)
        return;
    const uint8_t flags = record.data[flagsAt];
    FruValue value{"autoSwitch", "Auto-switch"};
    value.flag = (flags & autoSwitch) != 0;
    record.values.push_back(value);
    if (record.data.size() <= thresholdAt || !(flags & predictiveFail) ||
        record.data[thresholdAt] == 0)
        return;
    FruValue threshold{"tachometerThreshold", "Fails below"};
    threshold.raw = record.data[thresholdAt];
    threshold.unit = "rotations/s";
    record.values.push_back(threshold);
}

void addAccess(FruRecord& record)
{
    for (const Access& access : accesses) {
        if (record.data.empty() || record.data[0] != access.type)
            continue;
        FruValue value{access.key, access.label};
        const Bytes its{record.data.begin() + 1, record.data.end()};
        if (access.type == systemUniqueId)
            for (const uint8_t byte : its)
                value.words += hexByte(byte);
        else
            value.words = printable(
                {reinterpret_cast<const char*>(its.data()), its.size()});
        record.values.push_back(value);
    }
}

void addManufacturer(FruRecord& record)
{
    if (record.data.size() < 3)
        return;
    FruValue value{"manufacturerId", "Manufacturer ID"};
    value.raw = record.data[0] | record.data[1] << 8 | record.data[2] << 16;
    record.values.push_back(value);
}

// 18.5 and 18.6; what is behind them is a mask of the codes that follow.
void addCompatibility(FruRecord& record)
{
    constexpr size_t entityAt = 3, maskAt = 6;
    if (record.data.size() < maskAt)
        return;
    addManufacturer(record);
    static constexpr struct
    {
        const char *key, *label;
        uint8_t used; ///< Its bits.
    } numbers[] = {{"entityId", "Entity ID", 0xFF},
                   {"compatibilityBase", "Compatibility base", 0xFF},
                   {"codeStart", "Code start", 0x7F}};
    size_t at = entityAt;
    for (const auto& number : numbers) {
        FruValue value{number.key, number.label};
        value.raw = record.data[at++] & number.used;
        record.values.push_back(value);
    }
    FruValue mask{"codeMask", "Code mask"};
    for (; at < record.data.size(); ++at)
        mask.words += hexByte(record.data[at]);
    record.values.push_back(mask);
}

void addValues(FruRecord& record, const IpmiFruMulti& multi,
               const unsigned char* data)
{
    if (layoutOf(record.type) <= dcLoad)
        addLibraryValues(record, multi, data);
    setCurrentUnit(record);
    if (record.type == powerSupply) {
        dropCombined(record.values);
        addPowerSupplyValues(record);
    }
    if (record.type == managementAccess)
        addAccess(record);
    if (record.type == baseCompatibility ||
        record.type == extendedCompatibility)
        addCompatibility(record);
    if (record.type >= firstOem)
        addManufacturer(record);
}

} // namespace

const char* FruRecord::typeName() const
{
    if (const TypeName* row = findType(type))
        return row->name;
    return type >= firstOem ? "OEM" : "reserved";
}

bool FruRecord::isAllInWords() const
{
    const TypeName* row = findType(type);
    return row && !values.empty() &&
           (row->size == 0 || data.size() <= row->size);
}

std::vector<FruRecord> fruRecordsOf(const Ipmi::IpmiFruArea& area)
{
    constexpr size_t headerSize = 5;
    std::vector<FruRecord> records;
    if (!area.multi)
        return records;
    const unsigned char* const chain = area.multi->bytes();
    const auto size = static_cast<size_t>(area.multi->size());
    for (size_t at = 0; size - at >= headerSize;) {
        const unsigned char* const header = chain + at;
        const size_t length = header[2];
        if (length == 0 || size - at - headerSize < length)
            break;
        FruRecord record;
        record.offset = area.offset + static_cast<unsigned>(at);
        record.type = header[0];
        record.version = header[1] & 0x0F;
        record.data.assign(header + headerSize, header + headerSize + length);
        record.isSound =
            static_cast<uint8_t>(std::accumulate(
                record.data.begin(), record.data.end(), header[3])) == 0;
        addValues(record, *area.multi, header + headerSize);
        records.push_back(std::move(record));
        at += headerSize + length;
    }
    return records;
}

} // namespace Tool
