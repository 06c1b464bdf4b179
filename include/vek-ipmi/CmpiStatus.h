/// Status and exception type of the library.
#ifndef VEK_IPMI_CMPISTATUS_H
#define VEK_IPMI_CMPISTATUS_H

#include <vek-ipmi/CmpiTypes.h>

/// What the library throws: by value, to be caught by reference. A plain
/// value without a lock.
///
/// The library has no broker with which to build a CMPIString, so the text of
/// an exception that it throws goes to syslog (LOG_ERR) and nowhere else:
/// msg() of such an exception is "(null)".
class CmpiStatus
{
public:
    /// CMPI_RC_OK without a message.
    CmpiStatus();
    CmpiStatus(CMPIrc rc);
    /// Logs "CmpiStatus error %d %s" and drops the text.
    CmpiStatus(CMPIrc rc, const char* msg);
    /// Copies both fields; the message object stays the broker's.
    CmpiStatus(CMPIStatus st);
    CmpiStatus(const CmpiStatus&) = default;
    CmpiStatus& operator=(const CmpiStatus&) = default;
    virtual ~CmpiStatus();

    CMPIStatus status() const;
    CMPIrc rc() const;
    /// The message object's characters, or "(null)" when there is none.
    /// Borrowed from the object.
    const char* msg() const;

private:
    CMPIrc rc_;
    CMPIString* msg_;
};

#endif
