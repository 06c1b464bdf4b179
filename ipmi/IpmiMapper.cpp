#include "ipmi/IpmiMapper.h"

#include <algorithm>
#include <syslog.h>
#include <vek-ipmi/CmpiStatus.h>

namespace Ipmi
{

std::vector<HealthTableEntry> healthList;
std::map<uint16_t, HealthBySensorType> sensorHealthMap;

namespace
{

constexpr uint8_t sensorSpecific = 0x6f;
constexpr uint16_t anyType = 0;
constexpr uint16_t anyBit = 255;
constexpr int wellState = 5;
constexpr int notAsserted = 25;

// Which state bit of a sensor-specific sensor tells of its health, by sensor
// type from 07h on (IPMI v2.0, table 42-3).
constexpr uint8_t firstSpecificType = 0x07;
constexpr uint8_t specificStatusBit[] = {
    1, 1, 6, 0, 0, 10, 1, 0, 0, 0, 0, // 07h to 11h
    0, 0, 0, 0, 0, 0,  0, 0, 0, 1,    // 12h to 1Bh
};
static_assert(firstSpecificType + sizeof specificStatusBit == 0x1c);

} // namespace

IpmiMapper::IpmiMapper(unsigned char sensorClass, unsigned char sensorType,
                       unsigned char statusBit, unsigned char sensorNumber,
                       unsigned short stateBits)
    : sensorClass_{sensorClass},
      sensorType_{sensorType},
      statusBit_{statusBit},
      sensorNumber_{sensorNumber},
      stateBits_{stateBits}
{
    init();
}

void IpmiMapper::init()
{
    if (sensorClass_ < 2 || sensorClass_ > sensorSpecific)
        return;
    if (sensorClass_ == sensorSpecific)
        statusBit_ = GetSensorSpecificStatusBit();
    const auto found =
        std::find_if(healthList.begin(), healthList.end(),
                     [this](const auto& entry) { return isMatch(entry); });
    if (found != healthList.end())
        entry_ = *found;
}

bool IpmiMapper::isMatch(const HealthTableEntry& entry) const
{
    return entry.sensorClass == sensorClass_ &&
           (entry.anySensorType || entry.sensorType == sensorType_) &&
           (entry.anyStatusBit || entry.statusBit == statusBit_);
}

uint8_t IpmiMapper::GetSensorSpecificStatusBit() const
{
    const unsigned row = sensorType_ - unsigned{firstSpecificType};
    return row < sizeof specificStatusBit ? specificStatusBit[row] : uint8_t{0};
}

int IpmiMapper::getHealthState() const
{
    const int type = sensorType_;
    const int number = sensorNumber_;
    switch (sensorClass_) {
    case 0:
        syslog(LOG_ERR, "Invalid class for sensor number %d, sensor type: %d",
               number, type);
        return 0;
    case 1:
        // The misspelt word is searched for in logs.
        syslog(LOG_ERR,
               "Expected discrete sensor/threshold for sensor number : %d "
               "Sendor Type %d",
               number, type);
        return 0;
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
    case 9:
    case 10:
    case 11:
    case 12:
    case sensorSpecific:
        return getHealthStateFromSensorHealthMap();
    default:
        syslog(LOG_DEBUG,
               "Unsupported sensor class %d for sensor number %d "
               "type %d",
               sensorClass_, number, type);
        return 0;
    }
}

// The rules of the sensor's own type, or else those for any type; null when
// there are none.
const HealthByStatusBit* IpmiMapper::rulesOfSensor() const
{
    const auto ofClass = sensorHealthMap.find(sensorClass_);
    if (ofClass == sensorHealthMap.end())
        return nullptr;
    const HealthBySensorType& types = ofClass->second;
    auto ofType = types.find(sensorType_);
    if (ofType == types.end() && !types.empty() &&
        types.begin()->first == anyType)
        ofType = types.begin();
    return ofType == types.end() ? nullptr : &ofType->second;
}

int IpmiMapper::getHealthStateFromSensorHealthMap() const
{
    if (stateBits_ == 0)
        return wellState;
    if (entry_.noHealthSection)
        return 1;
    const HealthByStatusBit* rules = rulesOfSensor();
    if (!rules)
        return 1;
    // The highest state bit decides.
    int bit = 15;
    while (!(stateBits_ >> bit & 1))
        --bit;
    auto rule = rules->find(static_cast<uint16_t>(bit));
    if (rule == rules->end())
        rule = rules->find(anyBit);
    if (rule == rules->end() || rule->second.healthState == 1)
        return wellState;
    return rule->second.healthState;
}

int IpmiMapper::getDigitalDiscrete(unsigned short state) const
{
    if (entry_.noHealthSection)
        return state & 1 ? wellState : notAsserted;
    return (statusBit_ & state) == entry_.digitalValue ? entry_.healthState
                                                       : notAsserted;
}

int getSensorHealthState(unsigned char sensorClass, unsigned char sensorType,
                         unsigned char sensorNumber, unsigned short stateBits)
{
    try {
        return IpmiMapper{sensorClass, sensorType, 0, sensorNumber, stateBits}
            .getHealthState();
    } catch (const CmpiStatus&) {
        syslog(LOG_ERR,
               "%s: sensorClass=%d, sensorType=%d, sensorNumber=%d has no "
               "health state, return bad state",
               __func__, sensorClass, sensorType, sensorNumber);
        return 0;
    }
}

} // namespace Ipmi
