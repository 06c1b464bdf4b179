// A stand-in for a broker's own header: the same types, told apart by a macro.
#ifndef BROKERS_OWN_CMPIDT_H
#define BROKERS_OWN_CMPIDT_H

typedef enum _CMPIrc
{
    CMPI_RC_OK = 0,
    CMPI_RC_ERR_FAILED = 1,
    CMPI_RC_ERROR = 200
} CMPIrc;
struct _CMPIStringFT;
typedef struct _CMPIString
{
    void* hdl;
    struct _CMPIStringFT* ft;
} CMPIString;
typedef struct _CMPIStatus
{
    CMPIrc rc;
    CMPIString* msg;
} CMPIStatus;

#endif
