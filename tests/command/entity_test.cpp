// vek-ipmi entities
#include <gtest/gtest.h>

#include "tests/command/program.h"

#define ODD EXPECTED_FOLDER "/../profiles/odd-entities.json"

namespace Tool
{
namespace
{

TEST(Entities, areDrawnAsATree)
{
    check({
        {"built in, in 80 columns",
         "unset LC_ALL LC_CTYPE LANG; $tool --simulate entities", 0,
         "@entities.txt", ""},
        {"cycles, several containers, too deep",
         "LC_ALL=de_DE.utf8 $tool --simulate=" ODD " entities", 0,
         "@entities-odd.txt", ""},
        {"as JSON", "$tool --simulate=" ODD " entities --json", 0,
         "@entities.json", ""},
        {"without sensors, in ASCII",
         "LC_ALL=C $tool --simulate entities --no-sensors | sed -n 5,7p", 0,
         "|  |- Processor 1\n|  |  |- Memory Device 1\n"
         "|  |  |       FRU: DIMM A1\n",
         ""},
        {"no sensor is asked",
         "$sim --count -- $tool entities 2>&1 >/dev/null | grep -c sensor", 1,
         "0\n", ""},
    });
}

TEST(Entities, tellWhatIsMissing)
{
    check({
        {"no repository", "$tool --simulate=minimal entities", 3, "",
         "repository was not read: C1h"},
        {"a record",
         "$sim --fault cmd=get-sdr,data=??:??:62:00,after=1,cc=cb -- $tool "
         "entities "
         "| "
         "tail -n 1; $sim --fault cmd=get-sdr,data=??:??:62:00,after=1,cc=cb "
         "-- "
         "$tool entities >/dev/null",
         4, "50 entities, 109 sensors, 11 FRU devices\n",
         "only 118 of 119 sensor data records"},
    });
}

} // namespace
} // namespace Tool
