#include <gtest/gtest.h>

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

/// A block of Set System Info Parameters, filled up to 18 bytes.
Bytes block(Bytes data)
{
    data.resize(18, 'x');
    return data;
}

/// Rows are asked one after the other of one controller.
struct Step
{
    const char* what;
    uint8_t netFn;
    uint8_t command;
    Bytes data;
    Bytes answer;
};

void play(Bmc& bmc, const std::vector<Step>& steps)
{
    for (const Step& step : steps)
        EXPECT_EQ(ask(bmc, step.netFn, step.command, step.data), step.answer)
            << step.what;
}

TEST(SimModel, identityAndInterfaceCommands)
{
    Bmc bmc = make();
    play(bmc,
         {
             {"device id, no auxiliary bytes",
              6,
              1,
              {},
              {0, 0x21, 0x81, 2, 0x14, 2, 0, 3, 2, 1, 0xEF, 0xBE}},
             {"device id, long", 6, 1, {0}, {0xC7}},
             {"self test", 6, 4, {}, {0, 0x57, 4}},
             {"no guid in the profile", 6, 0x37, {}, {0xC1}},
             {"no such command", 6, 0xEE, {}, {0xC1}},
             {"no such network function", 0x2C, 0, {0}, {0xC1}},
             {"ipmb", 6, 0x42, {0}, {0, 0, 1, 1, 0, 0xF2, 0x1B, 0, 0, 0}},
             {"lan", 6, 0x42, {1}, {0, 1, 4, 1, 0x83, 0xF2, 0x1B, 0, 0, 0}},
             {"present channel",
              6,
              0x42,
              {0x0E},
              {0, 15, 12, 5, 0, 0xF2, 0x1B, 0, 0, 0}},
             {"no such channel", 6, 0x42, {2}, {0xCC}},
             {"channel info, short", 6, 0x42, {}, {0xC7}},
             {"channel info, long", 6, 0x42, {0, 0}, {0xC7}},
             {"enables", 6, 0x2F, {}, {0, 8}},
             {"set enables", 6, 0x2E, {0x1F}, {0}},
             {"the reserved bit is not kept", 6, 0x2F, {}, {0, 0x0F}},
             {"set enables, short", 6, 0x2E, {}, {0xC7}},
             {"nobody to send to", 6, 0x34, {0, 0x22}, {0x83}},
             {"no channel to send over", 6, 0x34, {2, 0x22}, {0xCC}},
             {"no message waits", 6, 0x33, {}, {0x80}},
         });
    const Request toLun1{6, 1, {}, 1};
    EXPECT_EQ(bmc.answer(toLun1), Bytes{0xC2});
    const Request bridged{6, 1, {}, 0, 0, 0x22};
    EXPECT_EQ(bmc.answer(bridged), std::nullopt);
}

TEST(SimModel, eventsWaitInTheBufferUntilReadOrCleared)
{
    Bmc bmc = make();
    const Bytes event(16, 0xAB);
    Bytes answer{0};
    append(answer, event);
    play(bmc, {{"empty", 6, 0x35, {}, {0x80}}, {"none", 6, 0x31, {}, {0, 0}}});
    for (int i = 0; i < 3; ++i)
        bmc.queueEvent(event);
    play(bmc, {
                  {"flag", 6, 0x31, {}, {0, 2}},
                  {"first", 6, 0x35, {}, answer},
                  {"more wait", 6, 0x31, {}, {0, 2}},
                  {"another flag", 6, 0x30, {1}, {0}},
                  {"still there", 6, 0x35, {}, answer},
                  {"clear", 6, 0x30, {2}, {0}},
                  {"gone", 6, 0x35, {}, {0x80}},
              });
    BmcState state = smallServer();
    state.messaging->eventBuffer = false;
    bmc = make(state);
    play(bmc, {{"no buffer to enable", 6, 0x2E, {4}, {0xCC}},
               {"but the rest", 6, 0x2E, {9}, {0}}});
}

TEST(SimModel, systemInformationIsReadAndWrittenInBlocks)
{
    Bmc bmc = make();
    const Bytes rest(10, 0);
    Bytes name{0, 0x11, 0, 0, 6, 'P', 'l', 'a', 'n', ' ', '9'};
    name.resize(19);
    Bytes second{0, 0x11, 1, 'd'};
    second.resize(19, 'x');
    play(
        bmc,
        {
            {"block 0", 6, 0x59, {0, 4, 0, 0}, name},
            {"revision", 6, 0x59, {0x80, 4, 9, 9}, {0, 0x11}},
            {"revision of what is not there", 6, 0x59, {0x80, 5, 0, 0}, {0x80}},
            {"not there", 6, 0x59, {0, 5, 0, 0}, {0x80}},
            {"past the last block", 6, 0x59, {0, 4, 3, 0}, {0xC9}},
            {"a block selector", 6, 0x59, {0, 4, 0, 1}, {0xCC}},
            {"get, short", 6, 0x59, {0, 4, 0}, {0xC7}},
            {"get, long", 6, 0x59, {0, 4, 0, 0, 0}, {0xC7}},
            {"write block 1", 6, 0x58, block({4, 1, 'd'}), {0}},
            {"block 1", 6, 0x59, {0, 4, 1, 0}, second},
            {"block 0 is as before", 6, 0x59, {0, 4, 0, 0}, name},
            {"write block 0", 6, 0x58, block({4, 0, 0, 15, 'a'}), {0}},
            {"write past the last", 6, 0x58, block({4, 3}), {0xC9}},
            {"write what is not there", 6, 0x58, block({5, 0}), {0x80}},
            {"write to read-only", 6, 0x58, block({1, 0}), {0x82}},
            {"write, short", 6, 0x58, {4, 0, 0, 1, 'a'}, {0xC7}},
            {"write, long", 6, 0x58, Bytes(19, 4), {0xC7}},
            {"write, nothing", 6, 0x58, {}, {0xC7}},
            {"progress", 6, 0x59, {0, 0, 0, 0}, {0, 0x11, 0}},
            {"progress, set selector", 6, 0x59, {0, 0, 1, 0}, {0xC9}},
            {"begin", 6, 0x58, {0, 1}, {0}},
            {"begin again", 6, 0x58, {0, 1}, {0x81}},
            {"in progress", 6, 0x59, {0, 0, 0, 0}, {0, 0x11, 1}},
            {"commit", 6, 0x58, {0, 2}, {0xCC}},
            {"end", 6, 0x58, {0, 0}, {0}},
            {"progress, no value", 6, 0x58, {0}, {0xC7}},
        });
    EXPECT_EQ(toString(bmc.state().systemInfo->texts[4]), "axxxxxxxxxxxxxd");
    bmc.reset();
    EXPECT_EQ(toString(bmc.state().systemInfo->texts[4]), "Plan 9");
    EXPECT_EQ(makeText("\xC3\xA9").encoding, 1);
}

TEST(SimModel, identifyLightShowsInTheChassisStatus)
{
    const auto status = [](Bmc& bmc, int64_t now) {
        bmc.setClock([now] { return now; });
        return ask(bmc, 0, 1, {}).at(3);
    };
    const struct
    {
        const char* what;
        Bytes request;
        uint8_t answer, atOnce, after14s, after16s;
    } cases[] = {
        {"default 15 s", {}, 0, 0x50, 0x50, 0x40},
        {"10 s", {10}, 0, 0x50, 0x40, 0x40},
        {"off", {0}, 0, 0x40, 0x40, 0x40},
        {"forced", {0, 1}, 0, 0x60, 0x60, 0x60},
        {"not forced", {15, 2}, 0, 0x50, 0x50, 0x40},
        {"long", {15, 0, 0}, 0xC7, 0x40, 0x40, 0x40},
    };
    for (const auto& c : cases) {
        Bmc bmc = make();
        EXPECT_EQ(ask(bmc, 0, 4, c.request), Bytes{c.answer}) << c.what;
        EXPECT_EQ(status(bmc, start), c.atOnce) << c.what;
        EXPECT_EQ(status(bmc, start + 14), c.after14s) << c.what;
        EXPECT_EQ(status(bmc, start + 16), c.after16s) << c.what;
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
    play(bmc, {{"no system information", 6, 0x59, {0, 4, 0, 0}, {0xC1}},
               {"no chassis", 0, 1, {}, {0xC1}},
               {"no channels", 6, 0x42, {0}, {0xC1}},
               {"no messaging", 6, 0x2F, {}, {0xC1}}});
}

} // namespace
