#include "tools/print/self_test.h"

#include "tools/print/text.h"

namespace Tool
{

namespace
{

struct Result
{
    uint8_t code;
    const char* words;
    bool detailed; ///< The detail byte is the device's own.
};

constexpr uint8_t corrupted = 0x57;

constexpr Result results[] = {
    {0x55, "no error", false},
    {0x56, "self-test not implemented in this controller", false},
    {corrupted, "corrupted or inaccessible data or devices", false},
    {0x58, "fatal hardware error", true},
    {0xFF, "reserved result", false},
};

constexpr BitName findings[] = {
    {0, "operational firmware corrupted"},
    {1, "update 'boot block' firmware corrupted"},
    {2, "internal use area of the BMC FRU corrupted"},
    {3, "SDR repository empty"},
    {4, "IPMB signal lines do not respond"},
    {5, "cannot access the BMC FRU device"},
    {6, "cannot access the SDR repository"},
    {7, "cannot access the SEL device"},
};

Result find(uint8_t code)
{
    for (const Result& row : results)
        if (row.code == code)
            return row;
    return {code, "device-specific internal failure", true};
}

} // namespace

std::string selfTestInWords(uint8_t result)
{
    return find(result).words;
}

std::vector<std::string> selfTestFindings(uint8_t result, uint8_t detail)
{
    if (result == corrupted)
        return namesOfBits(findings, detail);
    if (!find(result).detailed)
        return {};
    return {"device-specific detail " + hexNumber(detail)};
}

} // namespace Tool
