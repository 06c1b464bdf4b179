#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "sim/controller.h"
#include "sim/fault/fault.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;
using Kind = Outcome::Kind;

Controller make(const std::vector<std::string>& rules)
{
    FaultSet faults;
    for (const std::string& rule : rules) {
        Mistake mistake;
        auto fault = parseFault(rule, mistake);
        EXPECT_TRUE(fault) << rule << ": " << mistake.reason;
        if (fault)
            faults.add(*fault);
    }
    return Controller{builtinProfile("minimal"), std::move(faults),
                      std::chrono::milliseconds{1}};
}

const Request deviceId{6, 1, {}};
const Request selfTest{6, 4, {}};
const Bytes deviceIdAnswer{0, 0x20, 0, 0, 9, 0x51, 0, 0, 0, 0, 0, 0};
const Bytes selfTestAnswer{0, 0x56, 0};

TEST(SimFault, aWrongRuleIsRefusedWithPlaceAndReason)
{
    const struct
    {
        const char* rule;
        const char* place;
        const char* reason; ///< Begins so.
    } cases[] = {
        {"", "column 1", "unknown key \"\""},
        {"netfn=06", "column 1", "no action in \"netfn=06\"; one of"},
        {"cc=c0,", "column 7", "unknown key \"\""},
        {"cc=c0,cc=c1", "column 7", "\"cc\" stands twice"},
        {"cc=c0,cut=1", "column 7", "one action a rule, and \"cc\""},
        {"cc", "column 1", "\"cc\" expects a hexadecimal byte, not \"\""},
        {"netfn=07,lost", "column 1", "\"netfn\" expects an even"},
        {"cmd=get-devise-id,lost", "column 1", "\"cmd\" expects"},
        {"netfn=0a,cmd=get-device-id,lost", "column 10", "\"cmd\" expects a"},
        {"cmd=get-device-id,netfn=0a,lost", "column 19", "\"netfn\" expects"},
        {"lost,nth=0", "column 6", "\"nth\" expects a whole number from 1"},
        {"lost,nth=4294967296", "column 6", "\"nth\" expects"},
        {"lost,rate=1.5", "column 6", "\"rate\" expects a share"},
        {"lost,rate=nan", "column 6", "\"rate\" expects a share"},
        {"lost,data=0", "column 6", "\"data\" expects bytes"},
        {"lost=1", "column 1", "\"lost\" expects no value"},
        {"flip=3", "column 1", "\"flip\" expects OFFSET:BITS"},
        {"pad=4000000000", "column 1", "\"pad\" expects a size"},
        {"send-errno=EWHAT", "column 1", "\"send-errno\" expects an errno"},
        {"open-errno=EBUSY,cmd=01", "column 18", "an open has no request"},
        {"lost,nht=1", "column 6",
         "unknown key \"nht\"; did you mean \"nth\"?"},
    };
    for (const auto& c : cases) {
        Mistake mistake;
        EXPECT_FALSE(parseFault(c.rule, mistake)) << c.rule;
        EXPECT_EQ(mistake.place, c.place) << c.rule;
        EXPECT_EQ(mistake.reason.rfind(c.reason, 0), 0u)
            << c.rule << ": " << mistake.reason;
    }
}

TEST(SimFault, occurrencesAreCountedAmongTheMatches)
{
    // '!': the fault strikes, '.': it does not; ten requests in a row.
    const struct
    {
        const char* rule;
        const char* struck;
    } cases[] = {
        {"cc=c0", "!!!!!!!!!!"},
        {"cc=c0,nth=2", ".!........"},
        {"cc=c0,every=3", "..!..!..!."},
        {"cc=c0,after=4", "....!!!!!!"},
        {"cc=c0,count=2", "!!........"},
        {"cc=c0,after=1,every=2,count=3", "..!.!.!..."},
        {"cc=c0,after=3,nth=2", "....!....."},
        {"cc=c0,rate=0", ".........."},
        {"cc=c0,rate=1", "!!!!!!!!!!"},
        {"cc=c0,netfn=06,cmd=0x01", "!!!!!!!!!!"},
        {"cc=c0,cmd=04", ".........."},
        {"cc=c0,netfn=04,cmd=01", ".........."},
        {"cc=c0,data=01", ".........."},
    };
    for (const auto& c : cases) {
        Controller controller = make({c.rule});
        std::string struck;
        for (int i = 0; i < 10; ++i)
            struck +=
                controller.exchange(deviceId).bytes == Bytes{0xC0} ? '!' : '.';
        EXPECT_EQ(struck, c.struck) << c.rule;
    }
}

TEST(SimFault, requestsThatDoNotMatchAreNotCounted)
{
    Controller controller = make({"cmd=get-device-id,nth=2,cc=c0"});
    EXPECT_EQ(controller.exchange(deviceId).bytes, deviceIdAnswer);
    EXPECT_EQ(controller.exchange(selfTest).bytes, selfTestAnswer);
    EXPECT_EQ(controller.exchange(deviceId).bytes, Bytes{0xC0});
    const struct
    {
        const char* pattern;
        Bytes data;
        bool matches;
    } cases[] = {
        {"0b", {0x0B}, true},        {"0b", {0x0B, 1}, true},
        {"0b:01", {0x0B}, false},    {"??01", {0xFF, 1}, true},
        {"?? 01", {0xFF, 2}, false}, {"4?", {0x4F}, true},
        {"4?", {0x54}, false},       {"?4", {0x54}, true},
    };
    for (const auto& c : cases) {
        Mistake mistake;
        const auto rule =
            parseFault("lost,data=" + std::string{c.pattern}, mistake);
        ASSERT_TRUE(rule) << c.pattern;
        EXPECT_EQ(matches(*rule, {6, 1, c.data}), c.matches) << c.pattern;
    }
}

TEST(SimFault, aRateIsTheSameInEachRunAndAboutWhatItSays)
{
    const auto strikes = [](const std::string& rule) {
        Controller controller = make({rule});
        std::string struck;
        for (int i = 0; i < 1000; ++i)
            struck +=
                controller.exchange(deviceId).bytes.size() == 1 ? '!' : '.';
        return struck;
    };
    const std::string first = strikes("cc=c0,rate=0.25");
    EXPECT_EQ(first, strikes("cc=c0,rate=0.25"));
    EXPECT_NE(first, strikes("cc=c0,rate=0.25,seed=2"));
    EXPECT_NEAR(std::count(first.begin(), first.end(), '!'), 250, 50);
}

/// What one rule makes of Get Device ID after a self test.
struct Struck
{
    const char* rule;
    Kind kind;
    Bytes bytes;
    uint8_t netFn = 7;
    uint8_t command = 1;
    int delayMs = 1;
    int errnoValue = 0;
};

TEST(SimFault, eachActionDoesWhatItsNameSays)
{
    const auto answer = Kind::Answer;
    const auto changed = [](std::vector<std::pair<int, uint8_t>> bytes) {
        Bytes all = deviceIdAnswer;
        for (const auto& [at, byte] : bytes)
            all.at(at) = byte;
        return all;
    };
    Bytes padded = deviceIdAnswer;
    padded.resize(14);
    const Struck cases[] = {
        {"cc=d5", answer, {0xD5}},
        {"cut=3", answer, {0, 0x20, 0}},
        {"cut=0", answer, {}},
        {"cut=40", answer, deviceIdAnswer},
        {"pad=14", answer, padded},
        {"pad=2", answer, deviceIdAnswer},
        {"flip=1:81", answer, changed({{1, 0xA1}})},
        {"flip=12:ff", answer, deviceIdAnswer},
        {"next-id=1234", answer, changed({{1, 0x34}, {2, 0x12}})},
        {"record-id=1234", answer, changed({{3, 0x34}, {4, 0x12}})},
        {"clear-sel", answer, deviceIdAnswer}, // there is no log
        {"entries=258", answer, changed({{2, 2}, {3, 1}})},
        {"change", answer, deviceIdAnswer}, // there is no repository
        {"answer-netfn=0b", answer, deviceIdAnswer, 0x0B},
        {"answer-cmd=02", answer, deviceIdAnswer, 7, 2},
        {"delay=30", answer, deviceIdAnswer, 7, 1, 31},
        {"silence", Kind::Silence, deviceIdAnswer},
        {"lost", Kind::Lost, deviceIdAnswer},
        {"stale", answer, selfTestAnswer, 7, 4},
        {"send-errno=EBUSY", Kind::SendErrno, {}, 7, 1, 0, EBUSY},
        {"vanish=250", Kind::Vanish, {}, 7, 1, 250},
    };
    for (const Struck& c : cases) {
        SCOPED_TRACE(c.rule);
        Controller controller = make({std::string{"cmd=01,"} + c.rule});
        EXPECT_EQ(controller.exchange(selfTest).bytes, selfTestAnswer);
        const Outcome outcome = controller.exchange(deviceId);
        EXPECT_EQ(outcome.kind, c.kind);
        EXPECT_EQ(outcome.bytes, c.bytes);
        EXPECT_EQ(outcome.netFn, c.netFn);
        EXPECT_EQ(outcome.command, c.command);
        EXPECT_EQ(outcome.delay, std::chrono::milliseconds{c.delayMs});
        EXPECT_EQ(outcome.errnoValue, c.errnoValue);
        // What was never sent is no exchange.
        EXPECT_EQ(controller.counts().count(0x0601),
                  c.kind == Kind::SendErrno || c.kind == Kind::Vanish ? 0u
                                                                      : 1u);
        EXPECT_EQ(controller.counts().at(0x0604), 1u);
    }
}

TEST(SimFault, answersOutOfTurnComeWithTheNextRequest)
{
    Controller once = make({"nth=2,out-of-turn"});
    EXPECT_EQ(once.exchange(deviceId).bytes, deviceIdAnswer);
    EXPECT_EQ(once.exchange(deviceId).kind, Kind::Silence);
    const Outcome late = once.exchange(selfTest);
    EXPECT_EQ(late.bytes, deviceIdAnswer);
    EXPECT_EQ(late.command, 1);
    EXPECT_EQ(once.exchange(selfTest).bytes, selfTestAnswer);

    Controller always = make({"out-of-turn", "delay=5"});
    EXPECT_EQ(always.exchange(deviceId).kind, Kind::Silence);
    EXPECT_EQ(always.exchange(selfTest).bytes, deviceIdAnswer);
    const Outcome third = always.exchange(deviceId);
    EXPECT_EQ(third.bytes, selfTestAnswer);
    EXPECT_EQ(third.delay, std::chrono::milliseconds{6});
}

TEST(SimFault, aStaleAnswerIsOfTheLastOtherRequest)
{
    Controller controller = make({"cmd=01,after=1,stale"});
    Request other{6, 1, {0}};
    EXPECT_EQ(controller.exchange(deviceId).bytes, deviceIdAnswer);
    EXPECT_EQ(controller.exchange(deviceId).bytes, deviceIdAnswer)
        << "nothing to repeat yet";
    EXPECT_EQ(controller.exchange(other).bytes, deviceIdAnswer);
    EXPECT_EQ(controller.exchange(other).bytes, deviceIdAnswer);
    EXPECT_EQ(controller.exchange(deviceId).bytes, Bytes{0xC7});
}

TEST(SimFault, aResetBringsTheProfileBack)
{
    Mistakes mistakes;
    auto controller = makeController(
        {"two-socket", {"cmd=get-bmc-global-enables,nth=2,reset"}}, mistakes);
    controller->exchange({6, 0x2E, {0x0F}});
    const Request enables{6, 0x2F, {}};
    EXPECT_EQ(controller->exchange(enables).bytes, (Bytes{0, 0x0F}));
    EXPECT_EQ(controller->exchange(enables).bytes, (Bytes{0, 0x08}));
}

TEST(SimFault, theRepositoryAndTheLogChangeUnderTheirReader)
{
    constexpr uint8_t sdr = 0x20, sel = 0x40; // the same commands from there on
    const struct
    {
        uint8_t first;
        const char* rule;
        uint8_t code;
        uint8_t records;
        bool stamped;
    } cases[] = {
        {sdr, "cc=c0,nth=99", 0, 119, false},
        {sdr, "cmd=get-sdr,change", 0xC5, 118, true},
        {sdr, "cmd=get-sdr,change-unstamped", 0xC5, 118, false},
        {sdr, "cmd=get-sdr,other-reader", 0xC5, 119, false},
        {sdr, "cmd=get-sdr-repository-info,entries=7", 0, 7, false},
        {sel, "cmd=get-sel-entry,change", 0, 80, false},
        {sel, "cmd=get-sel-entry,add-event", 0xC5, 81, true},
        {sel, "cmd=get-sel-entry,clear-sel", 0xC5, 0, true},
        {sel, "cmd=get-sel-entry,other-reader", 0xC5, 80, false},
        {sel, "cmd=get-sel-info,entries=7", 0, 7, false},
    };
    for (const auto& c : cases) {
        Mistakes mistakes;
        auto controller = makeController({"two-socket", {c.rule}}, mistakes);
        ASSERT_TRUE(controller) << c.rule;
        const Request info{0x0A, c.first, {}};
        const Bytes before = controller->exchange(info).bytes;
        controller->exchange({0x0A, uint8_t(c.first + 2), {}});
        const Request piece{0x0A, uint8_t(c.first + 3), {1, 0, 1, 0, 2, 1}};
        EXPECT_EQ(controller->exchange(piece).bytes.at(0), c.code) << c.rule;
        const Bytes after = controller->exchange(info).bytes;
        EXPECT_EQ(after.at(2), c.records) << c.rule;
        EXPECT_EQ(
            !std::equal(after.begin() + 6, after.end(), before.begin() + 6),
            c.stamped)
            << c.rule;
    }
}

TEST(SimFault, allRulesThatAreDueApplyInTheirOrder)
{
    Controller controller = make({"delay=5", "nth=2,cc=c0", "pad=3"});
    EXPECT_EQ(controller.exchange(deviceId).bytes, deviceIdAnswer);
    const Outcome outcome = controller.exchange(deviceId);
    EXPECT_EQ(outcome.bytes, (Bytes{0xC0, 0, 0}));
    EXPECT_EQ(outcome.delay, std::chrono::milliseconds{6});
}

} // namespace
