#include <gtest/gtest.h>

#include "sim/profile/hex.h"
#include "sim/profile/profile.h"

namespace
{

using namespace Sim;

BmcState server()
{
    BmcState state;
    state.lan = {makeLanConfig(R"({"channel": 1, "aliases": "00",
        "address": "192.0.2.10", "source": "static", "community": "public",
        "vlan": 300, "cipherSuites": "03 11", "ipv6": {"support": ["dual"],
        "static": [{"address": "2001:db8::1", "prefix": 64},
                   {"address": "::", "enabled": false, "status": "disabled"}],
        "dynamic": [{"address": "fe80::2", "status": "pending"}]},
        "parameters": [{"number": 192, "selector": 2, "data": "02 aa"}]})")};
    return state;
}

TEST(SimLan, parametersAreReadAndSet)
{
    Bmc bmc{server()};
    const struct
    {
        const char *what, *request, *answer;
    } steps[] = {
        {"address", "0c02 01 03 00 00", "00 11 c0 00 02 0a"},
        {"by another channel", "0c02 00 03 00 00", "00 11 c0 00 02 0a"},
        {"at any selector", "0c02 01 03 07 00", "00 11 c0 00 02 0a"},
        {"of no channel", "0c02 02 03 00 00", "cc"},
        {"revision alone", "0c02 81 03 00 00", "00 11"},
        {"not supported", "0c02 01 0c 00 00", "80"},
        {"VLAN", "0c02 01 14 00 00", "00 11 2c 81"},
        {"number of suites", "0c02 01 16 00 00", "00 11 02"},
        {"suites", "0c02 01 17 00 00", "00 11 00 03 11"},
        {"static", "0c02 01 38 00 00",
         "00 11 00 80 20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 01 40 00"},
        {"another static", "0c02 01 38 01 00",
         "00 11 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01"},
        {"no further", "0c02 01 38 02 00", "c9"},
        {"dynamic", "0c02 01 3b 00 00",
         "00 11 00 01 fe 80 00 00 00 00 00 00 00 00 00 00 00 00 00 02 00 02"},
        {"an OEM's at 2", "0c02 01 c0 02 00", "00 11 02 aa"},
        {"and at 1", "0c02 01 c0 01 00", "c9"},
        {"set in progress", "0c01 01 00 01", "00"},
        {"by another, too", "0c01 01 00 01", "81"},
        {"complete", "0c01 01 00 00", "00"},
        {"set address", "0c01 01 03 01 02 03 04", "00"},
        {"too long", "0c01 01 03 01 02 03 04 05", "c7"},
        {"address is set", "0c02 01 03 00 00", "00 11 01 02 03 04"},
        {"set what is not there", "0c01 01 0c 01 02 03 04", "80"},
        {"set what is fixed", "0c01 01 17 00 01 02", "82"},
        {"set at a selector", "0c01 01 c0 02 bb", "00"},
        {"it is set", "0c02 01 c0 02 00", "00 11 02 bb"},
    };
    for (const auto& step : steps) {
        const Bytes bytes = parseBytes(step.request).value();
        const Request request{
            bytes[0], bytes[1], {bytes.begin() + 2, bytes.end()}};
        EXPECT_EQ(formatBytes(*bmc.answer(request)), step.answer) << step.what;
    }
}

TEST(SimLan, aProfileHoldsAnyParameterAndWritesItBack)
{
    Mistakes mistakes;
    Profile profile;
    profile.state = server();
    auto& parameters = profile.state.lan[0].parameters;
    const Bytes odd = parseBytes("ff 81 00 41 02").value();
    for (int number = 0; number < 72; ++number)
        for (size_t size : {0, 1, 2, 3, 4, 6, 18, 20})
            for (uint8_t first : odd) {
                const auto key = lanKey(uint8_t(number), number & 1);
                Bytes held = std::exchange(parameters[key], Bytes(size, first));
                if (size > 1)
                    parameters[key].back() = odd[size % odd.size()];
                const auto again = readProfile(writeProfile(profile), mistakes);
                ASSERT_TRUE(again) << mistakes[0].place << mistakes[0].reason;
                ASSERT_EQ(again->state.lan[0].parameters, parameters)
                    << number << ", " << size;
                parameters[key] = std::move(held);
                if (parameters[key].empty())
                    parameters.erase(key);
            }
}

} // namespace
