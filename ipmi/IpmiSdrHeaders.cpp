// The walk along the headers of a repository.
#include <bitset>
#include <new>
#include <syslog.h>

#include "ipmi/IpmiIfcSdr.h"

namespace Ipmi
{

namespace
{

constexpr int mostAttempts = 4;
constexpr uint8_t reservationCanceled = 0xc5;
constexpr uint16_t firstRecord = 0x0000;
constexpr uint16_t lastRecord = 0xffff;

IpmiSdrHeader decodeHeader(RecordView bytes)
{
    return {bytes.u16(0), bytes.u8(2), bytes.u8(3), bytes.u8(4)};
}

// Room for the records that the repository claims and one more, which is as
// far as the walk goes.
bool makeRoom(IpmiNode& node, uint32_t claimed) VEK_REQUIRES(node.sdrLock)
{
    const uint32_t room = claimed + 1;
    const bool reuse = claimed <= node.sdrHeaderCount && node.sdrHeaderCount &&
                       node.sdrHeaders && room <= node.sdrHeaderRoom;
    if (reuse)
        return true;
    freeHeaders(node);
    node.sdrHeaders = new (std::nothrow) IpmiSdrHeader[room];
    node.sdrHeaderRoom = node.sdrHeaders ? room : 0;
    if (node.sdrHeaders)
        return true;
    syslog(LOG_ERR, "IpmiIfcSdrGetHeaders: failed alloc memory size = %d",
           int(claimed) * sdrHeaderSize);
    return false;
}

// Ids met in one walk.
class Trail
{
public:
    /// False when the id was met before.
    bool enter(uint16_t id)
    {
        const bool fresh = !met_[id];
        met_[id] = true;
        return fresh;
    }

private:
    std::bitset<0x10000> met_;
};

class Walk
{
public:
    explicit Walk(IpmiNode& node) VEK_REQUIRES(node.sdrLock)
        : reader_{numberOf(node), reservationOf(node)}
    {}

    /// False when a header used up its attempts.
    bool run(IpmiNode& node, uint32_t claimed) VEK_REQUIRES(node.sdrLock);
    uint32_t count() const { return count_; }

private:
    bool readHeader(IpmiNode& node, uint16_t id) VEK_REQUIRES(node.sdrLock);
    void renewReservation(IpmiNode& node) VEK_REQUIRES(node.sdrLock);
    bool store(IpmiNode& node, uint16_t id) VEK_REQUIRES(node.sdrLock);
    bool isRepeated(uint16_t id, uint16_t next);

    SdrReader reader_;
    Trail trail_;
    uint32_t count_ = 0;
};

bool Walk::run(IpmiNode& node, uint32_t claimed)
{
    uint32_t remaining = claimed;
    uint16_t id = firstRecord;
    trail_.enter(id);
    for (;;) {
        if (!readHeader(node, id) || !store(node, id))
            return false;
        const uint16_t next = reader_.answer().u16(1);
        // The first record is asked for as 0 and has an id of its own.
        if (id == firstRecord)
            trail_.enter(reader_.answer().u16(3));
        if (next == lastRecord || remaining-- == 0 || isRepeated(id, next))
            return true;
        id = next;
    }
}

bool Walk::isRepeated(uint16_t id, uint16_t next)
{
    if (trail_.enter(next))
        return false;
    syslog(LOG_WARNING,
           "IpmiIfcSdrGetHeaders: record 0x%04x names 0x%04x as its next, "
           "which was met before; the walk ends there",
           id, next);
    return true;
}

bool Walk::readHeader(IpmiNode& node, uint16_t id)
{
    reader_.setPart(id, 0, sdrHeaderSize);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const int code = reader_.exchange();
        if (code == 0)
            return true;
        if (code == reservationCanceled)
            renewReservation(node);
    }
    return false;
}

// Reserving takes the lock itself.
void Walk::renewReservation(IpmiNode& node)
{
    sleepOutOfStep();
    {
        VEK::WriteUnlock unlocked{node.sdrLock};
        IpmiIfcSdrReserve(numberOf(node));
    }
    reader_.setReservation(reservationOf(node));
}

// Under the id that was asked for: the first record stays 0, which fetches it
// again. False when the table is gone: the lock was released for a
// reservation.
bool Walk::store(IpmiNode& node, uint16_t id)
{
    if (!node.sdrHeaders || count_ >= node.sdrHeaderRoom)
        return false;
    const RecordView answer = reader_.answer();
    IpmiSdrHeader header = decodeHeader(answer.part(3, sdrHeaderSize));
    header.recordId = id;
    node.sdrHeaders[count_] = header;
    ++count_;
    node.sdrWalked = count_;
    return true;
}

} // namespace

int IpmiIfcSdrGetHeaders(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::WriteLock lock{node.sdrLock};
    const uint32_t claimed =
        node.sdrInfo.recordCount[0] | node.sdrInfo.recordCount[1] << 8;
    if (!makeRoom(node, claimed))
        return -1;
    Walk walk{node};
    const bool complete = walk.run(node, claimed);
    node.sdrHeaderCount = walk.count();
    if (!complete) {
        syslog(LOG_DEBUG, "IpmiIfcSdrGetHeaders: retry expired.");
        return -1;
    }
    node.sdrHeadersComplete = 1;
    return 0;
}

void freeHeaders(IpmiNode& node)
{
    delete[] node.sdrHeaders;
    node.sdrHeaders = nullptr;
    node.sdrHeaderRoom = 0;
}

void IpmiIfcSdrCleanUpHeaders(int number)
{
    IpmiNode* const node = nodeRecord(number);
    if (!node)
        return;
    VEK::WriteLock lock{node->sdrLock};
    freeHeaders(*node);
}

} // namespace Ipmi
