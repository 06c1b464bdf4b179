/// The description of an event by its code, in constant time.
#ifndef VEK_IPMI_PRIVATE_IPMIEVENTLOOKUP_H
#define VEK_IPMI_PRIVATE_IPMIEVENTLOOKUP_H

#include <cstdint>

#include "ipmi/IpmiEventTexts.h"

namespace Ipmi
{

/// Index of the row in ipmi_sel_data; of some row for a code that has none.
unsigned perfect_hash_lookup(unsigned code);

/// The whole of event data 1 and, for sensor types, of event data 3 must be a
/// row's. The empty text when they are not.
const char* find_generic_desc(unsigned char type, unsigned char data1);
const char* find_specific_desc(unsigned char sensorType, unsigned char data1,
                               unsigned char data3);

/// By class, then by type; negative, 0 or positive.
int code_compare(unsigned a, unsigned b);

/// The first row of these, whatever event data 3 it is for; null for none.
const EventText* findText(uint8_t eventClass, uint8_t type, unsigned offset);

} // namespace Ipmi

#endif
