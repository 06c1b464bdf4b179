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
};

constexpr uint8_t corrupted = 0x57;

constexpr Result results[] = {
    {0x55, "no error"},
    {0x56, "self-test not implemented in this controller"},
    {corrupted, "corrupted or inaccessible data or devices"},
    {0x58, "fatal hardware error"},
    {0xFF, "reserved result"},
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

} // namespace

std::string selfTestInWords(uint8_t result)
{
    for (const Result& row : results)
        if (row.code == result)
            return row.words;
    return "device-specific internal failure";
}

std::vector<std::string> selfTestFindings(uint8_t result, uint8_t detail)
{
    if (result == corrupted)
        return namesOfBits(findings, detail);
    // The other failures leave the byte to the device.
    if (result >= 0x55 && result <= 0x56)
        return {};
    return {"device-specific detail " + hexNumber(detail)};
}

} // namespace Tool
