// Prints the codes of all event descriptions as gperf takes them: four bytes
// a keyword, the most significant first, and the row.
#include <cstdio>

#include "ipmi/IpmiEventTexts.h"

int main()
{
    std::puts("struct GperfRow { const char* name; unsigned row; };\n%%");
    unsigned row = 0;
    for (const Ipmi::EventText& text : Ipmi::ipmi_sel_data) {
        const unsigned code = text.code();
        std::printf("\"\\x%02x\\x%02x\\x%02x\\x%02x\", %u\n", code >> 24,
                    code >> 16 & 0xff, code >> 8 & 0xff, code & 0xff, row++);
    }
    return 0;
}
