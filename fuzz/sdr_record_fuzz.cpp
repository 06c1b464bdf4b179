// A record's bytes through the lists, through every accessor of the sensor
// classes, and into the entity tree.
#include <algorithm>
#include <memory>
#include <vek-ipmi/IpmiSensor.h>

#include "fuzz/target.h"
#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSensor.h"
#include "tests/support/libc_seam.h"

using namespace Ipmi;

namespace
{

// A result that depends on all that was read, so that nothing is left out.
size_t sum;

void readAll(IpmiSensor& s)
{
    sum += s.getSensorNumber() + s.getSensorRecordNumber() + s.getOwnerId() +
           s.getLun() + s.getChannel() + s.getSensorType() +
           s.getEventReadingType() + s.getRateUnit() + s.getModifierUnitUse() +
           s.getBaseUnit() + s.getModifierUnit() + s.getSensorDirection() +
           s.getHysteresisSupport() + s.getThresholdAccessSupport() +
           s.getEventMessageSupport() + s.getFlags() + s.isLinear() +
           s.isAnalog() + s.isConvertible() + s.getAssertionEventMask() +
           s.getDeassertionEventMask();
    for (const std::string& text :
         {s.getSensorDirectionString(), s.getSensorTypeString(),
          s.getBaseUnitString(), s.getModifierUnitString(), s.getIdString(),
          s.getDeviceId(), s.getName(), s.getDescription(),
          s.getEntity().getName()})
        sum += text.size();
    for (const uint8_t raw : {0, 1, 127, 128, 255}) {
        const double value = s.convertRawValue(raw);
        sum += size_t(s.convertToRawValue(value) + 128);
        const uint8_t reading[5] = {0, raw, 0xc0, raw, raw};
        s.setReading(reading);
        sum += s.getStates().size();
    }
    sum += s.isNominalReadingSet() + s.isNormalMaxSet() + s.isNormalMinSet();
    for (double (IpmiSensor::*get)() const :
         {&IpmiSensor::getMinReadable, &IpmiSensor::getMaxReadable,
          &IpmiSensor::getNormalMin, &IpmiSensor::getNormalMax,
          &IpmiSensor::getNominalReading})
        try {
            sum += (s.*get)() > 0;
        } catch (const CmpiStatus&) {
        }
}

// As the repository files it: by the type of its header, with a length of one
// byte.
void file(const uint8_t* data, size_t size)
{
    auto bytes = std::make_unique<uint8_t[]>(size);
    std::copy_n(data, size, bytes.get());
    auto* const entry =
        new ipmiifc_sdr_list{nullptr,
                             nullptr,
                             1,
                             size > 3 ? data[3] : uint8_t{0},
                             static_cast<uint8_t>(std::min<size_t>(size, 255)),
                             std::move(bytes)};
    g_IpmiNode[0].sdrLock.lockForWriting();
    IpmiIfcSdrListAdd(0, entry);
    g_IpmiNode[0].sdrLock.unlock();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    file(data, size);
    for (const IpmiSdrEntry& entry : IpmiIfc::getSdrRecords()) {
        auto bytes = entry.bytes;
        const int length = int(bytes.size());
        try {
            IpmiThresholdSensor threshold{length, bytes.data(), 0};
            readAll(threshold);
            sum += threshold.getReadableMask() + threshold.getSettableMask() +
                   threshold.getLowerThresholdReadingMask() +
                   threshold.getUpperThresholdReadingMask();
            IpmiDiscreteSensor discrete{length, bytes.data(), 0};
            readAll(discrete);
            sum += discrete.getReadingMask();
        } catch (const CmpiStatus&) {
            if (length <= int(IpmiSdrRecord::capacity))
                __builtin_trap();
        }
    }
    IpmiIfcEntityListCreate(0);
    IpmiIfcEntityInstantiateAll(0);
    for (const IpmiEntity& entity : IpmiIfc::getEntities())
        sum += entity.getParent().getId() + entity.getAlertClassName().size();
    sum += IpmiIfc::getEntityTree().size();
    IpmiIfcEntityCleanUpAll(0);
    IpmiIfcSdrCleanUpAll(0);
    Seam::takeLog();
    return 0;
}
