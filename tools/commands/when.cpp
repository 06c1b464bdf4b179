#include "tools/commands/when.h"

#include <charconv>
#include <ctime>

namespace Tool
{

namespace
{

// What is left behind a date and a time, or null.
const char* readFields(const char* text, tm& fields)
{
    const char* rest = strptime(text, "%Y-%m-%d", &fields);
    if (!rest || (*rest != 'T' && *rest != ' '))
        return rest;
    const char* time = rest + 1;
    rest = strptime(time, "%H:%M:%S", &fields);
    return rest ? rest : strptime(time, "%H:%M", &fields);
}

// 31 February becomes 3 March.
bool isSameDay(const tm& a, const tm& b)
{
    return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon &&
           a.tm_mday == b.tm_mday;
}

} // namespace

std::optional<int64_t> readDate(const std::string& text, bool utc)
{
    tm fields{};
    const char* rest = readFields(text.c_str(), fields);
    const bool hasZone = rest && *rest;
    if (hasZone && text.find_first_of("T ") != std::string::npos)
        rest = strptime(rest, "%z", &fields);
    if (!rest || *rest || fields.tm_year < 70)
        return std::nullopt;
    const int64_t east = hasZone ? fields.tm_gmtoff : 0;
    tm made = fields;
    made.tm_isdst = -1; // as it was on that day
    const int64_t seconds = utc || hasZone ? timegm(&made) : mktime(&made);
    if (!isSameDay(made, fields))
        return std::nullopt;
    return seconds - east;
}

std::optional<int64_t> readDuration(const std::string& text)
{
    constexpr struct
    {
        char letter;
        int64_t seconds;
    } units[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}, {'w', 604800}};
    uint32_t count = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, count);
    if (read.ec != std::errc{} || read.ptr + 1 != end)
        return std::nullopt;
    for (const auto& unit : units)
        if (unit.letter == *read.ptr)
            return count * unit.seconds;
    return std::nullopt;
}

} // namespace Tool
