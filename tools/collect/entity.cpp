#include "tools/collect/entity.h"

#include <algorithm>
#include <map>
#include <set>

#include <vek-ipmi/IpmiEntity.h>

namespace Tool
{

namespace
{

constexpr uint8_t instanceMask = 0x7F;

// Bytes that a short record lacks are 0.
uint8_t at(const Bytes& bytes, size_t index)
{
    return index < bytes.size() ? bytes[index] : uint8_t{0};
}

/// Where an association record says what a container contains: four entities,
/// or the first and last ones of two ranges.
struct Association
{
    uint8_t type;
    size_t flagsAt, firstAt, distance;
    size_t containerOwnerAt, ownerDistance; ///< 0: the controller itself.
};

constexpr Association associations[] = {
    {0x08, 7, 8, 2, 0, 0},   // IPMI v2.0, 43.4
    {0x09, 9, 12, 4, 7, 2}}; // 43.5: with each controller's address, channel
constexpr size_t placeCount = 4;

/// Where a locator record says which channel its device is on. The entity and
/// the name are in the same place in all of them.
struct Locator
{
    uint8_t type;
    size_t channelAt;
    unsigned shift;
};

constexpr uint8_t fruLocator = 0x11;
constexpr uint8_t genericLocator = 0x10;
constexpr Locator locators[] = {{genericLocator, 7, 5}, // IPMI v2.0, 43.7
                                {fruLocator, 8, 4},     // 43.8
                                {0x12, 6, 0}};          // 43.9

// Null for none.
template <typename Row, size_t count>
const Row* rowOf(const Row (&rows)[count], uint8_t type)
{
    const auto row = std::find_if(rows, rows + count, [type](const Row& one) {
        return one.type == type;
    });
    return row == rows + count ? nullptr : row;
}

uint8_t channelOf(const Locator& locator, const Bytes& record)
{
    constexpr uint8_t channel = 0x0F;
    constexpr size_t topBitAt = 6;
    uint8_t value = at(record, locator.channelAt) >> locator.shift & channel;
    if (locator.type == genericLocator)
        value |= uint8_t((at(record, topBitAt) & 1) << 3);
    return value;
}

constexpr uint8_t isAddress = 0xFE, ownAddress = 0x20;

EntityId idOf(uint8_t id, uint8_t instance, uint8_t address, uint8_t channel)
{
    EntityId result{id, uint8_t(instance & instanceMask), 0, 0};
    if (result.isRelative()) {
        result.address = address ? address : ownAddress;
        result.channel = channel;
    }
    return result;
}

// As a record has it: instance in eight bits, and a controller for each.
// Half of the byte of the channel is reserved, and 0.
EntityId placeOf(const Bytes& record, size_t place, size_t ownerAt)
{
    EntityId id{at(record, place), at(record, place + 1), ownAddress, 0};
    if (ownerAt != 0) {
        const uint8_t channel = at(record, ownerAt + 1);
        id.address = at(record, ownerAt) & isAddress;
        id.channel = uint8_t(channel >> 4 | (channel & 0x0F));
    }
    return id;
}

class Collector
{
public:
    void addAssociation(const Bytes& record);
    void addSensor(const Sensor& sensor);
    void addLocator(const Record& record);
    std::vector<Entity> take() { return std::move(entities_); }

private:
    Entity& entity(EntityId id);
    void addContained(EntityId container, EntityId id);
    void addRange(EntityId container, EntityId first, EntityId last);

    std::vector<Entity> entities_;
    std::map<EntityId, size_t> places_;
    std::set<std::pair<EntityId, EntityId>> contained_;
};

Entity& Collector::entity(EntityId id)
{
    const auto [place, isNew] = places_.emplace(id, entities_.size());
    if (isNew) {
        const Ipmi::IpmiEntity known{id.id, id.instance, 0, 0};
        entities_.push_back({id,
                             known.getName(),
                             known.getAlertClassName(),
                             {},
                             {},
                             {},
                             {},
                             {}});
    }
    return entities_[place->second];
}

void Collector::addContained(EntityId container, EntityId id)
{
    if (!contained_.emplace(container, id).second)
        return;
    entity(container).contains.push_back(id);
    entity(id).containedIn.push_back(container);
}

void Collector::addRange(EntityId container, EntityId first, EntityId last)
{
    if (first.id != last.id)
        return;
    for (unsigned i = first.instance; i <= last.instance; ++i)
        addContained(container,
                     idOf(first.id, uint8_t(i), first.address, first.channel));
}

void Collector::addAssociation(const Bytes& record)
{
    constexpr size_t containerAt = 5;
    constexpr uint8_t areRanges = 0x80;
    const Association* const layout = rowOf(associations, typeOf(record));
    if (!layout)
        return;
    const EntityId place =
        placeOf(record, containerAt, layout->containerOwnerAt);
    const EntityId container =
        idOf(place.id, place.instance, place.address, place.channel);
    entity(container);
    std::vector<EntityId> ids;
    for (size_t i = 0; i < placeCount; ++i) {
        const size_t idAt = layout->firstAt + i * layout->distance;
        ids.push_back(
            placeOf(record, idAt,
                    layout->ownerDistance ? idAt - layout->ownerDistance : 0));
    }
    const bool ranges = at(record, layout->flagsAt) & areRanges;
    for (size_t i = 0; i < placeCount; i += ranges ? 2 : 1)
        if (ids[i].id != 0)
            addRange(container, ids[i], ranges ? ids[i + 1] : ids[i]);
}

void Collector::addSensor(const Sensor& sensor)
{
    EntityMember member;
    member.recordType = sensor.recordType;
    member.name = sensor.name;
    member.sensor = sensor.deviceId;
    entity(idOf(uint8_t(sensor.entityId), uint8_t(sensor.entityInstance),
                sensor.owner, sensor.channel))
        .sensors.push_back(std::move(member));
}

void Collector::addLocator(const Record& record)
{
    constexpr size_t addressAt = 5, fruDeviceIdAt = 6, flagsAt = 7,
                     entityAt = 12;
    constexpr uint8_t isLogical = 0x80;
    const Locator* const locator = rowOf(locators, record.type);
    if (!locator)
        return;
    const Bytes& bytes = record.bytes;
    EntityMember member;
    member.recordType = record.type;
    member.name = record.name;
    member.address = at(bytes, addressAt) & isAddress;
    member.channel = channelOf(*locator, bytes);
    Entity& owner = entity(idOf(at(bytes, entityAt), at(bytes, entityAt + 1),
                                member.address, member.channel));
    if (record.type == fruLocator) {
        member.fruDeviceId = at(bytes, fruDeviceIdAt);
        member.isLogical = at(bytes, flagsAt) & isLogical;
    }
    (record.type == fruLocator ? owner.frus : owner.devices)
        .push_back(std::move(member));
}

} // namespace

std::vector<Entity> entitiesOf(const std::vector<Record>& records)
{
    Collector collector;
    for (const Record& record : records)
        collector.addAssociation(record.bytes);
    for (const Record& record : records) {
        if (record.sensor)
            collector.addSensor(*record.sensor);
        collector.addLocator(record);
    }
    return collector.take();
}

} // namespace Tool
