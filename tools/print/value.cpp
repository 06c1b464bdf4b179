#include "tools/print/value.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace Tool
{

namespace
{

int decimalsFor(double step)
{
    constexpr int usual = 3, most = 12;
    if (step <= 0)
        return usual;
    return std::clamp(static_cast<int>(std::ceil(-std::log10(step))), usual,
                      most);
}

void trimZeros(std::string& text)
{
    if (text.find('.') == std::string::npos)
        return;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
}

} // namespace

std::string numberText(double value, double step)
{
    char buffer[400]; // the largest double has 309 digits
    snprintf(buffer, sizeof buffer, "%.*f", decimalsFor(step), value);
    std::string text = buffer;
    trimZeros(text);
    return text == "-0" ? "0" : text;
}

std::string valueText(const Value& value)
{
    return value.real ? numberText(*value.real, value.step)
                      : "raw " + hexNumber(value.raw);
}

std::string valueText(const Value& value, const Unit& unit)
{
    std::string number = valueText(value);
    if (!value.real || unit.text.empty())
        return number;
    return number + (unit.text[0] == '%' ? "" : " ") + unit.text;
}

Json toJson(const std::optional<Value>& value)
{
    if (!value)
        return nullptr;
    return {{"raw", value->raw},
            {"value", value->real ? Json(*value->real) : Json(nullptr)}};
}

} // namespace Tool
