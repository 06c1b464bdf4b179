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
    const struct
    {
        const char* what;
        CmpiStatus status;
        CMPIrc rc;
        CMPIString* object;
        const char* msg;
    } cases[] = {
        {"default", CmpiStatus{}, CMPI_RC_OK, nullptr, "(null)"},
        {"code", CmpiStatus{CMPI_RC_ERR_FAILED}, CMPI_RC_ERR_FAILED, nullptr,
         "(null)"},
        {"text", CmpiStatus{CMPI_RC_ERROR, "text"}, CMPI_RC_ERROR, nullptr,
         "(null)"},
        {"broker", CmpiStatus{CMPIStatus{CMPI_RC_ERROR_SYSTEM, &message}},
         CMPI_RC_ERROR_SYSTEM, &message, "from the broker"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.status.rc(), c.rc);
        EXPECT_EQ(c.status.status().rc, c.rc);
        EXPECT_EQ(c.status.status().msg, c.object);
        EXPECT_STREQ(c.status.msg(), c.msg);
    }
    EXPECT_EQ(Seam::takeLog(), (std::vector<Seam::LogLine>{
                                   {LOG_ERR, "CmpiStatus error 200 text"}}));
}

} // namespace
