#include <gtest/gtest.h>

#include <sstream>

#include "tools/print/health_table.h"

namespace Tool
{
namespace
{

HealthTable check(const std::string& text)
{
    std::istringstream in{text};
    return checkHealthTable(in);
}

TEST(HealthTable, thePackagedOneHasNoProblems)
{
    const HealthTable table = check(std::string{packagedHealthTable()});
    EXPECT_EQ(table.rules, table.lines.size());
    EXPECT_GT(table.rules, 200u);
    EXPECT_EQ(table.problems, 0u) << toText(table);
}

TEST(HealthTable, whatIsWrongInALine)
{
    // Below a table that makes each rule looked up.
    constexpr char before[] = "111,*,*,1:0\n4,*,*,1:0\n";
    const struct
    {
        const char *line, *problems;
    } cases[] = {
        {"111, 8, 1, 1: 20 # words", ""},
        {"", ""},
        {"111, 192, 3, 1: 20", ""}, // OEM: who knows
        {"# a comment", "noRule"},
        {"111, 8", "noRule"},
        {"111, 8, 70000, 1: 20", "noRule"},
        {"111, 8, 1, 1", "noColon"},
        {"111, 8, 1, 12: 20", "noColon"},
        {"111, 8, 1, x: 20", "digitalValueNoDigit"},
        {"111, 8, 1, 0: 20", "digitalValueZero"},
        {"8, 8, 0, 1: 20", "classWithoutHealth"},
        {"112, 8, 0, 1: 20", "classWithoutHealth"},
        {"4, 45, 1, 1: 20", "unknownType"},
        {"4, 0, 1, 1: 20", "unknownType"},
        {"111, 8, 15, 1: 20", "stateAbove14"},
        {"111, 8, 9, 1: 20", "stateWithoutMeaning"},
        {"4, *, 2, 1: 20", "stateWithoutMeaning"},
        {"111, 8, 1, 1:", "noHealthState"},
        {"111, 8, 1, 1: 1", "noHealthState"},
        {"111, 8, 1, 1: 11", "notACimHealthState"},
        {"4 ; * ; * ; 1 : 5", "shadowed"},
        {"11, 8, 1, 1: 20", "notLookedUp"},
    };
    for (const auto& c : cases) {
        const HealthTable table = check(before + std::string{c.line} + '\n');
        ASSERT_EQ(table.lines.size(), 3u) << c.line;
        std::string codes;
        for (const HealthProblem& problem : table.lines[2].problems)
            codes += problem.code;
        EXPECT_EQ(codes, c.problems) << c.line;
    }
}

TEST(HealthTable, asText)
{
    EXPECT_EQ(toText(check("111,*,*,1:0\n\n11,*,0,1:5\n11,8,1,1:20\n\x1bx\n")),
              "    1  any other type, any other state: unknown (0)\n"
              "    3  any type of class 11, Fully Redundant: OK (5)\n"
              "    4  Power Supply of class 11, Redundancy Lost: major failure "
              "(20)\n"
              "    5  \"\\x1bx\"\n"
              "       ! not \"class, type, state, 1: health\": left out\n"
              "3 rules, 1 problem\n");
}

TEST(HealthTable, asJson)
{
    const Json json = toJson(check("111,8,*,1:20\nx\n"));
    EXPECT_EQ(json["schema"]["name"], "vek-ipmi/health-table");
    EXPECT_EQ(json["lines"][0]["rule"]["type"], 8);
    EXPECT_TRUE(json["lines"][0]["rule"]["state"].is_null());
    EXPECT_TRUE(json["lines"][1]["rule"].is_null());
    EXPECT_EQ(json["lines"][1]["problems"][0]["code"], "noRule");
}

} // namespace
} // namespace Tool
