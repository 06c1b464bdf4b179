// What all subcommands share: usage, output, log lines, --simulate.
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Program, explainsItsUse)
{
    check({
        {"nothing", "$tool", 1, "", "subcommand is required"},
        {"unknown", "$tool bogus", 1, "", "."},
        {"unknown option", "$tool info --bogus", 1, "", "--bogus"},
        {"half of os", "$tool os", 1, "", "subcommand is required"},
        {"too many", "$tool info info", 1, "", "info"},
        {"seconds", "$tool identify 256", 1, "", "256"},
        {"contradiction", "$tool identify 5 --off", 1, "", "excludes"},
        {"version", "$tool --version | sed 's/[0-9.]*$//'", 0, "vek-ipmi \n",
         ""},
        {"help", "$tool info --help | grep -c -e --verbose", 0, "1\n", ""},
    });
}

TEST(Program, saysWhenItsOutputIsLost)
{
    check({
        {"full", "$sim -- $tool info >/dev/full", 4, "",
         "cannot write the result: No space left on device"},
        {"closed", "$sim -- $tool info >&-", 4, "", "cannot write the result"},
        {"all closed", "$sim -- $tool info <&- >&- 2>&-", 4, "", ""},
        {"help", "$tool --help >/dev/full", 4, "", ""},
        {"reader gone",
         "pipe=$(mktemp -u); mkfifo $pipe; : <$pipe & exec 3>$pipe; wait; "
         "rm $pipe; $sim -- $tool info >&3",
         4, "", "cannot write the result: Broken pipe"},
    });
}

TEST(Program, showsTheLibrarysLogLinesOnRequest)
{
    check({
        {"asked for", "$sim -- $tool os set A 1 --verbose >/dev/null", 0, "",
         "vek-ipmi\\[[0-9]+\\]: .*seting bmc osname='A'"},
        {"not asked for", "$sim -- $tool os set A 1 >/dev/null", 0, "", ""},
    });
}

TEST(Program, simulatesNothingUnlessTheSimulatedDeviceAnswers)
{
    check({
        {"by itself", "$tool --simulate info", 0, "@info.txt", ""},
        {"behind the subcommand, with a profile",
         "$tool info --simulate=minimal", 0, "@info-minimal.txt", ""},
        {"on the simulated device already", "$sim -- $tool --simulate info", 0,
         "@info.txt", ""},
        {"second run without the layer",
         "VEK_IPMI_SIMULATED=1 $tool --simulate info", 4, "",
         "not in place; nothing was opened"},
        {"no such profile", "$tool --simulate=/none info", 125, "", "/none"},
    });
}

} // namespace
} // namespace Tool
