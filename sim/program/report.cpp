#include "sim/program/report.h"

#include <cstdio>

#include "sim/model/command.h"

namespace Sim
{

namespace
{

std::string row(const char* numbers, const char* name, uint64_t count)
{
    char text[128];
    std::snprintf(text, sizeof text, "%-5s %-40s %8llu\n", numbers, name,
                  static_cast<unsigned long long>(count));
    return text;
}

} // namespace

std::string describe(const Counts& counts)
{
    std::string text;
    uint64_t sum = 0;
    for (const auto& [key, count] : counts) {
        const auto netFn = uint8_t(key >> 8), code = uint8_t(key);
        char numbers[8];
        std::snprintf(numbers, sizeof numbers, "%02x %02x", netFn, code);
        const Command* command = findCommand(netFn, code);
        text += row(numbers, command ? command->name : "", count);
        sum += count;
    }
    return text + row("", "exchanges", sum);
}

std::string describe(const Mistakes& mistakes)
{
    std::string text;
    for (const Mistake& mistake : mistakes)
        text += (text.empty() ? "" : "\n") + mistake.place +
                (mistake.place.empty() ? "" : ": ") + mistake.reason;
    return text;
}

} // namespace Sim
