// vek-ipmi capture FILE
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

// What is shown of a controller, of its capture and of what is made of that,
// compared; $asked runs a line on the controller.
constexpr char compare[] =
    "d=$(mktemp -d); cd $d; $asked $tool capture F >said; s=$?; "
    "$sim import capture F -o G || echo import; "
    "for c in info sensors 'sensors --all --json' 'sdr --raw' 'sel --raw' "
    "fru entities lan inventory 'inventory --json'; do "
    "$asked $tool $c >a 2>&1; echo $? >>a; sed -i '/\"time\":/d' a; "
    "for p in F G; do "
    "$sim --profile $p -- $tool $c >b 2>&1; echo $? >>b; "
    "sed '/\"time\":/d' b | diff a - || echo $p $c; done; "
    "done; cat said; rm -r $d; exit $s";

std::string on(const std::string& options)
{
    return "asked=\"$sim " + options + " --\"; " + compare;
}

TEST(Capture, showsWhatTheControllerShows)
{
    const std::string whole = on("--profile two-socket"),
                      small = on("--profile minimal"),
                      odd =
                          on("--fault cmd=get-sensor-reading,data=09,cc=D2 "
                             "--fault cmd=get-sensor-thresholds,data=04,cut=3 "
                             "--fault cmd=get-lan-configuration,data=01:06,"
                             "cc=FF "
                             "--fault cmd=get-fru-inventory-area-info,data=02,"
                             "cc=81 "
                             "--fault cmd=get-self-test-results,flip=1:0f");
    check({
        {"everything", whole.c_str(), 0,
         "F: 119 sensor data records, 98 sensors, 10 FRU devices, "
         "1 LAN channel, 80 event log records\n"
         "To read it: vek-ipmi --simulate=./F inventory\n",
         "^vek-ipmi: 2 sensors at another LUN of the controller "},
        {"next to nothing", small.c_str(), 0,
         "F: 0 sensor data records, 0 sensors, 0 FRU devices, "
         "0 LAN channels, 0 event log records\n"
         "To read it: vek-ipmi --simulate=./F inventory\n",
         ""},
        {"odd answers", odd.c_str(), 0,
         "F: 119 sensor data records, 98 sensors, 9 FRU devices, "
         "1 LAN channel, 80 event log records\n"
         "To read it: vek-ipmi --simulate=./F inventory\n",
         "^vek-ipmi: 2 sensors at another LUN of the controller "},
    });
}

// Each shell is in an empty folder.
std::string in(const std::string& line)
{
    return "d=$(mktemp -d); cd $d; ( " + line + " ); s=$?; rm -r $d; exit $s";
}

TEST(Capture, goesAroundFaultsAndTellsWhatIsMissing)
{
    const std::string
        small = in(
            "$sim --fault cmd=get-sdr,data=??:??:??:??:??:10,nth=3,cc=CA "
            "--fault cmd=get-sdr,every=40,cc=C5 "
            "--fault cmd=read-fru-data,nth=5,cc=81 "
            "--fault cmd=read-fru-data,nth=9,cc=C8 "
            "-- $tool capture F >said 2>&1 && $sim -- $tool capture G >a 2>&1 "
            "&& grep -v timeOffset F >f; grep -v timeOffset G | cmp f"),
        words = in("printf '%s' '{\"identity\": {\"manufacturer\": 1}, "
                   "\"frus\": [{\"device\": 0, \"access\": \"word\", "
                   "\"byteOffsets\": true, \"size\": 48, \"board\": "
                   "{\"name\": \"Main Board\"}}]}' >P; "
                   "$sim --profile P -- $tool capture F >said; "
                   "$sim --profile P -- ipmitool fru print 0 >a 2>&1; "
                   "$sim --profile F -- ipmitool fru print 0 2>&1 | cmp - a && "
                   "grep -o 'byteOffsets.*48' F"),
        lost = in("$sim --fault cmd=get-sdr,data=??:??:05:00,cc=CB "
                  "--fault cmd=get-sel-entry,data=??:??:07:00,cc=FF "
                  "-- $tool capture F; echo $?; $sim --profile F -- $tool sel "
                  "| tail -n 1");
    check({
        {"pieces, reservations, busy devices", small.c_str(), 0, "", ""},
        {"offsets in bytes of a device by words", words.c_str(), 0,
         "byteOffsets\": true, \"size\": 48\n", ""},
        {"what follows an unreadable record", lost.c_str(), 0,
         "F: 4 sensor data records, 4 sensors, 1 FRU device, 1 LAN channel, "
         "6 event log records\n"
         "To read it: vek-ipmi --simulate=./F inventory\n4\n6 records\n",
         "sensor data record 0005h and what follows it: CBh.*event log record "
         "0007h and what follows it: FFh"},
        {"nobody there",
         "$sim --fault cmd=get-device-id,cc=D1 -- "
         "$tool capture /dev/null",
         3, "", "no controller to capture: D1h"},
        {"nowhere to write", "$sim -- $tool capture /nowhere/F", 4, "",
         "cannot write into /nowhere: No such file"},
    });
}

TEST(Capture, namesNoServerWhenAnonymous)
{
    const std::string line =
        in("$sim -- $tool capture --anonymize F >said 2>&1; "
           "for c in 'ipmitool fru print' 'ipmitool lan print 1' "
           "'ipmitool lan6 print 1' \"$tool info\"; do "
           "$sim -- $c >a 2>&1; $sim --profile F -- $c 2>&1 | "
           "diff a - | sed -n 's/^> *//p'; done | sort | uniq -c");
    const std::string secrets =
        in("$sim -- $tool capture F >said 2>&1; "
           "$sim -- $tool capture --anonymize G >said 2>&1; "
           "for s in 'b3 5e 0c 91' '72 61 63 6b 37' '4d 42 32 33 30 39' "
           "'2f 31 39 32 2e 30'; do grep -c \"$s\" F; grep -c \"$s\" G; done");
    check({
        {"what differs", line.c_str(), 0, "@capture-anonymous.txt", ""},
        {"GUIDs, host name, a serial number, a URL", secrets.c_str(), 1,
         "2\n0\n1\n0\n1\n0\n1\n0\n", ""},
    });
}

} // namespace
} // namespace Tool
