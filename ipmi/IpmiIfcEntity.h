/// The entities of a node: a tree of two levels, containers and what they
/// contain, and a list made of it.
///
/// Functions take the entity mutex themselves unless they say otherwise. 0 is
/// success; -1 a failure and a node without a record.
#ifndef VEK_IPMI_PRIVATE_IPMIIFCENTITY_H
#define VEK_IPMI_PRIVATE_IPMIIFCENTITY_H

#include <cstdint>

#include <vek-ipmi/IpmiEntity.h>

#include "ipmi/IpmiNode.h"

namespace Ipmi
{

/// What an entity is compared by.
struct entity_id
{
    uint8_t id;
    uint8_t instance; ///< In seven bits.
};

struct ipmiifc_entity_list
{
    ipmiifc_entity_list* next;
    /// A contained entity's container; else the one that was last before it.
    ipmiifc_entity_list* back;
    ipmiifc_entity_list* children;
    entity_id entity;
    bool flag; ///< Bit 5 of the association record's flags.
};

/// Adds to the tree what the node's records tell. Takes the lock of the
/// records for reading.
int IpmiIfcEntityListCreate(int node);
/// Fails for an entity that is a top-level one already.
int IpmiIfcEntityAddParent(int node, const entity_id* entity,
                           unsigned char flag);
/// Fails without the container, and for an entity that it contains already.
int IpmiIfcEntityAddChild(int node, const entity_id* container,
                          unsigned char id, unsigned char instance);
/// Whether it is a top-level entity.
bool IpmiIfcEntityOnList(int node, const entity_id* entity);
/// The container; all zeros for none, and for a top-level entity.
IpmiEntity IpmiIfcEntityFindParent(int node, const entity_id* entity);
/// Makes the list anew.
int IpmiIfcEntityInstantiateAll(int node);
/// Frees the tree and leaves the list.
int IpmiIfcEntityCleanUpAll(int node);
/// Walks over the tree and prints nothing.
int IpmiIfcEntityDumpAll(int node);

// These need the mutex held.

bool IpmiIfcEntityOnChildList(const ipmiifc_entity_list* container,
                              const entity_id* entity);
const ipmiifc_entity_list*
IpmiIfcEntityFindParentFromChild(const ipmiifc_entity_list* container,
                                 const entity_id* entity);
void IpmiIfcEntityCleanupChild(ipmiifc_entity_list* container);
void IpmiIfcEntityInstantiate(IpmiNode& node, const ipmiifc_entity_list* list)
    VEK_REQUIRES(node.entityMutex);
void IpmiIfcEntityDump(const ipmiifc_entity_list* list);
void freeEntities(IpmiNode& node) VEK_REQUIRES(node.entityMutex);

} // namespace Ipmi

#endif
