/// Self-test results in words (IPMI v2.0, 20.4).
#ifndef VEK_TOOLS_PRINT_SELF_TEST_H
#define VEK_TOOLS_PRINT_SELF_TEST_H

#include <cstdint>
#include <string>
#include <vector>

namespace Tool
{

std::string selfTestInWords(uint8_t result);

/// What the detail byte says in words; empty when it says nothing.
std::vector<std::string> selfTestFindings(uint8_t result, uint8_t detail);

/// A name for each bit of a byte.
struct BitName
{
    uint8_t bit;
    const char* name;
};

template <size_t count>
std::vector<std::string> namesOfBits(const BitName (&names)[count],
                                     uint8_t value)
{
    std::vector<std::string> set;
    for (const BitName& row : names)
        if (value >> row.bit & 1)
            set.push_back(row.name);
    return set;
}

} // namespace Tool

#endif
