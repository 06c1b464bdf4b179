// vek-ipmi info, identify, os
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Info, showsWhatTheControllerSays)
{
    check({
        {"whole", "$sim -- $tool info", 0, "@info.txt", ""},
        {"as JSON", "$sim -- $tool --json info", 0, "@info.json", ""},
        {"no OS parameters", "$sim --profile minimal -- $tool info", 0,
         "@info-minimal.txt", ""},
        {"no OS parameters, as JSON",
         "$sim --profile minimal -- $tool info --json", 0, "@info-minimal.json",
         ""},
        {"failed self-test",
         "$sim --fault cmd=get-self-test-results,flip=1:02 "
         "--fault cmd=get-self-test-results,flip=2:81 -- $tool info",
         0, "@info-self-test.txt", ""},
        {"no self-test result",
         "$sim --fault cmd=get-self-test-results,cc=d2 -- $tool info", 4,
         "@info-partial.txt",
         "the self-test result was not read: D2h: no response: controller "
         "init.*\n  The controller is starting"},
        {"no self-test result, as JSON",
         "$sim --fault cmd=get-self-test-results,cc=d2 -- $tool info --json", 4,
         "@info-partial.json", "D2h"},
        {"answer of the code alone",
         "$sim --fault cmd=get-device-id,cut=1 -- $tool info", 4,
         "@info-empty.txt", "answer was cut"},
    });
}

TEST(Info, endsWithoutADeviceId)
{
    const char command[] = "Get Device ID failed: ";
    const struct
    {
        const char* fault;
        int status;
        std::string err;
    } cases[] = {
        {"cc=c1", 3, "C1h: unrecognized or unsupported command\n  This contr"},
        {"cc=d4", 3, "D4h: insufficient privilege"},
        {"cc=ff", 3, "FFh: unspecified error"},
        {"cc=c3", 4, "C3h: timeout"},
        {"send-errno=EBUSY", 4, "no answer\n  Try again"},
    };
    for (const auto& c : cases) {
        const std::string line =
            std::string{"$sim --fault cmd=get-device-id,"} + c.fault +
            " -- $tool --json info";
        const std::string err = command + c.err;
        check({{"", line.c_str(), c.status, "", err.c_str()}});
    }
}

TEST(Info, saysWhyTheDeviceDoesNotOpen)
{
    check({
        {"none", "$sim --fault open-errno=ENOENT -- $tool info", 2, "",
         "no IPMI device: /dev/ipmi0: No such file or directory.*\n.*"
         "modprobe -a ipmi_devintf ipmi_si.*--simulate"},
        {"forbidden", "$sim --fault open-errno=EACCES -- $tool info", 2, "",
         "no permission: /dev/ipmi0: Permission denied"},
        {"other", "$sim --fault open-errno=EMFILE -- $tool raw 6 1", 4, "",
         "Too many open files"},
    });
}

// The fault answers only the request that the case is to make.
TEST(Identify, sendsWhatWasAskedFor)
{
    check({
        {"default", "$sim -- $tool identify", 0, "identification on for 15 s\n",
         ""},
        {"default's bytes",
         "$sim --fault cmd=chassis-identify,data=0f:00,cc=c0 -- $tool identify",
         3, "", "C0h: node busy\n  Try again"},
        {"seconds' bytes",
         "$sim --fault cmd=chassis-identify,data=ff:00,cc=c0 -- "
         "$tool identify 255",
         3, "", "C0h"},
        {"force", "$sim -- $tool identify --force", 0,
         "identification on until vek-ipmi identify --off\n", ""},
        {"force's bytes",
         "$sim --fault cmd=chassis-identify,data=00:01,cc=c0 -- "
         "$tool identify --force",
         3, "", "C0h"},
        {"off", "$sim -- $tool identify --off", 0, "identification off\n", ""},
        {"off's bytes",
         "$sim --fault cmd=chassis-identify,data=00:00,cc=c0 -- "
         "$tool identify --off",
         3, "", "C0h"},
        {"as JSON", "$sim -- $tool identify 0x10 --json", 0, "@identify.json",
         ""},
        {"not supported",
         "$sim --fault cmd=chassis-identify,cc=c1 -- $tool identify", 3, "",
         "does not support identification"},
        {"no answer",
         "$sim --fault cmd=chassis-identify,send-errno=EIO -- $tool identify",
         4, "", "no answer"},
    });
}

constexpr char name[] = "netfn=06,cmd=59,data=00:04";
constexpr char version[] = "netfn=06,cmd=59,data=00:05";

TEST(Os, getToldApartWhatIsMissing)
{
    const struct
    {
        const char *nameFault, *versionFault;
        int status;
        const char *out, *err;
    } cases[] = {
        {"", "", 0, "@os.txt", ""},
        {"", "cc=80", 0, "@os-no-version.txt", ""},
        {"cc=c1", "cc=c1", 3, "@os-none.txt", "the OS name was not read: C1h"},
        {"", "cc=d4", 4, "@os-version-refused.txt", "the OS version .*D4h"},
        {"send-errno=EIO", "send-errno=EIO", 4, "@os-silent.txt", "no answer"},
    };
    for (const auto& c : cases) {
        std::string line = "$sim ";
        if (*c.nameFault)
            line += std::string{"--fault "} + name + "," + c.nameFault;
        if (*c.versionFault)
            line += std::string{" --fault "} + version + "," + c.versionFault;
        line += " -- $tool os get";
        check({{"", line.c_str(), c.status, c.out, c.err}});
    }
}

TEST(Os, setReportsWhatTheControllerThenHolds)
{
    const std::string fill(255, 'x');
    const std::string longest =
        "$sim -- $tool os set " + fill + " 1 | grep -c 'x\\{255\\}'";
    const std::string tooLong = "$sim -- $tool os set " + fill + "x 1";
    check({
        {"both", "$sim -- $tool os set 'An OS of more than 16' 1.2", 0,
         "OS name               An OS of more than 16\n"
         "OS version            1.2\n",
         ""},
        {"as JSON", "$sim -- $tool --json os set A 1", 0, "@os-set.json", ""},
        {"odd bytes",
         "$sim -- $tool os set \"$(printf 'caf\\351 \\033[1m\\n.')\" "
         "\"$(printf '\\303\\251\\342\\202')\"",
         0,
         "OS name               caf\\xe9 \\x1b[1m\\x0a.\n"
         "OS version            \u00e9\\xe2\\x82\n",
         ""},
        {"longest", longest.c_str(), 0, "1\n", ""},
        {"too long", tooLong.c_str(), 1, "", "more than 255 bytes"},
        {"nothing", "$sim -- $tool os set '' ''", 1, "", "both are empty"},
        {"version kept with the name",
         "$sim --fault netfn=06,cmd=58,data=05,cc=80 "
         "--fault netfn=06,cmd=59,data=00:05,cc=80 -- $tool os set A 1",
         0, "@os-set-appended.txt", ""},
        {"refused", "$sim --fault netfn=06,cmd=58,cc=82 -- $tool os set A 1", 3,
         "", "not written: 82h: attempt to write a read-only parameter"},
        {"refused once",
         "$sim --fault netfn=06,cmd=58,data=04,nth=1,cc=c0 -- "
         "$tool os set A 1",
         4, "", "did not take all of the text"},
        {"version refused, which the library passes over",
         "$sim --fault netfn=06,cmd=58,data=05,cc=d4 -- $tool os set A 1", 4,
         "@os-set-version-refused.txt", "another text for the OS version"},
        {"no answer",
         "$sim --fault netfn=06,cmd=58,send-errno=EIO -- $tool os set A 1", 4,
         "", "not written: no answer"},
    });
}

} // namespace
} // namespace Tool
