/// Keys and values in two columns.
#ifndef VEK_TOOLS_PRINT_TABLE_H
#define VEK_TOOLS_PRINT_TABLE_H

#include <string>
#include <vector>

namespace Tool
{

class Table
{
public:
    /// Further values of a row stand below the first; none is a blank value.
    void row(const std::string& key, const std::vector<std::string>& values);
    void row(const std::string& key, const std::string& value)
    {
        row(key, std::vector<std::string>{value});
    }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

} // namespace Tool

#endif
