#include "sim/profile/import.h"

#include <algorithm>

#include "sim/model/sdr_record.h"

namespace Sim
{
namespace
{

constexpr uint8_t sensorDevice = 0x01, sdrRepository = 0x02, selDevice = 0x04,
                  fruInventory = 0x08;
constexpr uint8_t ipmb = 0x01, systemInterfaceMedium = 0x0C;
constexpr uint8_t ipmbProtocol = 0x01, kcs = 0x05;

Identity makeIdentity(uint8_t support)
{
    Identity identity;
    identity.deviceSupport = support;
    identity.selfTest = {0x55, 0x00};
    return identity;
}

Channel makeChannel(uint8_t number, uint8_t medium, uint8_t protocol)
{
    Channel channel;
    channel.number = number;
    channel.medium = medium;
    channel.protocol = protocol;
    return channel;
}

/// The controller that answers for the record's sensors, and the bus to it.
void addOwner(BmcState& state, const Owner& owner)
{
    if (owner.isBmc() || owner.channel >= 0x0C)
        return;
    const auto isOwner = [&](const BmcState& one) {
        return one.busChannel == owner.channel && one.address == owner.address;
    };
    const auto& all = state.satellites;
    if (std::any_of(all.begin(), all.end(), isOwner))
        return;
    BmcState satellite;
    satellite.busChannel = owner.channel;
    satellite.address = owner.address;
    satellite.identity = makeIdentity(sensorDevice);
    state.satellites.push_back(std::move(satellite));
    if (!state.channel(owner.channel))
        state.channels.push_back(
            makeChannel(owner.channel, ipmb, ipmbProtocol));
}

std::string rest(size_t at, size_t left, size_t wanted)
{
    return "byte " + std::to_string(at) + ": " + std::to_string(left) +
           " bytes are left of a record of " + std::to_string(wanted);
}

size_t sdrSize(const Bytes& dump, size_t at)
{
    return dump.size() - at < sdr::header ? sdr::header
                                          : sdr::header + dump[at + 4];
}

/// Empty, with the mistake, when the record does not end within the dump.
Bytes takeRecord(const Bytes& dump, size_t at, size_t size, Mistakes& mistakes)
{
    const size_t left = dump.size() - at;
    if (size > left) {
        mistakes.push_back({"", rest(at, left, size)});
        return {};
    }
    const auto begin = dump.begin() + std::ptrdiff_t(at);
    return {begin, begin + std::ptrdiff_t(size)};
}

/// Of which the records are still to come.
Profile makeProfile(uint8_t support)
{
    Profile profile;
    BmcState& state = profile.state;
    state.identity = makeIdentity(support);
    state.messaging.emplace();
    state.channels = {makeChannel(0, ipmb, ipmbProtocol),
                      makeChannel(systemInterface, systemInterfaceMedium, kcs)};
    return profile;
}

std::nullopt_t refuse(Mistakes& mistakes, const char* reason)
{
    mistakes.push_back({"", reason});
    return std::nullopt;
}

} // namespace

std::optional<Profile> importSdr(const Bytes& dump, Mistakes& mistakes)
{
    Profile profile = makeProfile(sensorDevice | sdrRepository);
    BmcState& state = profile.state;
    state.repository.emplace();
    for (size_t at = 0; at < dump.size();) {
        SdrRecord record;
        record.bytes = takeRecord(dump, at, sdrSize(dump, at), mistakes);
        if (record.bytes.empty())
            return std::nullopt;
        record.id = uint16_t(record.bytes[0] | record.bytes[1] << 8);
        record.sensors = sensorsOf(record.bytes);
        if (!record.sensors.empty())
            addOwner(state, ownerOf(record.bytes));
        at += record.bytes.size();
        state.repository->records.push_back(std::move(record));
    }
    if (state.repository->records.empty())
        return refuse(mistakes, "no record in it");
    return profile;
}

std::optional<Profile> importSel(const Bytes& dump, Mistakes& mistakes)
{
    constexpr size_t most = 0xFFFE;
    Profile profile = makeProfile(selDevice);
    EventLog& log = profile.state.eventLog.emplace();
    for (size_t at = 0; at < dump.size(); at += sel::recordSize) {
        Bytes record = takeRecord(dump, at, sel::recordSize, mistakes);
        if (record.empty())
            return std::nullopt;
        // ipmitool 1.8 prints the manufacturer from its other end on, and
        // writes it so.
        if (record[2] >= sel::oem && record[2] < sel::oemUntimed)
            std::swap(record[7], record[9]);
        const uint16_t id = word(record, 0);
        log.records.push_back({id, std::move(record)});
    }
    if (log.records.empty() || log.records.size() > most)
        return refuse(mistakes, "not 1 to 65534 records");
    log.capacity = uint16_t(std::max<size_t>(log.capacity, log.records.size()));
    return profile;
}

std::optional<Profile> importFru(const Bytes& dump, Mistakes& mistakes)
{
    constexpr size_t most = 0xFFFF;
    if (dump.empty() || dump.size() > most)
        return refuse(mistakes, "not 1 to 65535 bytes");
    Profile profile = makeProfile(fruInventory);
    FruDevice& fru = profile.state.frus.emplace_back();
    fru.size = uint16_t(dump.size());
    fru.contents = dump;
    while (!fru.contents.empty() && fru.contents.back() == 0xFF)
        fru.contents.pop_back();
    return profile;
}

} // namespace Sim
