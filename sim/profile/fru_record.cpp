#include "sim/profile/fru_record.h"

#include <algorithm>

#include "sim/profile/rows.h"

namespace Sim
{
namespace
{

using namespace Rows;

// Platform Management FRU Information Storage Definition v1.0, table 16-2.
constexpr Word types[] = {
    {"power-supply", 0x00},
    {"dc-output", 0x01},
    {"dc-load", 0x02},
    {"management-access", 0x03},
    {"base-compatibility", 0x04},
    {"extended-compatibility", 0x05},
};

constexpr Row whole8(const char* key, uint8_t at)
{
    return {key, Kind::Decimal, {}, {at, 0, 8}, {}};
}

constexpr Row whole16(const char* key, uint8_t at, Kind kind = Kind::Decimal)
{
    return {key, kind, {}, {at, 0, 8}, {uint8_t(at + 1), 0, 8}};
}

// The same, 18.1.
constexpr Word voltages[] = {{"12V", 0}, {"-12V", 1}, {"5V", 2}, {"3.3V", 3}};
constexpr Word flags[] = {
    {"predictive-fail", 0x01}, {"power-factor-correction", 0x02},
    {"auto-switch", 0x04},     {"hot-swap", 0x08},
    {"two-pulses", 0x10},
};
constexpr Row powerSupply[] = {
    {"capacity", Kind::Decimal, {}, {0, 0, 8}, {1, 0, 4}},
    whole16("peakVa", 2),
    whole8("inrushCurrent", 4),
    whole8("inrushInterval", 5),
    whole16("lowInput1", 6),
    whole16("highInput1", 8),
    whole16("lowInput2", 10),
    whole16("highInput2", 12),
    whole8("lowFrequency", 14),
    whole8("highFrequency", 15),
    whole8("dropoutTolerance", 16),
    {"flags", Kind::Bits, flags, {17, 0, 5}, {}},
    {"peakCapacity", Kind::Decimal, {}, {18, 0, 8}, {19, 0, 4}},
    {"holdUp", Kind::Decimal, {}, {19, 4, 4}, {}},
    {"combinedVoltage1", Kind::Code, voltages, {20, 4, 4}, {}},
    {"combinedVoltage2", Kind::Code, voltages, {20, 0, 4}, {}},
    whole16("combinedCapacity", 21),
    whole8("tachometerLimit", 23),
};

// The same, 18.2 and 18.3.
constexpr Row output{"output", Kind::Decimal, {}, {0, 0, 4}, {}};
constexpr Row dcOutput[] = {
    output,
    {"standby", Kind::Flag, {}, {0, 7, 1}, {}},
    whole16("nominal", 1, Kind::Signed),
    whole16("negativeDeviation", 3, Kind::Signed),
    whole16("positiveDeviation", 5, Kind::Signed),
    whole16("ripple", 7),
    whole16("minimumCurrent", 9),
    whole16("maximumCurrent", 11),
};
constexpr Row dcLoad[] = {
    output,
    whole16("nominal", 1, Kind::Signed),
    whole16("minimum", 3, Kind::Signed),
    whole16("maximum", 5, Kind::Signed),
    whole16("ripple", 7),
    whole16("minimumCurrent", 9),
    whole16("maximumCurrent", 11),
};

struct Layout
{
    View<Row> rows;
    size_t size;
};

/// By type; further types have bytes alone.
constexpr Layout layouts[] = {{powerSupply, 24}, {dcOutput, 13}, {dcLoad, 13}};

const Layout* findLayout(uint32_t type)
{
    return type < std::size(layouts) ? &layouts[type] : nullptr;
}

/// Whether the fields say all that the bytes do.
bool fieldsSuffice(const FruRecord& record)
{
    const Layout* layout = findLayout(record.type);
    if (!layout || record.data.size() != layout->size)
        return false;
    Bytes rest = record.data;
    for (const Row& row : layout->rows)
        set(rest, row, 0);
    return rest == Bytes(rest.size());
}

} // namespace

void describe(Fields& io, FruRecord& record)
{
    uint32_t type = record.type;
    io.require("type");
    io.code("type", type, 0xFF, types);
    record.type = uint8_t(type);
    const Layout* layout = findLayout(type);
    if (!layout || (io.reads() ? io.has("data") : !fieldsSuffice(record))) {
        io.bytes("data", record.data, 0, 255);
        return;
    }
    record.data.resize(layout->size);
    describeRows(io, record.data, layout->rows, Bytes(layout->size));
}

} // namespace Sim
