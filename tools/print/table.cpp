#include "tools/print/table.h"

namespace Tool
{

namespace
{

constexpr size_t keyWidth = 22;

std::string line(std::string key, const std::string& value)
{
    if (value.empty())
        return key + '\n';
    key.resize(keyWidth, ' ');
    return key + value + '\n';
}

} // namespace

void Table::row(const std::string& key, const std::vector<std::string>& values)
{
    text_ += line(key, values.empty() ? "" : values[0]);
    for (size_t i = 1; i < values.size(); ++i)
        text_ += line("", values[i]);
}

} // namespace Tool
