/// What standard output can show.
#ifndef VEK_TOOLS_PRINT_TERMINAL_H
#define VEK_TOOLS_PRINT_TERMINAL_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tool
{

enum class Colour
{
    none,
    good,
    warning,
    bad,
    dim
};

class Terminal
{
public:
    /// No terminal: unlimited, without colours.
    Terminal() = default;
    Terminal(size_t width, size_t height, bool colours)
        : width_{width}, height_{height}, colours_{colours}, present_{true}
    {}

    /// As standard output is now. NO_COLOR and TERM=dumb turn colours off.
    static Terminal ofOutput();

    bool present() const { return present_; }
    size_t width() const { return width_; }
    size_t height() const { return height_; }
    std::string coloured(const std::string& text, Colour colour) const;

private:
    size_t width_ = SIZE_MAX, height_ = SIZE_MAX;
    bool colours_ = false, present_ = false;
};

/// Columns that a UTF-8 text takes on a terminal.
size_t widthOf(const std::string& text);

/// The text itself, or its beginning with an ellipsis.
std::string cutToWidth(const std::string& text, size_t width);

/// The text in lines of that width, broken at blanks where there are any.
std::vector<std::string> wrapped(const std::string& text, size_t width);

} // namespace Tool

#endif
