// The steps of a capture that read a repository and what it tells of.
#include <algorithm>
#include <ctime>
#include <iterator>
#include <optional>
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

    /// Reads on up to a size. Short answers may be passing.
    bool read(uint16_t id, Bytes& record, size_t size)
    {
        constexpr int mostShort = 3;
        if (record.empty())
            next_.reset();
        for (int shorts = 0; record.size() < size;) {
            const size_t wanted = std::min(piece_, size - record.size());
            const Answer answer =
                ask(id, uint8_t(record.size()), uint8_t(wanted));
            completion_ = answer.completion;
            if (completion_.ok() && answer.data.size() >= 2 + wanted)
                take(answer.data, wanted, record);
            else if (completion_.ok() && ++shorts < mostShort)
                continue;
            else if (completion_.answered && isAboutSize(completion_.code) &&
                     wanted > 1)
                piece_ = wanted / 2;
            else
                return giveUp(answer, record);
        }
        return true;
    }

    /// What follows the record, if that was told.
    std::optional<uint16_t> next() const { return next_; }
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

    void take(const Bytes& data, size_t wanted, Bytes& record)
    {
        if (record.empty())
            next_ = uint16_t(data[0] | data[1] << 8);
        const auto begin = data.begin() + 2;
        record.insert(record.end(), begin, begin + std::ptrdiff_t(wanted));
    }

    bool giveUp(const Answer& answer, const Bytes& record)
    {
        completion_.isCut = completion_.ok();
        if (completion_.isCut && record.empty() && answer.data.size() >= 2)
            next_ = uint16_t(answer.data[0] | answer.data[1] << 8);
        return false;
    }

    CaptureQuery& query_;
    const Store& store_;
    uint8_t reservation_[2] = {0, 0};
    size_t piece_ = 16;
    std::optional<uint16_t> next_;
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
    for (uint16_t id = first; id != none; id = *reader.next()) {
        CapturedRecord record;
        const bool isWhole = readOne(reader, id, record.bytes);
        const std::string why = inWords(store.get, reader.completion());
        if (!reader.next())
            return query.miss(nameOf(store, id) +
                              " and what follows it: " + why);
        query.progress().step();
        if (!isWhole)
            query.miss((record.bytes.size() < 2 ? "" : "the end of ") +
                       nameOf(store, id) + ": " + why);
        record.id = id;
        if (record.bytes.size() >= 2 && id == first)
            record.id = uint16_t(record.bytes[0] | record.bytes[1] << 8);
        if (!seen.insert(record.id).second)
            return query.miss(nameOf(store, record.id) +
                              " follows itself; the rest is not reached");
        if (record.bytes.size() >= 2)
            records.push_back(std::move(record));
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
    query.progress().enter(what);
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

// The transport takes these for the controller itself; the simulated one looks
// at the channel as well. Their answers are kept with its own.
bool isLocalElsewhere(const Ipmi::IpmiTarget& owner)
{
    return isLocal(owner) && (owner.channel != 0 || owner.address == 0);
}

// A sensor of the controller's own at another LUN cannot be asked.
bool isAsked(const CapturedRecord& record, const Ipmi::IpmiTarget& owner)
{
    constexpr size_t numberAt = 7;
    return record.bytes.size() > numberAt &&
           !(isLocal(owner) && owner.lun != 0);
}

void captureSensorsOf(CaptureQuery& query, CapturedRecord& record)
{
    constexpr size_t numberAt = 7;
    constexpr uint8_t software = 0x01;
    const Ipmi::IpmiTarget owner = ownerOf(record.bytes);
    const unsigned count =
        owner.address & software ? 0 : sensorsOf(record.bytes);
    if (count == 0 || !controllerAt(query, owner))
        return;
    for (unsigned i = 0; i < count; ++i) {
        if (!isAsked(record, owner)) {
            record.sensors.emplace_back();
            continue;
        }
        CapturedAnswers answers = answersOf(
            query, record.bytes, uint8_t(record.bytes[numberAt] + i), owner);
        if (!isLocalElsewhere(owner)) {
            record.sensors.push_back(std::move(answers));
            continue;
        }
        CapturedAnswers& own = query.capture().controller.answers;
        std::move(answers.begin(), answers.end(), std::back_inserter(own));
    }
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
    CapturedAnswer time = query.keep(commands::getSelTime, {});
    const Bytes clock =
        time.ok() ? Bytes(time.answer.begin() + 1, time.answer.end()) : Bytes{};
    if (clock.size() < 4)
        query.capture().controller.answers.push_back(std::move(time));
    else
        query.capture().logAhead =
            int64_t(clock[0] | clock[1] << 8 | clock[2] << 16 |
                    uint32_t(clock[3]) << 24) -
            ::time(nullptr);
    if (countOf(*records) != 0)
        walk(query, logStore, records->records, readEvent);
    query.capture().log = std::move(records);
}

void captureSensors(CaptureQuery& query)
{
    std::optional<CapturedRecords>& repository = query.capture().repository;
    if (!repository)
        return;
    size_t unasked = 0;
    query.progress().enter("sensors", unsigned(repository->records.size()));
    for (CapturedRecord& record : repository->records) {
        captureSensorsOf(query, record);
        query.progress().step();
        for (const CapturedAnswers& answers : record.sensors)
            unasked += answers.empty() ? 1 : 0;
    }
    if (unasked != 0)
        query.capture().gaps.push_back(
            {Status::done,
             std::to_string(unasked) + (unasked == 1 ? " sensor" : " sensors") +
                 " at another LUN of the controller cannot be asked",
             ""});
}

} // namespace Tool
