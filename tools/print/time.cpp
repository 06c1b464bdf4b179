#include "tools/print/time.h"

#include <ctime>

namespace Tool
{

std::string dateText(int64_t secondsSince1970, bool utc)
{
    const auto seconds = static_cast<time_t>(secondsSince1970);
    char text[64] = "";
    tm fields{};
    if (utc) {
        strftime(text, sizeof text, "%FT%TZ", gmtime_r(&seconds, &fields));
        return text;
    }
    strftime(text, sizeof text, "%FT%T%z", localtime_r(&seconds, &fields));
    std::string local = text;
    return local.insert(local.size() - 2, ":"); // "+0100", as ISO 8601 has it
}

std::string timeText(const SelTime& time, bool utc)
{
    if (time.isDate())
        return dateText(time.raw, utc);
    return time.sinceStart()
               ? "+" + std::to_string(time.raw) + " s, clock not set"
               : "-";
}

Json toJson(const SelTime& time)
{
    return {{"time",
             time.isDate() ? Json(dateText(time.raw, true)) : Json(nullptr)},
            {"timeRaw", time.raw},
            {"sinceStart", time.sinceStart()}};
}

} // namespace Tool
