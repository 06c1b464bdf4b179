// vek-ipmi raw
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Raw, printsTheAnswerOrTheCodeInWords)
{
    check({
        {"bytes", "$sim -- $tool raw 0x06 0x01", 0, "@raw.txt", ""},
        {"decimal", "$sim -- $tool raw 6 89 0 4 0 0", 0, "@raw-data.txt", ""},
        {"as JSON", "$sim -- $tool --json raw 6 1", 0, "@raw.json", ""},
        {"no data", "$sim -- $tool raw 0 4", 0, "\n", ""},
        {"refused", "$sim -- $tool raw 6 0x59 0 200 0 0", 3, "",
         "80h: parameter not supported"},
        {"refused, as JSON", "$sim -- $tool raw 6 0x59 0 200 0 0 --json", 3,
         "@raw-refused.json", "80h"},
        {"unknown", "$sim -- $tool raw 0x30 1", 3, "", "C1h: unrecognized"},
        {"no answer", "$sim --fault send-errno=EBUSY -- $tool raw 6 1 --json",
         4, "@raw-silent.json", "no answer\n  Try again; --verbose"},
        {"FFh from the controller", "$sim --fault cc=ff -- $tool raw 6 1", 3,
         "", "FFh: unspecified error"},
        {"16 bytes a line",
         "$sim --fault pad=31 -- $tool raw 6 1 | tail -n +2 | wc -w", 0, "14\n",
         ""},
        {"one byte less than is kept",
         "$sim --fault pad=31 -- $tool raw 6 1 >/dev/null", 0, "", ""},
        {"as much as is kept",
         "$sim --fault pad=32 -- $tool raw 6 1 >/dev/null", 0, "",
         "note: .* may have been longer"},
        {"more than is kept, as JSON",
         "$sim --fault pad=40 -- $tool --json raw 6 1 2>/dev/null | "
         "grep possibly",
         0, "  \"possiblyCut\": true\n", ""},
    });
}

TEST(Raw, takesNumbersThatAllToolsReadAlike)
{
    const struct
    {
        const char* arguments;
        int status;
    } cases[] = {
        {"06 01", 0},   {"0x6 0X1", 0}, {"6 0x58 4 0 255", 3},
        {"6 010", 1},   {"6 0x", 1},    {"6 256", 1},
        {"6 0x100", 1}, {"6 1h", 1},    {"6 ''", 1},
        {"6 1 0xg", 1}, {"7 1", 1},     {"0x40 1", 1},
        {"6", 1},       {"app 1", 1},   {"6 ' 1'", 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shell(std::string{"$sim -- $tool raw "} + c.arguments).status,
                  c.status)
            << c.arguments;
    EXPECT_EQ(shell("$sim -- $tool raw 6 1 $(seq -s ' ' 1 255) "
                    "$(seq -s ' ' 1 16)")
                  .status,
              1);
}

} // namespace
} // namespace Tool
