#include "tools/print/screen.h"

#include <algorithm>

#include "tools/print/output.h"
#include "tools/print/terminal.h"
#include "tools/status.h"

namespace Tool
{

namespace
{

// Control sequences of ECMA-48 and, for the alternate screen and the cursor,
// of every terminal in use.
constexpr char begin[] = "\033[?1049h\033[?25l", end[] = "\033[?25h\033[?1049l",
               home[] = "\033[H", clearBelow[] = "\033[J";

// The rest of a line is cleared, so that nothing of the last picture stays.
std::string overwriting(const std::string& text)
{
    std::string lines;
    for (const char c : text)
        lines += c == '\n' ? std::string{"\033[K\n"} : std::string(1, c);
    return home + lines + clearBelow;
}

} // namespace

std::string firstLines(const std::string& text, size_t most)
{
    const auto count =
        static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    if (count <= most || most == 0)
        return text;
    size_t at = 0;
    for (size_t i = 0; i + 1 < most; ++i)
        at = text.find('\n', at) + 1;
    return text.substr(0, at) + "... " + std::to_string(count - most + 1) +
           " more lines\n";
}

Screen::Screen(bool inPlace)
    : inPlace_{inPlace && Terminal::ofOutput().present()}
{
    if (inPlace_)
        Tool::put(begin);
}

Screen::~Screen()
{
    try {
        restore();
    } catch (const Failure&) {
        // There is no terminal any more.
    }
}

void Screen::put(const std::string& text)
{
    const std::lock_guard lock{mutex_};
    if (over_)
        return;
    if (!inPlace_) {
        Tool::put(text);
        return;
    }
    // The cursor stands below the last line.
    const size_t height = Terminal::ofOutput().height();
    Tool::put(overwriting(firstLines(text, std::max<size_t>(height, 2) - 1)));
}

void Screen::restore()
{
    const std::lock_guard lock{mutex_};
    if (over_)
        return;
    over_ = true;
    if (inPlace_)
        Tool::put(end);
}

} // namespace Tool
