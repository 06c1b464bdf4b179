/// Standard output as a screen that is drawn again and again.
#ifndef VEK_TOOLS_PRINT_SCREEN_H
#define VEK_TOOLS_PRINT_SCREEN_H

#include <mutex>
#include <string>

namespace Tool
{

/// On a terminal the picture replaces the one before, on the alternate screen;
/// otherwise, and unless `inPlace`, one follows the other.
class Screen
{
public:
    explicit Screen(bool inPlace);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Lines that do not fit are left out, which the last one tells.
    /// @throws Failure when standard output does not take it.
    void put(const std::string& text);

    /// Brings the terminal back; what is put from then on is dropped.
    void restore();

private:
    std::mutex mutex_;
    bool inPlace_;
    bool over_ = false;
};

/// The first lines of a text, with a last one on how many are missing.
std::string firstLines(const std::string& text, size_t most);

} // namespace Tool

#endif
