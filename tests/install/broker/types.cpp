// With a broker's header on the include path, its types are the ones used.
#include <vek-ipmi/IpmiIfc.h>

#ifndef BROKERS_OWN_CMPIDT_H
#error "the broker's cmpidt.h was not used"
#endif

CMPIrc codeOf(const CmpiStatus& status)
{
    return status.rc();
}
