// vek-ipmi sensors, sensor and sdr
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Sensors, areListedWithReadingStateAndHealth)
{
    check({
        {"all", "$sim -- $tool sensors --thresholds", 0, "@sensors.txt", ""},
        {"records too", "$sim -- $tool sensors --all --type button", 0,
         "@sensors-all.txt", ""},
        {"as JSON",
         "$sim -- $tool sensors --json --entity 10.1 | "
         "sed '/\"time\"/s/2[-0-9]*T[0-9:]*Z/TIME/'",
         0, "@sensors.json", ""},
        {"the repository is read once",
         "$sim --count -- $tool sensors 2>&1 >/dev/null | "
         "grep -cE 'get-sdr-repository-info +1$|get-sensor-reading +100$'",
         0, "2\n", ""},
        {"nothing but the table without a terminal",
         "$sim --latency 2 -- $tool sensors | grep -c '^Name  '", 0, "1\n", ""},
    });
}

TEST(Sensors, areChosenByWords)
{
    const char names[] = "$sim -- $tool sensors ";
    const struct
    {
        const char *options, *out;
    } cases[] = {
        {"--type fan --entity 'power supply 2'", "PSU2 Fan"},
        {"--type slot --state predictive", "Drive 3"},
        {"--state critical", "FAN5"},
        {"--state non-critical --type volt", "VBAT"},
        {"--state absent", "GPU3 Temp"},
        {"--state no-reading", "M2 Temp"},
        {"--state refused", "NVMe Temp"},
        {"--state non-recoverable", ""},
    };
    for (const auto& c : cases) {
        const Ended ended =
            shell(std::string{names} + c.options + " | sed -n '2{s/  .*//;p}'");
        EXPECT_EQ(ended.out, std::string{c.out} + '\n') << c.options;
    }
    check({
        {"no such type", "$sim -- $tool sensors --type fann", 1, "",
         "--type 'fann' fits no sensor\n  There are: .*, Fan, .*Watchdog"},
        {"no such state", "$sim -- $tool sensors --state bad", 1, "",
         "There are: .*no-reading, .*redundancy-lost"},
    });
}

TEST(Sensors, tellWhatOfTheRepositoryIsMissing)
{
    check({
        {"no repository", "$sim --fault netfn=0a,cmd=20,cc=c1 -- $tool sensors",
         3, "", "was not read: C1h.*\n  This controller lacks"},
        {"silent", "$sim --fault netfn=0a,cmd=20,cc=c3 -- $tool sdr", 4, "",
         "was not read: C3h"},
        {"no walk",
         "$sim --fault netfn=0a,cmd=23,cc=c0 -- $tool sensors | tail -n 2; "
         "$sim --fault netfn=0a,cmd=23,cc=c0 -- $tool sdr >/dev/null",
         4, "0 sensors\n119 records not read\n",
         "only 0 of 119 .* .0 found, 0 unreadable"},
    });
}

TEST(Sensor, isFoundByDeviceIdNameOrNumberAndNeverGuessed)
{
    check({
        {"name", "$sim -- $tool sensor 'inlet temp' | grep -v ^Time", 0,
         "@sensor.txt", ""},
        {"discrete", "$sim -- $tool sensor 100.0.32 | grep -v ^Time", 0,
         "@sensor-discrete.txt", ""},
        {"number", "$sim -- $tool sensor 0x30 | grep ^Name", 0,
         "Name                  FAN1\n", ""},
        {"its bytes", "$sim -- $tool sensor 41 --raw | head -n 1", 0,
         "20 00 51 01 35 20 00 29 08 02 7f 58 02 01 85 32\n", ""},
        {"other LUN", "$sim -- $tool sensor 'GPU1 Temp' | grep ^Reading", 0,
         "Reading               none: the controller's sensors at LUN 1 to 3 "
         "cannot be told apart from those at LUN 0 through this driver\n",
         ""},
        {"name of two", "$sim -- $tool sensor 'PSU Temp'", 1, "",
         "fits 2 sensors.*\n  14.0.32  PSU Temp .Power Supply 1: "
         "Temperature.\n  15.0.32 "},
        {"none", "$sim -- $tool sensor 'PSU'", 1, "", "vek-ipmi sensors"},
    });
}

TEST(Sdr, listsRecordsWithTheirBytes)
{
    check({
        {"by type", "$sim -- $tool sdr | tail -n 38", 0, "@sdr.txt", ""},
        {"bytes", "$sim -- $tool sdr --raw | sed -n 2,6p", 0, "@sdr-raw.txt",
         ""},
        {"as JSON", "$sim -- $tool sdr --raw --json | tail -n 36", 0,
         "@sdr.json", ""},
    });
}

TEST(Sensors, areWatchedUntilInterrupted)
{
    check({
        {"tables one after the other",
         "$sim --profile moving -- $tool sensors --watch >watched & "
         "for i in $(seq 300); do grep -q '^FAN1 ' watched && break; "
         "sleep 0.1; done; kill -TERM $!; wait $!; echo $?; "
         "grep -q '^FAN1 ' watched && echo seen; rm watched",
         0, "0\nseen\n", ""},
        {"no repository",
         "$sim --fault netfn=0a,cmd=20,cc=c1 -- $tool sensors --watch", 4, "",
         "no usable answer about the sensor data repository"},
        {"a JSON document a line, until nobody reads",
         "$sim --profile moving -- $tool sensors --watch --json | head -n 1 | "
         "cut -c 1-50",
         0, "{\"schema\":{\"name\":\"vek-ipmi/sensors\",\"version\":1},\n",
         "Broken pipe"},
    });
}

} // namespace
} // namespace Tool
