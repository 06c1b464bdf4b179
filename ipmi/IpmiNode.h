/// The node's state machine.
#ifndef VEK_IPMI_PRIVATE_IPMINODE_H
#define VEK_IPMI_PRIVATE_IPMINODE_H

#include <vek-ipmi/IpmiNode.h>

namespace Ipmi
{

/// Null for a number without a record.
IpmiNode* nodeRecord(int node);

/// Its index in the table.
inline int numberOf(const IpmiNode& node)
{
    return int(&node - g_IpmiNode);
}

/// Gives a record the values it was loaded with and forgets the controller's
/// identity. Leaves locks, caches, the device and shutdownFlag alone: a node
/// that was stopped stays stopped.
void InitIpmiNode(int node);

void _setState(int node, IpmiIfc::IPMI_STATE state);
IpmiIfc::IPMI_STATE _getState(int node);

/// Sets the state `to` if it is `from`.
/// @throws CmpiStatus rc 200 otherwise; the state stays as it is.
void _changeState(int node, IpmiIfc::IPMI_STATE from, IpmiIfc::IPMI_STATE to);

} // namespace Ipmi

#endif
