// What a controller was seen to answer becomes what it is, as far as the model
// can be that: then it can be edited, and changes when it is written to.
#include <algorithm>

#include "sim/profile/import.h"

#include "sim/model/sdr_record.h"

namespace Sim
{
namespace
{

/// The data of a good answer that has as many bytes; else empty.
Bytes dataOf(const Bytes& answer, size_t least)
{
    if (answer.size() < 1 + least || answer[0] != cc::ok)
        return {};
    return {answer.begin() + 1, answer.end()};
}

// ---- what fixed answers tell ----

using Learn = void (*)(BmcState& state, const Bytes& request,
                       const Bytes& data);

// IPMI v2.0, table 20-2.
void learnDeviceId(BmcState& state, const Bytes&, const Bytes& data)
{
    Identity& identity = state.identity;
    identity.deviceId = data[0];
    identity.deviceRevision = data[1];
    identity.firmwareMajor = data[2];
    identity.firmwareMinor = data[3];
    identity.ipmiVersion = data[4];
    identity.deviceSupport = data[5];
    identity.manufacturer = uint32_t(data[6] | data[7] << 8 | data[8] << 16);
    identity.product = uint16_t(data[9] | data[10] << 8);
    identity.auxiliaryFirmware.assign(data.begin() + 11, data.end());
    if (identity.auxiliaryFirmware.size() != 4)
        identity.auxiliaryFirmware.clear();
}

template <Bytes Identity::*member, size_t size>
void learnBytes(BmcState& state, const Bytes&, const Bytes& data)
{
    if (data.size() == size)
        state.identity.*member = data;
}

void learnEnables(BmcState& state, const Bytes&, const Bytes& data)
{
    state.messaging.emplace().enables = data[0];
}

void learnCapabilities(BmcState& state, const Bytes&, const Bytes& data)
{
    Chassis& chassis = state.chassis.emplace();
    chassis.capabilities = data[0];
    chassis.fruAddress = data[1];
    chassis.sdrAddress = data[2];
    chassis.selAddress = data[3];
    chassis.systemManagementAddress = data[4];
    if (data.size() > 5)
        chassis.bridgeAddress = data[5];
}

void learnStatus(BmcState& state, const Bytes&, const Bytes& data)
{
    constexpr uint8_t faults = 0x0F, identifyStateIsShown = 0x40;
    if (!state.chassis)
        return;
    state.chassis->power = data[0];
    state.chassis->lastPowerEvent = data[1];
    state.chassis->faults = data[2] & faults;
    state.chassis->identify = data[2] & identifyStateIsShown;
    state.chassis->frontPanel = data.size() > 3 ? data[3] : uint8_t{0};
}

// IPMI v2.0, 22.24.
void learnChannel(BmcState& state, const Bytes& request, const Bytes& data)
{
    Channel channel;
    channel.number = data[0] & 0x0F;
    channel.medium = data[1] & 0x7F;
    channel.protocol = data[2] & 0x1F;
    channel.sessions = data[3] >> 6;
    channel.activeSessions = data[3] & 0x3F;
    channel.vendor = uint32_t(data[4] | data[5] << 8 | data[6] << 16);
    channel.auxiliary.assign(data.begin() + 7, data.begin() + 9);
    if (request.empty() || request[0] != channel.number)
        return;
    for (Channel& known : state.channels)
        if (known.number == channel.number) {
            known = channel;
            return;
        }
    state.channels.push_back(channel);
}

// IPMI v2.0, 22.14b: block 0 begins with encoding and length.
void learnText(BmcState& state, const Bytes& request, const Bytes& data)
{
    constexpr size_t headerSize = 2, firstHeaderSize = 4;
    if (request.size() < 3 || request[1] == 0)
        return;
    if (!state.systemInfo)
        state.systemInfo.emplace();
    SystemInfo::Text& text = state.systemInfo->texts[request[1]];
    const bool isFirst = request[2] == 0;
    const size_t from = isFirst ? firstHeaderSize : headerSize;
    if (data.size() < from)
        return;
    if (isFirst) {
        text.encoding = data[2] & 0x0F;
        text.length = data[3];
    }
    text.characters.resize(SystemInfo::offset(request[2]));
    text.characters.insert(text.characters.end(),
                           data.begin() + ptrdiff_t(from), data.end());
    const size_t most = text.length;
    if (text.characters.size() > most)
        text.characters.resize(most);
}

struct Lesson
{
    uint8_t netFn, command;
    size_t least; ///< Bytes of data.
    Learn learn;
};

constexpr Lesson lessons[] = {
    {0x06, 0x01, 11, learnDeviceId},
    {0x06, 0x04, 2, learnBytes<&Identity::selfTest, 2>},
    {0x06, 0x07, 2, learnBytes<&Identity::acpiPowerState, 2>},
    {0x06, 0x08, 16, learnBytes<&Identity::deviceGuid, 16>},
    {0x06, 0x37, 16, learnBytes<&Identity::systemGuid, 16>},
    {0x06, 0x2F, 1, learnEnables},
    {0x06, 0x42, 9, learnChannel},
    {0x06, 0x59, 2, learnText},
    {0x00, 0x00, 5, learnCapabilities},
    {0x00, 0x01, 3, learnStatus},
};

/// The state as a profile can say it; none when it cannot.
std::optional<BmcState> written(const BmcState& state, Mistakes& mistakes)
{
    auto again = readProfile(writeProfile({"", state, {}}), mistakes);
    return again ? std::make_optional(std::move(again->state)) : std::nullopt;
}

/// What a profile has no words for stays an answer.
void learn(BmcState& state, const Lesson& lesson, const FixedAnswer& from)
{
    const Bytes data = dataOf(from.answer, lesson.least);
    if (data.empty())
        return;
    BmcState own;
    own.identity = state.identity;
    own.systemInfo = state.systemInfo;
    own.chassis = state.chassis;
    own.messaging = state.messaging;
    own.channels = state.channels;
    lesson.learn(own, from.data, data);
    Mistakes unused;
    if (!written(own, unused))
        return;
    state.identity = std::move(own.identity);
    state.systemInfo = std::move(own.systemInfo);
    state.chassis = own.chassis;
    state.messaging = std::move(own.messaging);
    state.channels = std::move(own.channels);
}

void learnAnswers(BmcState& state)
{
    for (const FixedAnswer& one : state.answers)
        for (const Lesson& lesson : lessons)
            if (lesson.netFn == one.netFn && lesson.command == one.command)
                learn(state, lesson, one);
}

// ---- what a sensor's answers tell ----

constexpr uint8_t getFactors = 0x23, getHysteresis = 0x25, getThresholds = 0x27,
                  getEventEnable = 0x29, getReading = 0x2D;

Bytes dataOf(const Sensor& sensor, uint8_t command, size_t least)
{
    const auto found = sensor.answers.find(command);
    return found == sensor.answers.end() ? Bytes{}
                                         : dataOf(found->second, least);
}

void learnSensor(Sensor& sensor)
{
    constexpr uint8_t unavailable = 0x20, topStates = 0x7F;
    const Bytes reading = dataOf(sensor, getReading, 2);
    if (!reading.empty()) {
        sensor.reading = reading[0];
        sensor.enables =
            reading[1] & (Sensor::scanning | Sensor::eventMessages);
        sensor.unavailable = reading[1] & unavailable;
        const auto state = [&](size_t at) {
            return at < reading.size() ? reading[at] : uint8_t{0};
        };
        sensor.states = uint16_t(state(2) | (state(3) & topStates) << 8);
    }
    const Bytes thresholds = dataOf(sensor, getThresholds, 7);
    if (!thresholds.empty())
        std::copy_n(thresholds.begin() + 1, sensor.thresholds.size(),
                    sensor.thresholds.begin());
    const Bytes hysteresis = dataOf(sensor, getHysteresis, 2);
    if (!hysteresis.empty()) {
        sensor.positiveHysteresis = hysteresis[0];
        sensor.negativeHysteresis = hysteresis[1];
    }
    const Bytes events = dataOf(sensor, getEventEnable, 5);
    if (!events.empty()) {
        sensor.assertions = uint16_t(events[1] | events[2] << 8);
        sensor.deassertions = uint16_t(events[3] | events[4] << 8);
    }
}

// ---- what needs no telling any more ----

/// The same controller without any fixed answer.
BmcState withoutAnswers(BmcState state)
{
    state.answers.clear();
    if (state.repository)
        for (SdrRecord& record : state.repository->records)
            for (Sensor& sensor : record.sensors)
                sensor.answers.clear();
    for (BmcState& satellite : state.satellites)
        satellite = withoutAnswers(std::move(satellite));
    return state;
}

bool answersSo(Bmc* bmc, const Request& request, const Bytes& answer)
{
    // Nothing is silence, which no model keeps by itself.
    return bmc && !answer.empty() && bmc->answer(request) == answer;
}

void dropAnswers(BmcState& state, Bmc* bmc)
{
    const auto isNeedless = [bmc](const FixedAnswer& one) {
        return answersSo(bmc, {one.netFn, one.command, one.data}, one.answer);
    };
    state.answers.erase(
        std::remove_if(state.answers.begin(), state.answers.end(), isNeedless),
        state.answers.end());
}

Bytes requestOf(const Sensor& sensor, uint8_t command)
{
    if (command == getHysteresis)
        return {sensor.number, 0xFF};
    if (command == getFactors)
        return {sensor.number, sensor.reading};
    return {sensor.number};
}

void dropAnswers(Sensor& sensor, Bmc* bmc)
{
    for (auto one = sensor.answers.begin(); one != sensor.answers.end();) {
        constexpr uint8_t sensorEvent = 0x04;
        Request request{sensorEvent, one->first, requestOf(sensor, one->first)};
        request.lun = sensor.lun;
        if (answersSo(bmc, request, one->second))
            one = sensor.answers.erase(one);
        else
            ++one;
    }
}

} // namespace

std::optional<Profile> importCapture(const Bytes& dump, Mistakes& mistakes)
{
    auto profile = readProfile(std::string{dump.begin(), dump.end()}, mistakes);
    if (!profile)
        return std::nullopt;
    BmcState& state = profile->state;
    learnAnswers(state);
    for (BmcState& satellite : state.satellites)
        learnAnswers(satellite);
    std::vector<SdrRecord> none;
    auto& records = state.repository ? state.repository->records : none;
    for (SdrRecord& record : records)
        for (Sensor& sensor : record.sensors)
            learnSensor(sensor);
    auto bare = written(withoutAnswers(state), mistakes);
    if (!bare)
        return std::nullopt;
    Bmc bmc{std::move(*bare)};
    dropAnswers(state, &bmc);
    for (BmcState& satellite : state.satellites)
        dropAnswers(satellite,
                    bmc.reach(satellite.busChannel, satellite.address));
    for (SdrRecord& record : records) {
        const Owner owner = ownerOf(record.bytes);
        for (Sensor& sensor : record.sensors)
            dropAnswers(sensor, bmc.reach(owner.channel, owner.address));
    }
    return profile;
}

} // namespace Sim
