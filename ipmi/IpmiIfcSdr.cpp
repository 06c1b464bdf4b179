#include "ipmi/IpmiIfcSdr.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <syslog.h>

#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcSensor.h"

namespace Ipmi
{

VEK::Mutex sdr_mutex;

namespace
{

constexpr uint8_t storage = 0x0a;
constexpr uint8_t getRepositoryInfo = 0x20;
constexpr uint8_t reserveRepository = 0x22;
constexpr uint8_t getSdrCommand = 0x23;

static_assert(sizeof(ipmiifc_sdr_info) == 15);

// Callers have always passed a node count of 4 for a node number.
constexpr int highestNodeNumber = 4;

Response send(IpmiNode& node, uint8_t command)
{
    ipmiifc_req request{};
    request.msgid = node.msgSeq++;
    request.netfn = storage;
    request.cmd = command;
    return Response{IpmiIfcSend(numberOf(node), &request, 0)};
}

// Whether the answer can be kept; says why not.
bool isUsable(const ipmiifc_resp& resp)
{
    if (resp.cc != 0) {
        syslog(LOG_WARNING, "Unable to fetch SDR info - cc=0x%x", resp.cc);
        return false;
    }
    if (resp.data[0] != 0) {
        syslog(LOG_WARNING, "Inconsistent SDR Response codes %x != %x",
               resp.data[0], 0);
        return false;
    }
    if (resp.data_len != sizeof(ipmiifc_sdr_info)) {
        syslog(LOG_WARNING,
               "SDR response buffer was wrong size %x (expecting %x)",
               unsigned(resp.data_len), unsigned(sizeof(ipmiifc_sdr_info)));
        return false;
    }
    const uint8_t version = resp.data[1];
    if ((version & 0x0f) > 2) {
        syslog(LOG_WARNING,
               "Unexpected SDR Repository info version 0x%x - discarding "
               "results ",
               version);
        return false;
    }
    return true;
}

bool isAccepted(uint8_t version)
{
    constexpr uint8_t version15 = 0x51;
    static std::atomic<bool> logged{false};
    if (version == version15 || (version & 0x0f) >= 2)
        return true;
    if (!logged.exchange(true))
        syslog(LOG_ERR, "%s: invalid version. version = 0x%x",
               "IpmiIfcSdrGetAll", version);
    return false;
}

bool hasReservation(IpmiNode& node)
{
    VEK::WriteLock lock{node.sdrLock};
    return reservationOf(node) != 0;
}

ipmiifc_sdr_info infoOf(IpmiNode& node)
{
    VEK::WriteLock lock{node.sdrLock};
    return node.sdrInfo;
}

// A version of 0 was not read yet. The handler of the answer then reads the
// whole repository, and this function does so again: callers rely on finding
// it read when the first of the two has failed.
int getAll(int number, bool insideRefresh)
{
    if (number > highestNodeNumber)
        return -1;
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return -1;
    if (infoOf(*node).sdrVersion == 0) {
        // sdr_mutex is held already, and the answer would be the same.
        if (insideRefresh)
            return -1;
        if (const int failure = IpmiIfcSdrGetInfo(number))
            return failure;
    }
    if (!hasReservation(*node))
        if (const int failure = IpmiIfcSdrReserve(number))
            return failure;
    const ipmiifc_sdr_info info = infoOf(*node);
    if (!isAccepted(info.sdrVersion))
        return -1;
    if (info.recordCount[0] == 0 && info.recordCount[1] == 0)
        return -1;
    if (const int failure = IpmiIfcSdrGetHeaders(number))
        return failure;
    IpmiIfcSdrCleanUpAll(number);
    return IpmiIfcSdrReadAll(number);
}

void startProgress(IpmiNode& node, const ipmiifc_sdr_info& info)
{
    node.sdrWalked = 0;
    node.sdrRead = 0;
    node.sdrFailed = 0;
    node.sdrTotal = info.recordCount[0] | unsigned(info.recordCount[1]) << 8;
}

// Everything is read again with each answer: the time stamps of additions and
// erasures are not compared, since firmware does not keep them reliably.
int readRecords(ipmiifc_resp* resp)
{
    if (!isUsable(*resp))
        return -1;
    const int number = resp->node;
    IpmiNode& node = g_IpmiNode[number];
    ipmiifc_sdr_info info;
    memcpy(&info, resp->data, sizeof info);
    {
        VEK::WriteLock lock{node.sdrLock};
        node.sdrInfo = info;
    }
    startProgress(node, info);
    IpmiIfcSdrReserve(number);
    getAll(number, true);
    return 0;
}

void setWanted(IpmiNode& node, std::vector<uint8_t> types)
{
    VEK::WriteLock lock{node.sdrLock};
    node.sdrWanted.swap(types);
}

// What the handler makes of a good answer is not looked at.
int refreshWith(int number, int (*handle)(ipmiifc_resp*),
                const std::vector<uint8_t>& types = {})
{
    IpmiNode* const node = nodeRecord(number);
    if (number > highestNodeNumber || !node)
        return -1;
    VEK::MutexLock refresh{sdr_mutex};
    const Response resp = send(*node, getRepositoryInfo);
    if (!resp || resp->cc != 0)
        return -1;
    setWanted(*node, types);
    handle(resp.get());
    setWanted(*node, {});
    return 0;
}

} // namespace

int IpmiIfcSdrGetInfo(int number)
{
    return refreshWith(number, IpmiIfcRhGetSdrInfo);
}

int IpmiIfcSdrReadRecords(int number)
{
    return refreshWith(number, readRecords);
}

int IpmiIfcSdrReadRecordsOf(int number, const uint8_t* types, unsigned count)
{
    return refreshWith(number, readRecords, {types, types + count});
}

int IpmiIfcRhGetSdrInfo(ipmiifc_resp* resp)
{
    if (readRecords(resp) != 0)
        return -1;
    const int number = resp->node;
    IpmiIfcSensorInstantiateAll(number);
    IpmiIfcEntityListCreate(number);
    IpmiIfcEntityInstantiateAll(number);
    return 0;
}

int IpmiIfcSdrReserve(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return -1;
    const Response resp = send(*node, reserveRepository);
    if (!resp || resp->cc != 0)
        return -1;
    VEK::WriteLock lock{node->sdrLock};
    std::copy_n(resp->data, sizeof node->sdrReservation, node->sdrReservation);
    return 0;
}

int IpmiIfcSdrGetAll(int node)
{
    return getAll(node, false);
}

IpmiSdrProgress IpmiIfcSdrGetProgress(int number)
{
    const IpmiNode* const node = nodeRecord(number);
    if (!node)
        return {};
    return {node->sdrTotal, node->sdrWalked, node->sdrRead, node->sdrFailed};
}

ipmiifc_sdr_info IpmiIfc::getSdr(int number)
{
    IpmiNode* const node = nodeRecord(number);
    return node ? infoOf(*node) : ipmiifc_sdr_info{};
}

ipmiifc_sdr_info IpmiIfc::getSdr()
{
    return getSdr(0);
}

SdrReader::SdrReader(int node, uint16_t reservationId) : node_{node}
{
    setReservation(reservationId);
}

void SdrReader::setReservation(uint16_t reservationId)
{
    data_[0] = uint8_t(reservationId & 0xff);
    data_[1] = uint8_t(reservationId >> 8);
}

void SdrReader::setPart(uint16_t recordId, uint8_t offset, uint8_t size)
{
    data_[2] = uint8_t(recordId & 0xff);
    data_[3] = uint8_t(recordId >> 8);
    data_[4] = offset;
    data_[5] = size;
}

int SdrReader::exchange()
{
    IpmiNode& node = g_IpmiNode[node_];
    ipmiifc_req request{};
    request.msgid = node.msgSeq++;
    request.netfn = storage;
    request.cmd = getSdrCommand;
    request.data_len = sizeof data_;
    request.data = data_;
    return exchangeAgain(request, answer_);
}

} // namespace Ipmi
