#include "tools/print/profile.h"

#include <algorithm>
#include <set>

#include "tools/print/json.h"
#include "tools/print/text.h"

namespace Tool
{

namespace
{

std::string hex(const Bytes& bytes)
{
    std::string text;
    for (const uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + hexByte(byte);
    return text;
}

std::string hexWord(unsigned value, int digits)
{
    std::string text = hexNumber(value, digits);
    text.pop_back(); // its "h"
    return "0x" + text;
}

uint32_t number(const Bytes& bytes, size_t at, size_t size)
{
    uint32_t value = 0;
    for (size_t i = 0; i < size && at + i < bytes.size(); ++i)
        value |= uint32_t{bytes[at + i]} << 8 * i;
    return value;
}

// The answers say the rest, byte by byte.
Json identity(const CapturedAnswers& answers)
{
    constexpr size_t idAt = 1, manufacturerAt = 7, productAt = 10;
    const Bytes deviceId = answers.empty() ? Bytes{} : answers[0].answer;
    return {{"deviceId", number(deviceId, idAt, 1)},
            {"manufacturer", number(deviceId, manufacturerAt, 3)},
            {"product", hexWord(number(deviceId, productAt, 2), 4)}};
}

Json answerRows(const CapturedAnswers& answers)
{
    Json rows = Json::array();
    for (const CapturedAnswer& one : answers) {
        Json row = {{"netFn", hexWord(one.command.netFn, 2)},
                    {"command", hexWord(one.command.code, 2)}};
        if (!one.request.empty())
            row["data"] = hex(one.request);
        row["answer"] = hex(one.answer);
        rows.push_back(std::move(row));
    }
    return rows;
}

Json sensorOf(const CapturedAnswers& answers)
{
    if (answers.empty())
        return {{"present", false}};
    Json rows = Json::array();
    for (const CapturedAnswer& one : answers)
        rows.push_back({{"command", hexWord(one.command.code, 2)},
                        {"answer", hex(one.answer)}});
    return {{"answers", std::move(rows)}};
}

Json recordRows(const std::vector<CapturedRecord>& records)
{
    Json rows = Json::array();
    for (const CapturedRecord& one : records) {
        Json row = {{"id", hexWord(one.id, 4)}, {"record", hex(one.bytes)}};
        for (const CapturedAnswers& answers : one.sensors)
            row["sensors"].push_back(sensorOf(answers));
        rows.push_back(std::move(row));
    }
    return rows;
}

// Of Get SDR Repository Info and of Get SEL Info, behind the completion code
// (IPMI v2.0, 31.2 and 33.9).
namespace info
{
enum : size_t
{
    version = 0,
    count = 1,
    space = 3,
    added = 5,
    erased = 9,
    operations = 13,
    size = 14
};
} // namespace info

constexpr unsigned recordSize = 16;

struct Operation
{
    const char* word;
    uint8_t bit;
};

constexpr Operation operations[] = {
    {"allocation-info", 0x01}, {"reserve", 0x02},   {"partial-add", 0x04},
    {"delete", 0x08},          {"non-modal", 0x20}, {"modal", 0x40},
    {"overflow", 0x80},
};

// A log knows fewer of them.
Json operationsOf(uint8_t bits, bool isLog)
{
    constexpr uint8_t modes = 0x60;
    Json words = Json::array();
    for (const Operation& one : operations)
        if (bits & one.bit && !(isLog && one.bit & modes))
            words.push_back(one.word);
    return words;
}

Json stored(const CapturedRecords& from, bool isLog)
{
    return {
        {"version", hexWord(number(from.info, info::version, 1), 2)},
        {"added", number(from.info, info::added, 4)},
        {"erased", number(from.info, info::erased, 4)},
        {"operations",
         operationsOf(uint8_t(number(from.info, info::operations, 1)), isLog)},
        {"records", recordRows(from.records)}};
}

Json repositoryOf(const CapturedRecords& from)
{
    Json json = stored(from, false);
    json["freeSpace"] = number(from.info, info::space, 2);
    return json;
}

Json logOf(const CapturedRecords& from, int64_t ahead)
{
    Json json = stored(from, true);
    json["capacity"] = std::min<size_t>(
        0xFFFF,
        from.records.size() + number(from.info, info::space, 2) / recordSize);
    json["timeOffset"] = ahead;
    return json;
}

// Whether the simulated controller would tell the same of the records; what
// does not add up is kept as it was answered.
bool isPlausible(const CapturedRecords& from, bool isLog)
{
    constexpr unsigned unknown = 0xFFFF;
    constexpr uint8_t unheldLog = 0x70, unheld = 0x10;
    const unsigned space = number(from.info, info::space, 2);
    const bool isWhole =
        from.info.size() == info::size &&
        number(from.info, info::count, 2) == from.records.size() &&
        !(from.info[info::operations] & (isLog ? unheldLog : unheld));
    return isWhole && (!isLog || (space % recordSize == 0 && space != unknown));
}

void keepInfo(Json& answers, const std::optional<CapturedRecords>& from,
              Command command, bool isLog)
{
    if (!from || isPlausible(*from, isLog))
        return;
    Bytes answer = from->info;
    answer.insert(answer.begin(), uint8_t{0});
    answers.push_back(answerRows({{command, {}, answer}})[0]);
}

Json frusOf(const std::vector<CapturedFru>& frus)
{
    constexpr uint8_t blank = 0xFF;
    Json rows = Json::array();
    for (const CapturedFru& one : frus) {
        Bytes bytes = one.bytes;
        while (!bytes.empty() && bytes.back() == blank)
            bytes.pop_back();
        Json row = {{"device", one.device}, {"lun", one.lun}};
        if (one.byWords)
            row["access"] = "word";
        if (one.byteOffsets)
            row["byteOffsets"] = true;
        row["size"] = one.size;
        row["raw"] = hex(bytes);
        rows.push_back(std::move(row));
    }
    return rows;
}

Json lanOf(const CapturedLan& lan)
{
    Json rows = Json::array();
    for (const CapturedParameter& one : lan.parameters)
        rows.push_back({{"number", one.number},
                        {"selector", one.selector},
                        {"data", hex(one.data)}});
    return {{"channel", lan.channel}, {"parameters", std::move(rows)}};
}

// Lines grow with what is nested, not with every member.
void write(const Json& json, const std::string& indent, std::string& text)
{
    const auto isNested = [](const Json& one) {
        return one.is_structured();
    };
    if (!json.is_structured()) {
        text += json.dump();
        return;
    }
    const bool isFlat = std::none_of(json.begin(), json.end(), isNested);
    const std::string inner = isFlat ? "" : indent + ' ';
    const std::string between = isFlat ? " " : "\n" + inner;
    text += json.is_object() ? '{' : '[';
    size_t left = json.size();
    text += isFlat ? "" : between;
    for (const auto& one : json.items()) {
        if (json.is_object())
            text += Json(one.key()).dump() + ": ";
        write(one.value(), inner, text);
        text += --left == 0 ? "" : "," + between;
    }
    text += isFlat ? "" : "\n" + indent;
    text += json.is_object() ? '}' : ']';
}

Json satelliteOf(const CapturedController& satellite)
{
    return {{"channel", satellite.target.channel},
            {"address", hexWord(satellite.target.address, 2)},
            {"identity", identity(satellite.answers)},
            {"frus", frusOf(satellite.frus)},
            {"answers", answerRows(satellite.answers)}};
}

void addSatellites(Json& profile, const Capture& capture)
{
    std::set<uint8_t> channels;
    for (const CapturedController& one : capture.satellites) {
        if (!isThere(one))
            continue;
        profile["satellites"].push_back(satelliteOf(one));
        if (channels.insert(one.target.channel).second)
            profile["channels"].push_back({{"number", one.target.channel},
                                           {"medium", "ipmb"},
                                           {"protocol", "ipmb-1.0"}});
    }
}

} // namespace

std::string toProfile(const Capture& capture)
{
    const CapturedController& controller = capture.controller;
    Json profile;
    profile["description"] = "Captured by vek-ipmi " VEK_IPMI_VERSION;
    profile["identity"] = identity(controller.answers);
    if (capture.repository)
        profile["repository"] = repositoryOf(*capture.repository);
    if (capture.log)
        profile["eventLog"] = logOf(*capture.log, capture.logAhead);
    profile["frus"] = frusOf(controller.frus);
    for (const CapturedLan& lan : capture.lan)
        profile["lan"].push_back(lanOf(lan));
    addSatellites(profile, capture);
    Json answers = answerRows(controller.answers);
    keepInfo(answers, capture.repository, commands::getSdrRepositoryInfo,
             false);
    keepInfo(answers, capture.log, commands::getSelInfo, true);
    profile["answers"] = std::move(answers);
    std::string text;
    write(profile, "", text);
    return text + '\n';
}

} // namespace Tool
