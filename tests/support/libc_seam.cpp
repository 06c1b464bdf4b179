#include "tests/support/libc_seam.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <ostream>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

namespace
{

// Never destroyed: threads of others sleep until the very end.
struct Sleeps
{
    std::mutex mutex;
    std::vector<unsigned> seconds;
};
Sleeps& sleeps()
{
    static auto* const all = new Sleeps;
    return *all;
}

std::atomic<double> timeScale{1};
std::atomic<uid_t> userId{0};

struct Failure
{
    std::atomic<int> countdown{0};
    std::atomic<int> errnoValue{0};
};
Failure failures[int(Seam::Call::count)];

bool shouldFail(Seam::Call call)
{
    Failure& failure = failures[int(call)];
    if (failure.countdown == 0 || --failure.countdown != 0)
        return false;
    errno = failure.errnoValue;
    return true;
}

// The function that libc, or a sanitizer in front of it, would have served.
template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

double realNow()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

const double origin = realNow();

double fastNow()
{
    return origin + (realNow() - origin) * timeScale;
}

double realTimeOf(double fast)
{
    return origin + (fast - origin) / timeScale;
}

std::mutex logMutex;
std::condition_variable logGrew;
std::vector<Seam::LogLine> logLines;

[[gnu::format(printf, 2, 0)]] void log(int priority, const char* format,
                                       va_list arguments)
{
    // With errno as the caller left it: the format may hold %m.
    char text[1024];
    vsnprintf(text, sizeof text, format, arguments);
    std::lock_guard<std::mutex> lock{logMutex};
    logLines.push_back({priority, text});
    logGrew.notify_all();
}

} // namespace

namespace Seam
{

void setTimeScale(double factor)
{
    timeScale = factor;
}

void failNth(Call call, int nth, int errnoValue)
{
    failures[int(call)].errnoValue = errnoValue;
    failures[int(call)].countdown = nth;
}

void setUserId(uid_t id)
{
    userId = id;
}

std::vector<unsigned> takeSleeps()
{
    std::lock_guard<std::mutex> lock{sleeps().mutex};
    return std::exchange(sleeps().seconds, {});
}

std::vector<LogLine> takeLog()
{
    std::lock_guard<std::mutex> lock{logMutex};
    return std::exchange(logLines, {});
}

bool waitForLog(const std::string& text)
{
    std::unique_lock<std::mutex> lock{logMutex};
    const auto found = [&] {
        return std::find_if(
            logLines.begin(), logLines.end(),
            [&](const LogLine& line) { return line.text == text; });
    };
    if (!logGrew.wait_for(lock, std::chrono::seconds{5},
                          [&] { return found() != logLines.end(); }))
        return false;
    logLines.erase(logLines.begin(), found() + 1);
    return true;
}

std::ostream& operator<<(std::ostream& out, const LogLine& line)
{
    return out << '<' << line.priority << "> " << line.text;
}

} // namespace Seam

extern "C"
{
    [[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int flag,
                                                    const char* format, ...);
    int __poll_chk(pollfd* fds, nfds_t count, int timeout, size_t size);

    void syslog(int priority, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        log(priority, format, arguments);
        va_end(arguments);
    }

    void __syslog_chk(int priority, int, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        log(priority, format, arguments);
        va_end(arguments);
    }

    int poll(pollfd* fds, nfds_t count, int timeout)
    {
        if (shouldFail(Seam::Call::poll))
            return -1;
        static const auto real = next<int(pollfd*, nfds_t, int)>("poll");
        if (timeout > 0)
            timeout = std::max(1, int(timeout / timeScale));
        return real(fds, count, timeout);
    }

    int __poll_chk(pollfd* fds, nfds_t count, int timeout, size_t)
    {
        return poll(fds, count, timeout);
    }

    unsigned sleep(unsigned seconds)
    {
        {
            constexpr size_t most = 1000;
            std::lock_guard<std::mutex> lock{sleeps().mutex};
            if (sleeps().seconds.size() < most)
                sleeps().seconds.push_back(seconds);
        }
        usleep(useconds_t(seconds * 1e6 / timeScale));
        return 0;
    }

    int gettimeofday(timeval* now, void*) noexcept
    {
        const double fast = fastNow();
        now->tv_sec = time_t(fast);
        now->tv_usec = suseconds_t((fast - std::floor(fast)) * 1e6);
        return 0;
    }

    int pthread_cond_timedwait(pthread_cond_t* condition,
                               pthread_mutex_t* mutex, const timespec* deadline)
    {
        static const auto real =
            next<int(pthread_cond_t*, pthread_mutex_t*, const timespec*)>(
                "pthread_cond_timedwait");
        const double at = realTimeOf(double(deadline->tv_sec) +
                                     double(deadline->tv_nsec) * 1e-9);
        timespec scaled;
        scaled.tv_sec = time_t(at);
        scaled.tv_nsec = long((at - std::floor(at)) * 1e9);
        return real(condition, mutex, &scaled);
    }

    int pipe2(int fds[2], int flags) noexcept
    {
        if (shouldFail(Seam::Call::pipe))
            return -1;
        return int(syscall(SYS_pipe2, fds, flags));
    }

    int fcntl(int fd, int command, ...)
    {
        if (command == F_GETFL && shouldFail(Seam::Call::getFlags))
            return -1;
        if (command == F_SETFL && shouldFail(Seam::Call::setFlags))
            return -1;
        va_list arguments;
        va_start(arguments, command);
        const long argument = va_arg(arguments, long);
        va_end(arguments);
        return int(syscall(SYS_fcntl, fd, command, argument));
    }

    uid_t getuid() noexcept
    {
        return userId;
    }
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return shouldFail(Seam::Call::allocate) ? nullptr : ::operator new(size);
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return shouldFail(Seam::Call::allocate) ? nullptr : ::operator new[](size);
}
