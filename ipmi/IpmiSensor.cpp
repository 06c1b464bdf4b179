// The record behind a sensor.
#include <vek-ipmi/IpmiSensor.h>

#include <cstdio>

#include <vek-ipmi/IpmiIfc.h>

#include "ipmi/IpmiSensorRecord.h"
#include "ipmi/RecordView.h"

namespace Ipmi
{

IpmiSensor::IpmiSensor(int length, unsigned char* bytes, int node)
    : record_{uint32_t(length), bytes}, node_{node}
{
    if (length > 8 && bytes) {
        number_ = byteAt(at::number);
        recordId_ = wordAt(at::recordId);
    }
}

IpmiSensor::~IpmiSensor() = default;

// Bytes behind the record's end are 0.
unsigned char IpmiSensor::byteAt(unsigned at) const
{
    return RecordView{record_.bytes(), record_.length()}.u8(at);
}

unsigned short IpmiSensor::wordAt(unsigned at) const
{
    return RecordView{record_.bytes(), record_.length()}.u16(at);
}

bool IpmiSensor::hasMasks() const
{
    const unsigned char type = byteAt(at::recordType);
    return type == fullRecord || type == compactRecord;
}

unsigned char IpmiSensor::getOwnerId() const
{
    return byteAt(at::owner);
}

unsigned char IpmiSensor::getLun() const
{
    return byteAt(at::ownerLun) & 0x03;
}

unsigned char IpmiSensor::getChannel() const
{
    return byteAt(at::ownerLun) >> 4;
}

unsigned char IpmiSensor::getSensorType() const
{
    if (hasMasks())
        return byteAt(at::sensorType);
    return byteAt(at::recordType) == eventOnlyRecord
               ? byteAt(at::eventOnlySensorType)
               : uint8_t{0};
}

unsigned char IpmiSensor::getEventReadingType() const
{
    if (hasMasks())
        return byteAt(at::eventType);
    return byteAt(at::recordType) == eventOnlyRecord
               ? byteAt(at::eventOnlyEventType)
               : uint8_t{0};
}

unsigned char IpmiSensor::getRateUnit() const
{
    return hasMasks() ? byteAt(at::units) >> 3 & 0x07 : 0;
}

unsigned char IpmiSensor::getModifierUnitUse() const
{
    return hasMasks() ? byteAt(at::units) >> 1 & 0x03 : 0;
}

unsigned char IpmiSensor::getBaseUnit() const
{
    return hasMasks() ? byteAt(at::baseUnit) : uint8_t{0};
}

unsigned char IpmiSensor::getModifierUnit() const
{
    return hasMasks() ? byteAt(at::modifierUnit) : uint8_t{0};
}

unsigned char IpmiSensor::getSensorDirection() const
{
    switch (byteAt(at::recordType)) {
    case compactRecord:
        return byteAt(at::compactSharing) >> 6;
    case eventOnlyRecord:
        return byteAt(at::eventOnlySharing) >> 6;
    default:
        return 0;
    }
}

std::string IpmiSensor::getSensorDirectionString() const
{
    switch (byteAt(at::recordType)) {
    case fullRecord:
        return DescFromDirection(byteAt(at::direction) & 0x03);
    case compactRecord:
    case eventOnlyRecord:
        return DescFromDirection(getSensorDirection());
    default:
        return {};
    }
}

unsigned char IpmiSensor::getHysteresisSupport() const
{
    return hasMasks() ? byteAt(at::capabilities) >> 4 & 0x03 : 0;
}

unsigned char IpmiSensor::getThresholdAccessSupport() const
{
    return hasMasks() ? byteAt(at::capabilities) >> 2 & 0x03 : 0;
}

unsigned char IpmiSensor::getEventMessageSupport() const
{
    constexpr unsigned char unknown = 255;
    const bool held = record_.length() > at::capabilities;
    return hasMasks() && held ? byteAt(at::capabilities) & 0x03 : unknown;
}

namespace
{

struct FlagSource
{
    unsigned at;
    unsigned bit;
    unsigned flag;
};

constexpr FlagSource flagSources[] = {
    {at::initialization, 6, 0}, {at::initialization, 5, 1},
    {at::initialization, 3, 3}, {at::initialization, 2, 4},
    {at::initialization, 0, 5}, {at::initialization, 1, 6},
    {at::capabilities, 7, 7},   {at::capabilities, 6, 8},
    {at::units, 0, 12},
};

} // namespace

unsigned short IpmiSensor::getFlags() const
{
    unsigned flags = 0;
    if (hasMasks())
        for (const FlagSource& source : flagSources)
            flags |= (byteAt(source.at) >> source.bit & 1u) << source.flag;
    return static_cast<unsigned short>(flags);
}

bool IpmiSensor::isLinear() const
{
    return byteAt(at::recordType) != fullRecord;
}

bool IpmiSensor::isAnalog() const
{
    constexpr unsigned noNumericReading = 3;
    return byteAt(at::units) >> 6 != noNumericReading;
}

bool IpmiSensor::isConvertible() const
{
    return byteAt(at::recordType) == fullRecord && isAnalog();
}

void IpmiSensor::RawRecord(const unsigned char*& bytes, int& length) const
{
    bytes = record_.bytes();
    length = int(record_.length());
}

IpmiEntity IpmiSensor::getEntity() const
{
    return {byteAt(at::entity), byteAt(at::entityInstance) & 0x7fu, 0, node_};
}

int IpmiSensor::getManufacturerId(unsigned char* id, unsigned char& len) const
{
    return IpmiIfc::getManufacturerId(node_, id, len);
}

void IpmiSensor::dump() const
{
    constexpr unsigned perLine = 16;
    if (record_.length())
        printf("Sensor : 0x%02x", byteAt(at::number));
    for (unsigned i = 0; i < record_.length(); ++i) {
        if (i % perLine == 0)
            printf("\nData 0x%02x:", i);
        printf(" 0x%02x", byteAt(i));
    }
    printf("\n");
}

} // namespace Ipmi
