#include <gtest/gtest.h>

#include "ipmi/IpmiLoop.h"

using Ipmi::choosePass;
using Ipmi::IpmiIfc;
using Ipmi::PollPass;

namespace
{

TEST(Lifecycle, theChoiceOfPass)
{
    const struct
    {
        const char* what;
        int pollCount;
        IpmiIfc::IPMI_POLL_TYPE type;
        unsigned entries, lastEntries;
        PollPass pass;
        int nextCount;
    } cases[] = {
        {"nothing new", 9, IpmiIfc::POLL_NORMAL, 5, 5, PollPass::count, 9},
        {"every 8th poll", 16, IpmiIfc::POLL_NORMAL, 5, 5, PollPass::periodic,
         16},
        {"new events", 9, IpmiIfc::POLL_NORMAL, 6, 5, PollPass::full, 16},
        {"fewer events", 15, IpmiIfc::POLL_NORMAL, 4, 5, PollPass::full, 16},
        {"new events on an 8th poll", 16, IpmiIfc::POLL_NORMAL, 6, 5,
         PollPass::full, 24},
        {"a first event", 9, IpmiIfc::POLL_NORMAL, 1, 0, PollPass::full, 16},
        {"a cleared log", 9, IpmiIfc::POLL_NORMAL, 1, 5, PollPass::count, 9},
        {"an emptied log", 9, IpmiIfc::POLL_NORMAL, 0, 5, PollPass::full, 16},
        {"a cleared log on an 8th poll", 8, IpmiIfc::POLL_NORMAL, 1, 5,
         PollPass::periodic, 8},
        {"full on demand", 10, IpmiIfc::POLL_FULL, 5, 5, PollPass::full, 16},
        {"full of a cleared log", 10, IpmiIfc::POLL_FULL, 1, 5, PollPass::full,
         16},
        {"readings", 11, IpmiIfc::POLL_READINGS, 5, 5, PollPass::readings, 11},
        {"readings in place of a periodic pass", 16, IpmiIfc::POLL_READINGS, 5,
         5, PollPass::readings, 23},
        {"readings and new events", 11, IpmiIfc::POLL_READINGS, 6, 5,
         PollPass::full, 16},
        {"skip when nothing is due", 9, IpmiIfc::POLL_SKIP, 5, 5,
         PollPass::count, 9},
        {"skip a periodic pass", 16, IpmiIfc::POLL_SKIP, 5, 5, PollPass::count,
         23},
        {"skip does not hide new events", 16, IpmiIfc::POLL_SKIP, 6, 5,
         PollPass::full, 24},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto choice =
            choosePass(c.pollCount, c.type, c.entries, c.lastEntries);
        EXPECT_EQ(choice.pass, c.pass);
        EXPECT_EQ(choice.pollCount, c.nextCount);
    }
}

} // namespace
