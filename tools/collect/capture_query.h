/// The steps of a capture; see capture.h.
#ifndef VEK_TOOLS_COLLECT_CAPTURE_QUERY_H
#define VEK_TOOLS_COLLECT_CAPTURE_QUERY_H

#include <map>

#include "tools/collect/capture.h"

namespace Tool
{

/// Asks one controller and keeps what it answers.
class CaptureQuery
{
public:
    CaptureQuery(Device& device, Capture& capture, CaptureProgress& progress)
        : device_{device}, capture_{capture}, progress_{progress}
    {}

    /// Who was silent again and again is not asked any more.
    Answer ask(Command command, const Bytes& request,
               const Ipmi::IpmiTarget& target = {});
    CapturedAnswer keep(Command command, const Bytes& request,
                        const Ipmi::IpmiTarget& target = {});

    Capture& capture() { return capture_; }
    CaptureProgress& progress() { return progress_; }
    void miss(const std::string& what, const std::string& next = "");

private:
    void note(const Answer& answer, const Ipmi::IpmiTarget& target);

    Device& device_;
    Capture& capture_;
    /// By address and channel; the controller itself is 0.
    std::map<unsigned, unsigned> silences_;
    CaptureProgress& progress_;
};

void captureIdentity(CaptureQuery& query, CapturedController& controller);
void captureSystem(CaptureQuery& query);
void captureRepository(CaptureQuery& query);
void captureLog(CaptureQuery& query);
void captureSensors(CaptureQuery& query);
void captureFrus(CaptureQuery& query);
void captureLan(CaptureQuery& query);

/// Where a sensor data record says that its owner, or the device that it
/// locates, is.
Ipmi::IpmiTarget ownerOf(const Bytes& record);
Ipmi::IpmiTarget locatedBy(const Bytes& record);

/// The controller's own.
bool isLocal(const Ipmi::IpmiTarget& target);

/// The controller there, noted if it is new and answers; null if it does not.
CapturedController* controllerAt(CaptureQuery& query,
                                 const Ipmi::IpmiTarget& target);

} // namespace Tool

#endif
