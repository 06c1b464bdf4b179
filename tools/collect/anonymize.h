/// Taking out of a capture what tells which server it is of.
#ifndef VEK_TOOLS_COLLECT_ANONYMIZE_H
#define VEK_TOOLS_COLLECT_ANONYMIZE_H

#include "tools/collect/capture.h"

namespace Tool
{

/// Serial numbers, asset tags and custom fields of FRU devices, MAC and IP
/// addresses, GUIDs, host names and the SNMP community become others of the
/// same length; addresses that were equal stay so. Checksums that were right
/// stay right, and wrong ones wrong.
void anonymize(Capture& capture);

} // namespace Tool

#endif
