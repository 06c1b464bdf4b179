#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "sim/fault/fault.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

std::string listed(const Mistakes& mistakes)
{
    std::string text;
    for (const Mistake& mistake : mistakes)
        text += mistake.place + "|" + mistake.reason + "\n";
    return text;
}

/// JSON text from one with ' in the place of ".
std::string json(std::string text)
{
    std::replace(text.begin(), text.end(), '\'', '"');
    return text;
}

/// A profile whose identity has these further fields.
std::string identity(const std::string& fields)
{
    return json("{'identity': {'manufacturer': 1, " + fields + "}}");
}

/// A right profile with these further areas.
std::string areas(const std::string& text)
{
    return json("{'identity': {'manufacturer': 1}, " + text + "}");
}

std::string record(const std::string& fields)
{
    return areas("'repository': {'records': [{" + fields + "}]}");
}

/// A full record, with number.
std::string number(const std::string& fields)
{
    return record("'type': 1, 'number': 1, " + fields);
}

std::string fru(const std::string& fields)
{
    return areas("'frus': [{'device': 0, " + fields + "}]");
}

TEST(SimProfile, everyMistakeIsNamedWithItsPlace)
{
    const std::string lan = "'medium': 'lan', 'protocol': 'kcs'}";
    const struct
    {
        std::string text;
        std::string mistakes; ///< What the list has to contain.
    } cases[] = {
        {"", "1:1|"},
        {"{\n  \"identity\": {,}\n}", "2:16|"},
        {"{\"a\": \"\xFF\"}", "1:8|"},
        {"[1e999]", "/0|number overflow"},
        {"[]", "|expected an object, found array"},
        {"{}", "|\"identity\" is missing"},
        {json("{'identity': {}}"), "/identity|\"manufacturer\" is missing"},
        {areas("'identity': {}"), "/identity|this key stands twice"},
        {areas("'x': [0, {'a': 1, 'a': 2}]"), "/x/1/a|this key stands twice"},
        {areas("'chasis': {}"), "|unknown key; did you mean \"chassis\"?"},
        {areas("'a/b~': {}"), "/a~1b~0|unknown key\n"},
        {identity("'deviceId': 256"), "expected a whole number from 0 to 255"},
        {identity("'deviceId': -1"), "/identity/deviceId|"},
        {identity("'deviceId': 1.5"), "/identity/deviceId|"},
        {identity("'deviceId': '20'"), "/identity/deviceId|"},
        {identity("'deviceId': '0x120'"), "/identity/deviceId|"},
        {identity("'deviceSdrs': 1"), "expected true or false, found number"},
        {identity("'firmware': '128.0'"), "/identity/firmware|"},
        {identity("'ipmiVersion': 2"), "expected a string, found number"},
        {identity("'selfTest': '55'"), "expected 2 bytes, found 1"},
        {identity("'selfTest': '5 500'"), "expected bytes such as"},
        {identity("'support': ['sel', 'sell']"), "/support/1|expected one of"},
        {identity("'support': 'sel'"), "expected a list, found string"},
        {areas("'systemInfo': {'blocks': 0}"), "/systemInfo/blocks|"},
        {areas("'systemInfo': {'blocks': 1, 'osName': 'fifteen letters'}"),
         "/systemInfo/osName|15 bytes, 14 fit"},
        {areas("'chassis': 7"), "/chassis|expected an object, found number"},
        {areas("'channels': [{}]"), "/channels/0|\"number\" is missing"},
        {areas("'channels': [{'number': 14, " + lan + "]"),
         "/channels/0/number|12 to 14"},
        {areas("'channels': [{'number': 1, " + lan + ", {'number': 1, " + lan +
               "]"),
         "/channels|channel 1 stands twice"},
        {areas("'answers': [{'netFn': 6}]"), "/0|\"answer\" is missing"},
        {record("'type': 'full'"), "/records/0|\"number\" is missing"},
        {record("'type': 9, 'contained': '01'"), "expected 16 to 22 bytes"},
        {record("'type': 'oops'"), "/type|expected one of \"full\""},
        {record("'type': 11"), "/type|such records are given as bytes"},
        {record("'type': 3, 'number': 1, 'm': 4"), "/m|unknown key"},
        {number("'m': 512"), "/m|expected a whole number from -512 to 511"},
        {number("'m': 18446744073709551615"), "/m|expected a whole number"},
        {number("'encoding': '6-bit', 'name': 'fan'"), "/name|more than 30"},
        {record("'type': 3, 'number': 1, 'sensors': [{}]"), "has 0 sensors"},
        {number("'sensors': [{'script': {'points': [{'at': 3}, {'at': 3}]}}]"),
         "/script/points|point 1 is no later"},
        {areas("'sensors': [{'number': 1}, {'number': 1}]"), "stands twice"},
        {areas("'eventLog': {'records': [{'sensor': 1}]}"),
         "/eventLog/records/0|\"sensorType\" is missing"},
        {areas("'eventLog': {'records': [{'oem': '0xbf'}]}"), "/oem|OEM rec"},
        {areas("'eventLog': {'records': [{'record': ''}], 'capacity': 0}"),
         "/eventLog/records|more than the capacity"},
        {areas("'frus': [{}]"), "/frus/0|\"device\" is missing"},
        {areas("'frus': [{'device': 1}, {'device': 1}]"), "stands twice"},
        {fru("'board': {'name': 'A'}"), "/board/name|one 8-bit character"},
        {fru("'board': {'custom': ['ok', '\u4e00']}"), "/custom/1|more than"},
        {fru("'board': {'custom': [{'encoding': 7}]}"), "/custom/0/encoding|"},
        {fru("'board': {'date': '1995-12-31T23:59'}"), "/date|expected a time"},
        {fru("'board': {'date': '2001-02-30T00:00'}"), "/date|expected a time"},
        {fru("'raw': '01', 'product': {}"), "/frus/0/product|unknown key"},
        {fru("'multi': [{'type': 'dc-load', 'output': 16}]"), "/output|expec"},
        {areas("'lan': [{'channel': 1, 'address': '1.2.3'}]"),
         "/lan/0/address|expected an IPv4 address"},
        {areas("'lan': [{'channel': 1, 'ipv6': {'static': [{}]}}]"),
         "/lan/0/ipv6/static/0|\"address\" is missing"},
        {areas("'faults': ['cc=c0', 'cc=x']"), "/faults/1|column 1: \"cc\""},
    };
    for (const auto& c : cases) {
        const std::string found = listed(checkProfile(c.text));
        EXPECT_NE(found.find(c.mistakes), std::string::npos)
            << c.text << "\nnot \"" << c.mistakes << "\" but\n"
            << found;
    }
    EXPECT_EQ(
        checkProfile(json("{'identity': {'support': [1, 2]}, 'x': 0}")).size(),
        4u);
}

TEST(SimProfile, noTextCrashesTheReader)
{
    Mistakes mistakes;
    for (const std::string& name : builtinProfileNames()) {
        const auto text = findProfile(name, mistakes);
        ASSERT_TRUE(text) << listed(mistakes);
        EXPECT_EQ(listed(checkProfile(*text)), "");
        const size_t step = text->size() / 200 + 1;
        for (size_t size = 0; size + 3 < text->size(); size += step)
            EXPECT_FALSE(checkProfile(text->substr(0, size)).empty()) << size;
        for (size_t at = 0; at < text->size(); at += step)
            for (char c : {'\0', '"', '{', '\xFF', '9'}) {
                std::string odd = *text;
                odd[at] = c;
                checkProfile(odd); // some are still right; none may crash
            }
    }
    const std::string deep(100000, '[');
    EXPECT_FALSE(checkProfile(deep).empty());
    EXPECT_FALSE(checkProfile(deep + std::string(100000, ']')).empty());
}

TEST(SimProfile, whatIsWrittenReadsBackTheSame)
{
    Mistakes mistakes;
    for (const std::string& name : builtinProfileNames()) {
        const auto profile =
            readProfile(*findProfile(name, mistakes), mistakes);
        ASSERT_TRUE(profile) << name << "\n" << listed(mistakes);
        const std::string text = writeProfile(*profile);
        const auto again = readProfile(text, mistakes);
        ASSERT_TRUE(again) << text << listed(mistakes);
        EXPECT_EQ(writeProfile(*again), text);
        Bmc first{profile->state}, second{again->state};
        for (Bmc* bmc : {&first, &second})
            bmc->setClock([] { return int64_t{1000}; });
        const Bytes datas[] = {{},
                               {0x0F},
                               {0, 4, 1, 0},
                               {0, 5, 0, 0},
                               {3},
                               {0, 0, 7, 0, 0, 0xFF},
                               {1, 56, 0, 0},
                               {9, 0, 0, 200}};
        for (int command = 0; command < 0x60; ++command)
            for (const Bytes& data : datas)
                for (uint8_t netFn : {0x00, 0x04, 0x06, 0x0A, 0x0C}) {
                    const Request request{netFn, uint8_t(command), data};
                    EXPECT_EQ(first.answer(request), second.answer(request));
                }
    }
}

TEST(SimProfile, everyKeyIsReadAndWritten)
{
    const std::string text = R"({
  "description": "odd",
  "identity": {
    "deviceId": "0x7f", "deviceRevision": 15, "deviceSdrs": true,
    "firmware": "127.99", "updating": true, "ipmiVersion": "1.5",
    "support": ["chassis"], "manufacturer": "0xFFFFFF", "product": 65535
  },
  "chassis": {"powerOn": false, "powerFaults": ["fault"],
              "restorePolicy": "always-on", "faults": ["cooling"]},
  "messaging": {"eventBuffer": false, "enables": ["oem-2"]},
  "answers": [{"netFn": "0x2E", "command": 1, "data": "57 01",
               "answer": "00 57:01"}],
  "faults": ["cmd=get-device-id,cc=c0"]
})";
    Mistakes mistakes;
    auto profile = readProfile(text, mistakes);
    ASSERT_TRUE(profile) << listed(mistakes);
    const auto again = readProfile(writeProfile(*profile), mistakes);
    EXPECT_EQ(again->faults, profile->faults);
    EXPECT_EQ(again->description, "odd");
    Bmc bmc{again->state};
    EXPECT_EQ(bmc.answer({6, 1, {}}),
              (Bytes{0, 0x7F, 0x8F, 0xFF, 0x99, 0x51, 0x80, 0xFF, 0xFF, 0xFF,
                     0xFF, 0xFF}));
    EXPECT_EQ(bmc.answer({0, 1, {}}), (Bytes{0, 0x48, 0, 0x48, 0}));
    EXPECT_EQ(bmc.answer({6, 0x2F, {}}), (Bytes{0, 0x80}));
    EXPECT_EQ(bmc.answer({0x2E, 1, {0x57, 1, 0}}), (Bytes{0, 0x57, 1}));
}

/// The first block of the simulator's manual that is fenced as `kind`.
std::string example(const std::string& kind)
{
    std::ifstream manual{SIMULATOR_MANUAL};
    std::string line, block;
    while (std::getline(manual, line) && line != "```" + kind) {
    }
    while (std::getline(manual, line) && line != "```")
        block += line + '\n';
    return block;
}

TEST(SimManual, itsExamplesAreRight)
{
    EXPECT_EQ(listed(checkProfile(example("json"))), "");
    std::istringstream rules{example("fault")};
    int count = 0;
    for (std::string rule; std::getline(rules, rule); ++count) {
        Mistake mistake;
        EXPECT_TRUE(parseFault(rule, mistake)) << rule << mistake.reason;
    }
    EXPECT_GT(count, 10);
}

} // namespace
