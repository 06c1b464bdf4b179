#include <gtest/gtest.h>

#include <sstream>

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

    /// Network function, command and data, in hexadecimal, as the answer is.
    std::string ask(const std::string& text)
    {
        std::istringstream in{text};
        Bytes bytes;
        for (std::string byte; in >> byte;)
            bytes.push_back(uint8_t(std::stoi(byte, nullptr, 16)));
        const Bytes data{bytes.begin() + 2, bytes.end()};
        return hex(bmc.answer({bytes[0], bytes[1], data}).value_or(Bytes{}));
    }
    static std::string hex(const Bytes& bytes)
    {
        char digits[4];
        std::string text;
        for (uint8_t byte : bytes) {
            std::snprintf(digits, sizeof digits, " %02x", unsigned{byte});
            text += digits;
        }
        return text.empty() ? text : text.substr(1);
    }
    /// The log's records without ids: seconds since the start, and the rest.
    std::vector<std::string> events()
    {
        ask("0a 40");
        std::vector<std::string> list;
        for (const SelRecord& record : bmc.state().eventLog->records) {
            const Bytes& b = record.bytes;
            const uint32_t time = word(b, 3) | uint32_t(word(b, 5)) << 16;
            list.push_back(std::to_string(time - uint32_t(start)) + ": " +
                           hex({b.begin() + 7, b.end()}));
        }
        return list;
    }

    int64_t now = start;
    Bmc bmc;
};

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
    const struct
    {
        const char *what, *request, *answer;
    } steps[] = {
        {"info", "a 40", "00 51 03 00 10 00 03 00 00 00 00 00 00 00 0b"},
        {"allocation", "a 41", "00 04 00 10 00 01 00 01 00 01"},
        {"first", "a 43 0 0 0 0 0 e",
         "00 02 00 01 00 02 02 01 00 00 72 60 04 04 07 81 52"},
        {"whole, above the limit", "a 43 0 0 0 0 0 ff", "ca"},
        {"piece, no reservation", "a 43 0 0 2 0 1 2", "c5"},
        {"reserve", "a 42", "00 01 00"},
        {"piece", "a 43 1 0 2 0 2 9", "00 09 00 c1 03 00 00 00 04 03 00 aa"},
        {"last, shorter", "a 43 1 0 ff ff 4 2", "00 ff ff 02"},
        {"past its end", "a 43 1 0 9 0 6 1", "c9"},
        {"not there", "a 43 1 0 3 0 0 1", "cb"},
        {"add", "a 44 5 5 2 0 0 0 0 41 0 4 1 2 3 4 5 6", "00 0a 00"},
        {"stamped", "a 43 0 0 a 0 0 e",
         "00 ff ff 0a 00 02 00 00 00 60 41 00 04 01 02 03 04"},
        {"which cancelled", "a 43 1 0 a 0 0 1", "c5"},
        {"full", "a 44 5 5 2 0 0 0 0 41 0 4 1 2 3 4 5 6", "c4"},
        {"an event is lost", "4 2 41 4 12 1 6f 1", "00"},
        {"overflow", "a 40", "00 51 04 00 00 00 00 00 00 60 00 00 00 00 8b"},
        {"delete, no reservation", "a 46 0 0 2 0", "c5"},
        {"reserve again", "a 42", "00 02 00"},
        {"delete what is not there", "a 46 2 0 3 0", "cb"},
        {"delete", "a 46 2 0 2 0", "00 02 00"},
        {"clear, cancelled", "a 47 2 0 43 4c 52 aa", "c5"},
        {"reserve once more", "a 42", "00 03 00"},
        {"clear, wrong letters", "a 47 3 0 43 4c 53 aa", "cc"},
        {"last processed", "4 15", "00 00 00 00 60 0a 00 ff ff ff ff"},
        {"processed", "4 14 0 a 0", "00"},
        {"clear", "a 47 3 0 43 4c 52 aa", "00 01"},
        {"is done", "a 47 3 0 43 4c 52 0", "00 01"},
        {"empty", "a 40", "00 51 00 00 40 00 00 00 00 60 00 00 00 60 0b"},
        {"no first", "a 43 0 0 0 0 0 1", "cb"},
        {"none to process", "4 15", "00 00 00 00 60 ff ff 0a 00 ff ff"},
        {"time", "a 48", "00 00 00 00 60"},
        {"set time", "a 49 10 0 0 0", "00"},
        {"other time", "a 48", "00 10 00 00 00"},
        {"zone", "a 5d c4 ff", "00"},
        {"same zone", "a 5c", "00 c4 ff"},
        {"no zone", "a 5d a1 5", "cc"},
        {"event", "4 2 41 3 12 1 ef 1", "00"},
        {"by that clock", "a 43 0 0 1 0 0 e",
         "00 ff ff 01 00 02 10 00 00 00 41 00 03 12 01 ef 01"},
    };
    for (const auto& step : steps)
        EXPECT_EQ(server.ask(step.request), step.answer) << step.what;
}

TEST(SimSel, aLogThatIsErasedForAWhileOrRunsInARing)
{
    EventLog log = threeRecords();
    log.eraseSeconds = 3;
    log.logsClear = true;
    log.ring = true;
    Server server{log};
    const std::string event = "4 2 21 4 1 2 3 4 5 6",
                      clear = "a 47 1 0 43 4c 52";
    server.bmc.state().eventLog->lastId = 0xFFFE;
    for (int i = 0; i < 5; ++i)
        server.ask(event);
    EXPECT_EQ(server.bmc.state().eventLog->records.front().id, 4);
    EXPECT_EQ(server.ask("a 43 0 0 ff ff 0 2"), "00 ff ff 07 00");
    server.ask("a 42");
    EXPECT_EQ(server.ask(clear + " aa"), "00 00");
    EXPECT_EQ(server.ask("a 40"), "81");
    EXPECT_EQ(server.ask(clear + " aa"), "81");
    server.now += 3;
    EXPECT_EQ(server.ask(clear + " 0"), "00 01");
    EXPECT_EQ(server.events(),
              std::vector<std::string>{"0: 20 00 04 10 00 6f 02 ff ff"});
}

TEST(SimSel, eventsReachTheMessageBufferAsTheEnablesSay)
{
    Server server{EventLog{}};
    const std::string event = "4 2 41 4 12 1 6f 1 2 3";
    server.ask("6 2e 4"); // the buffer, no logging
    server.ask(event);
    EXPECT_TRUE(server.events().empty());
    EXPECT_EQ(server.ask("6 35"),
              "00 00 00 02 00 00 00 60 41 00 04 12 01 6f 01 02 03");
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
        void (*change)(Server& server, Sensor& sensor);
        std::vector<std::string> events;
    } cases[] = {
        {"a start", [](Server&, Sensor&) {}, {}},
        {"a script between two requests",
         [](Server& server, Sensor&) { server.now += 16; },
         {"5: 72 61 04 08 02 6f 01 ff ff", "7: 72 61 04 08 02 ef 01 ff ff",
          "10: 72 61 04 08 02 6f 00 ff ff", "15: 72 61 04 08 02 6f 01 ff ff"}},
        {"one threshold left, another reached",
         [](Server&, Sensor& sensor) { sensor.reading = 4; },
         {"0: 20 00 04 01 01 81 57 04 50", "0: 20 00 04 01 01 01 52 04 05"}},
        {"one reached, and left within its hysteresis",
         [](Server& server, Sensor& sensor) {
             sensor.reading = 90;
             server.ask("a 40");
             sensor.reading = 88;
         },
         {"0: 20 00 04 01 01 01 59 5a 5a"}},
        {"a threshold moved by command",
         [](Server& server, Sensor&) { server.ask("4 26 1 8 0 0 0 58 0 0"); },
         {"0: 20 00 04 01 01 81 57 55 58"}},
        {"armed anew",
         [](Server& server, Sensor&) { server.ask("4 2a 1 0"); },
         {"0: 20 00 04 01 01 01 57 55 50"}},
        {"its events disabled",
         [](Server& server, Sensor& sensor) {
             server.ask("4 28 1 40");
             sensor.reading = 4;
         },
         {}},
        {"one event disabled",
         [](Server& server, Sensor& sensor) {
             server.ask("4 28 1 e0 0 0 80 0");
             sensor.reading = 4;
         },
         {"0: 20 00 04 01 01 01 52 04 05"}},
    };
    for (const auto& c : cases) {
        Server server{EventLog{}, sensors};
        c.change(server, server.bmc.state().sensors[sensorKey(0, 1)]);
        EXPECT_EQ(server.events(), c.events) << c.what;
    }
}

TEST(SimSel, aProfileHoldsAnyRecordAndWritesItBack)
{
    Profile profile;
    profile.state.eventLog = threeRecords();
    auto& log = *profile.state.eventLog;
    log.capacity = 999;
    for (uint8_t type : {0x00, 0x02, 0x03, 0xBF, 0xC0, 0xDF, 0xE0, 0xFF})
        for (size_t size : {0, 1, 3, 15, 16, 17}) {
            Bytes bytes(size, 0x5A);
            if (size > 2)
                bytes[2] = type;
            log.records.push_back({0x5A5A, bytes});
            log.records.push_back({7, bytes});
        }
    Mistakes mistakes;
    const auto again = readProfile(writeProfile(profile), mistakes);
    ASSERT_TRUE(again) << mistakes[0].place << mistakes[0].reason;
    const auto& read = again->state.eventLog->records;
    ASSERT_EQ(read.size(), log.records.size());
    for (size_t at = 0; at < read.size(); ++at) {
        EXPECT_EQ(read[at].bytes, log.records[at].bytes) << at;
        EXPECT_EQ(read[at].id, log.records[at].id) << at;
    }
}

} // namespace
