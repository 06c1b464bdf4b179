/// How one exchange with the controller ended.
#ifndef VEK_TOOLS_COLLECT_COMPLETION_H
#define VEK_TOOLS_COLLECT_COMPLETION_H

#include <cstdint>

#include "tools/status.h"

namespace Tool
{

/// Network function and command of a request.
struct Command
{
    uint8_t netFn;
    uint8_t code;
};

namespace commands
{
constexpr Command chassisIdentify = {0x00, 0x04}, getDeviceId = {0x06, 0x01},
                  getSelfTestResults = {0x06, 0x04},
                  getChannelInfo = {0x06, 0x42}, setSystemInfo = {0x06, 0x58},
                  getSystemInfo = {0x06, 0x59},
                  setSensorHysteresis = {0x04, 0x24},
                  getSensorHysteresis = {0x04, 0x25},
                  setSensorThresholds = {0x04, 0x26},
                  getSensorThresholds = {0x04, 0x27},
                  setSensorEventEnable = {0x04, 0x28},
                  getSensorEventEnable = {0x04, 0x29},
                  rearmSensorEvents = {0x04, 0x2A},
                  getSensorReading = {0x04, 0x2D},
                  getFruInventoryAreaInfo = {0x0A, 0x10},
                  readFruData = {0x0A, 0x11},
                  getSdrRepositoryInfo = {0x0A, 0x20},
                  reserveSdrRepository = {0x0A, 0x22}, getSdr = {0x0A, 0x23},
                  getSelInfo = {0x0A, 0x40}, getSelAllocation = {0x0A, 0x41},
                  reserveSel = {0x0A, 0x42}, getSelEntry = {0x0A, 0x43},
                  deleteSelEntry = {0x0A, 0x46}, clearSel = {0x0A, 0x47},
                  getSelTime = {0x0A, 0x48}, setSelTime = {0x0A, 0x49},
                  getLanConfiguration = {0x0C, 0x02};
} // namespace commands

struct Completion
{
    uint8_t code = 0xFF;   ///< IPMI v2.0, table 5-2. Meaningless unanswered.
    bool answered = false; ///< FFh is also a code of the controller's own.
    bool isCut = false;    ///< Too short to tell what was asked for.

    bool ok() const { return answered && code == 0x00 && !isCut; }
    /// The driver, not the controller, makes C3h when no answer comes: what
    /// was asked for may have been done.
    bool isUnanswered() const { return !answered || code == 0xC3; }
    Status status() const
    {
        if (ok())
            return Status::done;
        return isUnanswered() || isCut ? Status::failed : Status::refused;
    }
};

} // namespace Tool

#endif
