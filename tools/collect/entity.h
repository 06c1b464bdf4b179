/// The parts of the platform, as sensor data records name them (IPMI v2.0,
/// sections 39 and 43).
#ifndef VEK_TOOLS_COLLECT_ENTITY_H
#define VEK_TOOLS_COLLECT_ENTITY_H

#include <string>
#include <tuple>
#include <vector>

#include "tools/collect/record.h"

namespace Tool
{

/// Which entity. One with a device-relative instance (IPMI v2.0, 39.1) is
/// another for each controller.
struct EntityId
{
    uint8_t id = 0, instance = 0; ///< The latter in seven bits.
    /// Of the controller; 0 where the instance is one of the whole machine.
    uint8_t address = 0, channel = 0;

    bool isRelative() const { return instance >= 0x60; }
    bool operator<(const EntityId& other) const
    {
        return std::tie(id, instance, address, channel) <
               std::tie(other.id, other.instance, other.address, other.channel);
    }
};

/// Something that a record says is of an entity.
struct EntityMember
{
    uint8_t recordType = 0;
    std::string name;             ///< May be empty.
    std::string sensor;           ///< Device id of a sensor, else empty.
    uint8_t fruDeviceId = 0,      ///< Of a FRU device.
        address = 0, channel = 0; ///< Of the controller of any device.
    /// Of a FRU device: FRU commands reach it. Else its id is its address.
    bool isLogical = false;
};

struct Entity
{
    EntityId id;
    std::string name, alertClass;
    /// An entity may be in several containers, and in itself.
    std::vector<EntityId> contains, containedIn;
    std::vector<EntityMember> sensors, frus, devices;
};

/// All that the records name: containers first, with what they contain, then
/// those of sensors and locators. Sends nothing.
///
/// The associations are read as the standard lays them out. The library's own
/// tree differs, as callers know it, where a record is a device-relative one.
std::vector<Entity> entitiesOf(const std::vector<Record>& records);

} // namespace Tool

#endif
