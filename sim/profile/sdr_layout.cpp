#include "sim/profile/sdr_layout.h"

#include <algorithm>

#include "sim/profile/rows.h"
#include "sim/profile/sdr_words.h"

namespace Sim
{
namespace
{

using namespace SdrWords;
using namespace Rows;

// IPMI v2.0, 43.1 to 43.3.
constexpr Row owners[] = {
    {"owner", Kind::Hexadecimal, {}, {5, 0, 8}, {}},
    {"channel", Kind::Decimal, {}, {6, 4, 4}, {}},
    {"lun", Kind::Decimal, {}, {6, 0, 2}, {}},
    {"entity", Kind::Code, entities, {8, 0, 8}, {}},
    {"instance", Kind::Decimal, {}, {9, 0, 7}, {}},
    {"logicalEntity", Kind::Flag, {}, {9, 7, 1}, {}},
};
constexpr Row sensorNumber{"number", Kind::Decimal, {}, {7, 0, 8}, {}};
constexpr Row controls[] = {
    {"initialization", Kind::Bits, initializations, {10, 0, 8}, {}},
    {"ignoreIfAbsent", Kind::Flag, {}, {11, 7, 1}, {}},
    {"autoRearm", Kind::Flag, {}, {11, 6, 1}, {}},
    {"hysteresisAccess", Kind::Code, accesses, {11, 4, 2}, {}},
    {"thresholdAccess", Kind::Code, accesses, {11, 2, 2}, {}},
    {"eventControl", Kind::Code, eventControls, {11, 0, 2}, {}},
    {"sensorType", Kind::Code, sensorTypes, {12, 0, 8}, {}},
    {"eventType", Kind::Code, eventTypes, {13, 0, 8}, {}},
};
constexpr Row thresholdMasks[] = {
    {"readable", Kind::Bits, thresholds, {18, 0, 6}, {}},
    {"settable", Kind::Bits, thresholds, {19, 0, 6}, {}},
};
constexpr Row thresholdStates[] = {
    {"compared", Kind::Bits, thresholds, {15, 4, 3}, {17, 4, 3}},
    {"assertions", Kind::Bits, thresholdEvents, {14, 0, 8}, {15, 0, 4}},
    {"deassertions", Kind::Bits, thresholdEvents, {16, 0, 8}, {17, 0, 4}},
};
constexpr Row discreteMasks[] = {
    {"assertions", Kind::Hexadecimal, {}, {14, 0, 8}, {15, 0, 8}},
    {"deassertions", Kind::Hexadecimal, {}, {16, 0, 8}, {17, 0, 8}},
    {"readableStates", Kind::Hexadecimal, {}, {18, 0, 8}, {19, 0, 8}},
};
constexpr Row unitRows[] = {
    {"analogFormat", Kind::Code, analogFormats, {20, 6, 2}, {}},
    {"rateUnit", Kind::Code, rates, {20, 3, 3}, {}},
    {"modifierUse", Kind::Code, modifierUses, {20, 1, 2}, {}},
    {"percentage", Kind::Flag, {}, {20, 0, 1}, {}},
    {"unit", Kind::Code, units, {21, 0, 8}, {}},
    {"modifierUnit", Kind::Code, units, {22, 0, 8}, {}},
};
constexpr Row fullRows[] = {
    {"linearization", Kind::Code, linearizations, {23, 0, 7}, {}},
    {"m", Kind::Signed, {}, {24, 0, 8}, {25, 6, 2}},
    {"tolerance", Kind::Decimal, {}, {25, 0, 6}, {}},
    {"b", Kind::Signed, {}, {26, 0, 8}, {27, 6, 2}},
    {"accuracy", Kind::Decimal, {}, {27, 0, 6}, {28, 4, 4}},
    {"accuracyExponent", Kind::Decimal, {}, {28, 2, 2}, {}},
    {"direction", Kind::Code, directions, {28, 0, 2}, {}},
    {"resultExponent", Kind::Signed, {}, {29, 4, 4}, {}},
    {"bExponent", Kind::Signed, {}, {29, 0, 4}, {}},
    {"specified", Kind::Bits, analogCharacteristics, {30, 0, 3}, {}},
    {"nominal", Kind::Decimal, {}, {31, 0, 8}, {}},
    {"normalMaximum", Kind::Decimal, {}, {32, 0, 8}, {}},
    {"normalMinimum", Kind::Decimal, {}, {33, 0, 8}, {}},
    {"maximum", Kind::Decimal, {}, {34, 0, 8}, {}},
    {"minimum", Kind::Decimal, {}, {35, 0, 8}, {}},
    {"unr", Kind::Decimal, {}, {36, 0, 8}, {}},
    {"uc", Kind::Decimal, {}, {37, 0, 8}, {}},
    {"unc", Kind::Decimal, {}, {38, 0, 8}, {}},
    {"lnr", Kind::Decimal, {}, {39, 0, 8}, {}},
    {"lc", Kind::Decimal, {}, {40, 0, 8}, {}},
    {"lnc", Kind::Decimal, {}, {41, 0, 8}, {}},
    {"positiveHysteresis", Kind::Decimal, {}, {42, 0, 8}, {}},
    {"negativeHysteresis", Kind::Decimal, {}, {43, 0, 8}, {}},
    {"oem", Kind::Hexadecimal, {}, {46, 0, 8}, {}},
};
constexpr Row compactRows[] = {
    {"direction", Kind::Code, directions, {23, 6, 2}, {}},
    {"modifierType", Kind::Code, modifierTypes, {23, 4, 2}, {}},
    {"share", Kind::Decimal, {}, {23, 0, 4}, {}},
    {"sharedInstances", Kind::Flag, {}, {24, 7, 1}, {}},
    {"modifierOffset", Kind::Decimal, {}, {24, 0, 7}, {}},
    {"positiveHysteresis", Kind::Decimal, {}, {25, 0, 8}, {}},
    {"negativeHysteresis", Kind::Decimal, {}, {26, 0, 8}, {}},
    {"oem", Kind::Hexadecimal, {}, {30, 0, 8}, {}},
};
constexpr Row eventOnlyRows[] = {
    {"sensorType", Kind::Code, sensorTypes, {10, 0, 8}, {}},
    {"eventType", Kind::Code, eventTypes, {11, 0, 8}, {}},
    {"direction", Kind::Code, directions, {12, 6, 2}, {}},
    {"modifierType", Kind::Code, modifierTypes, {12, 4, 2}, {}},
    {"share", Kind::Decimal, {}, {12, 0, 4}, {}},
    {"sharedInstances", Kind::Flag, {}, {13, 7, 1}, {}},
    {"modifierOffset", Kind::Decimal, {}, {13, 0, 7}, {}},
    {"oem", Kind::Hexadecimal, {}, {15, 0, 8}, {}},
};

// IPMI v2.0, 43.4, 43.5, 43.7 to 43.9.
constexpr Row containers[] = {
    {"container", Kind::Code, entities, {5, 0, 8}, {}},
    {"containerInstance", Kind::Decimal, {}, {6, 0, 8}, {}},
};
constexpr Row associationFlags[] = {
    {"range", Kind::Flag, {}, {7, 7, 1}, {}},
    {"linked", Kind::Flag, {}, {7, 6, 1}, {}},
    {"presenceSensor", Kind::Flag, {}, {7, 5, 1}, {}},
};
constexpr Row deviceAssociation[] = {
    {"containerAddress", Kind::Hexadecimal, {}, {7, 0, 8}, {}},
    {"containerChannel", Kind::Decimal, {}, {8, 0, 8}, {}},
    {"range", Kind::Flag, {}, {9, 7, 1}, {}},
    {"linked", Kind::Flag, {}, {9, 6, 1}, {}},
    {"presenceSensor", Kind::Flag, {}, {9, 5, 1}, {}},
};
constexpr Row genericRows[] = {
    {"accessAddress", Kind::Hexadecimal, {}, {5, 0, 8}, {}},
    {"channel", Kind::Decimal, {}, {7, 5, 3}, {6, 0, 1}},
    {"slaveAddress", Kind::Hexadecimal, {}, {6, 1, 7}, {}},
    {"lun", Kind::Decimal, {}, {7, 3, 2}, {}},
    {"bus", Kind::Decimal, {}, {7, 0, 3}, {}},
    {"addressSpan", Kind::Decimal, {}, {8, 0, 8}, {}},
};
constexpr Row fruRows[] = {
    {"accessAddress", Kind::Hexadecimal, {}, {5, 0, 8}, {}},
    {"fru", Kind::Decimal, {}, {6, 0, 8}, {}},
    {"logicalFru", Kind::Flag, {}, {7, 7, 1}, {}},
    {"lun", Kind::Decimal, {}, {7, 3, 2}, {}},
    {"bus", Kind::Decimal, {}, {7, 0, 3}, {}},
    {"channel", Kind::Decimal, {}, {8, 4, 4}, {}},
};
constexpr Row mcRows[] = {
    {"slaveAddress", Kind::Hexadecimal, {}, {5, 0, 8}, {}},
    {"channel", Kind::Decimal, {}, {6, 0, 4}, {}},
    {"notification", Kind::Hexadecimal, {}, {7, 0, 8}, {}},
    {"capabilities", Kind::Bits, mcCapabilities, {8, 0, 8}, {}},
};
constexpr Row deviceRows[] = {
    {"deviceType", Kind::Hexadecimal, {}, {10, 0, 8}, {}},
    {"deviceModifier", Kind::Hexadecimal, {}, {11, 0, 8}, {}},
};
constexpr Row locatorRows[] = {
    {"entity", Kind::Code, entities, {12, 0, 8}, {}},
    {"instance", Kind::Decimal, {}, {13, 0, 8}, {}},
    {"oem", Kind::Hexadecimal, {}, {14, 0, 8}, {}},
};

bool isThreshold(const Bytes& record)
{
    return get(record, {13, 0, 8}) == Sensor::thresholdEventType;
}

/// What can be read is compared, too, and tells of both its events, unless
/// the profile says otherwise.
void deriveStates(Bytes& record)
{
    const uint32_t readable = get(record, {18, 0, 6});
    uint32_t events = 0;
    for (int at = 0; at < 6; ++at)
        if (readable >> at & 1)
            events |= 1u << (2 * at + (at < 3 ? 0 : 1));
    set(record, {15, 4, 3}, readable);
    set(record, {17, 4, 3}, readable >> 3);
    for (uint8_t at : {14, 16}) {
        set(record, {at, 0, 8}, events);
        set(record, {uint8_t(at + 1), 0, 4}, events >> 8);
    }
}

void describeOwner(Fields& io, Bytes& record, const Bytes& usual)
{
    io.require("number");
    describeRow(io, record, sensorNumber);
    describeRows(io, record, owners, usual);
}

void describeSensor(Fields& io, Bytes& record, const Bytes& usual)
{
    describeOwner(io, record, usual);
    describeRows(io, record, controls, usual);
    if (isThreshold(record)) {
        describeRows(io, record, thresholdMasks, usual);
        Bytes derived = record;
        deriveStates(derived);
        if (io.reads())
            record = derived;
        describeRows(io, record, thresholdStates, derived);
    } else {
        describeRows(io, record, discreteMasks, usual);
    }
    describeRows(io, record, unitRows, usual);
}

void describeFull(Fields& io, Bytes& record, const Bytes& usual)
{
    describeSensor(io, record, usual);
    describeRows(io, record, fullRows, usual);
}

void describeCompact(Fields& io, Bytes& record, const Bytes& usual)
{
    describeSensor(io, record, usual);
    describeRows(io, record, compactRows, usual);
}

void describeEventOnly(Fields& io, Bytes& record, const Bytes& usual)
{
    describeOwner(io, record, usual);
    describeRows(io, record, eventOnlyRows, usual);
}

/// The rest of the record as bytes.
void describeRest(Fields& io, Bytes& record, const char* key, size_t from,
                  size_t least, size_t most)
{
    from = std::min(from, record.size());
    const auto begin = record.begin() + std::ptrdiff_t(from);
    Bytes rest{begin, record.end()};
    io.bytes(key, rest, least, most);
    record.resize(from);
    append(record, rest);
}

void describeAssociation(Fields& io, Bytes& record, const Bytes& usual)
{
    describeRows(io, record, containers, usual);
    describeRows(io, record, associationFlags, usual);
    describeRest(io, record, "contained", 8, 8, 8);
}

void describeDeviceAssociation(Fields& io, Bytes& record, const Bytes& usual)
{
    describeRows(io, record, containers, usual);
    describeRows(io, record, deviceAssociation, usual);
    describeRest(io, record, "contained", 10, 16, 22);
    record.resize(std::max<size_t>(record.size(), 32));
}

void describeGeneric(Fields& io, Bytes& record, const Bytes& usual)
{
    describeRows(io, record, genericRows, usual);
    describeRows(io, record, deviceRows, usual);
    describeRows(io, record, locatorRows, usual);
}

void describeFru(Fields& io, Bytes& record, const Bytes& usual)
{
    describeRows(io, record, fruRows, usual);
    describeRows(io, record, deviceRows, usual);
    describeRows(io, record, locatorRows, usual);
}

void describeMc(Fields& io, Bytes& record, const Bytes& usual)
{
    describeRows(io, record, mcRows, usual);
    describeRows(io, record, locatorRows, usual);
}

void describeOem(Fields& io, Bytes& record, const Bytes&)
{
    constexpr Row low{"manufacturer", Kind::Decimal, {}, {5, 0, 8}, {6, 0, 8}};
    uint32_t manufacturer = get(record, low.low) | get(record, low.high) << 8 |
                            get(record, {7, 0, 8}) << 16;
    io.number("manufacturer", manufacturer, Fields::Base::Decimal, 0xFFFFFF);
    for (uint8_t at : {5, 6, 7})
        set(record, {at, 0, 8}, manufacturer >> 8 * (at - 5));
    describeRest(io, record, "data", 8, 0, 252);
}

/// `size` bytes that are 0 but for these.
Bytes filled(uint8_t type, size_t size,
             std::initializer_list<std::pair<size_t, uint8_t>> bytes)
{
    Bytes record(size);
    record[2] = 0x51;
    record[3] = type;
    for (const auto& [at, value] : bytes)
        record[at] = value;
    return record;
}

} // namespace

const SdrLayout* findSdrLayout(uint8_t type)
{
    constexpr uint8_t bmc = 0x20, initialization = 0x7F, oneSensor = 1,
                      autoRearm = 0x40, thresholdsSettable = 0x08;
    static const SdrLayout layouts[] = {
        {sdr::full,
         filled(sdr::full, 47,
                {{5, bmc},
                 {9, 1},
                 {10, initialization},
                 {11, autoRearm | thresholdsSettable},
                 {13, Sensor::thresholdEventType},
                 {24, 1},
                 {34, 0xFF}}),
         true, describeFull},
        {sdr::compact,
         filled(sdr::compact, 31,
                {{5, bmc},
                 {9, 1},
                 {10, initialization},
                 {11, autoRearm},
                 {13, 0x6F},
                 {20, 0xC0},
                 {23, oneSensor}}),
         true, describeCompact},
        {sdr::eventOnly,
         filled(sdr::eventOnly, 16,
                {{5, bmc}, {9, 1}, {11, 0x6F}, {12, oneSensor}}),
         true, describeEventOnly},
        {sdr::entityAssociation, filled(sdr::entityAssociation, 16, {{6, 1}}),
         false, describeAssociation},
        {sdr::deviceEntityAssociation,
         filled(sdr::deviceEntityAssociation, 32, {{6, 1}}), false,
         describeDeviceAssociation},
        {sdr::genericLocator,
         filled(sdr::genericLocator, 15, {{5, bmc}, {13, 1}}), true,
         describeGeneric},
        {sdr::fruLocator,
         filled(sdr::fruLocator, 15,
                {{5, bmc}, {7, 0x80}, {10, 0x10}, {13, 1}}),
         true, describeFru},
        {sdr::mcLocator, filled(sdr::mcLocator, 15, {{5, bmc}, {13, 1}}), true,
         describeMc},
        {sdr::oem, filled(sdr::oem, 8, {}), false, describeOem},
    };
    for (const SdrLayout& layout : layouts)
        if (layout.type == type)
            return &layout;
    return nullptr;
}

} // namespace Sim
