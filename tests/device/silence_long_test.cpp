// With the real clock: what it is to wait for a controller that never answers.
#include <syslog.h>

#include "tests/device/node_fixture.h"

namespace
{

using SilenceInRealTime = NodeFixture;

TEST_F(SilenceInRealTime, anExchangeThatIsNeverAnsweredEnds)
{
    Seam::setTimeScale(1);
    Sim::Device::setTimeScale(1);
    startNode(0);
    ASSERT_EQ(waitUntilRunning(), Ipmi::IpmiIfc::STATE_RUNNING);
    setFaults({"lost"});
    const int fd = Ipmi::g_IpmiNode[0].devFd;
    const int opens = openCount();
    Seam::takeLog();
    EXPECT_EQ(sendChassisStatus(), 0xff);
    EXPECT_EQ(Seam::takeLog(),
              (std::vector<Seam::LogLine>{
                  {LOG_WARNING, "Node 0: poll(fd=" + std::to_string(fd) +
                                    ") timeout with no reply."}}));
    EXPECT_EQ(openCount(), opens + 1);
    setFaults({});
    EXPECT_EQ(sendChassisStatus(), 0) << "the node goes on";
    stopNode();
}

} // namespace
