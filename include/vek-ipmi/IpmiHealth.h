/// Health of discrete sensors, by the table that sensor_health(5) describes.
#ifndef VEK_IPMI_IPMIHEALTH_H
#define VEK_IPMI_IPMIHEALTH_H

namespace Ipmi
{

/// Health of the discrete sensor of this class (event/reading type), type and
/// number whose state bits are given: a CIM HealthState from the table, or
/// 0    the class has no health (0, 1, 2, 8, 0Dh-6Eh, above 6Fh)
/// 1    the table has no rule for the sensor
/// 5    no state bit of a class with health is set, or no rule speaks against
/// it Of several state bits the highest decides; a caller that wants the worst
/// asks for each bit alone. Needs a loaded table (IpmiCommandLine.h).
int getSensorHealthState(unsigned char sensorClass, unsigned char sensorType,
                         unsigned char sensorNumber, unsigned short stateBits);

} // namespace Ipmi

#endif
