#include <gtest/gtest.h>

#include <cerrno>
#include <tuple>

#include "tools/device.h"
#include "tools/print/completion_codes.h"
#include "tools/print/info.h"
#include "tools/print/self_test.h"
#include "tools/print/terminal.h"
#include "tools/print/text.h"

namespace Tool
{
namespace
{

TEST(Terminal, textIsBrokenToItsWidth)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(wrapped("as it is", 8), (Lines{"as it is"}));
    EXPECT_EQ(wrapped("at blanks, and", 8), (Lines{"at", "blanks,", "and"}));
    EXPECT_EQ(wrapped("wherever", 3), (Lines{"whe", "rev", "er"}));
    EXPECT_EQ(wrapped(" Gr\u00f6\u00dfe", 3), (Lines{" Gr", "\u00f6\u00dfe"}));
    EXPECT_EQ(wrapped("\u6f22\u5b57", 1), (Lines{"\u6f22", "\u5b57"}));
    EXPECT_EQ(wrapped("", 1), (Lines{""}));
}

TEST(CompletionCodes, standInNumericOrderOnceEach)
{
    int last = -1;
    for (const GenericCode& row : genericCodes()) {
        EXPECT_LT(last, row.code) << row.words;
        last = row.code;
    }
    std::tuple<int, int, int> before{-1, 0, 0};
    for (const CommandCode& row : commandCodes()) {
        const std::tuple<int, int, int> key{row.command.netFn, row.command.code,
                                            row.code};
        EXPECT_LT(before, key) << row.words;
        EXPECT_EQ(row.command.netFn % 2, 0) << row.words;
        EXPECT_TRUE(row.code >= 0x80 && row.code <= 0xBE) << row.words;
        before = key;
    }
}

TEST(CompletionCodes, haveWordsByCommandThenGenericThenByRange)
{
    const struct
    {
        Command command;
        Completion completion;
        const char* words;
        Status status;
    } cases[] = {
        {{0x06, 0x01},
         {0x00, true},
         "00h: command completed normally",
         Status::done},
        {{0x06, 0x59},
         {0x80, true},
         "80h: parameter not supported",
         Status::refused},
        {{0x0A, 0x44},
         {0x80, true},
         "80h: operation not supported for this record type",
         Status::refused},
        {{0x06, 0x01},
         {0x80, true},
         "80h: command-specific code",
         Status::refused},
        {{0x06, 0x01},
         {0xC1, true},
         "C1h: unrecognized or unsupported command",
         Status::refused},
        {{0x06, 0x01},
         {0x10, true},
         "10h: device-specific (OEM) code",
         Status::refused},
        {{0x06, 0x01}, {0xBF, true}, "BFh: reserved code", Status::refused},
        {{0x06, 0x01},
         {0xC3, true},
         "C3h: timeout while processing the command, no answer available",
         Status::failed},
        {{0x06, 0x01}, {0xFF, true}, "FFh: unspecified error", Status::refused},
        {{0x06, 0x01}, {0xFF, false}, "no answer", Status::failed},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(inWords(c.command, c.completion), c.words);
        EXPECT_EQ(c.completion.status(), c.status) << c.words;
    }
}

TEST(Text, isShownWithoutWhatATerminalOrJsonCannotTake)
{
    using namespace std::string_literals;
    const struct
    {
        const char* what;
        std::string in;
        const char* out;
    } cases[] = {
        {"empty", "", ""},
        {"plain", "Debian GNU/Linux", "Debian GNU/Linux"},
        {"padding", "Linux\0\0\0"s, "Linux"},
        {"NUL inside", "a\0b"s, "a\\x00b"},
        {"control", "a\nb\x1b[31m\x7f", "a\\x0ab\\x1b[31m\\x7f"},
        {"backslash", "a\\x00", "a\\\\x00"},
        {"UTF-8 of 2, 3 and 4 bytes", "\u00e9\u20ac\U0001F600",
         "\u00e9\u20ac\U0001F600"},
        {"Latin-1", "caf\xe9 1", "caf\\xe9 1"},
        {"control character of two bytes", "\xc2\x85", "\\xc2\\x85"},
        {"cut", "a\xe2\x82", "a\\xe2\\x82"},
        {"overlong", "\xc0\xaf\xe0\x80\xaf", "\\xc0\\xaf\\xe0\\x80\\xaf"},
        {"surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
        {"beyond Unicode", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(printable(c.in), c.out) << c.what;
        EXPECT_NO_THROW(Json(printable(c.in)).dump()) << c.what;
    }
}

TEST(SelfTest, namesEachBitOfCorruptedDevicesOnly)
{
    const struct
    {
        uint8_t result, detail;
        std::vector<std::string> findings;
    } cases[] = {
        {0x55, 0xFF, {}},
        {0x57, 0x00, {}},
        {0x57,
         0x81,
         {"operational firmware corrupted", "cannot access the SEL device"}},
        {0x58, 0x2A, {"device-specific detail 2Ah"}},
        {0x01, 0x02, {"device-specific detail 02h"}},
        {0xFF, 0x00, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(selfTestFindings(c.result, c.detail), c.findings)
            << int(c.result);
}

TEST(Info, formatsTheVersionsAsTheStandardHasThem)
{
    const struct
    {
        uint8_t major, minor, ipmi;
        const char *firmware, *version;
        bool available;
    } cases[] = {
        {0x02, 0x10, 0x02, "2.10", "2.0", true},
        {0x02, 0x05, 0x51, "2.05", "1.5", true},
        {0x7F, 0x00, 0x02, "127.00", "2.0", true}, // seven bits, not six
        {0x81, 0x99, 0x02, "1.99", "2.0", false},
        {0x01, 0x1A, 0x02, "1.1a", "2.0", true}, // no BCD; as others print it
    };
    for (const auto& c : cases) {
        Info info;
        info.deviceId = {0, 0x20, 1, c.major, c.minor, c.ipmi};
        const Json json = toJson(info);
        EXPECT_EQ(json["firmware"]["version"], c.firmware);
        EXPECT_EQ(json["ipmiVersion"], c.version);
        EXPECT_EQ(json["device"]["available"], c.available);
    }
}

TEST(Device, saysWhyItDoesNotOpenAndWhatToDo)
{
    const struct
    {
        int reason;
        bool isRoot;
        Status status;
        const char *what, *next;
    } cases[] = {
        {ENOENT, true, Status::noDevice,
         "no IPMI device: /dev/ipmi0: No such file or directory", "modprobe"},
        {ENODEV, false, Status::noDevice, "(you are not root)", "--simulate"},
        {EACCES, false, Status::noDevice, "(you are not root)", "as root"},
        {EPERM, true, Status::noDevice, "no permission", "container"},
        {EMFILE, true, Status::failed, "Too many open files", "dmesg"},
    };
    for (const auto& c : cases) {
        const Failure failure = openFailure(c.reason, c.isRoot);
        EXPECT_EQ(failure.status, c.status) << c.reason;
        EXPECT_NE(failure.what.find(c.what), std::string::npos) << failure.what;
        EXPECT_NE(failure.next.find(c.next), std::string::npos) << failure.next;
    }
}

} // namespace
} // namespace Tool
