#include "tools/print/support.h"

#include <iterator>

namespace Tool
{

namespace
{

constexpr const char* supportWords[] = {"none", "readable", "settable",
                                        "fixed"};
constexpr const char* eventWords[] = {"each event", "whole sensor",
                                      "controller only", "none"};

struct FlagName
{
    unsigned bit;
    const char* name;
};

constexpr FlagName flagNames[] = {
    {0, "init scanning"},     {1, "init events"},       {3, "init hysteresis"},
    {4, "init sensor type"},  {5, "scanning at start"}, {6, "events at start"},
    {7, "ignored if absent"}, {8, "re-arms itself"},    {12, "percentage"},
};

} // namespace

const char* supportWord(uint8_t support)
{
    return supportWords[support & 3];
}

const char* eventSupportWord(uint8_t support)
{
    return support < std::size(eventWords) ? eventWords[support] : "unknown";
}

std::vector<std::string> flagWords(unsigned flags)
{
    std::vector<std::string> words;
    for (const FlagName& flag : flagNames)
        if (flags >> flag.bit & 1)
            words.push_back(flag.name);
    return words;
}

} // namespace Tool
