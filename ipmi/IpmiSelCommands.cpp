// Commands about the log that keep nothing.
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIfcSel.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t storage = 0x0a;
constexpr uint8_t sensorEvent = 0x04;
enum Command : uint8_t
{
    setLastProcessedEvent = 0x14,
    getLastProcessedEvent = 0x15,
    clearSelCommand = 0x47,
    getSelTime = 0x48
};

enum Code : uint8_t
{
    nodeBusy = 0xc0,
    reservationCanceled = 0xc5
};

// Their values are clearSel's results.
enum class Attempt
{
    erasing = 0,
    again = 2,
    unanswered = 4,
    refused = 5
};

// One request for the erasure. What follows it must not hold up those who
// read the cache, the exchange does.
Attempt tryToErase(IpmiNode& node, uint8_t (&data)[6], uint8_t& progress)
{
    Response resp;
    {
        VEK::MutexLock lock{node.selMutex};
        resp = sendAboutSel(storage, clearSelCommand, data, sizeof data);
    }
    if (!resp)
        return Attempt::unanswered;
    switch (resp->cc) {
    case 0:
        progress = viewOf(*resp).u8(1) & 0x0f;
        return Attempt::erasing;
    case nodeBusy:
        sleep(5);
        return Attempt::again;
    case reservationCanceled:
        // The request keeps the reservation that it has.
        IpmiIfcSelReserve(0);
        return Attempt::again;
    default:
        syslog(LOG_ERR, "%s: Failed with completion code = 0x%x", "clearSel",
               resp->cc);
        return Attempt::refused;
    }
}

Attempt erase(IpmiNode& node, uint8_t& progress)
{
    constexpr int mostAttempts = 5;
    constexpr uint8_t initiate = 0xaa;
    VEK::MutexLock refreshing{node.selRefreshMutex};
    IpmiIfcSelReserve(0);
    uint8_t data[6] = {0, 0, 'C', 'L', 'R', initiate};
    {
        VEK::MutexLock lock{node.selMutex};
        data[0] = uint8_t(node.selReservationId & 0xff);
        data[1] = uint8_t(node.selReservationId >> 8);
    }
    Attempt attempt = Attempt::again;
    for (int i = 0; i < mostAttempts && attempt == Attempt::again; ++i)
        attempt = tryToErase(node, data, progress);
    return attempt;
}

} // namespace

int IpmiIfc::clearSel(int)
{
    constexpr uint8_t inProgress = 0, completed = 1;
    constexpr int eraseFailed = 2;
    uint8_t progress = inProgress;
    const Attempt attempt = erase(g_IpmiNode[0], progress);
    if (attempt != Attempt::erasing)
        return int(attempt);
    const bool isGood = progress == inProgress || progress == completed;
    if (!isGood)
        syslog(LOG_ERR,
               "%s: unspecified error cc = 0x%x, erasure status = 0x%x",
               __func__, 0, progress);
    IpmiIfcSelGetInfo(0, nullptr);
    return isGood ? 0 : eraseFailed;
}

int IpmiIfc::clearSel()
{
    return clearSel(0);
}

uint16_t IpmiIfc::getLastProcessedSELEntry(int)
{
    constexpr int least = 9;
    constexpr unsigned bySoftwareAt = 7;
    constexpr uint16_t none = 0xffff;
    const Response resp = sendAboutSel(sensorEvent, getLastProcessedEvent);
    if (!resp) {
        syslog(LOG_DEBUG, "Failed to send get last processed SEL entry");
        return 0;
    }
    if (resp->cc != 0) {
        syslog(LOG_DEBUG, "Failed get last processed SEL entry request 0x%x",
               resp->cc);
        return 0;
    }
    if (resp->data_len < least) {
        syslog(LOG_DEBUG,
               "get last processed SEL entry response too short (%d)",
               resp->data_len);
        return 0;
    }
    const uint16_t id = viewOf(*resp).u16(bySoftwareAt);
    return id == none ? uint16_t{0} : id;
}

uint16_t IpmiIfc::getLastProcessedSELEntry()
{
    return getLastProcessedSELEntry(0);
}

void IpmiIfc::setLastProcessedSELEntry(int, unsigned short id)
{
    constexpr uint8_t bySoftware = 0;
    uint8_t data[3] = {bySoftware, uint8_t(id & 0xff), uint8_t(id >> 8)};
    const Response resp =
        sendAboutSel(sensorEvent, setLastProcessedEvent, data, sizeof data);
    if (!resp)
        syslog(LOG_DEBUG, "Failed to send set SEL last processed");
    else if (resp->cc != 0)
        syslog(LOG_DEBUG, "Failed set SEL last processed 0x%x", resp->cc);
}

void IpmiIfc::setLastProcessedSELEntry(unsigned short id)
{
    setLastProcessedSELEntry(0, id);
}

uint32_t IpmiIfc::GetSelClock()
{
    constexpr unsigned timeSize = 4;
    const DeviceUse device;
    if (g_IpmiNode[0].devOpen != 1)
        return 0;
    const Response resp = sendAboutSel(storage, getSelTime);
    if (!resp || resp->cc != 0) {
        syslog(LOG_ERR, "%s: IPMI_CMD_GET_SEL_TIME for node %d failed %x",
               __func__, 0, resp ? resp->cc : 0);
        return 0;
    }
    const RecordView answer = viewOf(*resp);
    return answer.has(1, timeSize)
               ? answer.u16(1) | uint32_t{answer.u16(3)} << 16
               : 0;
}

uint32_t IpmiIfc::selGetClock(int)
{
    return 0;
}

uint32_t IpmiIfc::selGetClock()
{
    return selGetClock(0);
}

} // namespace Ipmi
