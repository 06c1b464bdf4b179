/// The few CMPI data types that CmpiStatus carries.
///
/// A program that is built against a CIM broker has the broker's own
/// cmpidt.h on its include path and gets the types from there. Everybody else
/// gets the declarations below: the same values, layouts and tags (tags are
/// part of mangled names), after the Common Manageability Programming
/// Interface standard (The Open Group, C051 and C061).
#ifndef VEK_IPMI_CMPITYPES_H
#define VEK_IPMI_CMPITYPES_H

#if __has_include(<cmpidt.h>)
#include <cmpidt.h>
#elif __has_include(<cmpi/cmpidt.h>)
#include <cmpi/cmpidt.h>
#else

struct _CMPIStringFT;

/// A broker's string object. The library only ever reads `hdl`, as the
/// character data.
struct _CMPIString
{
    void* hdl;
    const struct _CMPIStringFT* ft;
};
typedef struct _CMPIString CMPIString;

/// Return codes of the standard.
enum _CMPIrc
{
    CMPI_RC_OK = 0,
    CMPI_RC_ERR_FAILED = 1,
    CMPI_RC_ERR_ACCESS_DENIED = 2,
    CMPI_RC_ERR_INVALID_NAMESPACE = 3,
    CMPI_RC_ERR_INVALID_PARAMETER = 4,
    CMPI_RC_ERR_INVALID_CLASS = 5,
    CMPI_RC_ERR_NOT_FOUND = 6,
    CMPI_RC_ERR_NOT_SUPPORTED = 7,
    CMPI_RC_ERR_CLASS_HAS_CHILDREN = 8,
    CMPI_RC_ERR_CLASS_HAS_INSTANCES = 9,
    CMPI_RC_ERR_INVALID_SUPERCLASS = 10,
    CMPI_RC_ERR_ALREADY_EXISTS = 11,
    CMPI_RC_ERR_NO_SUCH_PROPERTY = 12,
    CMPI_RC_ERR_TYPE_MISMATCH = 13,
    CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
    CMPI_RC_ERR_INVALID_QUERY = 15,
    CMPI_RC_ERR_METHOD_NOT_AVAILABLE = 16,
    CMPI_RC_ERR_METHOD_NOT_FOUND = 17,
    CMPI_RC_DO_NOT_UNLOAD = 50,
    CMPI_RC_NEVER_UNLOAD = 51,
    CMPI_RC_ERR_INVALID_HANDLE = 60,
    CMPI_RC_ERR_INVALID_DATA_TYPE = 61,
    CMPI_RC_ERROR_SYSTEM = 100,
    CMPI_RC_ERROR = 200
};
typedef enum _CMPIrc CMPIrc;

/// Result of a CMPI call: a code and, optionally, the broker's text.
struct _CMPIStatus
{
    CMPIrc rc;
    CMPIString* msg;
};
typedef struct _CMPIStatus CMPIStatus;

#endif
#endif
