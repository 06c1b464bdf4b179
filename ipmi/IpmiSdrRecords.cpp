// Records of a repository: reading them and filing them.
#include <algorithm>
#include <new>
#include <syslog.h>

#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSensor.h"

namespace Ipmi
{

namespace
{

constexpr int mostAttempts = 4;

enum : uint8_t
{
    reservationCanceled = 0xc5,
    dataLengthInvalid = 0xc7,
    cannotReturnBytes = 0xca,
    notPresent = 0xcb
};

// One record, read from its end: a record that grows or shrinks meanwhile is
// noticed with the first chunk.
class RecordReader
{
public:
    RecordReader(int node, uint16_t recordId, uint8_t* buffer)
        : node_{node},
          recordId_{recordId},
          buffer_{buffer},
          reader_{node, reservation()}
    {}

    int read(unsigned size);

private:
    enum class Attempt
    {
        done,
        again,
        hopeless
    };

    uint16_t reservation() const
    {
        VEK::WriteLock lock{g_IpmiNode[node_].sdrLock};
        return reservationOf(g_IpmiNode[node_]);
    }
    Attempt readChunk(unsigned at, unsigned size);
    Attempt tryOnce(unsigned at, unsigned size);
    Attempt failed(int code);
    bool lowerMaximum();
    void renewReservation();

    int node_;
    uint16_t recordId_;
    uint8_t* buffer_;
    SdrReader reader_;
    unsigned maximum_ = 16;
};

int RecordReader::read(unsigned size)
{
    for (unsigned remaining = size; remaining > 0;) {
        const unsigned chunk = std::min(remaining, maximum_);
        switch (readChunk(remaining - chunk, chunk)) {
        case Attempt::done:
            break;
        case Attempt::again:
            syslog(LOG_ERR, "IpmiIfcSdrReadRecordId: retry expired.");
            return -1;
        case Attempt::hopeless:
            return -1;
        }
        remaining -= chunk;
    }
    return 0;
}

// The same bytes in every attempt: a lowered maximum counts from the next
// chunk on.
RecordReader::Attempt RecordReader::readChunk(unsigned at, unsigned size)
{
    reader_.setPart(recordId_, uint8_t(at), uint8_t(size));
    Attempt attempt = Attempt::again;
    for (int i = 0; i < mostAttempts && attempt == Attempt::again; ++i)
        attempt = tryOnce(at, size);
    return attempt;
}

RecordReader::Attempt RecordReader::tryOnce(unsigned at, unsigned size)
{
    constexpr unsigned ahead = 3; // completion code and next record's id
    const int code = reader_.exchange();
    if (code != 0)
        return failed(code);
    const int length = reader_.answerLength();
    if (length != int(size + ahead)) {
        syslog(LOG_ERR,
               "IpmiIfcSdrReadRecordId: data length mismatch req=%d,resp=%d",
               int(size + ahead), length);
        sleepOutOfStep();
        return Attempt::again;
    }
    reader_.answer().copyTo(buffer_ + at, ahead, size);
    return Attempt::done;
}

RecordReader::Attempt RecordReader::failed(int code)
{
    constexpr int noResponse = -1;
    switch (code) {
    case noResponse:
        return Attempt::again;
    case reservationCanceled:
        renewReservation();
        return Attempt::again;
    case notPresent:
        syslog(LOG_ERR,
               "IpmiIfcSdrReadRecordId: sensor not found, record id: %X",
               recordId_);
        return Attempt::hopeless;
    case cannotReturnBytes:
    case dataLengthInvalid:
        if (lowerMaximum())
            return Attempt::again;
        break;
    default:
        break;
    }
    syslog(LOG_ERR,
           "IpmiIfcSdrReadRecordId:record id: %X, error %d. Try again...",
           recordId_, code);
    return Attempt::again;
}

// False when the maximum has become so small that the log should say so.
bool RecordReader::lowerMaximum()
{
    constexpr unsigned quietAbove = 8;
    maximum_ = std::max(maximum_ - 1, 1u);
    return maximum_ > quietAbove;
}

void RecordReader::renewReservation()
{
    sleepOutOfStep();
    IpmiIfcSdrReserve(node_);
    reader_.setReservation(reservation());
}

using Bytes = std::unique_ptr<uint8_t[]>;
using Entry = std::unique_ptr<ipmiifc_sdr_list>;

Bytes newBytes(size_t size)
{
    return Bytes{new (std::nothrow) uint8_t[size]()};
}

int logNoMemory()
{
    syslog(LOG_ERR, "%s: failed memory alloc.", "IpmiIfcSdrReadAll");
    return -1;
}

struct ClassOfType
{
    uint8_t recordType;
    IpmiSdrClass list;
};

// IPMI v2.0, table 43-1 and on.
constexpr ClassOfType classesOfTypes[] = {
    {0x01, SDR_FULL},        {0x02, SDR_COMPACT},
    {0x03, SDR_EVENT_ONLY},  {0x08, SDR_ASSOCIATION},
    {0x09, SDR_ASSOCIATION}, {0x10, SDR_GENERIC_LOCATOR},
    {0x11, SDR_FRU_LOCATOR}, {0x12, SDR_CONTROLLER_LOCATOR},
    {0xc0, SDR_OEM},
};

IpmiSdrClass classOf(uint8_t recordType)
{
    for (const ClassOfType& row : classesOfTypes)
        if (row.recordType == recordType)
            return row.list;
    return SDR_OTHER;
}

// Raises the bits of a mask by one, within the mask.
void increment(uint8_t& byte, uint8_t mask)
{
    byte = uint8_t((byte & ~mask) | ((byte + 1) & mask));
}

constexpr unsigned numberAt = 7;
constexpr unsigned instanceAt = 9;

// Where a record says how many sensors share it; the byte behind it says how
// their names and entities count (IPMI v2.0, 43.2 and 43.3). 0 for records
// that cannot be shared.
unsigned sharingAt(const ipmiifc_sdr_list& entry)
{
    switch (entry.recordType) {
    case 0x02:
        return 23;
    case 0x03:
        return 12;
    default:
        return 0;
    }
}

// The record of the next sensor that shares the entry; null without memory.
Entry nextShared(const ipmiifc_sdr_list& entry, unsigned sharing)
{
    const size_t size = entry.totalLength;
    Entry copy{new (std::nothrow) ipmiifc_sdr_list{
        nullptr, nullptr, entry.recordId, entry.recordType, entry.totalLength,
        newBytes(size)}};
    if (!copy || !copy->bytes)
        return nullptr;
    uint8_t* const bytes = copy->bytes.get();
    viewOf(entry).copyTo(bytes, 0, size);
    bytes[sharing] =
        uint8_t((bytes[sharing] & 0xf0) | ((bytes[sharing] & 0x0f) - 1));
    bytes[numberAt] += 1;
    const bool countsInstances = viewOf(entry).u8(sharing + 1) & 0x80;
    if (viewOf(entry).has(sharing + 1))
        increment(bytes[sharing + 1], 0x7f);
    if (countsInstances)
        increment(bytes[instanceAt], 0x7f);
    return copy;
}

// Pushed on its list, and behind it the copies of a shared record.
int fileEntry(IpmiNode& node, ipmiifc_sdr_list* entry)
    VEK_REQUIRES(node.sdrLock)
{
    ipmiifc_sdr_list*& head = node.sdrLists[classOf(entry->recordType)];
    entry->next = head;
    head = entry;
    const unsigned sharing = sharingAt(*entry);
    if (sharing == 0 || (viewOf(*entry).u8(sharing) & 0x0f) < 2)
        return 0;
    Entry copy = nextShared(*entry, sharing);
    if (!copy) {
        syslog(LOG_ERR, "IpmiIfcSdrListAdd: failed memory alloc.");
        return -1;
    }
    return fileEntry(node, copy.release());
}

bool isWanted(const IpmiNode& node, uint8_t recordType)
    VEK_REQUIRES_SHARED(node.sdrLock)
{
    const std::vector<uint8_t>& wanted = node.sdrWanted;
    return wanted.empty() ||
           std::find(wanted.begin(), wanted.end(), recordType) != wanted.end();
}

// Called and left with the lock held, released while the record is read.
// 0; 1 for a record that cannot be read; -1 without memory.
int readAndFile(IpmiNode& node, IpmiSdrHeader header) VEK_REQUIRES(node.sdrLock)
{
    const unsigned size = header.recordLength + sdrHeaderSize;
    Bytes bytes = newBytes(size);
    if (!bytes)
        return logNoMemory();
    // The size in one byte, as everywhere: what is above 255 wraps.
    const auto total = static_cast<uint8_t>(size);
    {
        VEK::WriteUnlock unlocked{node.sdrLock};
        if (IpmiIfcSdrReadRecordId(numberOf(node), header.recordId, bytes.get(),
                                   total))
            return 1;
    }
    Entry entry{new (std::nothrow) ipmiifc_sdr_list{
        nullptr, nullptr, header.recordId, header.recordType, total,
        std::move(bytes)}};
    if (!entry)
        return logNoMemory();
    fileEntry(node, entry.release());
    return 0;
}

void freeList(ipmiifc_sdr_list*& head)
{
    while (head) {
        const Entry entry{head};
        head = entry->next;
        if (entry->reading)
            entry->reading->sdr = nullptr;
    }
}

void freeLists(IpmiNode& node) VEK_REQUIRES(node.sdrLock)
{
    for (ipmiifc_sdr_list*& head : node.sdrLists)
        freeList(head);
}

} // namespace

void freeRecords(IpmiNode& node)
{
    freeHeaders(node);
    freeLists(node);
}

int IpmiIfcSdrReadRecordId(int node, unsigned short recordId,
                           unsigned char* buffer, unsigned char size)
{
    if (!nodeRecord(node))
        return -1;
    if (size == 0) {
        syslog(LOG_ERR, "IpmiIfcSdrReadRecordId: retry expired.");
        return -1;
    }
    return RecordReader{node, recordId, buffer}.read(size);
}

int IpmiIfcSdrReadAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::WriteLock lock{node.sdrLock};
    if (node.sdrHeaderCount == 0 || !node.sdrHeaders) {
        syslog(LOG_ERR, "%s: header_cnt == 0 or no header data",
               "IpmiIfcSdrReadAll");
        return -1;
    }
    // The table may be freed while the lock is released.
    for (uint32_t i = 0; i < node.sdrHeaderCount && i < node.sdrHeaderRoom; ++i)
    {
        const IpmiSdrHeader header = node.sdrHeaders[i];
        const int result =
            isWanted(node, header.recordType) ? readAndFile(node, header) : 0;
        if (result < 0)
            return -1;
        node.sdrRead = i + 1;
        if (result > 0)
            node.sdrFailed++;
    }
    return 0;
}

// The lock is the caller's: the analysis cannot know it by a number.
int IpmiIfcSdrListAdd(int node,
                      ipmiifc_sdr_list* entry) VEK_NO_THREAD_SAFETY_ANALYSIS
{
    IpmiNode* const record = nodeRecord(node);
    return record ? fileEntry(*record, entry) : -1;
}

int IpmiIfcSdrCleanUpAll(int number)
{
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return -1;
    IpmiNode& node = *record;
    VEK::WriteLock lock{node.sdrLock};
    freeLists(node);
    return 0;
}

std::vector<IpmiSdrEntry> IpmiIfc::getSdrRecords(int number)
{
    std::vector<IpmiSdrEntry> records;
    IpmiNode* const record = nodeRecord(number);
    if (!record)
        return records;
    IpmiNode& node = *record;
    VEK::ReadLock lock{node.sdrLock};
    for (const ipmiifc_sdr_list* entry : node.sdrLists)
        for (; entry; entry = entry->next)
            records.push_back({entry->recordId,
                               entry->recordType,
                               {entry->bytes.get(),
                                entry->bytes.get() + entry->totalLength}});
    return records;
}

std::vector<IpmiSdrEntry> IpmiIfc::getSdrRecords()
{
    return getSdrRecords(0);
}

} // namespace Ipmi
