#include <gtest/gtest.h>

#include "sim/profile/hex.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

/// Rows are asked one after the other: network function, command and data.
struct Step
{
    const char *what, *request, *answer;
    uint8_t lun = 0;
    uint8_t channel = systemInterface, address = 0x20;
};

void play(Bmc& bmc, const std::vector<Step>& steps)
{
    for (const Step& step : steps) {
        const Bytes bytes = parseBytes(step.request).value();
        const auto answer = bmc.answer({bytes[0],
                                        bytes[1],
                                        {bytes.begin() + 2, bytes.end()},
                                        step.lun,
                                        step.channel,
                                        step.address});
        EXPECT_EQ(formatBytes(answer.value_or(Bytes{})), step.answer)
            << step.what;
    }
}

TEST(SimFru, devicesAreReadAndWrittenAsTheyAllow)
{
    BmcState state;
    state.satellites.resize(1);
    state.satellites[0].busChannel = 6;
    state.satellites[0].address = 0x72;
    state.satellites[0].frus = {makeFruDevice("72 73")};
    const std::string raw = R"("raw": "00 01 02 03 04 05 06 07 08"})";
    for (const char* text : {
             R"({"device": 0, "size": 10, "readLimit": 4, "limitCode": "0xc7",
                 "writeSeconds": 5,
                 "protected": [{"offset": 2, "count": 2}], )",
             R"({"device": 1, "access": "word", )",
             R"({"device": 1, "lun": 2, "access": "word",
                 "byteOffsets": true, )",
             R"({"device": 3, "busy": true, )",
         })
        state.frus.push_back(makeFruDevice(text + raw));
    Bmc bmc{state};
    int64_t now = 100;
    bmc.setClock([&now] { return now; });
    play(bmc, {
                  {"information", "0a10 00", "00 0a 00 00"},
                  {"of words", "0a10 01", "00 09 00 01"},
                  {"of nobody", "0a10 02", "cb"},
                  {"read nobody", "0a11 02 0000 01", "cb"},
                  {"write nobody", "0a12 00 0000 01", "cb", 1},
                  {"a read", "0a11 00 0100 02", "00 02 01 02"},
                  {"more than the limit", "0a11 00 0100 05", "c7"},
                  {"nothing", "0a11 00 0100 00", "cc"},
                  {"behind contents", "0a11 00 0800 04", "00 02 08 ff"},
                  {"behind all", "0a11 00 0a00 01", "c9"},
                  {"words", "0a11 01 0100 02", "00 02 02 03 04 05"},
                  {"half a word", "0a11 01 0400 02", "00 01 08 ff"},
                  {"no such word", "0a11 01 0500 01", "c9"},
                  {"words by byte", "0a11 01 0300 01", "00 01 03 04", 2},
                  {"busy", "0a11 03 0000 01", "81"},
                  {"busy, too", "0a12 03 0000 01", "81"},
                  {"up to a protected", "0a12 00 0100 aa bb", "80"},
                  {"past the end", "0a12 00 0900 aa bb", "c9"},
                  {"half a word", "0a12 01 0000 aa", "c7"},
                  {"a word", "0a12 01 0300 aa bb", "00 01"},
                  {"is written", "0a11 01 0300 01", "00 01 aa bb"},
                  {"a byte", "0a12 00 0900 cc", "00 01"},
                  {"is not yet", "0a11 00 0900 01", "81"},
                  {"a satellite's", "0a11 00 0100 01", "00 01 73", 0, 6, 0x72},
              });
    now += 5;
    play(bmc, {{"is written", "0a11 00 0800 02", "00 02 08 cc"}});
    bmc.reset();
    play(bmc, {{"is as it was", "0a11 00 0900 01", "00 01 ff"}});
}

/// Two areas whose bytes were worked out by hand.
std::string device(const std::string& further)
{
    return R"({"device": 0, "board": {"language": 25,
        "date": "1996-01-01T00:01", "manufacturer": "AB",
        "name": {"encoding": "6-bit", "text": "IPMI"},
        "serialNumber": {"encoding": "bcd-plus", "text": "123."},
        "partNumber": {"encoding": "binary", "data": "ff"},
        "custom": ["hi"]},
      "multi": [{"type": "dc-output", "output": 2, "standby": true,
                 "nominal": 1220, "negativeDeviation": -1}])" +
           further + "}";
}

TEST(SimFru, fieldsMakeTheBytesOfTheStandardAndWrongOnes)
{
    const Bytes right =
        parseBytes("01 00 00 01 00 04 00 fa 01 03 19 01 00 00 c2 41 42 83 29 "
                   "dc a6 42 12 3c 01 ff c0 c2 68 69 c1 cb 01 82 0d b8 b8 82 "
                   "c4 04 ff ff 00 00 00 00 00 00 00 00")
            .value();
    const struct
    {
        const char* corrupt;
        std::vector<std::pair<size_t, uint8_t>> bytes;
    } cases[] = {
        {"", {}},
        {"\"header-checksum\"", {{7, 0xFB}}},
        {"\"board-checksum\"", {{31, 0xCC}}},
        {"\"board-length\"", {{9, 0xFF}, {31, 0xCF}}},
        {"\"record-checksum\"", {{35, 0xB9}, {36, 0xB7}}},
        {"\"record-header\"", {{36, 0xB9}}},
        {"\"record-length\"", {{34, 0xFF}, {36, 0xC6}}},
        {"\"no-last-record\"", {{33, 0x02}, {36, 0x38}}},
    };
    for (const auto& c : cases) {
        Bytes expected = right;
        for (const auto& [at, byte] : c.bytes)
            expected[at] = byte;
        const FruDevice made = makeFruDevice(
            device(R"(, "corrupt": [)" + std::string{c.corrupt} + "]"));
        EXPECT_EQ(formatBytes(made.contents), formatBytes(expected))
            << c.corrupt;
        EXPECT_EQ(made.size, expected.size());
    }
}

std::string written(const BmcState& state)
{
    Profile profile;
    profile.state = state;
    return writeProfile(profile);
}

TEST(SimFru, aProfileHoldsAnyContentsAndWritesThemBack)
{
    Mistakes mistakes;
    BmcState state;
    state.frus = {makeFruDevice("01")};
    std::vector<Bytes> all{{}};
    const auto server = builtinProfile();
    for (const FruDevice& fru : server->state().frus)
        all.push_back(fru.contents);
    const Bytes small = makeFruDevice(device("")).contents;
    for (size_t at = 0; at < small.size(); ++at) {
        all.push_back(Bytes{small.begin(), small.begin() + std::ptrdiff_t(at)});
        for (uint8_t bits : {0x01, 0x40, 0x80, 0xFF}) {
            all.push_back(small);
            all.back()[at] ^= bits;
        }
    }
    for (const Bytes& contents : all) {
        state.frus[0].contents = contents;
        const auto again = readProfile(written(state), mistakes);
        ASSERT_TRUE(again) << mistakes[0].place << mistakes[0].reason;
        EXPECT_EQ(again->state.frus[0].contents, contents);
        EXPECT_EQ(again->state.frus[0].size, 1);
    }
    // Fields where they say it all, even short ones.
    state.frus[0].contents = small;
    for (const char* part :
         {"\"manufacturer\": \"AB\"", "\"negativeDeviation\": -1",
          "\"date\": \"1996-01-01T00:01\"", "\"text\": \"123.\""})
        EXPECT_NE(written(state).find(part), std::string::npos) << part;
}

} // namespace
