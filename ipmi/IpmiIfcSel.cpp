#include "ipmi/IpmiIfcSel.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiSelRecord.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t storage = 0x0a;
enum Command : uint8_t
{
    getSelInfo = 0x40,
    reserveSel = 0x42
};

enum Code : uint8_t
{
    noResponse = 0x81,
    nodeBusy = 0xc0,
    invalidCommand = 0xc1,
    notPresent = 0xcb
};

static_assert(sizeof(ipmiifc_sel_info) == 15);
static_assert(sizeof(ipmiifc_sel_alloc_info) == 10);

bool isAccepted(uint8_t version)
{
    constexpr uint8_t version15 = 0x51;
    static std::atomic<bool> logged{false};
    if (version == version15 || (version & 0x0f) >= 2)
        return true;
    if (!logged.exchange(true))
        syslog(LOG_ERR, "%s: invalid version. Version = 0x%x",
               "IpmiIfcSelGetAll", version);
    return false;
}

ipmiifc_sel_info infoOf(IpmiNode& node)
{
    VEK::MutexLock lock{node.selMutex};
    return node.selInfo;
}

bool canReadAll(IpmiNode& node)
{
    const ipmiifc_sel_info info = infoOf(node);
    if (!isAccepted(info.selVersion))
        return false;
    if (word(info.entryCount) == 0) {
        syslog(LOG_ERR, "%s: node %d no record count", "IpmiIfcSelGetAll", 0);
        return false;
    }
    return true;
}

void reserveOnce(IpmiNode& node)
{
    bool has = false;
    {
        VEK::MutexLock lock{node.selMutex};
        has = node.selReservationId != 0;
    }
    if (!has)
        IpmiIfcSelReserve(0);
}

SelWalkEnd getAll(IpmiNode& node) VEK_REQUIRES(node.selRefreshMutex)
{
    // A version that stays 0 would be asked for again and again.
    if (infoOf(node).selVersion == 0)
        return SelWalkEnd::unread;
    reserveOnce(node);
    return canReadAll(node) ? readWholeLog(node) : SelWalkEnd::unread;
}

void store(IpmiNode& node, const ipmiifc_sel_info& info)
    VEK_REQUIRES(node.selMutex)
{
    node.selInfo = info;
    *node.selSummary = std::make_shared<IpmiSel>(
        &node.selInfo, &node.selAllocInfo, node.nodeNum);
}

// What an answer means for the cache.
enum class Change
{
    none,
    added,
    all
};

// A log that was cleared, or that the cache cannot follow any more, is read
// whole; in command-line mode it is so each time it is asked for.
Change changeOf(IpmiNode& node, const ipmiifc_sel_info& held,
                const ipmiifc_sel_info& now) VEK_REQUIRES(node.selRefreshMutex)
{
    constexpr unsigned mostFailures = 2;
    // Controllers without a clock have times of 0, as nothing has.
    const bool isFirst = held.selVersion == 0 && now.selVersion != 0;
    if (isFirst || _getState(0) == IpmiIfc::STATE_CLI ||
        node.selRefresh->wholeAgain ||
        node.selRefresh->lastRecordFailures >= mostFailures ||
        longWord(held.eraseTime) != longWord(now.eraseTime))
        return Change::all;
    if (longWord(held.additionTime) == longWord(now.additionTime))
        return Change::none;
    // Records of an earlier start, of which the last one is not known.
    VEK::MutexLock lock{node.selMutex};
    return node.lastSelRecordId == 0 && !node.selRecords->empty()
               ? Change::all
               : Change::added;
}

// What handlers were offered before is not new, though its time may say so.
// The next poll goes on from here if this one is left in the midst of it.
void startWhole(IpmiNode& node, const ipmiifc_sel_info& info, uint32_t since)
    VEK_REQUIRES(node.selRefreshMutex)
{
    SelRefresh& refresh = *node.selRefresh;
    VEK::MutexLock lock{node.selMutex};
    const size_t offered = std::min(refresh.offered, node.selRecords->size());
    for (size_t i = 0; i < offered; ++i)
        refresh.known.insert(bytesOf(*(*node.selRecords)[i]));
    refresh.offered = 0;
    refresh.lastRecordFailures = 0;
    refresh.since = since;
    refresh.wholeAgain = true;
    store(node, info);
    node.lastSelRecordId = 0;
}

void readAll(IpmiNode& node, const ipmiifc_sel_info& info, uint32_t since)
    VEK_REQUIRES(node.selRefreshMutex)
{
    startWhole(node, info, since);
    startSelProgress(node, word(info.entryCount));
    IpmiIfcSelReserve(0);
    {
        VEK::MutexLock lock{node.selMutex};
        node.selRecords->clear();
    }
    const SelWalkEnd end = getAll(node);
    SelRefresh& refresh = *node.selRefresh;
    refresh.offered = queueEvents(node, 0, since, refresh.known);
    if (end == SelWalkEnd::failed)
        return;
    refresh.wholeAgain = false;
    refresh.known.clear();
}

// The information is kept only once all that it announces was read, so that
// the next poll tries again, for the same events.
void readAdded(IpmiNode& node, const ipmiifc_sel_info& info, uint32_t since)
    VEK_REQUIRES(node.selRefreshMutex)
{
    IpmiIfcSelReserve(0);
    uint16_t last = 0;
    {
        VEK::MutexLock lock{node.selMutex};
        last = node.lastSelRecordId;
    }
    SelRefresh& refresh = *node.selRefresh;
    const SelWalkEnd end = readNewRecords(node, last);
    if (end == SelWalkEnd::replaced) {
        readAll(node, info, since);
        return;
    }
    if (end == SelWalkEnd::firstFailed)
        ++refresh.lastRecordFailures;
    else
        refresh.lastRecordFailures = 0;
    node.selComplete = end == SelWalkEnd::complete;
    if (!node.selComplete)
        return;
    {
        VEK::MutexLock lock{node.selMutex};
        store(node, info);
    }
    refresh.offered = queueEvents(node, refresh.offered, since);
}

void refreshLog(IpmiNode& node, const ipmiifc_sel_info& info)
    VEK_REQUIRES(node.selRefreshMutex)
{
    const ipmiifc_sel_info held = infoOf(node);
    const uint32_t heldTime = longWord(held.additionTime);
    uint32_t since = heldTime ? heldTime : longWord(info.additionTime);
    switch (changeOf(node, held, info)) {
    case Change::none:
        return;
    case Change::added:
        readAdded(node, info, since);
        return;
    case Change::all:
        if (node.selRefresh->wholeAgain)
            since = node.selRefresh->since;
        readAll(node, info, since);
    }
}

// Without the handlers' calls.
int takeInfo(IpmiNode& node, const ipmiifc_resp* resp, unsigned short* count)
    VEK_REQUIRES(node.selRefreshMutex)
{
    constexpr int countAt = 2;
    if (!resp || resp->cc != 0)
        return -1;
    // Its low byte: callers compare it for change only.
    if (count && resp->data_len > countAt)
        *count = resp->data[countAt];
    ipmiifc_sel_info info;
    if (resp->data_len < int(sizeof info)) {
        // Times of 0 would make a cleared log of it.
        syslog(LOG_WARNING, "%s: answer too short (%d)", "IpmiIfcRhSelInfo",
               resp->data_len);
        node.selComplete = false;
        return -1;
    }
    memcpy(&info, resp->data, sizeof info);
    refreshLog(node, info);
    return 0;
}

// Null unless the controller told about its log.
Response askForInfo()
{
    Response resp = sendAboutSel(storage, getSelInfo);
    if (!resp || resp->cc == 0)
        return resp;
    if (resp->cc != nodeBusy && resp->cc != notPresent &&
        resp->cc != noResponse)
        syslog(LOG_WARNING, "%s: IPMI_CMD_GET_SEL_INFO cc=0x%x",
               "IpmiIfcSelGetInfo", resp->cc);
    return nullptr;
}

} // namespace

void startSelProgress(IpmiNode& node, unsigned total)
{
    node.selRead = 0;
    node.selFailed = 0;
    node.selComplete = total == 0;
    node.selTotal = total;
}

Response sendAboutSel(uint8_t netfn, uint8_t command, uint8_t* data,
                      uint16_t size)
{
    return Response{IpmiIfcSendCmd(0, command, netfn, 0, size, data, 0)};
}

int IpmiIfcSelGetInfo(int, unsigned short* count)
{
    IpmiNode& node = g_IpmiNode[0];
    {
        // From the exchange on: no older answer is taken for a change behind
        // a newer one.
        VEK::MutexLock refreshing{node.selRefreshMutex};
        const Response resp = askForInfo();
        if (!resp)
            return -1;
        takeInfo(node, resp.get(), count);
    }
    deliverEvents(node);
    return 0;
}

int IpmiIfcRhSelInfo(ipmiifc_resp* resp, unsigned short* count)
{
    if (!resp)
        return -1;
    IpmiNode& node = g_IpmiNode[resp->node];
    int result = 0;
    {
        VEK::MutexLock refreshing{node.selRefreshMutex};
        result = takeInfo(node, resp, count);
    }
    deliverEvents(node);
    return result;
}

int IpmiIfcRhSelInfoNoCount(ipmiifc_resp* resp)
{
    return IpmiIfcRhSelInfo(resp, nullptr);
}

int IpmiIfcRhSelGetAllocInfo(ipmiifc_resp* resp)
{
    if (!resp)
        return -1;
    if (resp->cc != 0) {
        syslog(LOG_DEBUG, "%s: BMC returned cc=0x%x", __func__, resp->cc);
        return -1;
    }
    IpmiNode& node = g_IpmiNode[resp->node];
    VEK::MutexLock lock{node.selMutex};
    memcpy(&node.selAllocInfo, resp->data, sizeof node.selAllocInfo);
    return 0;
}

int IpmiIfcSelReserve(int)
{
    const Response resp = sendAboutSel(storage, reserveSel);
    if (!resp) {
        syslog(LOG_WARNING, "Transmit issue for IPMI SEL Reserve node %d", 0);
        return -1;
    }
    switch (resp->cc) {
    case 0:
        break;
    case nodeBusy:
        sleep(1);
        return -1;
    case invalidCommand:
        syslog(LOG_DEBUG, "node: %d reserve sel command is not supported", 0);
        return -1;
    default:
        syslog(LOG_WARNING, "node: %d reserve sel failed cc 0x%x", 0, resp->cc);
        return -1;
    }
    VEK::MutexLock lock{g_IpmiNode[0].selMutex};
    g_IpmiNode[0].selReservationId = viewOf(*resp).u16(1);
    return 0;
}

int IpmiIfcSelGetAll(int number)
{
    IpmiNode& node = g_IpmiNode[0];
    if (infoOf(node).selVersion == 0)
        if (const int failure = IpmiIfcSelGetInfo(number, nullptr))
            return failure;
    VEK::MutexLock refreshing{node.selRefreshMutex};
    return getAll(node) == SelWalkEnd::unread ? -1 : 0;
}

IpmiSelProgress IpmiIfcSelGetProgress(int)
{
    const IpmiNode& node = g_IpmiNode[0];
    return {node.selTotal, node.selRead, node.selFailed, node.selComplete};
}

std::shared_ptr<IpmiSel> IpmiIfc::getSel(int)
{
    VEK::MutexLock lock{g_IpmiNode[0].selMutex};
    return *g_IpmiNode[0].selSummary;
}

std::shared_ptr<IpmiSel> IpmiIfc::getSel()
{
    return getSel(0);
}

std::vector<std::shared_ptr<IpmiSelData>> IpmiIfc::getSelData(int)
{
    VEK::MutexLock lock{g_IpmiNode[0].selMutex};
    return *g_IpmiNode[0].selRecords;
}

std::vector<std::shared_ptr<IpmiSelData>> IpmiIfc::getSelData()
{
    return getSelData(0);
}

ipmiifc_sel_info IpmiIfc::getRawSelHeader(int)
{
    return infoOf(g_IpmiNode[0]);
}

ipmiifc_sel_info IpmiIfc::getRawSelHeader()
{
    return getRawSelHeader(0);
}

} // namespace Ipmi
