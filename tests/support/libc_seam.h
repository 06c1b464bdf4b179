/// Stands in front of libc in test programs: a clock that runs faster, calls
/// that fail when a test says so, and the log.
#ifndef VEK_TESTS_SUPPORT_LIBC_SEAM_H
#define VEK_TESTS_SUPPORT_LIBC_SEAM_H

#include <iosfwd>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Seam
{

/// poll, sleep, gettimeofday and condition waits run this many times faster
/// than the real clock. 1 at the beginning.
void setTimeScale(double factor);

enum class Call
{
    poll,
    pipe,
    getFlags,
    setFlags,
    allocate,
    count
};

/// The nth call from now on (1: the next) fails with errno.
void failNth(Call call, int nth, int errnoValue = 0);

/// What getuid answers; root at the beginning, whoever runs the test.
void setUserId(uid_t id);

struct LogLine
{
    int priority;
    std::string text;
    bool operator==(const LogLine& o) const
    {
        return priority == o.priority && text == o.text;
    }
};

/// Seconds that sleep was asked for, of each call since the last one here.
std::vector<unsigned> takeSleeps();

/// Lines logged since the last call.
std::vector<LogLine> takeLog();

/// Waits (5 s at most) until a line with the text was logged, and drops what
/// came before it.
bool waitForLog(const std::string& text);

std::ostream& operator<<(std::ostream& out, const LogLine& line);

} // namespace Seam

#endif
