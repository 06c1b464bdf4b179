#include "tools/collect/health_table.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <tuple>

#include <vek-ipmi/IpmiEvent.h>
#include <vek-ipmi/IpmiSensor.h>

namespace Tool
{

namespace
{

constexpr unsigned specificClass = 0x6F;
constexpr unsigned lastState = 14;
constexpr unsigned lastType = 0x2C;
constexpr unsigned firstOemType = 0xC0;

constexpr struct
{
    unsigned health;
    const char* words;
} healthStates[] = {
    {0, "unknown"},
    {5, "OK"},
    {10, "degraded"},
    {15, "minor failure"},
    {20, "major failure"},
    {25, "critical failure"},
    {30, "non-recoverable error"},
};

bool hasHealth(const HealthRule& rule)
{
    const unsigned number = rule.sensorClass;
    return (number >= 3 && number <= 12 && number != 8) ||
           number == specificClass;
}

bool unknownType(const HealthRule& rule)
{
    return rule.type && (*rule.type == 0 || *rule.type > 0xFF ||
                         (*rule.type > lastType && *rule.type < firstOemType));
}

// Empty where the standard has none, or where the type must be known first.
std::string stateInWords(const HealthRule& rule)
{
    if (!rule.state || rule.sensorClass > 0xFF || rule.type.value_or(0) > 0xFF)
        return "";
    return Ipmi::DescFromState(static_cast<uint8_t>(rule.sensorClass),
                               static_cast<uint8_t>(rule.type.value_or(0)),
                               *rule.state);
}

bool stateWithoutMeaning(const HealthRule& rule)
{
    if (!hasHealth(rule) || !rule.state || *rule.state > lastState)
        return false;
    // Only the maker knows the states of an OEM type, and states of any type
    // mean something else for each.
    if (rule.sensorClass == specificClass &&
        (!rule.type || unknownType(rule) || *rule.type >= firstOemType))
        return false;
    return stateInWords(rule).empty();
}

struct Check
{
    const char* code;
    const char* words;
    bool (*wrong)(const HealthRule&);
};

constexpr Check checks[] = {
    {"digitalValueNoDigit", "the digital value is no digit",
     [](const HealthRule& rule) {
         return rule.digitalValue > 9;
     }},
    {"digitalValueZero", "digital value 0: no state is judged by this rule",
     [](const HealthRule& rule) {
         return rule.digitalValue == 0;
     }},
    {"classWithoutHealth",
     "sensors of this class have no health: never consulted",
     [](const HealthRule& rule) {
         return !hasHealth(rule);
     }},
    {"unknownType", "no sensor has this type", unknownType},
    {"stateAbove14", "no sensor has a state above 14",
     [](const HealthRule& rule) {
         return rule.state.value_or(0) > lastState;
     }},
    {"stateWithoutMeaning", "the standard has no such state",
     stateWithoutMeaning},
    {"noHealthState", "no health state, or 1: counts as 5 (OK)",
     [](const HealthRule& rule) {
         return rule.health.value_or(1) == 1;
     }},
    {"notACimHealthState", "the health state is not one of CIM's",
     [](const HealthRule& rule) {
         const unsigned health = rule.health.value_or(1);
         return health != 1 && !*healthInWords(health);
     }},
};

std::optional<uint16_t> numberOrAny(std::istream& in)
{
    std::optional<uint16_t> result;
    in >> std::ws;
    if (in.peek() == '*')
        in.get();
    else
        in >> result.emplace();
    char separator;
    in >> separator;
    return result;
}

std::optional<uint16_t> healthSection(std::istream& in)
{
    uint16_t health;
    if (in >> health)
        return health;
    return std::nullopt;
}

// As forgiving as the library, so that what is said of a line is what it does.
void read(HealthLine& line)
{
    std::istringstream in{line.text};
    if ((in >> std::ws).eof())
        return;
    HealthRule rule;
    char separator;
    in >> rule.sensorClass >> separator;
    rule.type = numberOrAny(in);
    rule.state = numberOrAny(in);
    char digit = 0;
    char colon = 0;
    if (!(in >> digit)) {
        line.problems.push_back(
            {"noRule", "not \"class, type, state, 1: health\": left out"});
        return;
    }
    in >> colon;
    if (colon != ':') {
        line.problems.push_back(
            {"noColon", "no ':' behind the one digit of the digital value: "
                        "left out"});
        return;
    }
    rule.digitalValue = static_cast<uint8_t>(digit - '0');
    rule.health = healthSection(in);
    line.rule = rule;
}

std::string typeInWords(const HealthRule& rule)
{
    const bool specific = rule.sensorClass == specificClass;
    if (!rule.type)
        return specific ? "any other type" : "any type";
    if (unknownType(rule))
        return "type " + std::to_string(*rule.type);
    return Ipmi::DescFromType(static_cast<uint8_t>(*rule.type));
}

std::string meaning(const HealthRule& rule)
{
    std::string state = stateInWords(rule);
    if (state.empty())
        state = rule.state ? "state " + std::to_string(*rule.state)
                           : "any other state";
    const unsigned health =
        rule.health.value_or(1) == 1 ? 5 : rule.health.value_or(1);
    std::string words = healthInWords(health);
    if (words.empty())
        words = "health state";
    std::string subject = typeInWords(rule);
    if (rule.sensorClass != specificClass)
        subject += " of class " + std::to_string(rule.sensorClass);
    return subject + ", " + state + ": " + words + " (" +
           std::to_string(health) + ")";
}

// A rule that gives the same class, type and state again never counts; the
// library files "*" as type 0 and as state 255.
void findShadowed(std::vector<HealthLine>& lines)
{
    std::map<std::tuple<unsigned, unsigned, unsigned>, size_t> first;
    for (HealthLine& line : lines) {
        if (!line.rule || line.rule->digitalValue == 0)
            continue;
        const HealthRule& rule = *line.rule;
        const auto [same, isFirst] = first.try_emplace(
            {rule.sensorClass, rule.type.value_or(0), rule.state.value_or(255)},
            line.number);
        if (!isFirst)
            line.problems.push_back(
                {"shadowed", "line " + std::to_string(same->second) +
                                 " says class, type and state alike: this "
                                 "rule never counts"});
    }
}

// The state by whose rule the library sees that a sensor has rules at all.
unsigned leadingState(const HealthRule& rule)
{
    if (rule.sensorClass != specificClass)
        return 0;
    switch (rule.type.value_or(0)) {
    case 0x07:
    case 0x08:
    case 0x0D:
    case 0x1B:
        return 1;
    case 0x09:
        return 6;
    case 0x0C:
        return 10;
    default:
        return 0;
    }
}

void findNotLookedUp(std::vector<HealthLine>& lines)
{
    for (HealthLine& line : lines) {
        if (!line.rule || !hasHealth(*line.rule))
            continue;
        const HealthRule& rule = *line.rule;
        const unsigned leading = leadingState(rule);
        const auto leads = [&](const HealthLine& other) {
            return other.rule && other.rule->sensorClass == rule.sensorClass &&
                   (!other.rule->type || other.rule->type == rule.type) &&
                   (!other.rule->state || *other.rule->state == leading);
        };
        if (std::none_of(lines.begin(), lines.end(), leads))
            line.problems.push_back(
                {"notLookedUp", "without a rule for state " +
                                    std::to_string(leading) +
                                    " or * the library sees no rules for "
                                    "this type: never consulted"});
    }
}

} // namespace

const char* healthInWords(unsigned health)
{
    for (const auto& state : healthStates)
        if (state.health == health)
            return state.words;
    return "";
}

HealthTable checkHealthTable(std::istream& in)
{
    HealthTable table;
    for (std::string text; std::getline(in, text);) {
        HealthLine& line = table.lines.emplace_back();
        line.number = table.lines.size();
        line.text = text;
        read(line);
        if (!line.rule)
            continue;
        ++table.rules;
        line.meaning = meaning(*line.rule);
        for (const Check& check : checks)
            if (check.wrong(*line.rule))
                line.problems.push_back({check.code, check.words});
    }
    findShadowed(table.lines);
    findNotLookedUp(table.lines);
    for (const HealthLine& line : table.lines)
        table.problems += line.problems.size();
    return table;
}

} // namespace Tool
