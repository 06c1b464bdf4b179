/// Texts of sensor records in UTF-8.
#ifndef VEK_IPMI_PRIVATE_IPMISENSORTEXT_H
#define VEK_IPMI_PRIVATE_IPMISENSORTEXT_H

#include <string>

#include "ipmi/RecordView.h"

namespace Ipmi
{

/// The text whose type/length byte (IPMI v2.0, 43.15) is at `at`; blanks and
/// zeroes at its end are left out, what cannot be printed is escaped.
std::string decodeIdString(RecordView record, size_t at);

/// The `offset`th name in a row: "0", "1" ... or "A" ... "Z", "AA" ...
std::string instanceModifier(unsigned offset, bool alphabetic);

} // namespace Ipmi

#endif
