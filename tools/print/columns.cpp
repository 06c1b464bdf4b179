#include "tools/print/columns.h"

#include <algorithm>

#include "tools/print/text.h"

namespace Tool
{

namespace
{

constexpr size_t gap = 2;

std::string fitted(const std::string& text, size_t width, bool right)
{
    const std::string cut = cutToWidth(text, width);
    const std::string fill(width - std::min(width, widthOf(cut)), ' ');
    return right ? fill + cut : cut + fill;
}

} // namespace

Columns::Widths Columns::naturalWidths() const
{
    Widths widths;
    for (size_t i = 0; i < columns_.size(); ++i) {
        size_t width = widthOf(columns_[i].title);
        for (const auto& row : rows_)
            width = std::max(width, widthOf(row[i].text));
        widths.push_back(width);
    }
    return widths;
}

// Takes from the column that has most to give. False when it is not enough.
bool Columns::shrink(Widths& widths, size_t most) const
{
    const auto total = [&] {
        size_t sum = 0;
        for (const size_t width : widths)
            if (width != hidden)
                sum += width + (sum ? gap : 0);
        return sum;
    };
    const auto spare = [&](size_t i) {
        const size_t narrowest = columns_[i].narrowest;
        return narrowest && widths[i] != hidden && widths[i] > narrowest
                   ? widths[i] - narrowest
                   : 0;
    };
    while (total() > most) {
        size_t widest = 0;
        for (size_t i = 1; i < widths.size(); ++i)
            if (spare(i) > spare(widest))
                widest = i;
        if (spare(widest) == 0)
            return false;
        --widths[widest];
    }
    return true;
}

Columns::Widths Columns::fittingWidths(size_t most) const
{
    Widths start = naturalWidths();
    for (size_t next = 0;; ++next) {
        Widths widths = start;
        if (shrink(widths, most))
            return widths;
        while (next < columns_.size() && !columns_[next].optional)
            ++next;
        if (next == columns_.size())
            return widths; // It does not fit.
        start[next] = hidden;
    }
}

bool Columns::fits(const Terminal& terminal) const
{
    Widths widths = naturalWidths();
    return shrink(widths, terminal.width());
}

std::string Columns::line(const std::vector<Cell>& cells, const Widths& widths,
                          const Terminal& terminal) const
{
    std::string text;
    for (size_t i = 0; i < cells.size(); ++i) {
        if (widths[i] == hidden)
            continue;
        text += text.empty() ? "" : std::string(gap, ' ');
        text += terminal.coloured(
            fitted(cells[i].text, widths[i], columns_[i].right),
            cells[i].colour);
    }
    const size_t end = text.find_last_not_of(' ');
    return text.substr(0, end + 1) + '\n';
}

std::string Columns::text(const Terminal& terminal) const
{
    const Widths widths = fittingWidths(terminal.width());
    std::vector<Cell> titles;
    for (const Column& column : columns_)
        titles.push_back({column.title, Colour::none});
    std::string text = line(titles, widths, terminal);
    for (size_t i = 0; i < rows_.size(); ++i) {
        text += line(rows_[i], widths, terminal);
        if (!notes_[i].empty())
            text += cutToWidth("    " + notes_[i], terminal.width()) + '\n';
    }
    return text;
}

} // namespace Tool
