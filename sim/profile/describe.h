/// The profile's format: which key stands for what.
#ifndef VEK_SIM_PROFILE_DESCRIBE_H
#define VEK_SIM_PROFILE_DESCRIBE_H

#include "sim/profile/fields.h"
#include "sim/profile/profile.h"

namespace Sim
{

void describe(Fields& io, Profile& profile);
void describe(Fields& io, Identity& identity);
void describe(Fields& io, SystemInfo& info);
void describe(Fields& io, Chassis& chassis);
void describe(Fields& io, Channel& channel);
void describe(Fields& io, Messaging& messaging);
void describe(Fields& io, Repository& repository);
void describe(Fields& io, EventLog& log);
void describeFrus(Fields& io, std::vector<FruDevice>& frus);
void describeLan(Fields& io, std::vector<LanConfig>& lan);
void describeSensors(Fields& io, Sensors& sensors);
/// What a sensor does; what it is, its record says.
void describeBehaviour(Fields& io, Sensor& sensor);

} // namespace Sim

#endif
