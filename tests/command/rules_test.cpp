// How sensors become numbers, words and one verdict.
#include <gtest/gtest.h>

#include "tools/collect/overall.h"
#include "tools/collect/threshold_plan.h"
#include "tools/print/columns.h"
#include "tools/print/screen.h"
#include "tools/print/value.h"

namespace Tool
{
namespace
{

TEST(Value, hasTheDigitsThatTellItFromItsNeighbours)
{
    const struct
    {
        double value, step;
        const char* text;
    } cases[] = {
        {47, 1, "47"},
        {12.096, 0.063, "12.096"},
        {1.0505, 0.0105, "1.05"},
        {0.00012, 0.00001, "0.00012"},
        {-0.0001, 1, "0"},
        {7812.5, 100, "7812.5"},
        {1e9, 1e8, "1000000000"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(numberText(c.value, c.step), c.text);
}

// Raw 0 to 255 as 10 * raw - 100, but for one without a value.
Conversion tens()
{
    Conversion conversion;
    for (unsigned raw = 0; raw < conversion.size(); ++raw)
        conversion[raw] = {static_cast<uint8_t>(raw), 10.0 * raw - 100, 10};
    conversion[20].real.reset();
    return conversion;
}

TEST(Threshold, takesTheNearestRawValueWithinReach)
{
    const struct
    {
        double wanted;
        int raw; ///< -1: none.
    } cases[] = {
        {0, 10},     {4.9, 10},   {-100, 0},       {-104, 0},
        {-106, -1},  {2450, 255}, {2456, -1},      {100, 19},
        {1e300, -1}, {NAN, -1},   {-HUGE_VAL, -1},
    };
    for (const auto& c : cases) {
        const auto value = nearest(tens(), c.wanted);
        EXPECT_EQ(value ? value->raw : -1, c.raw) << c.wanted;
    }
}

TEST(Health, isThatOfTheWorstSensorThatCounts)
{
    const struct
    {
        const char* what;
        std::vector<std::tuple<Health, Condition, int>> sensors;
        unsigned read; ///< Of two records.
        Health health;
    } cases[] = {
        {"nobody", {}, 2, Health::unknown},
        {"well", {{Health::well, Condition::read, 0}}, 2, Health::well},
        {"worst of three",
         {{Health::degraded, Condition::read, 0},
          {Health::critical, Condition::read, 0},
          {Health::unknown, Condition::notAnswering, 0xC3}},
         2,
         Health::critical},
        {"unknown below degraded",
         {{Health::unknown, Condition::refused, 0xC0},
          {Health::degraded, Condition::read, 0}},
         1,
         Health::degraded},
        {"a record is missing",
         {{Health::well, Condition::read, 0}},
         1,
         Health::unknown},
        {"silent",
         {{Health::well, Condition::read, 0},
          {Health::unknown, Condition::notAnswering, -1}},
         2,
         Health::unknown},
        {"these do not count",
         {{Health::well, Condition::read, 0},
          {Health::none, Condition::absent, 0xCB},
          {Health::unknown, Condition::noReading, 0},
          {Health::unknown, Condition::scanningOff, 0},
          {Health::unknown, Condition::refused, 0xCD},
          {Health::noRule, Condition::read, 0}},
         2,
         Health::well},
    };
    for (const auto& c : cases) {
        std::vector<Sensor> sensors(c.sensors.size());
        for (size_t i = 0; i < sensors.size(); ++i)
            std::tie(sensors[i].health, sensors[i].condition,
                     sensors[i].lastResult) = c.sensors[i];
        EXPECT_EQ(overallOf(sensors, {2, 2, c.read, 0}).health, c.health)
            << c.what;
    }
}

TEST(Columns, fitTheTerminal)
{
    Columns table{{{"Name", false, 4},
                   {"Kind", false, 3, true},
                   {"Reading", true},
                   {"State", false, 5}}};
    table.row({{"Zone \u00b51"}, {"Fan"}, {"9 RPM"}, {"ok", Colour::good}});
    table.row({{"\u6e29\u5ea6 2"}, {"Temperature"}, {""}, {"Redundancy Lost"}});
    const struct
    {
        size_t width;
        const char* text;
    } cases[] = {
        {80, "Name     Kind         Reading  State\n"
             "Zone \u00b51  Fan            9 RPM  ok\n"
             "\u6e29\u5ea6 2   Temperature           Redundancy Lost\n"},
        {30, "Name   Kind   Reading  State\n"
             "Zone\u2026  Fan      9 RPM  ok\n"
             "\u6e29\u5ea6\u2026  Temp\u2026           Redund\u2026\n"},
        {22, "Name   Reading  State\n"
             "Zone\u2026    9 RPM  ok\n"
             "\u6e29\u5ea6\u2026           Redun\u2026\n"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(table.text({c.width, 24, false}), c.text) << c.width;
    EXPECT_NE(table.text({80, 24, true}).find("\033[32mok"), std::string::npos);
    EXPECT_EQ(firstLines("a\nb\nc\nd\n", 3), "a\nb\n... 2 more lines\n");
}

} // namespace
} // namespace Tool
