#include <gtest/gtest.h>

#include "sim/profile/hex.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

constexpr int64_t start = 0x60000000;

/// A controller whose clock is set by hand.
struct Server
{
    explicit Server(EventLog log, std::optional<Repository> sensors = {})
        : bmc{stateOf(std::move(log), std::move(sensors))}
    {
        bmc.setClock([this] { return now; });
    }
    Server(const Server&) = delete;

    static BmcState stateOf(EventLog log, std::optional<Repository> sensors)
    {
        BmcState state;
        state.eventLog = std::move(log);
        state.repository = std::move(sensors);
        state.messaging.emplace();
        state.satellites.resize(1);
        state.satellites[0].busChannel = 6;
        state.satellites[0].address = 0x72;
        return state;
    }

    /// Network function, command and data.
    std::string ask(const std::string& request)
    {
        const Bytes bytes = parseBytes(request).value();
        const Bytes data{bytes.begin() + 2, bytes.end()};
        return formatBytes(*bmc.answer({bytes[0], bytes[1], data}));
    }
    /// The log's records: seconds since the start, and what follows the time.
    std::string events()
    {
        ask("0a 40");
        std::string list;
        for (const SelRecord& record : bmc.state().eventLog->records) {
            const Bytes& b = record.bytes;
            list += (list.empty() ? "" : "|") + std::to_string(b[3]) + ": " +
                    formatBytes({b.begin() + 7, b.end()});
        }
        return list;
    }

    int64_t now = start;
    Bmc bmc;
};

/// Rows are asked one after the other.
struct Step
{
    const char *what, *request, *answer;
};

void play(Server& server, const std::vector<Step>& steps)
{
    for (const Step& step : steps)
        EXPECT_EQ(server.ask(step.request), step.answer) << step.what;
}

EventLog threeRecords()
{
    EventLog log = makeEventLog({
        R"({"time": 258, "generator": "0x6072", "sensorType": "fan",
            "sensor": 7, "eventType": "threshold", "deassertion": true,
            "data": "52 01"})",
        R"({"oem": "0xc1", "time": 3, "manufacturer": 772, "data": "aa"})",
        "09 00 e0 01 02",
    });
    log.capacity = 4;
    log.readLimit = 14;
    return log;
}

TEST(SimSel, aConversationWithTheLog)
{
    Server server{threeRecords()};
    play(server,
         {
             {"info", "0a40", "00 51 03 00 10 00 03 00 00 00 ff ff ff ff 0b"},
             {"allocation", "0a41", "00 04 00 10 00 01 00 01 00 01"},
             {"first", "0a43 0000 0000 00 0e",
              "00 02 00 01 00 02 02 01 00 00 72 60 04 04 07 81 52"},
             {"whole, above the limit", "0a43 0000 0000 00 ff", "ca"},
             {"piece, no reservation", "0a43 0000 0200 01 02", "c5"},
             {"reserve", "0a42", "00 01 00"},
             {"piece", "0a43 0100 0200 02 09",
              "00 09 00 c1 03 00 00 00 04 03 00 aa"},
             {"last, shorter", "0a43 0100 ffff 04 02", "00 ff ff 02"},
             {"past its end", "0a43 0100 0900 06 01", "c9"},
             {"not there", "0a43 0100 0300 00 01", "cb"},
             {"add", "0a44 0505 02 00000000 4100 04 010203040506", "00 0a 00"},
             {"stamped", "0a43 0000 0a00 00 0e",
              "00 ff ff 0a 00 02 00 00 00 60 41 00 04 01 02 03 04"},
             {"which cancelled", "0a43 0100 0a00 00 01", "c5"},
             {"full", "0a44 0505 02 00000000 4100 04 010203040506", "c4"},
             {"overflow", "0a40",
              "00 51 04 00 00 00 00 00 00 60 ff ff ff ff 8b"},
             {"delete, no reservation", "0a46 0000 0200", "c5"},
             {"reserve again", "0a42", "00 02 00"},
             {"delete", "0a46 0200 0200", "00 02 00"},
             {"clear, cancelled", "0a47 0200 434c52 aa", "c5"},
             {"reserve once more", "0a42", "00 03 00"},
             {"clear, wrong letters", "0a47 0300 434c53 aa", "cc"},
             {"processed", "0414 00 0a00", "00"},
             {"clear", "0a47 0300 434c52 aa", "00 01"},
             {"empty", "0a40", "00 51 00 00 40 00 00 00 00 60 00 00 00 60 0b"},
             {"no first", "0a43 0000 0000 00 01", "cb"},
             {"processed before", "0415", "00 00 00 00 60 ff ff 0a 00 ff ff"},
             {"set time", "0a49 10000000", "00"},
             {"event", "0402 41 03 12 01 ef 01", "00"},
             {"by that clock", "0a43 0000 0100 00 0e",
              "00 ff ff 01 00 02 10 00 00 00 41 00 03 12 01 ef 01"},
             {"the buffer, no logging", "062e 04", "00"},
             {"event", "0402 41 04 12 01 6f 01 02 03", "00"},
             {"buffered", "0635",
              "00 00 00 02 10 00 00 00 41 00 04 12 01 6f 01 02 03"},
             {"not logged", "0a43 0000 ffff 00 02", "00 ff ff 01 00"},
         });
}

TEST(SimSel, aLogThatIsErasedForAWhileOrRunsInARing)
{
    EventLog log = threeRecords();
    log.eraseSeconds = 3;
    log.logsClear = true;
    log.ring = true;
    log.lastId = 0xFFFE; // 1, 2 and 9 are in use
    Server server{log};
    for (int i = 0; i < 5; ++i)
        server.ask("0402 21 04 01 02 03 04");
    play(server, {{"first", "0a43 0000 0000 00 02", "00 05 00 04 00"},
                  {"last", "0a43 0000 ffff 00 02", "00 ff ff 07 00"},
                  {"reserve", "0a42", "00 01 00"},
                  {"clear", "0a47 0100 434c52 aa", "00 00"},
                  {"is not done", "0a47 0000 434c52 00", "00 00"},
                  {"nor serves", "0a40", "81"}});
    server.now += 3;
    play(server, {{"is done", "0a47 0000 434c52 00", "00 01"}});
    EXPECT_EQ(server.events(), "0: 20 00 04 10 00 6f 02 ff ff");
}

/// What a change of sensors leaves in the log, by the seconds that it came.
TEST(SimSel, sensorsLogWhatChangesAndIsEnabled)
{
    const Repository sensors = makeRepository({
        R"({"type": "full", "number": 1, "sensorType": 1, "readable": ["lc",
            "unc", "uc"], "settable": ["unc"], "lc": 5, "unc": 80, "uc": 90,
            "positiveHysteresis": 2, "sensors": [{"reading": 85}]})",
        R"({"type": "compact", "number": 2, "sensorType": 8, "lun": 1,
            "assertions": "0x0003", "deassertions": "0x0002", "owner": "0x72",
            "channel": 6, "sensors": [{"script": {"points": [
                {"at": 0, "value": 1}, {"at": 5, "value": 6},
                {"at": 7, "value": 4}], "period": 10}}]})",
    });
    const struct
    {
        const char* what;
        const char *readings, *request, *events;
        int64_t seconds = 0;
    } cases[] = {
        {"a start", "", "0a40", ""},
        {"a script between two requests", "", "0a40",
         "5: 72 61 04 08 02 6f 01 ff ff|7: 72 61 04 08 02 ef 01 ff ff|"
         "10: 72 61 04 08 02 6f 00 ff ff|15: 72 61 04 08 02 6f 01 ff ff",
         16},
        {"one threshold left, another reached", "04", "0a40",
         "0: 20 00 04 01 01 81 57 04 50|0: 20 00 04 01 01 01 52 04 05"},
        {"one reached, and left within its hysteresis", "5a 58", "0a40",
         "0: 20 00 04 01 01 01 59 5a 5a"},
        {"a threshold moved by command", "", "0426 01 08 00000058 0000",
         "0: 20 00 04 01 01 81 57 55 58"},
        {"armed anew", "", "042a 01 00", "0: 20 00 04 01 01 01 57 55 50"},
        {"its events disabled", "55 04", "0428 01 40", ""},
        {"one event disabled", "55 04", "0428 01 e0 0000 8000",
         "0: 20 00 04 01 01 01 52 04 05"},
    };
    for (const auto& c : cases) {
        Server server{EventLog{}, sensors};
        server.now += c.seconds;
        const Bytes readings = parseBytes(c.readings).value();
        for (uint8_t reading : readings) {
            server.bmc.state().sensors[1].reading = reading;
            server.ask(c.request);
        }
        server.ask(c.request);
        EXPECT_EQ(server.events(), c.events) << c.what;
    }
}

TEST(SimSel, aProfileHoldsAnyRecordAndWritesItBack)
{
    Profile profile;
    auto& records = profile.state.eventLog.emplace(threeRecords()).records;
    profile.state.eventLog->capacity = 999;
    for (uint8_t type : {0x00, 0x02, 0x03, 0xBF, 0xC0, 0xDF, 0xE0, 0xFF})
        for (size_t size : {0, 1, 3, 15, 16, 17}) {
            Bytes bytes(size, 0x5A);
            if (size > 2)
                bytes[2] = type;
            records.push_back({0x5A5A, bytes});
            records.push_back({7, bytes});
        }
    Mistakes mistakes;
    const auto again = readProfile(writeProfile(profile), mistakes);
    ASSERT_TRUE(again) << mistakes[0].place << mistakes[0].reason;
    for (size_t at = 0; at < records.size(); ++at) {
        const SelRecord& read = again->state.eventLog->records.at(at);
        EXPECT_EQ(read.bytes, records[at].bytes) << at;
        EXPECT_EQ(read.id, records[at].id) << at;
    }
}

} // namespace
