// vek-ipmi inventory
#include <gtest/gtest.h>

#include "tests/command/program.h"

#define NO_RECORDS EXPECTED_FOLDER "/../profiles/two-lans.json"

namespace Tool
{
namespace
{

TEST(Inventory, isOnePage)
{
    check({
        {"built in", "LANG=C.UTF-8 $tool --simulate inventory", 0,
         "@inventory.txt", ""},
        {"what the controller does not have",
         "$tool --simulate=minimal inventory", 0, "@inventory-minimal.txt",
         "no sensor data repository.*\n.*\n.*no FRU device\n.*no LAN channel"},
        {"each part as in its own document",
         "folder=$(mktemp -d); for part in info fru entities lan inventory; do "
         "$tool --simulate $part --json >$folder/$part; done; "
         "cd $folder && python3 -c 'import json; "
         "load = lambda name: json.load(open(name)); "
         "print(*[part for part, value in load(\"inventory\").items() "
         "if part in (\"schema\", \"gaps\") or value == load(part)])'; "
         "rm -r $folder",
         0, "schema info fru entities lan gaps\n", ""},
        {"records are read once",
         "$sim --count -- $tool inventory 2>&1 >/dev/null | "
         "grep -E 'get-sdr |get-device-id|get-sensor'",
         0,
         "06 01 get-device-id                                   1\n"
         "0a 23 get-sdr                                       508\n",
         ""},
    });
}

TEST(Inventory, showsWhatIsLeft)
{
    check({
        {"parts fail",
         "$sim --fault cmd=get-device-id,cc=d2 --fault cmd=get-sdr,cc=c3 "
         "--fault cmd=read-fru-data,data=00:00,cc=81 "
         "--fault cmd=get-lan-configuration,data=01:0c,cc=c3 "
         "-- $tool inventory",
         4, "@inventory-faults.txt",
         "Get Device ID failed: D2h.*\n.*\n.*only 0 of 119 .*"},
        {"the only ones of their kind are busy",
         "$sim --fault cmd=get-channel-info,data=01,cc=c0 "
         "--fault cmd=get-fru-inventory-area-info,cc=c0 --profile " NO_RECORDS
         " -- $tool inventory | grep -E 'C0h'",
         0,
         "    Contents  not read: C0h: node busy\n"
         "  Not read              channel 1 (C0h: node busy)\n",
         "FRU device 0 was not read.*\n.*\n.*channel 1 was not read"},
        {"nothing answers",
         "$sim --fault cmd=get-device-id,cc=c3 "
         "--fault netfn=0a,cc=c3 --fault cmd=get-channel-info,cc=c3 "
         "-- $tool inventory",
         4, "", "Get Device ID failed: C3h"},
    });
}

} // namespace
} // namespace Tool
