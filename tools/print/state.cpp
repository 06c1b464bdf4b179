#include "tools/print/state.h"

#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

struct ThresholdWords
{
    const char *key, *name;
};

constexpr ThresholdWords thresholdWords[Ipmi::THRESHOLD_COUNT] = {
    {"lnc", "lower non-critical"},    {"lc", "lower critical"},
    {"lnr", "lower non-recoverable"}, {"unc", "upper non-critical"},
    {"uc", "upper critical"},         {"unr", "upper non-recoverable"},
};

struct ConditionWords
{
    Condition condition;
    const char *word, *sentence;
};

constexpr ConditionWords conditionWords[] = {
    {Condition::read, "read", ""},
    {Condition::noReading, "no reading",
     "the controller has no reading at the moment"},
    {Condition::scanningOff, "scanning off",
     "the controller does not scan the sensor"},
    {Condition::absent, "absent", "the sensor is not present"},
    {Condition::notAnswering, "not answering",
     "no answer came about the sensor"},
    {Condition::refused, "refused", "the controller refused the reading"},
    {Condition::eventOnly, "event-only",
     "the sensor only sends events and is never read"},
    {Condition::software, "software",
     "the sensor belongs to software, which cannot be asked"},
    {Condition::otherLun, "other LUN",
     "the controller's sensors at LUN 1 to 3 cannot be told apart from those "
     "at LUN 0 through this driver"},
    {Condition::leftOut, "not shown", "the record makes no sensor here"},
};

const ConditionWords& wordsOf(Condition condition)
{
    for (const ConditionWords& row : conditionWords)
        if (row.condition == condition)
            return row;
    return conditionWords[0];
}

std::string withCode(const Sensor& sensor, const std::string& text)
{
    if (sensor.condition != Condition::refused)
        return text;
    return text + " (" + hexNumber(static_cast<unsigned>(sensor.lastResult)) +
           ")";
}

} // namespace

const char* thresholdName(unsigned threshold)
{
    return thresholdWords[threshold].name;
}

const char* thresholdKey(unsigned threshold)
{
    return thresholdWords[threshold].key;
}

std::string conditionWord(const Sensor& sensor)
{
    return withCode(sensor, wordsOf(sensor.condition).word);
}

std::string conditionInWords(const Sensor& sensor)
{
    std::string sentence = wordsOf(sensor.condition).sentence;
    if (sensor.condition != Condition::refused)
        return sentence;
    const Completion completion{static_cast<uint8_t>(sensor.lastResult), true};
    return sentence + ": " + inWords(commands::getSensorReading, completion);
}

std::string stateText(const Sensor& sensor)
{
    if (sensor.condition != Condition::read)
        return conditionWord(sensor);
    if (sensor.states.empty())
        return sensor.discrete ? "none" : "ok";
    std::string text;
    for (const std::string& state : sensor.states)
        text += (text.empty() ? "" : ", ") + state;
    return text;
}

namespace
{

struct HealthWords
{
    Health health;
    const char* word;
    Colour colour;
};

constexpr HealthWords healthWords[] = {
    {Health::well, "well", Colour::good},
    {Health::degraded, "degraded", Colour::warning},
    {Health::critical, "critical", Colour::bad},
    {Health::unknown, "unknown", Colour::warning},
    {Health::noRule, "no rule", Colour::none},
    {Health::none, "-", Colour::dim},
};

const HealthWords& wordsOf(Health health)
{
    for (const HealthWords& row : healthWords)
        if (row.health == health)
            return row;
    return healthWords[0];
}

} // namespace

const char* healthWord(Health health)
{
    return wordsOf(health).word;
}

Colour colourOf(Health health)
{
    return wordsOf(health).colour;
}

} // namespace Tool
