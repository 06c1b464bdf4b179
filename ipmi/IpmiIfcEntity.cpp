#include "ipmi/IpmiIfcEntity.h"

#include <memory>
#include <new>

#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiSensorRecord.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t instanceMask = 0x7f;

/// Of an entity association record (IPMI v2.0, 43.4), from its header on. A
/// device-relative one (43.5) is read the same way: callers know the entities
/// that come of it.
namespace association
{
enum : size_t
{
    container = 5,
    flags = 7, ///< Bit 7: ranges; bit 5: presence sensor always there.
    contained = 8
};
constexpr size_t pairs = 4, ranges = 2;
} // namespace association

bool isSame(const entity_id& a, const entity_id& b)
{
    return a.id == b.id &&
           (a.instance & instanceMask) == (b.instance & instanceMask);
}

entity_id entityAt(RecordView record, size_t at)
{
    return {record.u8(at), record.u8(at + 1)};
}

IpmiEntity valueOf(const entity_id& entity, int node)
{
    return {entity.id, entity.instance, 0, node};
}

const ipmiifc_entity_list* find(const ipmiifc_entity_list* list,
                                const entity_id& entity)
{
    while (list && !isSame(list->entity, entity))
        list = list->next;
    return list;
}

ipmiifc_entity_list* findTop(IpmiNode& node, const entity_id& entity)
    VEK_REQUIRES(node.entityMutex)
{
    ipmiifc_entity_list* list = node.entityTree;
    while (list && !isSame(list->entity, entity))
        list = list->next;
    return list;
}

// Behind the last of a list; which that was.
ipmiifc_entity_list* append(ipmiifc_entity_list*& head,
                            ipmiifc_entity_list* entry)
{
    ipmiifc_entity_list** place = &head;
    ipmiifc_entity_list* last = nullptr;
    for (; *place; place = &(*place)->next)
        last = *place;
    *place = entry;
    return last;
}

// Null without memory.
ipmiifc_entity_list* newEntry(const entity_id& entity, bool flag)
{
    return new (std::nothrow) ipmiifc_entity_list{
        nullptr, nullptr, nullptr, {entity.id, entity.instance}, flag};
}

void freeList(ipmiifc_entity_list*& head)
{
    while (head) {
        const std::unique_ptr<ipmiifc_entity_list> entry{head};
        head = entry->next;
        IpmiIfcEntityCleanupChild(entry.get());
    }
}

// Instances count in eight bits.
void addRange(int node, const entity_id& container, const entity_id& first,
              const entity_id& last)
{
    if (first.id == 0 || first.id != last.id)
        return;
    for (int instance = first.instance; instance <= last.instance; ++instance)
        IpmiIfcEntityAddChild(node, &container, first.id, uint8_t(instance));
}

void addAssociation(int node, RecordView record)
{
    constexpr uint8_t areRanges = 0x80, flagBit = 0x20;
    constexpr size_t pairSize = 2, rangeSize = 2 * pairSize;
    const entity_id container = entityAt(record, association::container);
    const uint8_t flags = record.u8(association::flags);
    IpmiIfcEntityAddParent(node, &container, flags & flagBit ? 1 : 0);
    size_t at = association::contained;
    if (flags & areRanges) {
        for (size_t i = 0; i < association::ranges; ++i, at += rangeSize)
            addRange(node, container, entityAt(record, at),
                     entityAt(record, at + pairSize));
        return;
    }
    for (size_t i = 0; i < association::pairs; ++i, at += pairSize) {
        const entity_id entity = entityAt(record, at);
        if (entity.id != 0)
            IpmiIfcEntityAddChild(node, &container, entity.id, entity.instance);
    }
}

void addSensors(IpmiNode& node, IpmiSdrClass list)
    VEK_REQUIRES_SHARED(node.sdrLock)
{
    for (const ipmiifc_sdr_list* entry = node.sdrLists[list]; entry;
         entry = entry->next)
    {
        const entity_id entity = entityAt(viewOf(*entry), at::entity);
        IpmiIfcEntityAddParent(numberOf(node), &entity, 0);
    }
}

} // namespace

int IpmiIfcEntityListCreate(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::ReadLock lock{node.sdrLock};
    for (const ipmiifc_sdr_list* entry = node.sdrLists[SDR_ASSOCIATION]; entry;
         entry = entry->next)
        addAssociation(number, viewOf(*entry));
    for (const IpmiSdrClass list : {SDR_FULL, SDR_COMPACT, SDR_EVENT_ONLY})
        addSensors(node, list);
    return 0;
}

int IpmiIfcEntityAddParent(int number, const entity_id* entity,
                           unsigned char flag)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    if (findTop(node, *entity))
        return -1;
    ipmiifc_entity_list* const entry = newEntry(*entity, flag != 0);
    if (!entry)
        return -1;
    entry->back = append(node.entityTree, entry);
    return 0;
}

int IpmiIfcEntityAddChild(int number, const entity_id* container,
                          unsigned char id, unsigned char instance)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    ipmiifc_entity_list* const parent = findTop(node, *container);
    const entity_id child{id, instance};
    if (!parent || IpmiIfcEntityOnChildList(parent, &child))
        return -1;
    ipmiifc_entity_list* const entry = newEntry(child, parent->flag);
    if (!entry)
        return -1;
    append(parent->children, entry);
    entry->back = parent;
    return 0;
}

bool IpmiIfcEntityOnList(int number, const entity_id* entity)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return false;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    return findTop(node, *entity) != nullptr;
}

bool IpmiIfcEntityOnChildList(const ipmiifc_entity_list* container,
                              const entity_id* entity)
{
    return find(container->children, *entity) != nullptr;
}

const ipmiifc_entity_list*
IpmiIfcEntityFindParentFromChild(const ipmiifc_entity_list* container,
                                 const entity_id* entity)
{
    return IpmiIfcEntityOnChildList(container, entity) ? container : nullptr;
}

// The first match counts, and a top-level entity has none even where a
// container lists it.
IpmiEntity IpmiIfcEntityFindParent(int number, const entity_id* entity)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return {};
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    if (findTop(node, *entity))
        return {};
    for (const ipmiifc_entity_list* top = node.entityTree; top; top = top->next)
        if (IpmiIfcEntityFindParentFromChild(top, entity))
            return valueOf(top->entity, number);
    return {};
}

// Containers before what they contain.
void IpmiIfcEntityInstantiate(IpmiNode& node, const ipmiifc_entity_list* list)
{
    for (; list; list = list->next) {
        node.entities->push_back(valueOf(list->entity, numberOf(node)));
        IpmiIfcEntityInstantiate(node, list->children);
    }
}

int IpmiIfcEntityInstantiateAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    node.entities->clear();
    IpmiIfcEntityInstantiate(node, node.entityTree);
    return 0;
}

int IpmiIfcEntityCleanUpAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    freeEntities(node);
    return 0;
}

void IpmiIfcEntityCleanupChild(ipmiifc_entity_list* container)
{
    freeList(container->children);
}

void freeEntities(IpmiNode& node)
{
    freeList(node.entityTree);
}

void IpmiIfcEntityDump(const ipmiifc_entity_list* list)
{
    for (; list; list = list->next)
        IpmiIfcEntityDump(list->children);
}

int IpmiIfcEntityDumpAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    IpmiIfcEntityDump(node.entityTree);
    return 0;
}

std::vector<IpmiEntity> IpmiIfc::getEntities(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return {};
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    return *node.entities;
}

std::vector<IpmiEntity> IpmiIfc::getEntities()
{
    return getEntities(0);
}

std::vector<IpmiContainer> IpmiIfc::getEntityTree(int number)
{
    std::vector<IpmiContainer> tree;
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return tree;
    IpmiNode& node = *record;
    VEK::MutexLock lock{node.entityMutex};
    for (const ipmiifc_entity_list* top = node.entityTree; top; top = top->next)
    {
        tree.push_back({valueOf(top->entity, number), {}});
        for (const ipmiifc_entity_list* child = top->children; child;
             child = child->next)
            tree.back().contents.push_back(valueOf(child->entity, number));
    }
    return tree;
}

std::vector<IpmiContainer> IpmiIfc::getEntityTree()
{
    return getEntityTree(0);
}

IpmiEntity IpmiIfc::getEntityParent(int node, unsigned id, unsigned instance)
{
    const entity_id entity{uint8_t(id), uint8_t(instance)};
    constexpr unsigned highestId = 0xff;
    return id <= highestId ? IpmiIfcEntityFindParent(node, &entity)
                           : IpmiEntity{};
}

IpmiEntity IpmiIfc::getEntityParent(unsigned id, unsigned instance)
{
    return getEntityParent(0, id, instance);
}

IpmiEntity IpmiEntity::getParent() const
{
    return IpmiIfc::getEntityParent(node_, id_, instance_);
}

} // namespace Ipmi
