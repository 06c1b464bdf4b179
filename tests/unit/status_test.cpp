#include <gtest/gtest.h>
#include <syslog.h>
#include <vek-ipmi/CmpiStatus.h>

#include "tests/support/libc_seam.h"

namespace
{

TEST(Status, carriesTheBrokersMessageAndNoTextOfItsOwn)
{
    char text[] = "from the broker";
    CMPIString message{text, nullptr};
    EXPECT_EQ(CmpiStatus{}.rc(), CMPI_RC_OK);
    const CmpiStatus own{CMPI_RC_ERROR, "text"};
    EXPECT_EQ(own.status().msg, nullptr);
    EXPECT_STREQ(own.msg(), "(null)");
    EXPECT_EQ(Seam::takeLog(), (std::vector<Seam::LogLine>{
                                   {LOG_ERR, "CmpiStatus error 200 text"}}));
    const CmpiStatus broker{CMPIStatus{CMPI_RC_ERROR_SYSTEM, &message}};
    EXPECT_EQ(broker.status().rc, CMPI_RC_ERROR_SYSTEM);
    EXPECT_EQ(broker.status().msg, &message);
    EXPECT_STREQ(broker.msg(), "from the broker");
    EXPECT_TRUE(Seam::takeLog().empty());
}

} // namespace
