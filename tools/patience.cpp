#include "tools/patience.h"

#include <atomic>
#include <chrono>
#include <iostream>
#include <unistd.h>

namespace Tool
{

namespace
{

// Of several waits, one inside the other, the outermost speaks.
std::atomic<bool> speaking{false};

} // namespace

Patience::Patience(WaitText text) : text_{std::move(text)}
{
    if (isatty(STDERR_FILENO) && !speaking.exchange(true))
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
    speaking = false;
}

void Patience::watch()
{
    using namespace std::chrono_literals;
    constexpr char clearLine[] = "\r\033[K";
    const auto isOver = [this] {
        return over_;
    };
    std::unique_lock lock{mutex_};
    if (wake_.wait_for(lock, text_ ? 300ms : 1000ms, isOver))
        return;
    do
        std::cerr << clearLine
                  << (text_ ? text_()
                            : "waiting for the controller (30 s at most) ...")
                  << std::flush;
    while (!wake_.wait_for(lock, 200ms, isOver));
    std::cerr << clearLine << std::flush;
}

} // namespace Tool
