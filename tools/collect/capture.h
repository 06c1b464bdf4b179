/// What a controller answers, kept so that a simulated one can answer the same.
#ifndef VEK_TOOLS_COLLECT_CAPTURE_H
#define VEK_TOOLS_COLLECT_CAPTURE_H

#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "tools/device.h"

namespace Tool
{

/// One exchange.
struct CapturedAnswer
{
    Command command{};
    Bytes request;
    Bytes answer; ///< Completion code first; nothing is silence.

    bool ok() const { return !answer.empty() && answer[0] == 0; }
};
using CapturedAnswers = std::vector<CapturedAnswer>;

struct CapturedRecord
{
    uint16_t id = 0; ///< By which it was asked for.
    Bytes bytes;
    /// Of a sensor data record's sensors, by offset of the share; one without
    /// any was not asked.
    std::vector<CapturedAnswers> sensors;
};

/// A repository, or an event log.
struct CapturedRecords
{
    Bytes info; ///< What follows the completion code.
    std::vector<CapturedRecord> records;
};

struct CapturedFru
{
    uint8_t device = 0, lun = 0;
    unsigned size = 0; ///< Bytes, as the device says.
    bool byWords = false;
    bool byteOffsets = false; ///< Of a device by words: it counts in bytes.
    Bytes bytes;
};

/// A parameter of a LAN channel: what follows the revision.
struct CapturedParameter
{
    uint8_t number = 0, selector = 0;
    Bytes data;
};

struct CapturedLan
{
    uint8_t channel = 0;
    std::vector<CapturedParameter> parameters;
};

/// The controller, or one behind it.
struct CapturedController
{
    Ipmi::IpmiTarget target{};
    CapturedAnswers answers; ///< Get Device ID first.
    std::vector<CapturedFru> frus;
};

/// Whether it answered Get Device ID, whatever it said.
bool isThere(const CapturedController& controller);

struct Capture
{
    CapturedController controller;
    std::optional<CapturedRecords> repository, log;
    int64_t logAhead = 0; ///< Seconds that the log's clock is ahead.
    std::vector<CapturedLan> lan;
    std::vector<CapturedController> satellites;
    /// What could not be read, or is not whole.
    std::vector<Failure> gaps;
};

/// How far a capture has come, for another thread.
class CaptureProgress
{
public:
    /// @param total 0: not known.
    void enter(const char* what, unsigned total = 0)
    {
        what_ = what;
        total_ = total;
        done_ = 0;
    }
    void step() { ++done_; }
    /// "capturing sensors: 12 of 107"
    std::string text() const;

private:
    std::atomic<const char*> what_{"the controller"};
    std::atomic<unsigned> done_{0}, total_{0};
};

/// Asks for everything that the other subcommands and the usual clients show.
/// @throws Failure without an answer to Get Device ID.
Capture captureController(Device& device, CaptureProgress& progress);

} // namespace Tool

#endif
