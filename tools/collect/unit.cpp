#include "tools/collect/unit.h"

namespace Tool
{

namespace
{

constexpr const char* rates[] = {
    "",           "per microsecond", "per millisecond", "per second",
    "per minute", "per hour",        "per day",
};

// IPMI v2.0, 43.1, byte 21: what stands between base and modifier unit.
constexpr const char* operators[] = {"", " / ", " * ", ""};

void append(std::string& text, const std::string& word)
{
    if (!word.empty())
        text += (text.empty() ? "" : " ") + word;
}

std::string baseAndModifier(const Unit& unit)
{
    std::string text = unit.base == 0 ? "" : Ipmi::DescFromUnit(unit.base);
    const char* between = operators[unit.modifierUse & 3];
    if (*between && unit.modifier != 0)
        text += between + Ipmi::DescFromUnit(unit.modifier);
    return text;
}

} // namespace

Unit unitOf(const Ipmi::IpmiSensor& sensor)
{
    constexpr unsigned percentage = 1u << 12;
    Unit unit;
    unit.base = sensor.getBaseUnit();
    unit.modifier = sensor.getModifierUnit();
    unit.modifierUse = sensor.getModifierUnitUse();
    unit.rate = sensor.getRateUnit();
    unit.percentage = sensor.getFlags() & percentage;
    append(unit.text, unit.percentage ? "%" : "");
    append(unit.text, baseAndModifier(unit));
    append(unit.text, unit.rate < std::size(rates) ? rates[unit.rate] : "");
    return unit;
}

} // namespace Tool
