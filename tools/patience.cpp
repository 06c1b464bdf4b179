#include "tools/patience.h"

#include <chrono>
#include <iostream>
#include <unistd.h>

namespace Tool
{

Patience::Patience()
{
    if (isatty(STDERR_FILENO))
        thread_ = std::thread{&Patience::watch, this};
}

Patience::~Patience()
{
    if (!thread_.joinable())
        return;
    {
        std::lock_guard lock{mutex_};
        over_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void Patience::watch()
{
    constexpr std::chrono::seconds grace{1};
    constexpr char clearLine[] = "\r\033[K";
    const auto isOver = [this] {
        return over_;
    };
    std::unique_lock lock{mutex_};
    if (wake_.wait_for(lock, grace, isOver))
        return;
    std::cerr << "waiting for the controller (30 s at most) ..." << std::flush;
    wake_.wait(lock, isOver);
    std::cerr << clearLine << std::flush;
}

} // namespace Tool
