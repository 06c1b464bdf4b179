#include <gtest/gtest.h>

#include "sim/controller.h"
#include "sim/fault/fault.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

TEST(SimController, answersWhatTheProfileSays)
{
    Controller controller{builtinProfile(), FaultSet{},
                          std::chrono::milliseconds{2}};
    const Outcome outcome = controller.exchange({0x06, 0x01, {}});
    EXPECT_EQ(outcome.kind, Outcome::Kind::Answer);
    EXPECT_EQ(outcome.bytes,
              (Bytes{0x00, 0x20, 0x81, 0x02, 0x14, 0x02, 0xBF, 0x5A, 0x31, 0x00,
                     0x02, 0x22, 0x00, 0x07, 0x1A, 0x2C}));
    EXPECT_EQ(outcome.netFn, 0x07);
    EXPECT_EQ(outcome.command, 0x01);
    EXPECT_EQ(outcome.delay, std::chrono::milliseconds{2});
    EXPECT_EQ(controller.counts().at(0x0601), 1u);
}

} // namespace
