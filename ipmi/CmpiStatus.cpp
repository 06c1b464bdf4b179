#include <vek-ipmi/CmpiStatus.h>

#include <syslog.h>

CmpiStatus::CmpiStatus() : CmpiStatus{CMPI_RC_OK} {}

CmpiStatus::CmpiStatus(CMPIrc rc) : rc_{rc}, msg_{nullptr} {}

CmpiStatus::CmpiStatus(CMPIrc rc, const char* msg) : CmpiStatus{rc}
{
    syslog(LOG_ERR, "CmpiStatus error %d %s", int(rc), msg);
}

CmpiStatus::CmpiStatus(CMPIStatus st) : rc_{st.rc}, msg_{st.msg} {}

CmpiStatus::~CmpiStatus() = default;

CMPIStatus CmpiStatus::status() const
{
    return {rc_, msg_};
}

CMPIrc CmpiStatus::rc() const
{
    return rc_;
}

const char* CmpiStatus::msg() const
{
    return msg_ ? static_cast<const char*>(msg_->hdl) : "(null)";
}
