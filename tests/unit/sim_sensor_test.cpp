#include <gtest/gtest.h>
#include <set>

#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

constexpr uint8_t netFnSensor = 0x04, getReading = 0x2D;

Bmc make(const std::vector<std::string>& records)
{
    BmcState state;
    state.repository = makeRepository(records);
    state.satellites.emplace_back();
    state.satellites[0].busChannel = 6;
    state.satellites[0].address = 0x72;
    return Bmc{state};
}

Bytes ask(Bmc& bmc, uint8_t command, const Bytes& data, uint8_t lun = 0)
{
    return bmc.answer({netFnSensor, command, data, lun}).value_or(Bytes{});
}

TEST(SimSensor, commandsKeepToWhatTheRecordAllows)
{
    Bmc bmc = make({
        R"({"type": "full", "number": 1, "readable": ["lc", "unc", "uc"],
            "settable": ["unc"], "lc": 5, "unc": 80, "uc": 90,
            "hysteresisAccess": "readable", "positiveHysteresis": 2,
            "sensors": [{"reading": 85}]})",
        R"({"type": "full", "number": 1, "lun": 3, "thresholdAccess": "none",
            "eventControl": "none", "specified": ["nominal"], "nominal": 9})",
        R"({"type": "compact", "number": 2, "share": 2, "sensorType": 8,
            "assertions": "0x000f", "sensors": [{"states": "0x0001"},
            {"states": "0x4008", "unavailable": true}]})",
        R"({"type": "full", "number": 4, "sensors": [{"present": false}]})",
        R"({"type": "full", "number": 5, "sensors": [{"answers": [
            {"command": "0x2d", "answer": "c3"},
            {"command": "0x27", "answer": ""}]}]})",
        R"({"type": "full", "owner": "0x41", "number": 6})",
        R"({"type": "full", "number": 7, "thresholdAccess": "fixed",
            "readable": ["uc"], "uc": 50, "sensors": [{"reading": 60}]})",
        R"({"type": "full", "number": 8, "m": -1, "readable": ["uc"],
            "uc": 50, "sensors": [{"reading": 40}]})",
    });
    const struct
    {
        const char* what;
        uint8_t command;
        Bytes data;
        uint8_t lun;
        Bytes answer;
    } steps[] = {
        {"above", 0x2D, {1}, 0, {0, 85, 0xC0, 0xC8}},
        {"thresholds", 0x27, {1}, 0, {0, 0x1A, 0, 5, 0, 80, 90, 0}},
        {"not settable", 0x26, {1, 0x10, 0, 0, 0, 0, 9, 0}, 0, {0xCC}},
        {"set", 0x26, {1, 8, 0, 0, 0, 86, 0, 0}, 0, {0}},
        {"within hysteresis", 0x2D, {1}, 0, {0, 85, 0xC0, 0xC8}},
        {"re-arm", 0x2A, {1, 0}, 0, {0}},
        {"well", 0x2D, {1}, 0, {0, 85, 0xC0, 0xC0}},
        {"hysteresis", 0x25, {1, 0xFF}, 0, {0, 2, 0}},
        {"read only", 0x24, {1, 0xFF, 1, 1}, 0, {0xCD}},
        {"events", 0x29, {1}, 0, {0, 0xC0, 0x84, 0x02, 0x84, 0x02}},
        {"fewer", 0x28, {1, 0x60, 4, 0, 0x80}, 0, {0}},
        {"fewer by that", 0x29, {1}, 0, {0, 0x40, 0x80, 0x02, 0x04, 0x02}},
        {"one more", 0x28, {1, 0x90, 1}, 0, {0}},
        {"more by that", 0x29, {1}, 0, {0, 0x80, 0x81, 0x02, 0x04, 0x02}},
        {"both", 0x28, {1, 0x30}, 0, {0xCC}},
        {"same number, other LUN", 0x2D, {1}, 3, {0, 9, 0xC0, 0xC0}},
        {"no thresholds", 0x27, {1}, 3, {0xCD}},
        {"no events", 0x29, {1}, 3, {0xCD}},
        {"no sensor", 0x2D, {1}, 2, {0xCB}},
        {"first of two", 0x2D, {2}, 0, {0, 0, 0xC0, 1, 0x80}},
        {"second of two", 0x2D, {3}, 0, {0, 0, 0xE0, 8, 0xC0}},
        {"discrete thresholds", 0x27, {2}, 0, {0xCD}},
        {"type", 0x2F, {2}, 0, {0, 8, 0x6F}},
        {"not present", 0x2D, {4}, 0, {0xCB}},
        {"odd answer", 0x2D, {5}, 0, {0xC3}},
        {"silence", 0x27, {5}, 0, {}},
        {"software's", 0x2D, {6}, 0, {0xCB}},
        {"fixed thresholds", 0x27, {7}, 0, {0, 0, 0, 0, 0, 0, 0, 0}},
        {"are compared", 0x2D, {7}, 0, {0, 60, 0xC0, 0xD0}},
        {"falling raw values", 0x2D, {8}, 0, {0, 40, 0xC0, 0xD0}},
        {"short", 0x2D, {}, 0, {0xC7}},
    };
    for (const auto& step : steps)
        EXPECT_EQ(ask(bmc, step.command, step.data, step.lun), step.answer)
            << step.what;
}

TEST(SimSensor, readingsFollowAScriptOverTheModelsClock)
{
    const std::string sensor =
        R"({"type": "full", "number": 1, "analogFormat": "twos-complement",
            "readable": ["lc"], "lc": 246, "hysteresisAccess": "settable",
            "negativeHysteresis": 5, "sensors": [{"script": {)";
    int64_t now = 0;
    const auto reading = [&](Bmc& bmc, int64_t at) {
        now = at;
        return ask(bmc, getReading, {1});
    };
    Bmc ramp = make({sensor + R"("points": [{"at": 0, "value": 10},
        {"at": 10, "value": -30}, {"at": 20, "value": 200}],
        "ramp": true, "period": 40}}]})"});
    ramp.setClock([&] { return now; });
    EXPECT_EQ(reading(ramp, 4), (Bytes{0, 250, 0xC0, 0xC0}));  // -6
    EXPECT_EQ(reading(ramp, 5), (Bytes{0, 246, 0xC0, 0xC2}));  // -10
    EXPECT_EQ(reading(ramp, 11), (Bytes{0, 249, 0xC0, 0xC2})); // still: -7
    EXPECT_EQ(reading(ramp, 12), (Bytes{0, 16, 0xC0, 0xC0}));
    EXPECT_EQ(reading(ramp, 30), (Bytes{0, 127, 0xC0, 0xC0})); // clamped
    EXPECT_EQ(reading(ramp, 45), (Bytes{0, 246, 0xC0, 0xC2}));
    Bmc noise = make({sensor + R"("points": [{"at": 0, "value": 50}],
        "noise": 3, "seed": 9}}]})"});
    Bmc same = noise;
    noise.setClock([&] { return now; });
    same.setClock([&] { return now; });
    std::set<int> seen;
    for (int64_t at = 0; at < 200; ++at) {
        seen.insert(reading(noise, at).at(1));
        EXPECT_EQ(reading(noise, at), reading(same, at)) << at;
    }
    EXPECT_EQ(seen, (std::set<int>{47, 48, 49, 50, 51, 52, 53}));
}

TEST(SimSensor, anotherControllerOwnsItsSensors)
{
    Bmc bmc = make({
        R"({"type": "full", "owner": "0x72", "channel": 6, "lun": 1,
            "number": 1, "sensors": [{"reading": 7}]})",
        R"({"type": "full", "owner": "0x72", "channel": 0, "number": 1})",
    });
    const auto bridged = [&](uint8_t channel, uint8_t address, uint8_t lun) {
        return bmc.answer(
            {netFnSensor, getReading, {1}, lun, channel, address});
    };
    EXPECT_EQ(ask(bmc, getReading, {1}), Bytes{0xC1}); // it has none
    EXPECT_EQ(bridged(6, 0x72, 1), (Bytes{0, 7, 0xC0, 0xC0}));
    EXPECT_EQ(bridged(6, 0x72, 0), Bytes{0xCB});
    EXPECT_EQ(bridged(0, 0x72, 0), std::nullopt);
    EXPECT_EQ(bridged(0, 0x20, 0), Bytes{0xC1}); // the BMC itself
    bmc.reach(6, 0x72)->state().sensors[0x101].reading = 8;
    EXPECT_EQ(bridged(6, 0x72, 1)->at(1), 8);
    bmc.reset();
    EXPECT_EQ(bridged(6, 0x72, 1)->at(1), 7);
}

} // namespace
