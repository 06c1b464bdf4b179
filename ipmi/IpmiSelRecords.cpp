// Reading the log's records into the cache.
#include <algorithm>
#include <cstring>
#include <syslog.h>
#include <unistd.h>

#include "ipmi/IpmiIfcSel.h"
#include "ipmi/IpmiSelRecord.h"

namespace Ipmi
{

namespace
{

constexpr uint8_t storage = 0x0a;
constexpr uint8_t getSelEntry = 0x43;

enum Code : uint8_t
{
    nodeBusy = 0xc0,
    reservationCanceled = 0xc5,
    dataLengthInvalid = 0xc7,
    cannotReturnBytes = 0xca
};

uint16_t reservationOf(IpmiNode& node)
{
    VEK::MutexLock lock{node.selMutex};
    return node.selReservationId;
}

/// Reads one record, its end first: the bytes that tell whose it is come with
/// the last chunk, so that a record that changes in between is noticed.
class EntryReader
{
public:
    explicit EntryReader(uint16_t recordId)
        : recordId_{recordId}, reservation_{reservationOf(g_IpmiNode[0])}
    {}

    int read(ipmiifc_sel_entry& entry);

private:
    bool readChunk();
    bool tryOnce();
    void failed(uint8_t code);
    bool isThisRecord(unsigned size) const;
    /// Completion code; below 0 without a response.
    int exchange(unsigned at, unsigned size);
    void renewReservation();

    uint16_t recordId_;
    uint16_t reservation_;
    uint8_t bytes_[sizeof(sel_event_record)] = {};
    unsigned remaining_ = sizeof bytes_;
    unsigned maximum_ = sizeof bytes_;
    Response answer_;
};

int EntryReader::read(ipmiifc_sel_entry& entry)
{
    while (remaining_ > 0)
        if (!readChunk())
            return -1;
    entry.completionCode = answer_->data[0];
    entry.nextRecordId = viewOf(*answer_).u16(1);
    memcpy(&entry.record, bytes_, sizeof bytes_);
    return 0;
}

bool EntryReader::readChunk()
{
    constexpr int mostAttempts = 4;
    for (int attempt = 0; attempt < mostAttempts; ++attempt)
        if (tryOnce())
            return true;
    return false;
}

bool EntryReader::tryOnce()
{
    constexpr unsigned ahead = 3; // completion code and next record's id
    const unsigned size = std::min(maximum_, remaining_);
    const int code = exchange(remaining_ - size, size);
    if (code != 0) {
        if (code > 0)
            failed(uint8_t(code));
        return false;
    }
    if (answer_->data_len != int(size + ahead) || !isThisRecord(size)) {
        sleepOutOfStep();
        return false;
    }
    remaining_ -= size;
    viewOf(*answer_).copyTo(bytes_ + remaining_, ahead, size);
    return true;
}

// The first chunk of a record holds its id, a chunk of one byte half of it.
// Who asks for the first record cannot know its id.
bool EntryReader::isThisRecord(unsigned size) const
{
    constexpr unsigned idAt = 3;
    if (recordId_ == firstRecord || size != remaining_)
        return true;
    const RecordView answer = viewOf(*answer_);
    return size == 1 ? answer.u8(idAt) == (recordId_ & 0xff)
                     : answer.u16(idAt) == recordId_;
}

void EntryReader::failed(uint8_t code)
{
    switch (code) {
    case reservationCanceled:
        renewReservation();
        break;
    case cannotReturnBytes:
    case dataLengthInvalid:
        maximum_ = std::max(maximum_ - 1, 1u);
        break;
    case nodeBusy:
        sleep(1);
        break;
    default:
        break;
    }
}

void EntryReader::renewReservation()
{
    constexpr uint16_t none = 0;
    answer_.reset();
    sleepOutOfStep();
    reservation_ =
        IpmiIfcSelReserve(0) == 0 ? reservationOf(g_IpmiNode[0]) : none;
    sleepOutOfStep();
}

int EntryReader::exchange(unsigned at, unsigned size)
{
    uint8_t data[6] = {uint8_t(reservation_ & 0xff),
                       uint8_t(reservation_ >> 8),
                       uint8_t(recordId_ & 0xff),
                       uint8_t(recordId_ >> 8),
                       uint8_t(at),
                       uint8_t(size)};
    ipmiifc_req request{};
    request.msgid = g_IpmiNode[0].msgSeq++;
    request.netfn = storage;
    request.cmd = getSelEntry;
    request.data_len = sizeof data;
    request.data = data;
    return exchangeAgain(request, answer_);
}

/// What one walk over the log has met. Ids are 16 bits wide: no walk is longer.
class Walk
{
public:
    explicit Walk(IpmiNode& node) : node_{node}
    {
        VEK::MutexLock lock{node.selMutex};
        for (const auto& record : *node.selRecords)
            held_[record->recordId()] = true;
    }

    void meet(uint16_t id) { met_[id] = true; }
    /// Warns, once a walk, since it ends then.
    bool isMet(uint16_t id) const
    {
        if (met_[id])
            syslog(LOG_WARNING,
                   "Node %d: the SEL repeats itself from record 0x%x on", 0,
                   id);
        return met_[id];
    }
    /// Whether the cache has this very record.
    bool holds(const sel_event_record& record) const;
    void append(const sel_event_record& record);

private:
    IpmiNode& node_;
    std::vector<bool> met_ = std::vector<bool>(0x10000);
    std::vector<bool> held_ = std::vector<bool>(0x10000);
};

// The log of a ring may use an id again.
bool Walk::holds(const sel_event_record& record) const
{
    if (!held_[word(record.recordId)])
        return false;
    VEK::MutexLock lock{node_.selMutex};
    return std::any_of(node_.selRecords->begin(), node_.selRecords->end(),
                       [&](const auto& held) {
                           return memcmp(&held->record(), &record,
                                         sizeof record) == 0;
                       });
}

void Walk::append(const sel_event_record& record)
{
    auto data = std::make_shared<IpmiSelData>(&record, 0);
    VEK::MutexLock lock{node_.selMutex};
    node_.selRecords->push_back(std::move(data));
    node_.lastSelRecordId = word(record.recordId);
}

// The last record held, by its id; but not by its bytes.
bool isReplaced(IpmiNode& node, const sel_event_record& record)
{
    VEK::MutexLock lock{node.selMutex};
    if (node.selRecords->empty())
        return false;
    const sel_event_record& held = node.selRecords->back()->record();
    return word(held.recordId) == word(record.recordId) &&
           memcmp(&held, &record, sizeof record) != 0;
}

// A controller that jumps back to a record that the cache has would make the
// walk go over the whole log once more.
bool meetsHeldRecord(const Walk& walk, const sel_event_record& record)
{
    if (!walk.holds(record))
        return false;
    syslog(LOG_WARNING, "Node %d: the SEL leads back to record 0x%x", 0,
           word(record.recordId));
    return true;
}

unsigned entryCount(IpmiNode& node)
{
    VEK::MutexLock lock{node.selMutex};
    return word(node.selInfo.entryCount);
}

} // namespace

SelWalkEnd readWholeLog(IpmiNode& node)
{
    const unsigned count = entryCount(node);
    startSelProgress(node, count);
    if (count == 0)
        return SelWalkEnd::unread;
    Walk walk{node};
    ipmiifc_sel_entry entry{};
    entry.nextRecordId = firstRecord;
    walk.meet(firstRecord);
    for (unsigned i = 0; i < count; ++i) {
        if (IpmiIfcSelReadEntry(0, &entry) != 0) {
            node.selFailed++;
            continue;
        }
        if (!walk.holds(entry.record))
            walk.append(entry.record);
        node.selRead++;
        walk.meet(word(entry.record.recordId));
        if (entry.nextRecordId == lastRecord || walk.isMet(entry.nextRecordId))
        {
            node.selComplete = true;
            return SelWalkEnd::complete;
        }
    }
    return node.selFailed ? SelWalkEnd::failed : SelWalkEnd::counted;
}

SelWalkEnd readNewRecords(IpmiNode& node, uint16_t lastId)
{
    ipmiifc_sel_entry entry{};
    entry.nextRecordId = lastId;
    if (IpmiIfcSelReadEntry(0, &entry) != 0)
        return SelWalkEnd::firstFailed;
    // The log was cleared, and has grown past it again: some controllers do
    // not stamp a clear, and all count from 1 then.
    if (isReplaced(node, entry.record))
        return SelWalkEnd::replaced;
    Walk walk{node};
    walk.meet(lastId);
    walk.meet(word(entry.record.recordId));
    // Any other id is that of a record that is held.
    if (lastId == firstRecord && !walk.holds(entry.record))
        walk.append(entry.record);
    while (entry.nextRecordId != lastRecord && !walk.isMet(entry.nextRecordId))
    {
        walk.meet(entry.nextRecordId);
        if (const int result = IpmiIfcSelReadEntry(0, &entry)) {
            syslog(LOG_ERR, "%s: failed call to IpmiIfcSelReadEntry cc = 0x%x",
                   "IpmiIfcSelReadNew", result & 0xff);
            return SelWalkEnd::failed;
        }
        if (meetsHeldRecord(walk, entry.record))
            break;
        walk.append(entry.record);
    }
    return SelWalkEnd::complete;
}

int IpmiIfcSelReadEntry(int, ipmiifc_sel_entry* entry)
{
    return EntryReader{entry->nextRecordId}.read(*entry);
}

int IpmiIfcSelReadAll(int)
{
    VEK::MutexLock refreshing{g_IpmiNode[0].selRefreshMutex};
    return readWholeLog(g_IpmiNode[0]) == SelWalkEnd::unread ? -1 : 0;
}

int IpmiIfcSelReadNew(int, unsigned short lastId)
{
    VEK::MutexLock refreshing{g_IpmiNode[0].selRefreshMutex};
    const SelWalkEnd end = readNewRecords(g_IpmiNode[0], lastId);
    return end == SelWalkEnd::complete ? 0 : -1;
}

} // namespace Ipmi
