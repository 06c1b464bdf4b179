#include "ipmi/IpmiSensorText.h"

#include <vek-ipmi/IpmiEvent.h>
#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiSensorRecord.h"
#include "ipmi/IpmiText.h"

namespace Ipmi
{

namespace
{

enum Encoding
{
    unicode = 0,
    bcdPlus = 1,
    packed6Bit = 2,
    latin1 = 3
};

// Bytes that so many characters take.
size_t bytesOf(size_t characters, unsigned encoding)
{
    switch (encoding) {
    case unicode:
        return characters * 2;
    case bcdPlus:
        return (characters + 1) / 2;
    case packed6Bit:
        return (characters * 6 + 7) / 8;
    default:
        return characters;
    }
}

} // namespace

// The standard counts characters, much firmware counts bytes. The text is the
// record's last field, so that what follows tells which it was.
std::string decodeIdString(RecordView record, size_t at)
{
    constexpr auto all = std::string::npos;
    const unsigned typeLength = record.u8(at);
    const unsigned encoding = typeLength >> 6;
    const size_t count = typeLength & 0x1f;
    const RecordView rest = record.part(at + 1, record.size());
    const size_t counted = bytesOf(count, encoding);
    const bool countsBytes = rest.size() == count && counted != count;
    const RecordView bytes = rest.part(0, countsBytes ? count : counted);
    switch (encoding) {
    case unicode:
        return trimmed(decodeUnicode(bytes, !countsBytes));
    case bcdPlus:
        return trimmed(
            decodeBcdPlus(bytes).substr(0, countsBytes ? all : count));
    case packed6Bit:
        return trimmed(decodePacked(bytes));
    default:
        return trimmed(decodeLatin1(bytes));
    }
}

std::string instanceModifier(unsigned offset, bool alphabetic)
{
    if (!alphabetic)
        return std::to_string(offset);
    constexpr unsigned letters = 26;
    std::string text;
    for (unsigned rest = offset + 1; rest > 0; rest = (rest - 1) / letters)
        text.insert(text.begin(), char('A' + (rest - 1) % letters));
    return text;
}

namespace
{

// The first of the sensors that share a record may have offset 0; the record
// of the last of them says, like one that is not shared, that it is alone.
bool hasModifier(unsigned sharing, unsigned offset)
{
    const unsigned count = sharing & 0x0f;
    return count > 1 || (count == 1 && offset > 0);
}

} // namespace

std::string IpmiSensor::getIdString() const
{
    const RecordView record{record_.bytes(), record_.length()};
    const uint8_t type = record.u8(at::recordType);
    if (type == fullRecord)
        return decodeIdString(record, at::idString);
    if (type != compactRecord && type != eventOnlyRecord)
        return {};
    const bool compact = type == compactRecord;
    std::string text = decodeIdString(record, compact ? at::compactIdString
                                                      : at::eventOnlyIdString);
    const unsigned sharingAt =
        compact ? at::compactSharing : at::eventOnlySharing;
    const unsigned sharing = record.u8(sharingAt);
    const unsigned offset = record.u8(sharingAt + 1) & 0x7f;
    constexpr unsigned alphabetic = 1;
    if (hasModifier(sharing, offset))
        text += (text.empty() ? "" : " ") +
                instanceModifier(offset, (sharing >> 4 & 3) == alphabetic);
    return text;
}

std::string IpmiSensor::getDeviceId() const
{
    const int generator =
        IpmiIfc::convertToGeneratorId(getOwnerId(), getChannel(), getLun());
    return std::to_string(number_) + "." + std::to_string(generator >> 8) +
           "." + std::to_string(generator & 0xff);
}

std::string IpmiSensor::getName() const
{
    std::string name = getIdString();
    if (!name.empty())
        return name;
    return getSensorTypeString() + " #" + std::to_string(number_);
}

std::string IpmiSensor::getDescription() const
{
    const IpmiEntity entity = getEntity();
    return entity.getName() + " " + std::to_string(entity.getInstance()) +
           ": " + getSensorTypeString();
}

namespace
{

constexpr const char* thresholdNames[THRESHOLD_COUNT] = {
    "Lower Non-critical", "Lower Critical", "Lower Non-recoverable",
    "Upper Non-critical", "Upper Critical", "Upper Non-recoverable",
};

} // namespace

std::vector<std::string> IpmiSensor::getStates() const
{
    constexpr unsigned stateCount = 15; // the sixteenth bit is reserved
    std::vector<std::string> states;
    const IpmiSensorReading last = lastReading();
    constexpr unsigned char unavailable = 0x20;
    if (!last.valid || last.bytes[0] != 0 || last.bytes[2] & unavailable)
        return states;
    const unsigned asserted = last.bytes[3] | unsigned(last.bytes[4]) << 8;
    const unsigned count =
        isDiscrete() ? stateCount : unsigned{THRESHOLD_COUNT};
    for (unsigned i = 0; i < count; ++i) {
        if (!(asserted >> i & 1))
            continue;
        std::string text = isDiscrete() ? DescFromState(getEventReadingType(),
                                                        getSensorType(), i)
                                        : std::string{thresholdNames[i]};
        if (text.empty())
            text = "State " + std::to_string(i);
        states.push_back(std::move(text));
    }
    return states;
}

} // namespace Ipmi
