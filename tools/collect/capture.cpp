#include "tools/collect/capture.h"

#include <algorithm>

#include "tools/collect/capture_query.h"
#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

constexpr uint8_t ownAddress = 0x20;

bool isSame(const Ipmi::IpmiTarget& a, const Ipmi::IpmiTarget& b)
{
    return (isLocal(a) && isLocal(b)) ||
           (a.address == b.address && a.channel == b.channel);
}

// No answer costs up to 30 s, the driver's own C3h for another controller 5 s.
// After this many of the latter in a row nothing is asked any more.
constexpr unsigned mostSilence = 20, noAnswerCounts = 5;

unsigned keyOf(const Ipmi::IpmiTarget& target)
{
    return isLocal(target) ? 0u : target.address | target.channel * 0x100u;
}

std::string nameOf(const Ipmi::IpmiTarget& target)
{
    if (isLocal(target))
        return "the controller";
    return "the controller at " + hexNumber(target.address) + " on channel " +
           std::to_string(target.channel);
}

uint8_t byteOf(const Bytes& record, size_t at)
{
    return at < record.size() ? record[at] : uint8_t{0};
}

} // namespace

std::string CaptureProgress::text() const
{
    const unsigned done = done_, total = total_;
    std::string text = std::string{"capturing "} + what_.load();
    if (total == 0)
        return text + " ...";
    return text + ": " + std::to_string(std::min(done, total)) + " of " +
           std::to_string(total);
}

bool isThere(const CapturedController& controller)
{
    // The driver's own for nobody there, and for no answer.
    constexpr uint8_t nobody = 0x83, silence = 0xC3;
    const Bytes& deviceId = controller.answers.at(0).answer;
    return !deviceId.empty() && deviceId[0] != nobody && deviceId[0] != silence;
}

bool isLocal(const Ipmi::IpmiTarget& target)
{
    return target.address == 0 || target.address == ownAddress;
}

Ipmi::IpmiTarget ownerOf(const Bytes& record)
{
    constexpr size_t owner = 5, channelAndLun = 6; // IPMI v2.0, 43.1
    const uint8_t where = byteOf(record, channelAndLun);
    return {byteOf(record, owner), uint8_t(where >> 4), uint8_t(where & 3)};
}

Ipmi::IpmiTarget locatedBy(const Bytes& record)
{
    constexpr size_t address = 5, lun = 7, channel = 8; // IPMI v2.0, 43.8
    return {byteOf(record, address), uint8_t(byteOf(record, channel) >> 4),
            uint8_t(byteOf(record, lun) >> 3 & 3)};
}

Answer CaptureQuery::ask(Command command, const Bytes& request,
                         const Ipmi::IpmiTarget& target)
{
    if (silences_[keyOf(target)] >= mostSilence)
        return {};
    Answer answer = device_.exchange(command, request, target);
    note(answer, target);
    // As with raw: most likely it is whole.
    if (answer.possiblyCut)
        capture_.gaps.push_back(
            {Status::done,
             "an answer to " + hexNumber(command.netFn) + " " +
                 hexNumber(command.code) +
                 " fills the 32 bytes that are kept; it may have been longer",
             ""});
    return answer;
}

void CaptureQuery::note(const Answer& answer, const Ipmi::IpmiTarget& target)
{
    unsigned& silence = silences_[keyOf(target)];
    if (!answer.completion.isUnanswered()) {
        silence = 0;
        return;
    }
    silence += answer.completion.answered ? 1 : noAnswerCounts;
    if (silence >= mostSilence)
        miss(nameOf(target) + " fell silent; it was asked nothing more",
             "Try again; if it stays silent, reset it.");
}

CapturedAnswer CaptureQuery::keep(Command command, const Bytes& request,
                                  const Ipmi::IpmiTarget& target)
{
    const Answer answer = ask(command, request, target);
    CapturedAnswer kept{command, request, {}};
    if (!answer.completion.answered)
        return kept;
    // The driver's C3h for silence too: who replays it need not wait as long.
    kept.answer = answer.data;
    kept.answer.insert(kept.answer.begin(), answer.completion.code);
    return kept;
}

void CaptureQuery::miss(const std::string& what, const std::string& next)
{
    capture_.gaps.push_back({Status::failed, what, next});
}

CapturedController* controllerAt(CaptureQuery& query,
                                 const Ipmi::IpmiTarget& target)
{
    Capture& capture = query.capture();
    if (isLocal(target))
        return &capture.controller;
    const auto answers = [](CapturedController& one) {
        return isThere(one) ? &one : nullptr;
    };
    for (CapturedController& one : capture.satellites)
        if (isSame(one.target, target))
            return answers(one);
    CapturedController& satellite = capture.satellites.emplace_back();
    satellite.target = {target.address, target.channel, 0};
    captureIdentity(query, satellite);
    if (!answers(satellite))
        query.miss(nameOf(target) + " does not answer; it is left out");
    return answers(satellite);
}

Capture captureController(Device& device, CaptureProgress& progress)
{
    Capture capture;
    CaptureQuery query{device, capture, progress};
    captureIdentity(query, capture.controller);
    const CapturedAnswer& deviceId = capture.controller.answers[0];
    if (!deviceId.ok())
        throw failureOf("no controller to capture", commands::getDeviceId,
                        {byteOf(deviceId.answer, 0), !deviceId.answer.empty()});
    captureSystem(query);
    captureLan(query);
    captureRepository(query);
    captureSensors(query);
    captureFrus(query);
    captureLog(query);
    return capture;
}

} // namespace Tool
