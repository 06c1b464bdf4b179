// vek-ipmi threshold, hysteresis, events and health
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Threshold, isSetToTheNearestRawValueAndReadBack)
{
    check({
        {"linear",
         "$sim -- $tool threshold set 'Inlet Temp' --unc 38.3 --uc 44", 0,
         "@threshold.txt",
         "note: upper non-critical: the nearest to 38.3 .* is 38 degrees C"},
        {"zero and below",
         "$sim -- $tool threshold set 3.0.32 --lnc 0 --lc -3 --json", 0,
         "@threshold.json", ""},
        {"1/x",
         "$sim -- $tool threshold set 'PSU1 Fan' --lnc 6000 | "
         "grep non-critical",
         0,
         "Lower non-critical    5988.024 RPM (raw A7h), settable\n"
         "Upper non-critical    -\n",
         "is 5988.024 RPM"},
        {"restored", "$sim -- $tool threshold restore VBAT | grep 'Lower c'", 0,
         "Lower critical        2.496 Volts (raw 9Ch), settable\n", ""},
        {"the bytes",
         "$sim --fault netfn=04,cmd=26,cc=d5 -- $tool threshold set FAN1 "
         "--lnc 2500",
         3, "", "not set: D5h"},
        {"not kept",
         "$sim --fault netfn=04,cmd=26,cc=00 -- $tool threshold set FAN1 "
         "--lnc 2500 >/dev/null",
         4, "",
         "lower non-critical reads as 2000 RPM after it was set to 2500"},
    });
}

TEST(Threshold, isRefusedWithTheReason)
{
    const struct
    {
        const char *arguments, *why;
    } cases[] = {
        {"set 'Inlet Temp' --lnr -10",
         "its lower non-recoverable threshold cannot be set\n"
         "  These can be: lower non-critical, lower critical, upper"},
        {"set FAN5 --lnc 12776", "go from 0 RPM to 12750 RPM"},
        {"set FAN5 --lnc nan", "no raw byte says"},
        {"set 'Inlet Temp' --unc 10 --uc 5", "would be below upper non-"},
        {"set 'Inlet Temp' --lnc -1", "would be below lower critical .0 deg"},
        {"set 'Ambient Light' --uc 100", "has no thresholds"},
        {"set 'PSU1 Status' --uc 1", "has states instead"},
        {"set 'HSBP Temp' --uc 70", "belongs to 72h"},
        {"set 'GPU1 Temp' --uc 70", "at LUN 1"},
        {"restore 'HSBP Temp'", "belongs to 72h"},
        {"set 'PSU Temp' --uc 60", "fits 2 sensors; name one by its device id"},
        {"set FAN1", "At least 1 option"},
    };
    for (const auto& c : cases) {
        const std::string line =
            std::string{"$sim -- $tool threshold "} + c.arguments;
        check({{c.why, line.c_str(), 1, "", c.why}});
    }
}

TEST(Hysteresis, isShownAndChanged)
{
    check({
        {"shown", "$sim -- $tool hysteresis FAN1 | tail -n 3", 0,
         "Hysteresis            +100 RPM (raw 02h)\n"
         "                      -100 RPM (raw 02h)\n"
         "                      settable\n",
         ""},
        {"one side, in units",
         "$sim -- $tool hysteresis 'Inlet Temp' --negative 3.2 | "
         "sed -n '3,4s/.* \\([+-]\\)/\\1/p'",
         0, "+2 degrees C (raw 02h)\n-3 degrees C (raw 03h)\n",
         "nearest to 3.2"},
        {"too much", "$sim -- $tool hysteresis FAN1 --positive 13000", 1, "",
         "0 to 12750 RPM"},
        {"states", "$sim -- $tool hysteresis 'PSU1 Status'", 1, "", "states"},
    });
}

TEST(Events, areShownSwitchedAndRearmed)
{
    check({
        {"of thresholds",
         "$sim -- $tool events set 'Inlet Temp' --disable uc-high --enable "
         "lc-low:begins --messages on",
         0, "@events.txt", ""},
        {"of states", "$sim -- $tool events 'PSU Redundancy' --json", 0,
         "@events.json", ""},
        {"scanning alone",
         "$sim -- $tool events set FAN1 --scanning off | sed -n 4,5p", 0,
         "Event messages        on\nScanning              off\n", ""},
        {"re-armed",
         "$sim --count -- $tool events rearm FAN1 2>&1 >/dev/null "
         "| grep -c '04 2a .* 1$'",
         0, "1\n", ""},
        {"no such event", "$sim -- $tool events set FAN1 --enable uc-high", 1,
         "", "does not send 'uc-high'"},
        {"no event at all", "$sim -- $tool events set FAN1 --enable hot", 1, "",
         "no event 'hot'"},
        {"CDh", "$sim --fault netfn=04,cmd=29,cc=cd -- $tool events FAN1", 3,
         "", "does not support it for this sensor"},
        {"nobody's", "$tool events", 1, "", "SENSOR is required"},
        {"two sensors", "$tool events set A B --messages on", 1, "", "."},
        {"a satellite's", "$sim -- $tool events 'HSBP Temp'", 1, "", "72h"},
    });
}

TEST(Health, hasTheStatusesOfMonitoringPlugins)
{
    const char usage[] = "VEK-IPMI UNKNOWN - mistake on the command line\n";
    check({
        {"critical", "$sim -- $tool health", 2, "@health.txt",
         "packaged table is used"},
        {"well", "$sim --profile moving -- $tool health", 0,
         "VEK-IPMI WELL - none of 5 sensors is unwell\n", "note: "},
        {"as JSON", "$sim -- $tool health --json | head -n 40", 0,
         "@health.json", "note: "},
        {"unknown",
         "$sim --fault netfn=0a,cmd=20,cc=c1 -- $tool health | cut "
         "-c 1-20; $sim --profile minimal -- $tool health >&2",
         3, "VEK-IPMI UNKNOWN - t\n", "VEK-IPMI UNKNOWN"},
        {"usage", "$tool health --bogus", 3, usage, "--bogus"},
        {"usage before it", "$tool --bogus health", 3, usage, "--bogus"},
        {"output lost", "$sim -- $tool health >/dev/full", 3, "", "No space"},
        {"a table without a mistake",
         "$tool health --check $(dirname "
         "$sim)/../../../packaging/sensor_health "
         "| tail -n 1",
         0, "316 rules, 0 problems\n", ""},
        {"a broken table",
         "echo '3, x, 1: 5' | $tool health --check "
         "/dev/stdin >/dev/null",
         3, "", ""},
        {"no table", "$tool health --check /none", 3, "", "cannot read /none"},
    });
}

} // namespace
} // namespace Tool
