// vek-ipmi sel
#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Sel, isListedInWords)
{
    check({
        {"all", "$sim -- $tool sel --utc", 0, "@sel.txt", ""},
        {"as JSON", "$sim -- $tool sel list --json --since 2026-04-01", 0,
         "@sel.json", ""},
        {"bytes, without asking for sensors",
         "$sim --count -- $tool sel --raw 2>&1 | sed -n '1p;49p;/sdr/p'", 0,
         "01 00 02 0c 00 00 00 20 00 04 10 74 6f 02 ff ff\n"
         "31 00 dd 08 d9 4e 67 5a 31 00 6f 6f 70 73 00 01\n",
         ""},
        {"the repository is read once, the log once",
         "$sim --count -- $tool sel 2>&1 >/dev/null | "
         "grep -cE '(reserve-sdr-repository|get-sel-info) +1$|entry +80$'",
         0, "3\n", ""},
        {"sensors are not read for nothing",
         "$sim --count -- $tool sel --since 1s 2>&1 | grep -c sdr", 1, "0\n",
         ""},
        {"empty", "$sim --profile moving -- $tool sel | tail -n 1", 0,
         "0 records\n", ""},
        {"local time",
         "TZ=EST5 $sim -- $tool sel | grep -o '2023.*-05:00' | "
         "head -n 1",
         0, "2023-03-01T03:15:02-05:00\n", ""},
    });
}

TEST(Sel, isChosenByTimeSeverityAndSensor)
{
    const struct
    {
        const char *options, *count;
    } cases[] = {
        {"--since 2026-10-04T20:15:17Z", "1 of 80"},
        {"--since 2026-10-04T22:15:18+02:00", "0 of 80"},
        {"--since 2026-10-04T20:15:17 --utc", "1 of 80"},
        {"--since 2026-10-04 --severity critical", "1 of 80"},
        {"--severity non-recoverable", "0 of 80"},
        {"--sensor 'psu redundancy'", "2 of 80"},
        {"--sensor 0x64 --severity warning", "1 of 80"},
        {"--sensor 1.0.32", "4 of 80"},
        {"--sensor FAN1 --since 1s", "0 of 80"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shell(std::string{"$sim -- $tool sel "} + c.options +
                        " | grep records")
                      .out,
                  std::string{c.count} + " records\n")
            << c.options;
    check({
        {"no time", "$sim -- $tool sel --since 2026-02-31", 1, "",
         "--since: .* is neither a date .* 3d"},
        {"no severity", "$sim -- $tool sel --severity bad", 1, "",
         "none of info, warning"},
        {"no sensor", "$sim -- $tool sel --sensor FAN", 1, "",
         "no sensor 'FAN'.*\n  .*vek-ipmi sensors"},
        {"not the list's", "$sim -- $tool sel --since 1d info", 1, "",
         "not expected: --since"},
        {"what cannot be judged is told",
         "$sim -- $tool sel --since 2026-04-01 --severity info | tail -n 3", 0,
         "7 of 80 records\n  left out: 5 without a date\n"
         "  left out: 1 without a known severity\n",
         ""},
    });
}

TEST(Sel, thatIsSavedReadsTheSame)
{
    checkInFolder({
        {"as text and JSON",
         "$sim -- $tool sel save F && for o in --utc --json; do "
         "$sim -- $tool sel $o >a; $sim --count -- $tool sel list --file F $o "
         "2>count | cmp a -; tail -n 1 count; done",
         0,
         "80 records in F, the names of their sensors in F.sdr\n"
         "      exchanges                                       0\n"
         "      exchanges                                       0\n",
         ""},
        {"the files are those of ipmitool",
         "$sim -- $tool sel save F >a; $sim -- ipmitool sel writeraw G >a; "
         "$sim -- ipmitool sdr dump G.sdr >a; cmp F G && cmp F.sdr G.sdr",
         0, "", ""},
        {"without names: none from before",
         "echo >F.sdr; $sim -- $tool sel save F --no-sensors >a; ls; "
         "$tool sel --file F | sed -n 14p | cut -c 46-62",
         0, "F\na\nTemperature #0x03\n", ""},
        {"cut",
         "$sim -- $tool sel save F >a; head -c 30 F >G; "
         "$tool sel --file G --raw",
         4, "01 00 02 0c 00 00 00 20 00 04 10 74 6f 02 ff ff\n",
         "G ends within a record: 30 bytes"},
        {"what is there stays when the log cannot be read",
         "echo old >F; $sim --fault cmd=get-sel-entry,data=??:??:05:00,cc=cb "
         "-- $tool sel save F --no-sensors; s=$?; cat F; wc -c <F.partial; "
         "exit $s",
         4, "4 records in F.partial\nold\n64\n", "only 4 of 80 records"},
        {"so do the sensors' records, and its mode",
         "echo old | tee F >F.sdr; chmod 640 F; touch F.partial; for f in "
         "20,cc=c0 23,after=150,cc=c9; do $sim --fault netfn=0a,cmd=$f -- "
         "$tool sel save F >a; done; cat F.sdr; stat -c %a F; ls",
         0, "old\n640\nF\nF.sdr\nF.sdr.partial\na\n", "not read: C0h"},
        {"a pipe", "$sim -- $tool sel save /dev/stdout | wc -c", 0, "1280\n",
         ""},
        {"nowhere", "$sim -- $tool sel save no/F", 4, "",
         "cannot write no/F.*No such file"},
        {"no file", "$tool sel --file F", 4, "", "cannot read F: No such"},
    });
}

TEST(Sel, thatIsNotWholeIsToldAndListed)
{
    checkInFolder({
        {"no log", "$sim --profile minimal -- $tool sel", 3, "",
         "not read: C1h.*\n  This controller lacks"},
        {"silent", "$sim --fault cmd=get-sel-info,cc=c3 -- $tool sel", 4, "",
         "not read: C3h"},
        {"a record",
         "$sim --fault cmd=get-sel-entry,data=??:??:05:00,cc=cb -- $tool sel "
         "--raw",
         4,
         "01 00 02 0c 00 00 00 20 00 04 10 74 6f 02 ff ff\n"
         "02 00 02 2f 00 00 00 20 00 04 08 62 6f 00 ff ff\n"
         "03 00 02 3f 00 00 00 20 00 04 22 78 6f 00 ff ff\n"
         "04 00 02 86 09 ff 63 20 00 04 12 90 6f c5 00 ff\n",
         "only 4 of 80 records .*given up.*\n  Try again"},
        {"sensors, by number then",
         "$sim --fault netfn=0a,cmd=20,cc=c0 -- $tool sel --sensor 3 --json "
         ">a; s=$?; grep -c '\"name\": null' a; exit $s",
         4, "2\n", "not read: C0h: node busy\n  Sensors"},
        {"a name among them",
         "$sim --fault netfn=0a,cmd=20,cc=c0 -- $tool sel --sensor FAN5", 4, "",
         "not read: C0h.*no sensor 'FAN5'"},
        {"a controller without sensors",
         "$sim --fault netfn=0a,cmd=20,cc=c1 -- $tool sel | tail -n 1", 0,
         "80 records\n", "no sensor data repository"},
        {"grown meanwhile",
         "$sim --fault cmd=get-sel-entry,nth=3,add-event -- $tool sel --raw | "
         "wc -l",
         0, "81\n", ""},
    });
}

TEST(Sel, tellsItsStateAndClock)
{
    check({
        {"state", "$sim -- $tool sel info --utc | grep -v Clock", 0,
         "@sel-info.txt", ""},
        {"as JSON", "$sim -- $tool sel info --json | sed '/\"clock\"/,$d'", 0,
         "@sel-info.json", ""},
        {"without allocation units",
         "$sim --fault cmd=get-sel-allocation-info,cc=c1 -- $tool sel info | "
         "grep ^Allocation",
         0, "Allocation            C1h: unrecognized or unsupported command\n",
         ""},
        {"set",
         "$sim -- $tool sel time set 2026-01-31T13:00+01:00 --utc | "
         "sed 's/[0-9]* s behind/N s behind/'",
         0,
         "Clock                 2026-01-31T12:00:00Z\n"
         "Difference            N s behind the host's clock\n",
         ""},
        {"to now", "$sim -- $tool sel time set now | tail -n 1", 0,
         "Difference            none\n", ""},
        {"refused",
         "$sim --fault cmd=set-sel-time,cc=d4 -- $tool sel time set "
         "now",
         3, "", "was not set: D4h"},
        {"before all clocks", "TZ=CET-1 $sim -- $tool sel time set 1970-01-01",
         1, "", "1987 to 2106"},
    });
}

TEST(Sel, isClearedWhenTheTerminalSaysSo)
{
    if (system("script -qec true /dev/null >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "no pseudo-terminals here";
    check({
        {"asked on a terminal",
         "for a in n y; do echo $a | "
         "script -qec \"$sim -- $tool sel clear\" /dev/null | "
         "tr -d '\\r' | tail -n 1; done",
         0,
         "Clear all 80 records of the event log? [y/N] vek-ipmi: the event log "
         "was not cleared\n"
         "Clear all 80 records of the event log? [y/N] 80 records cleared\n",
         ""},
    });
}

TEST(Sel, isClearedWhenThatIsMeant)
{
    check({
        {"yes",
         "$sim --count -- $tool sel clear --yes 2>&1 | "
         "grep -E 'clear|cleared'",
         0,
         "80 records cleared\n"
         "0a 47 clear-sel                                       1\n",
         ""},
        {"nobody to ask", "$sim --count -- $tool sel clear 2>&1 | grep clear",
         0, "vek-ipmi: the event log was not cleared: there is nobody to ask\n",
         ""},
        {"refused", "$sim --fault cmd=clear-sel,cc=c1 -- $tool sel clear -y", 3,
         "", "was not cleared: C1h.*\n  This"},
        {"unanswered, carried out or not",
         "$sim --fault cmd=clear-sel,silence -- $tool sel clear -y", 4, "",
         "may have been cleared"},
        {"each try with a reservation of its own",
         "$sim --fault cmd=clear-sel,count=1,other-reader -- $tool sel clear "
         "-y; $sim --fault cmd=get-sel-info,nth=2,cc=c3 -- $tool sel clear -y",
         0, "80 records cleared\n80 records cleared\n",
         "state could not be read"},
    });
}

TEST(Sel, losesTheVeryRecordThatIsMeant)
{
    const char deleted[] = "deleted: 16  2023-08-23T13:44:09Z  critical  "
                           "Temperature #0x01: Upper Critical going high, "
                           "asserted (raw reading 60h, raw threshold 5Fh)\n";
    checkInFolder({
        {"by id", "$sim -- $tool sel delete 16 --utc", 0, deleted, ""},
        {"small reads, the log changed once",
         "$sim --fault cmd=get-sel-entry,data=??:??:??:??:00:10,cc=ca "
         "--fault cmd=delete-sel-entry,nth=1,add-event "
         "-- $tool sel delete 0x10 --utc",
         0, deleted, ""},
        {"the whole id",
         "echo '{\"identity\": {\"manufacturer\": 0}, \"eventLog\": "
         "{\"records\": [{\"id\": 4660, \"oem\": \"0xe0\"}]}}' >p.json; "
         "for id in 0x34 0x1234; do $sim --profile p.json -- $tool sel delete "
         "$id; done",
         0,
         "deleted: 4660  -  -  OEM record E0h (data 00 00 00 00 20 00 04 00 "
         "00 6F FF FF FF)\n",
         "no record 52 in"},
        {"another one by now",
         "$sim --fault cmd=get-sel-entry,nth=2,flip=9:f1 --count -- "
         "$tool sel delete 16 2>&1 | grep -E 'delete'",
         0, "vek-ipmi: the record changed meanwhile, nothing was deleted\n",
         ""},
        {"always another reader",
         "$sim --fault cmd=delete-sel-entry,other-reader -- "
         "$tool sel delete 16",
         3, "", "changed each time"},
        {"not there", "$sim -- $tool sel delete 81", 1, "", "vek-ipmi sel"},
        {"no id", "$sim -- $tool sel delete 65535", 1, "", "0 to 65534"},
    });
}

// All at once: each until it has written so many lines or some tenths of a
// second are over, and not killed while it ends.
TEST(Sel, isWatchedUntilInterrupted)
{
    const char line[] =
        R"sh(
echo '{"identity": {"manufacturer": 0}, "eventLog": {"records": [{"time":
  4000000000, "sensorType": "fan", "sensor": 1}]}}' >late
t="timeout --foreground -s KILL 26 $tool sel watch"
i=cmd=get-sel-info e=cmd=get-sel-entry,data=??:??:05:00,cc=cb
w() {
  n=$1 lines=$2 tenths=$3; shift 3; : >$n.out
  $sim "$@" >>$n.out 2>&1 & p=$!
  while [ $(wc -l <$n.out) -lt $lines ] && [ $tenths -gt 0 ]; do
    sleep 0.1; tenths=$((tenths - 1))
  done
  kill -TERM $p; wait $p; echo "$n ends: $?" >>$n.out
}
w 1-events 4 200 --fault $i,nth=5,add-event --fault $i,nth=7,clear-sel \
  --fault $i,nth=8,add-event -- $t --utc &
w 2-busy-then-behind-the-future 3 200 --profile late --fault $i,nth=4,cc=c0 \
  --fault $i,nth=7,add-event --fault $i,nth=8,add-event -- $t --json &
w 3-partial-then-whole 4 200 --fault $e,count=912 \
  --fault $i,nth=7,add-event -- $t --utc &
w 4-stamp-changed-not-read 3 200 --fault $i,after=4,flip=10:01 \
  --fault cmd=get-sel-entry,after=80,count=640,cc=cb -- $t &
w 5-no-answer 1 50 --fault $i,nth=4,lost -- $t &
w 6-no-start 1 50 --fault cmd=get-device-id,lost -- $t &
wait
sed -E -e 's/vek-ipmi: //' -e 's/20[-0-9T:]{17}Z  //' -e \
  's/.*"id":([0-9]+),"rec.*"event":"([^"]*)".*/\1 \2/' [1-6]*.out
)sh";
    checkInFolder({
        {"each", line, 0, "@sel-watch.txt", ""},
        {"no log", "$sim --profile minimal -- $tool sel watch", 3, "",
         "not read: C1h"},
    });
}

} // namespace
} // namespace Tool
