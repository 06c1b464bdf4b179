/// A table of several columns that fits a terminal.
#ifndef VEK_TOOLS_PRINT_COLUMNS_H
#define VEK_TOOLS_PRINT_COLUMNS_H

#include <string>
#include <vector>

#include "tools/print/terminal.h"

namespace Tool
{

struct Column
{
    std::string title;
    bool right = false;    ///< Aligned to the right.
    size_t narrowest = 0;  ///< May be cut to this width; 0: never cut.
    bool optional = false; ///< May be left out; the first of them first.
};

struct Cell
{
    std::string text;
    Colour colour = Colour::none;
};

class Columns
{
public:
    explicit Columns(std::vector<Column> columns) : columns_{std::move(columns)}
    {}

    /// One cell a column. A note stands below the row, indented.
    void row(std::vector<Cell> cells, std::string note = "")
    {
        rows_.push_back(std::move(cells));
        notes_.push_back(std::move(note));
    }

    /// Whether it fits without leaving a column out.
    bool fits(const Terminal& terminal) const;

    /// All lines, the titles first, each ended.
    std::string text(const Terminal& terminal) const;

private:
    using Widths = std::vector<size_t>;
    static constexpr size_t hidden = SIZE_MAX;

    Widths naturalWidths() const;
    Widths fittingWidths(size_t most) const;
    bool shrink(Widths& widths, size_t most) const;
    std::string line(const std::vector<Cell>& cells, const Widths& widths,
                     const Terminal& terminal) const;

    std::vector<Column> columns_;
    std::vector<std::vector<Cell>> rows_;
    std::vector<std::string> notes_;
};

} // namespace Tool

#endif
