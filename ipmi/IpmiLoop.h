/// The polling loop of a node.
#ifndef VEK_IPMI_PRIVATE_IPMILOOP_H
#define VEK_IPMI_PRIVATE_IPMILOOP_H

#include <cstdint>

#include <vek-ipmi/IpmiIfc.h>

namespace Ipmi
{

/// What the loop asks of the areas: a line an area. An area that the library
/// does not hold is null and is left out.
struct LoopAreas
{
    /// SEL: writes the number of entries; 0 for success.
    int (*selInfo)(int node, uint16_t* entryCount);
    /// SDR: reads the repository again, with all that is built from it.
    void (*sdr)(int node);
    /// Sensor: refreshes the readings.
    void (*sensorReadings)(int node);
    /// FRU: reads the inventory again.
    void (*fru)(int node);
    /// LAN: reads the configuration again.
    void (*lan)(int node);
    /// All: frees what stop leaves behind.
    void (*cleanUp)(int node);
};
extern LoopAreas loopAreas;

enum class PollPass
{
    count,    ///< The SEL entries were counted; nothing more.
    readings, ///< Sensor readings.
    periodic, ///< Readings, and the slower areas every so many times.
    full      ///< Everything.
};

struct PollChoice
{
    PollPass pass;
    int pollCount; ///< The node's poll count from now on.
};

/// What a pass does: the poll count has been raised for it, entryCount is the
/// SEL's, lastEntryCount the one of the last pass that refreshed.
PollChoice choosePass(int pollCount, IpmiIfc::IPMI_POLL_TYPE type,
                      unsigned entryCount, unsigned lastEntryCount);

} // namespace Ipmi

#endif
