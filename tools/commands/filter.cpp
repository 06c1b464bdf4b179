#include "tools/commands/filter.h"

#include <functional>
#include <set>

#include "tools/print/state.h"
#include "tools/print/words.h"
#include "tools/status.h"

namespace Tool
{

namespace
{

using Words = std::set<std::string>;
using WordsOf = std::function<Words(const Sensor&)>;

// Right whether or not a sensor is in that state now.
const Words fixedStates = {
    "absent",        "asserted",     "critical",        "event-only",
    "no-reading",    "non-critical", "non-recoverable", "none",
    "not-answering", "ok",           "other-lun",       "refused",
    "scanning-off",  "software",
};

Words typeWords(const Sensor& sensor)
{
    return {sensor.typeName};
}

Words entityWords(const Sensor& sensor)
{
    const std::string instance = std::to_string(sensor.entityInstance);
    return {sensor.entityName, sensor.entityName + " " + instance,
            std::to_string(sensor.entityId) + "." + instance};
}

Words thresholdWords(const Sensor& sensor)
{
    Words words;
    for (unsigned i = 0; i < Ipmi::THRESHOLD_COUNT; ++i) {
        if (!(sensor.stateBits >> i & 1))
            continue;
        const std::string name = thresholdName(i); // "upper critical"
        words.insert({name, name.substr(name.find(' ') + 1)});
    }
    return words;
}

Words stateWordsOf(const Sensor& sensor)
{
    if (sensor.condition == Condition::refused)
        return {"refused", stateText(sensor)};
    Words words;
    if (sensor.condition != Condition::read || sensor.states.empty())
        return {stateText(sensor)};
    words.insert(sensor.states.begin(), sensor.states.end());
    if (sensor.discrete)
        words.insert("asserted");
    else
        words.merge(thresholdWords(sensor));
    return words;
}

bool hasWord(const Words& words, const std::string& wanted, bool whole)
{
    for (const std::string& word : words) {
        const std::string text = asWord(word);
        if (whole ? text == wanted : text.find(wanted) != std::string::npos)
            return true;
    }
    return false;
}

std::vector<Sensor> select(const std::vector<Sensor>& sensors,
                           const std::string& wanted, const WordsOf& wordsOf,
                           bool whole)
{
    std::vector<Sensor> chosen;
    for (const Sensor& sensor : sensors)
        if (hasWord(wordsOf(sensor), asWord(wanted), whole))
            chosen.push_back(sensor);
    return chosen;
}

struct Choice
{
    const char* option;
    const std::string& wanted;
    WordsOf wordsOf;
    Words fixed;
};

[[noreturn]] void refuse(const std::vector<Sensor>& sensors,
                         const Choice& choice)
{
    Words right = choice.fixed;
    for (const Sensor& sensor : sensors)
        for (const std::string& word : choice.wordsOf(sensor))
            right.insert(choice.fixed.empty() ? word : asWord(word));
    throw Failure{Status::usage,
                  std::string{choice.option} + " '" + choice.wanted +
                      "' fits no sensor",
                  "There are: " + joined(right)};
}

std::vector<Sensor> choose(const std::vector<Sensor>& all,
                           std::vector<Sensor> sensors, const Choice& choice)
{
    if (choice.wanted.empty())
        return sensors;
    const bool whole =
        choice.fixed.count(asWord(choice.wanted)) != 0 ||
        !select(all, choice.wanted, choice.wordsOf, true).empty();
    if (!whole && select(all, choice.wanted, choice.wordsOf, false).empty())
        refuse(all, choice);
    return select(sensors, choice.wanted, choice.wordsOf, whole);
}

} // namespace

std::string stateWords()
{
    return joined(fixedStates);
}

std::vector<Sensor> choose(const std::vector<Sensor>& sensors,
                           const Filter& filter)
{
    std::vector<Sensor> chosen = sensors;
    const Choice choices[] = {
        {"--type", filter.type, typeWords, {}},
        {"--entity", filter.entity, entityWords, {}},
        {"--state", filter.state, stateWordsOf, fixedStates},
    };
    for (const Choice& choice : choices)
        chosen = choose(sensors, std::move(chosen), choice);
    return chosen;
}

} // namespace Tool
