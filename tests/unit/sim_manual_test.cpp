#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "sim/fault/fault.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

/// The first block of the simulator's manual that is fenced as `kind`.
std::string example(const std::string& kind)
{
    std::ifstream manual{SIMULATOR_MANUAL};
    std::string line, block;
    while (std::getline(manual, line) && line != "```" + kind) {
    }
    while (std::getline(manual, line) && line != "```")
        block += line + '\n';
    return block;
}

TEST(SimManual, itsExamplesAreRight)
{
    const Mistakes mistakes = checkProfile(example("json"));
    EXPECT_TRUE(mistakes.empty())
        << mistakes.at(0).place << ": " << mistakes.at(0).reason;
    std::istringstream rules{example("fault")};
    int count = 0;
    for (std::string rule; std::getline(rules, rule); ++count) {
        Mistake mistake;
        EXPECT_TRUE(parseFault(rule, mistake)) << rule << mistake.reason;
    }
    EXPECT_GT(count, 10);
}

} // namespace
