#include <gtest/gtest.h>

#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

constexpr uint8_t info = 0x20, reserve = 0x22, getSdr = 0x23;

Bytes ask(Bmc& bmc, uint8_t command, const Bytes& data = {})
{
    return bmc.answer({0x0A, command, data}).value_or(Bytes{});
}

Bmc make(Repository repository)
{
    BmcState state;
    state.repository = std::move(repository);
    Bmc bmc{state};
    bmc.setClock([] { return int64_t{1000}; });
    return bmc;
}

Repository threeRecords()
{
    // The second is longer than it says, the third has no whole header.
    return makeRepository({
        R"({"type": "event-only", "number": 7, "name": "A"})",
        R"({"record": "09 00 51 c0 02 aa bb cc dd"})",
        R"({"record": "ff", "id": "0x0c"})",
    });
}

TEST(SimSdr, recordsAreReadInPiecesUnderAReservation)
{
    Repository repository = threeRecords();
    repository.added = 500;
    repository.readLimit = 8;
    Bmc bmc = make(repository);
    const struct
    {
        const char* what;
        uint8_t command;
        Bytes data, answer;
    } steps[] = {
        {"info",
         info,
         {},
         {0, 0x51, 3, 0, 0xFF, 0xFF, 0xF4, 1, 0, 0, 0, 0, 0, 0, 3}},
        {"header, no reservation",
         getSdr,
         {0, 0, 0, 0, 0, 5},
         {0, 9, 0, 1, 0, 0x51, 3, 13}},
        {"by id", getSdr, {0, 0, 1, 0, 0, 1}, {0, 9, 0, 1}},
        {"no such record", getSdr, {0, 0, 2, 0, 0, 5}, {0xCB}},
        {"short", getSdr, {0, 0, 0, 0, 0}, {0xC7}},
        {"whole, above the limit", getSdr, {0, 0, 0, 0, 0, 255}, {0xCA}},
        {"above the limit", getSdr, {0, 0, 0, 0, 0, 9}, {0xCA}},
        {"piece, no reservation", getSdr, {0, 0, 9, 0, 5, 2}, {0xC5}},
        {"reserve", reserve, {}, {0, 1, 0}},
        {"piece", getSdr, {1, 0, 9, 0, 5, 2}, {0, 12, 0, 0xAA, 0xBB}},
        {"past what it says",
         getSdr,
         {1, 0, 9, 0, 7, 8},
         {0, 12, 0, 0xCC, 0xDD}},
        {"past its end", getSdr, {1, 0, 9, 0, 9, 1}, {0xC9}},
        {"another reservation", reserve, {}, {0, 2, 0}},
        {"the first is void", getSdr, {1, 0, 9, 0, 5, 2}, {0xC5}},
        {"the last", getSdr, {0, 0, 0xFF, 0xFF, 0, 5}, {0, 0xFF, 0xFF, 0xFF}},
    };
    for (const auto& step : steps)
        EXPECT_EQ(ask(bmc, step.command, step.data), step.answer) << step.what;
}

TEST(SimSdr, aChangeVoidsTheReservationAndIsStamped)
{
    Bmc bmc = make(threeRecords());
    Repository& repository = *bmc.state().repository;
    ask(bmc, reserve);
    repository.add({20, {20, 0, 0x51, 0xC0, 0}, {}}, bmc.now());
    EXPECT_EQ(ask(bmc, getSdr, {1, 0, 9, 0, 5, 2}), Bytes{0xC5});
    EXPECT_EQ(ask(bmc, reserve), (Bytes{0, 2, 0})); // never the same again
    repository.change(bmc.now(), false);
    EXPECT_EQ(ask(bmc, getSdr, {2, 0, 9, 0, 5, 2}), Bytes{0xC5});
    EXPECT_EQ(ask(bmc, getSdr, {0, 0, 20, 0, 0, 5}), Bytes{0xCB});
    EXPECT_EQ(repository.added, 1000u);
    EXPECT_EQ(repository.erased, 0u);
    repository.change(bmc.now());
    EXPECT_EQ(ask(bmc, getSdr, {0, 0, 20, 0, 0, 2}),
              (Bytes{0, 0xFF, 0xFF, 20, 0}));
    EXPECT_EQ(repository.added, 1001u); // told apart within a second
}

TEST(SimSdr, fieldsMakeTheBytesOfTheStandard)
{
    const Repository repository = makeRepository({
        R"({"type": "full", "owner": "0x2c", "channel": 6, "lun": 1,
            "number": 16, "entity": "fan", "instance": 2, "sensorType": "fan",
            "readable": ["lc", "unr"], "settable": ["lc"], "unit": "rpm",
            "analogFormat": "twos-complement", "m": -2, "b": 300,
            "tolerance": 3, "accuracy": 1000, "accuracyExponent": 2,
            "resultExponent": -3, "bExponent": 7, "unr": 1, "lc": 5,
            "positiveHysteresis": 8, "encoding": "6-bit", "name": "IPMI"})",
        R"({"type": "compact", "number": 3, "eventType": "redundancy",
            "assertions": "0x0102", "share": 3, "modifierType": "alphabetic",
            "modifierOffset": 2, "encoding": "bcd-plus", "name": "1.5"})",
        R"({"type": "generic-locator", "channel": 9, "slaveAddress": "0x52",
            "name": ""})",
    });
    const Bytes expected[] = {
        {1,    0,    0x51, 1,    0x2E, 0x2C, 0x61, 16,   0x1D, 2,    0x7F,
         0x48, 4,    1,    0x04, 0x28, 0x04, 0x48, 0x22, 0x02, 0x80, 18,
         0,    0,    0xFE, 0xC3, 0x2C, 0x68, 0xF8, 0xD7, 0,    0,    0,
         0,    0xFF, 0,    1,    0,    0,    0,    5,    0,    8,    0,
         0,    0,    0,    0x84, 0x29, 0xDC, 0xA6},
        {2, 0,    0x51, 2, 0x1D, 0x20, 0, 3,    0,    1,   0x7F, 0x40,
         0, 0x0B, 2,    1, 0,    0,    0, 0,    0xC0, 0,   0,    0x13,
         2, 0,    0,    0, 0,    0,    0, 0x43, 0x1C, 0x5A},
        {3, 0, 0x51, 0x10, 0x0B, 0x20, 0xA5, 0x20, 0, 0, 0, 0, 0, 1, 0, 0xC0},
    };
    for (size_t at = 0; at < std::size(expected); ++at)
        EXPECT_EQ(repository.records[at].bytes, expected[at]) << at;
}

TEST(SimSdr, aProfileHoldsAnyBytesAndWritesThemBack)
{
    Profile profile;
    profile.state.repository = threeRecords();
    auto& records = profile.state.repository->records;
    Bytes odd = records[0].bytes;
    odd[14] = 0x55; // reserved
    records.push_back({1, odd, {}});
    odd.back() = 0xFF; // Latin-1
    odd[14] = 0;
    records.push_back({1, odd, {}});
    for (uint8_t type : {1, 2, 3, 8, 9, 16, 17, 18, 192})
        for (size_t size : {5, 8, 9, 16, 31, 47, 300}) {
            Bytes bytes(size, 0x5A);
            bytes[3] = type;
            records.push_back({0x5A5A, bytes, {}});
        }
    Mistakes mistakes;
    const auto again = readProfile(writeProfile(profile), mistakes);
    ASSERT_TRUE(again) << mistakes[0].place << mistakes[0].reason;
    for (size_t at = 0; at < records.size(); ++at) {
        EXPECT_EQ(again->state.repository->records[at].bytes, records[at].bytes)
            << at;
        EXPECT_EQ(again->state.repository->records[at].id, records[at].id);
    }
}

} // namespace
