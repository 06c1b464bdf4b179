// vek-ipmi lan
#include <gtest/gtest.h>

#include "tests/command/program.h"

#define TWO_LANS EXPECTED_FOLDER "/../profiles/two-lans.json"
#define FAULT(rule) "$sim --fault cmd=get-lan-configuration," rule " -- $tool "

namespace Tool
{
namespace
{

TEST(Lan, isShownChannelByChannel)
{
    check({
        {"built in", "$tool --simulate lan", 0, "@lan.txt", ""},
        {"two", "$tool --simulate=" TWO_LANS " lan", 0, "@lan-two.txt", ""},
        {"one of two", "$tool --simulate=" TWO_LANS " lan --channel 8 --json",
         0, "@lan.json", ""},
        {"chosen where channels are not told",
         "$sim --fault cmd=get-channel-info,cc=c1 -- $tool lan --channel 1 | "
         "head -n 2",
         0,
         "Channel               1\nMAC address           02:00:5e:10:0a:01\n",
         ""},
    });
}

TEST(Lan, saysWhatCannotBeRead)
{
    check({
        {"none", "$tool --simulate=moving lan", 3, "",
         "no LAN channel .* 11 channels: CCh: .*\n  .*--channel 1"},
        {"no such command", "$tool --simulate=minimal lan", 3, "",
         "1 channel: C1h"},
        {"another medium", "$tool --simulate lan --channel 6", 1, "",
         "channel 6 is no LAN channel but IPMB"},
        {"no channel", "$tool --simulate lan --channel 12", 1, "", "1 to 11"},
        {"silent channels",
         "$sim --count --fault cmd=get-channel-info,cc=c3 -- $tool lan", 4, "",
         "2 channels: C3h.*; 9 were not asked\n.*\n.*get-channel-info +2\n"},
        {"the only one is busy",
         "$sim --fault cmd=get-channel-info,data=01,cc=c0 -- $tool lan", 3, "",
         "IPMB .*1 channel: C0h"},
        {"all answers are cut",
         "$sim --fault cmd=get-channel-info,cut=2 -- $tool lan", 4, "",
         "the answer was cut"},
        {"one of two is busy, or silent with its neighbour",
         "for rule in 1,cc=c0 1,flip=1:02 ?,after=1,cc=c3; do "
         "$sim --profile " TWO_LANS " --fault "
         "cmd=get-channel-info,data=0$rule -- $tool lan; done | "
         "grep -A 1 -E '^(Chan|Not)' | cut -c -60",
         0, "@lan-busy.txt",
         "1 was not read: C0h(.*\n)*.*for another one(.*\n)*"
         ".*Info: channels 2 to 3, and all that follow, were"},
        {"one channel is silent",
         "$sim --fault cmd=get-channel-info,data=02,cc=c3 -- $tool lan | "
         "tail -n 1 | cut -c -39",
         0, "Not read              channel 2 (C3h: t\n",
         "channel 2 was not read"},
        {"everything is refused", FAULT("cc=cc") "lan", 3, "",
         "configuration of LAN channel 1 was not read: CCh"},
        {"a few are",
         FAULT("data=01:06,cc=c0") "lan | grep -E 'Not|mask|Gateway  '", 0,
         "Gateway               192.0.2.1\n"
         "Not read              the IPv4 netmask (C0h: node busy)\n",
         "the IPv4 netmask was not read: C0h: node busy\n  Try again"},
        {"as JSON",
         FAULT("data=01:38:01,cut=21") "lan --json >out; s=$?; "
                                       "grep -A 2 '\"what\"' out; rm out; exit "
                                       "$s",
         4,
         "          \"what\": \"static IPv6 address 1\",\n"
         "          \"completion\": {\n            \"code\": 0,\n",
         "static IPv6 address 1 was not read: the answer was cut"},
        {"silent now and then",
         "$sim --count --fault cmd=get-lan-configuration,every=2,cc=c3 -- "
         "$tool lan >/dev/null",
         4, "",
         "gateway's MAC address, and what follows it (.*\n)*.*configuration "
         "+8\n"},
        {"a run of failures is one",
         FAULT("data=01:3b,cc=cc") "lan --json | grep '\"what\"'", 0,
         "          \"what\": \"dynamic IPv6 addresses 0 to 1\",\n",
         "addresses 0 to 1 were not read: CCh"},
        {"an answer for another place",
         FAULT("data=01:3b:01,flip=2:02") "lan >/dev/null", 4, "",
         "address 1 was not read: the controller answered for another"},
        {"without the number of places",
         FAULT("data=01:37,cc=80") "lan --json | grep -c '\"kind\"'", 0, "2\n",
         ""},
        {"left out, not a gap",
         FAULT("data=01:0c,cc=80") "lan | grep -c ateway", 0, "3\n", ""},
        {"silent from there on",
         FAULT("data=01:37,cc=c3") "lan --json >/dev/null; "
                                   "$sim --count --fault "
                                   "cmd=get-lan-configuration,after=2,cc=c3 "
                                   "-- $tool lan",
         4, "@lan-silent.txt",
         "the MAC address.*\n.*netmask, and what follows"},
    });
}

} // namespace
} // namespace Tool
