#include <gtest/gtest.h>

#include <sstream>

#include "sim/model/bmc.h"

namespace
{

using namespace Sim;

constexpr int64_t start = 1700000000;

BmcState smallServer()
{
    BmcState state;
    state.identity.deviceId = 0x21;
    state.identity.deviceRevision = 0x81;
    state.identity.firmwareMajor = 0x02;
    state.identity.firmwareMinor = 0x14;
    state.identity.manufacturer = 0x010203;
    state.identity.product = 0xBEEF;
    state.identity.selfTest = {0x57, 0x04};
    state.systemInfo.emplace();
    state.systemInfo->texts[4] = makeText("Plan 9");
    state.systemInfo->texts[1] = makeText("1.0");
    state.systemInfo->readOnly = 1 << 1;
    state.systemInfo->blocks = 3;
    state.chassis.emplace();
    state.messaging.emplace();
    state.channels = {{0, 1, 1}, {1, 4, 1, 2, 3}, {15, 12, 5}};
    return state;
}

Bmc make(BmcState state = smallServer())
{
    Bmc bmc{std::move(state)};
    bmc.setClock([] { return start; });
    return bmc;
}

Bytes ask(Bmc& bmc, uint8_t netFn, uint8_t command, const Bytes& data)
{
    return bmc.answer({netFn, command, data}).value_or(Bytes{});
}

/// Bytes in hexadecimal; a character in quotes is one.
Bytes hex(const std::string& text)
{
    std::istringstream in{text};
    Bytes bytes;
    for (std::string word; in >> word;)
        bytes.push_back(
            uint8_t(word[0] == '\'' ? word[1] : stoi(word, {}, 16)));
    return bytes;
}

/// Rows are asked one after the other of one controller: network function,
/// command and data; a block to write is filled up to 18 bytes.
struct Step
{
    const char *what, *request, *answer;
};

void play(Bmc& bmc, const std::vector<Step>& steps)
{
    for (const Step& step : steps) {
        const Bytes bytes = hex(step.request);
        Bytes data{bytes.begin() + 2, bytes.end()};
        if (bytes[1] == 0x58 && !data.empty() && data[0] != 0)
            data.resize(18, 'x');
        EXPECT_EQ(ask(bmc, bytes[0], bytes[1], data), hex(step.answer))
            << step.what;
    }
}

TEST(SimModel, identityAndInterfaceCommands)
{
    Bmc bmc = make();
    play(bmc, {{"no auxiliary bytes", "6 1", "0 21 81 2 14 2 0 3 2 1 EF BE"},
               {"device id, long", "6 1 0", "C7"},
               {"self test", "6 4", "0 57 4"},
               {"no guid in the profile", "6 37", "C1"},
               {"no such command", "6 EE", "C1"},
               {"no such network function", "2C 0 0", "C1"},
               {"ipmb", "6 42 0", "0 0 1 1 0 F2 1B 0 0 0"},
               {"lan", "6 42 1", "0 1 4 1 83 F2 1B 0 0 0"},
               {"present channel", "6 42 E", "0 F C 5 0 F2 1B 0 0 0"},
               {"no such channel", "6 42 2", "CC"},
               {"channel info, short", "6 42", "C7"},
               {"channel info, long", "6 42 0 0", "C7"},
               {"enables", "6 2F", "0 8"},
               {"set enables", "6 2E 1F", "0"},
               {"the reserved bit is not kept", "6 2F", "0 F"},
               {"set enables, short", "6 2E", "C7"},
               {"nobody to send to", "6 34 0 22", "83"},
               {"no channel to send over", "6 34 2 22", "CC"},
               {"no message waits", "6 33", "80"}});
    const Request toLun1{6, 1, {}, 1};
    EXPECT_EQ(bmc.answer(toLun1), Bytes{0xC2});
    const Request bridged{6, 1, {}, 0, 0, 0x22};
    EXPECT_EQ(bmc.answer(bridged), std::nullopt);
}

TEST(SimModel, eventsWaitInTheBufferUntilReadOrCleared)
{
    Bmc bmc = make();
    play(bmc, {{"empty", "6 35", "80"}, {"none", "6 31", "0 0"}});
    for (uint8_t i = 1; i <= 3; ++i)
        bmc.queueEvent({i});
    play(bmc, {{"flag", "6 31", "0 2"},
               {"first", "6 35", "0 1"},
               {"more wait", "6 31", "0 2"},
               {"another flag", "6 30 1", "0"},
               {"still there", "6 35", "0 2"},
               {"clear", "6 30 2", "0"},
               {"gone", "6 35", "80"}});
    BmcState state = smallServer();
    state.messaging->eventBuffer = false;
    bmc = make(state);
    play(bmc, {{"no buffer to enable", "6 2E 4", "CC"},
               {"but the rest", "6 2E 9", "0"}});
}

TEST(SimModel, systemInformationIsReadAndWrittenInBlocks)
{
    Bmc bmc = make();
    const auto name = "0 11 0 0 6 'P 'l 'a 'n 20 '9 0 0 0 0 0 0 0 0";
    const auto filled =
        "0 11 1 'd 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x 'x";
    play(bmc, {{"block 0", "6 59 0 4 0 0", name},
               {"revision", "6 59 80 4 9 9", "0 11"},
               {"revision of nothing", "6 59 80 5 0 0", "80"},
               {"not there", "6 59 0 5 0 0", "80"},
               {"past the last block", "6 59 0 4 3 0", "C9"},
               {"a block selector", "6 59 0 4 0 1", "CC"},
               {"get, short", "6 59 0 4 0", "C7"},
               {"get, long", "6 59 0 4 0 0 0", "C7"},
               {"write block 1", "6 58 4 1 'd", "0"},
               {"block 1", "6 59 0 4 1 0", filled},
               {"block 0 is as before", "6 59 0 4 0 0", name},
               {"write block 0", "6 58 4 0 0 F 'a", "0"},
               {"write past the last", "6 58 4 3", "C9"},
               {"write what is not there", "6 58 5 0", "80"},
               {"write to read-only", "6 58 1 0", "82"},
               {"write, nothing", "6 58", "C7"},
               {"progress", "6 59 0 0 0 0", "0 11 0"},
               {"progress, set selector", "6 59 0 0 1 0", "C9"},
               {"begin", "6 58 0 1", "0"},
               {"begin again", "6 58 0 1", "81"},
               {"in progress", "6 59 0 0 0 0", "0 11 1"},
               {"commit", "6 58 0 2", "CC"},
               {"end", "6 58 0 0", "0"},
               {"progress, no value", "6 58 0", "C7"}});
    for (const size_t size : {5, 17, 19}) // short, long
        EXPECT_EQ(ask(bmc, 6, 0x58, Bytes(size, 4)), Bytes{0xC7}) << size;
    EXPECT_EQ(toString(bmc.state().systemInfo->texts[4]), "axxxxxxxxxxxxxd");
    bmc.reset();
    EXPECT_EQ(toString(bmc.state().systemInfo->texts[4]), "Plan 9");
    EXPECT_EQ(makeText("\xC3\xA9").encoding, 1);
}

TEST(SimModel, identifyLightShowsInTheChassisStatus)
{
    const struct
    {
        Bytes request;
        uint8_t answer;
        Bytes lights; ///< At once, after 14 s and after 16 s.
    } cases[] = {
        {{}, 0, {0x50, 0x50, 0x40}},
        {{10}, 0, {0x50, 0x40, 0x40}},
        {{0}, 0, {0x40, 0x40, 0x40}},
        {{0, 1}, 0, {0x60, 0x60, 0x60}},
        {{15, 2}, 0, {0x50, 0x50, 0x40}},
        {{15, 0, 0}, 0xC7, {0x40, 0x40, 0x40}},
    };
    for (const auto& c : cases) {
        Bmc bmc = make();
        EXPECT_EQ(ask(bmc, 0, 4, c.request), Bytes{c.answer});
        Bytes lights;
        for (const int64_t seconds : {0, 14, 16}) {
            bmc.setClock([=] { return start + seconds; });
            lights.push_back(ask(bmc, 0, 1, {}).at(3));
        }
        EXPECT_EQ(lights, c.lights) << &c - cases;
    }
    BmcState state = smallServer();
    state.chassis->identifyForced = false;
    Bmc bmc = make(state);
    EXPECT_EQ(ask(bmc, 0, 4, {0, 1}), Bytes{0xC7});
    state.chassis->identify = false;
    bmc = make(state);
    EXPECT_EQ(ask(bmc, 0, 4, {0}), Bytes{0xC1});
    EXPECT_EQ(ask(bmc, 0, 1, {}), (Bytes{0, 1, 0, 0, 0}));
}

TEST(SimModel, fixedAnswersComeBeforeTheTable)
{
    BmcState state;
    state.answers = {{6, 1, {0xAA}, {}}, {6, 1, {}, {0xD5}}};
    Bmc bmc = make(state);
    EXPECT_EQ(bmc.answer({6, 1, {0xAA, 0}}), std::nullopt);
    EXPECT_EQ(bmc.answer({6, 1, {0xAB}}), Bytes{0xD5});
    EXPECT_EQ(bmc.answer({6, 4, {}}), Bytes{0xC1});
    play(bmc, {{"no system information", "6 59 0 4 0 0", "C1"},
               {"no chassis", "0 1", "C1"},
               {"no channels", "6 42 0", "C1"},
               {"no messaging", "6 2F", "C1"}});
}

} // namespace
