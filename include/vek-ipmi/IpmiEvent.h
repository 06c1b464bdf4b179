/// Events and states in words.
#ifndef VEK_IPMI_IPMIEVENT_H
#define VEK_IPMI_IPMIEVENT_H

#include <string>

namespace Ipmi
{

/// What it means that a discrete sensor's state bit `offset` is set: by the
/// event/reading type from 02h to 0Ch, by the sensor type for 6Fh (IPMI v2.0,
/// tables 42-2 and 42-3). The empty string where the standard has no such
/// state, and for OEM types.
std::string DescFromState(unsigned char eventReadingType,
                          unsigned char sensorType, unsigned offset);

} // namespace Ipmi

#endif
