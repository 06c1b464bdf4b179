#include "tools/collect/entity.h"

#include <algorithm>
#include <map>

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
};

constexpr Association associations[] = {
    {0x08, 7, 8, 2},   // IPMI v2.0, 43.4
    {0x09, 9, 12, 4}}; // 43.5: each behind its controller's address, channel
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
constexpr Locator locators[] = {{0x10, 7, 5},       // IPMI v2.0, 43.7
                                {fruLocator, 8, 4}, // 43.8
                                {0x12, 6, 0}};      // 43.9

// Null for none.
template <typename Row, size_t count>
const Row* rowOf(const Row (&rows)[count], uint8_t type)
{
    const auto row = std::find_if(rows, rows + count, [type](const Row& one) {
        return one.type == type;
    });
    return row == rows + count ? nullptr : row;
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
};

Entity& Collector::entity(EntityId id)
{
    id.second &= instanceMask;
    const auto [place, isNew] = places_.emplace(id, entities_.size());
    if (isNew) {
        const Ipmi::IpmiEntity known{id.first, id.second, 0, 0};
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
    id.second &= instanceMask;
    container.second &= instanceMask;
    auto& contains = entity(container).contains;
    if (std::find(contains.begin(), contains.end(), id) != contains.end())
        return;
    contains.push_back(id);
    entity(id).containedIn.push_back(container);
}

void Collector::addRange(EntityId container, EntityId first, EntityId last)
{
    if (first.first != last.first)
        return;
    for (unsigned i = first.second; i <= last.second; ++i)
        addContained(container, {first.first, uint8_t(i)});
}

void Collector::addAssociation(const Bytes& record)
{
    constexpr size_t containerAt = 5;
    constexpr uint8_t areRanges = 0x80;
    const Association* const layout = rowOf(associations, typeOf(record));
    if (!layout)
        return;
    const EntityId container{at(record, containerAt),
                             at(record, containerAt + 1)};
    entity(container);
    std::vector<EntityId> ids;
    for (size_t i = 0; i < placeCount; ++i) {
        const size_t place = layout->firstAt + i * layout->distance;
        ids.emplace_back(at(record, place), at(record, place + 1));
    }
    const bool ranges = at(record, layout->flagsAt) & areRanges;
    for (size_t i = 0; i < placeCount; i += ranges ? 2 : 1)
        if (ids[i].first != 0)
            addRange(container, ids[i], ranges ? ids[i + 1] : ids[i]);
}

void Collector::addSensor(const Sensor& sensor)
{
    EntityMember member;
    member.recordType = sensor.recordType;
    member.name = sensor.name;
    member.sensor = sensor.deviceId;
    entity({uint8_t(sensor.entityId), uint8_t(sensor.entityInstance)})
        .sensors.push_back(std::move(member));
}

void Collector::addLocator(const Record& record)
{
    constexpr size_t addressAt = 5, fruDeviceIdAt = 6, entityAt = 12;
    constexpr uint8_t isAddress = 0xFE, channel = 0x0F;
    const Locator* const locator = rowOf(locators, record.type);
    if (!locator)
        return;
    const Bytes& bytes = record.bytes;
    EntityMember member;
    member.recordType = record.type;
    member.name = record.name;
    member.address = at(bytes, addressAt) & isAddress;
    member.channel = at(bytes, locator->channelAt) >> locator->shift & channel;
    Entity& owner = entity({at(bytes, entityAt), at(bytes, entityAt + 1)});
    if (record.type == fruLocator)
        member.fruDeviceId = at(bytes, fruDeviceIdAt);
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
