#include "tools/print/health_table.h"

#include <algorithm>

#include "tools/print/text.h"

namespace Tool
{

namespace
{

constexpr size_t numberWidth = 5;

std::string counted(size_t count, const char* what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string inText(const HealthLine& line)
{
    const std::string number = std::to_string(line.number);
    std::string text(numberWidth - std::min(numberWidth, number.size()), ' ');
    text += number + "  ";
    text += line.rule ? line.meaning : '"' + printable(line.text) + '"';
    text += '\n';
    for (const HealthProblem& problem : line.problems)
        text += std::string(numberWidth + 2, ' ') + "! " + problem.words + '\n';
    return text;
}

Json orNull(const std::optional<uint16_t>& number)
{
    return number ? Json(*number) : Json(nullptr);
}

Json inJson(const HealthRule& rule)
{
    return {{"class", rule.sensorClass},
            {"type", orNull(rule.type)},
            {"state", orNull(rule.state)},
            {"digitalValue", rule.digitalValue},
            {"health", orNull(rule.health)}};
}

Json inJson(const HealthLine& line)
{
    Json json;
    json["number"] = line.number;
    json["text"] = printable(line.text);
    json["rule"] = line.rule ? inJson(*line.rule) : Json(nullptr);
    json["meaning"] = line.rule ? Json(line.meaning) : Json(nullptr);
    json["problems"] = Json::array();
    for (const HealthProblem& problem : line.problems)
        json["problems"].push_back(
            {{"code", problem.code}, {"words", problem.words}});
    return json;
}

} // namespace

std::string toText(const HealthTable& table)
{
    std::string text;
    for (const HealthLine& line : table.lines)
        if (line.rule || !line.problems.empty())
            text += inText(line);
    return text + counted(table.rules, "rule") + ", " +
           counted(table.problems, "problem") + '\n';
}

Json toJson(const HealthTable& table)
{
    Json json = document("health-table");
    json["rules"] = table.rules;
    json["problems"] = table.problems;
    json["lines"] = Json::array();
    for (const HealthLine& line : table.lines)
        json["lines"].push_back(inJson(line));
    return json;
}

} // namespace Tool
