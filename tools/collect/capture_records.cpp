// The steps of a capture that read a repository and what it tells of.
#include <algorithm>
#include <ctime>
#include <set>

#include "tools/collect/capture_query.h"
#include "tools/collect/record.h"
#include "tools/collect/sensor.h"
#include "tools/print/completion_codes.h"

namespace Tool
{

namespace
{

// Records are read alike from the sensor data repository and from the event
// log: by id, in pieces, under a reservation (IPMI v2.0, 31.4, 31.5, 33.11 and
// 33.12).
struct Store
{
    const char* name;
    Command reserve, get;
};

constexpr Store repositoryStore = {
    "sensor data record", commands::reserveSdrRepository, commands::getSdr};
constexpr Store logStore = {"event log record", commands::reserveSel,
                            commands::getSelEntry};

/// Codes that another size of a piece may avoid.
bool isAboutSize(uint8_t code)
{
    constexpr uint8_t codes[] = {0xC6, 0xC7, 0xC8, 0xCA, 0xFF};
    return std::find(std::begin(codes), std::end(codes), code) !=
           std::end(codes);
}

class Reader
{
public:
    Reader(CaptureQuery& query, const Store& store)
        : query_{query}, store_{store}
    {}

    /// Reads on up to a size.
    bool read(uint16_t id, Bytes& record, size_t size)
    {
        while (record.size() < size) {
            const size_t wanted = std::min(piece_, size - record.size());
            const Answer answer =
                ask(id, uint8_t(record.size()), uint8_t(wanted));
            completion_ = answer.completion;
            if (!completion_.ok() && isAboutSize(completion_.code) &&
                wanted > 1)
                piece_ = wanted / 2;
            else if (!completion_.ok() || answer.data.size() != 2 + wanted)
                return false;
            else
                take(answer.data, record);
        }
        return true;
    }

    uint16_t next() const { return next_; }
    const Completion& completion() const { return completion_; }

private:
    // Somebody else's reservation cancels ours.
    Answer ask(uint16_t id, uint8_t offset, uint8_t count)
    {
        constexpr uint8_t cancelled = 0xC5;
        constexpr int attempts = 4;
        Answer answer;
        for (int i = 0; i < attempts; ++i) {
            answer = query_.ask(store_.get,
                                {reservation_[0], reservation_[1], uint8_t(id),
                                 uint8_t(id >> 8), offset, count});
            if (!answer.completion.answered ||
                answer.completion.code != cancelled)
                break;
            const Answer reserved = query_.ask(store_.reserve, {});
            if (reserved.data.size() >= 2)
                std::copy_n(reserved.data.begin(), 2, reservation_);
        }
        return answer;
    }

    void take(const Bytes& data, Bytes& record)
    {
        if (record.empty())
            next_ = uint16_t(data[0] | data[1] << 8);
        record.insert(record.end(), data.begin() + 2, data.end());
    }

    CaptureQuery& query_;
    const Store& store_;
    uint8_t reservation_[2] = {0, 0};
    size_t piece_ = 16;
    uint16_t next_ = 0;
    Completion completion_;
};

constexpr uint16_t first = 0x0000, none = 0xFFFF;

std::string nameOf(const Store& store, uint16_t id)
{
    return store.name + std::string{" "} + hexNumber(id, 4);
}

/// Reads record after record.
template <class ReadOne>
void walk(CaptureQuery& query, const Store& store,
          std::vector<CapturedRecord>& records, const ReadOne& readOne)
{
    Reader reader{query, store};
    std::set<uint16_t> seen;
    for (uint16_t id = first; id != none;) {
        CapturedRecord record;
        const bool whole = readOne(reader, id, record.bytes);
        if (record.bytes.size() < 2)
            return query.miss(nameOf(store, id) + " and what follows it: " +
                              inWords(store.get, reader.completion()));
        if (!whole)
            query.miss("the end of " + nameOf(store, id) + ": " +
                       inWords(store.get, reader.completion()));
        const uint16_t own = uint16_t(record.bytes[0] | record.bytes[1] << 8);
        record.id = id == first ? own : id;
        if (!seen.insert(record.id).second)
            return query.miss(nameOf(store, record.id) +
                              " follows itself; the rest is not reached");
        records.push_back(std::move(record));
        query.progress().step();
        id = reader.next();
    }
}

bool readSensorRecord(Reader& reader, uint16_t id, Bytes& bytes)
{
    constexpr size_t headerSize = 5, lengthAt = 4;
    return reader.read(id, bytes, headerSize) &&
           reader.read(id, bytes, headerSize + bytes[lengthAt]);
}

bool readEvent(Reader& reader, uint16_t id, Bytes& bytes)
{
    constexpr size_t recordSize = 16;
    return reader.read(id, bytes, recordSize);
}

/// Nothing when the controller does not tell; then its answer is kept.
std::optional<CapturedRecords> readInfo(CaptureQuery& query, Command command,
                                        const char* what)
{
    constexpr size_t countAt = 1;
    CapturedAnswer kept = query.keep(command, {});
    if (!kept.ok() || kept.answer.size() < countAt + 3) {
        query.capture().controller.answers.push_back(std::move(kept));
        return std::nullopt;
    }
    CapturedRecords records;
    records.info.assign(kept.answer.begin() + 1, kept.answer.end());
    query.progress().enter(what, records.info[countAt] |
                                     records.info[countAt + 1] * 0x100u);
    return records;
}

unsigned countOf(const CapturedRecords& records)
{
    return records.info[1] | records.info[2] * 0x100u;
}

constexpr Command sensorQuestions[] = {
    commands::getSensorReading,
    commands::getSensorThresholds,
    commands::getSensorEventEnable,
    {0x04, 0x2B}, // Get Sensor Event Status
};

unsigned sensorsOf(const Bytes& record)
{
    constexpr size_t shareAt = 23; // IPMI v2.0, 43.2
    const uint8_t type = typeOf(record);
    if (type == record_types::full)
        return 1;
    if (type != record_types::compact)
        return 0;
    return record.size() > shareAt ? std::max(record[shareAt] & 0x0F, 1) : 1;
}

// A sensor with factors of its own for each reading (IPMI v2.0, 35.5).
bool isNonLinear(const Bytes& record)
{
    constexpr size_t linearizationAt = 23;
    constexpr uint8_t firstNonLinear = 0x70;
    return typeOf(record) == record_types::full &&
           record.size() > linearizationAt &&
           (record[linearizationAt] & 0x7F) >= firstNonLinear;
}

CapturedAnswers answersOf(CaptureQuery& query, const Bytes& record,
                          uint8_t number, const Ipmi::IpmiTarget& owner)
{
    constexpr Command getFactors = {0x04, 0x23};
    CapturedAnswers answers;
    for (const Command& question : sensorQuestions)
        answers.push_back(query.keep(question, {number}, owner));
    // The byte behind the number is reserved (IPMI v2.0, 35.7).
    answers.push_back(
        query.keep(commands::getSensorHysteresis, {number, 0xFF}, owner));
    const Bytes reading = answers.front().answer;
    if (isNonLinear(record) && reading.size() > 1)
        answers.push_back(query.keep(getFactors, {number, reading[1]}, owner));
    return answers;
}

void captureSensorsOf(CaptureQuery& query, CapturedRecord& record)
{
    constexpr size_t numberAt = 7;
    constexpr uint8_t software = 0x01;
    const Ipmi::IpmiTarget owner = ownerOf(record.bytes);
    const bool isAsked = !(owner.address & software) &&
                         !(isLocal(owner) && owner.lun != 0) &&
                         record.bytes.size() > numberAt;
    const unsigned count = isAsked ? sensorsOf(record.bytes) : 0;
    if (count == 0 || !controllerAt(query, owner))
        return;
    for (unsigned i = 0; i < count; ++i)
        record.sensors.push_back(answersOf(
            query, record.bytes, uint8_t(record.bytes[numberAt] + i), owner));
}

} // namespace

void captureRepository(CaptureQuery& query)
{
    constexpr Command getAllocation = {0x0A, 0x21};
    auto records =
        readInfo(query, commands::getSdrRepositoryInfo, "sensor data records");
    if (!records)
        return;
    query.capture().controller.answers.push_back(query.keep(getAllocation, {}));
    if (countOf(*records) != 0)
        walk(query, repositoryStore, records->records, readSensorRecord);
    query.capture().repository = std::move(records);
}

void captureLog(CaptureQuery& query)
{
    auto records = readInfo(query, commands::getSelInfo, "the event log");
    if (!records)
        return;
    query.capture().controller.answers.push_back(
        query.keep(commands::getSelAllocation, {}));
    const Bytes clock = query.ask(commands::getSelTime, {}).data;
    if (clock.size() >= 4)
        query.capture().logAhead =
            int64_t(clock[0] | clock[1] << 8 | clock[2] << 16 |
                    uint32_t(clock[3]) << 24) -
            time(nullptr);
    if (countOf(*records) != 0)
        walk(query, logStore, records->records, readEvent);
    query.capture().log = std::move(records);
}

void captureSensors(CaptureQuery& query)
{
    std::optional<CapturedRecords>& repository = query.capture().repository;
    if (!repository)
        return;
    query.progress().enter("sensors", unsigned(repository->records.size()));
    for (CapturedRecord& record : repository->records) {
        captureSensorsOf(query, record);
        query.progress().step();
    }
}

} // namespace Tool
