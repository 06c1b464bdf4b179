#include "sim/program/child.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "sim/program/failure.h"

namespace Sim
{

namespace
{

constexpr int forwarded[] = {SIGINT,  SIGTERM,  SIGHUP,  SIGQUIT, SIGUSR1,
                             SIGUSR2, SIGWINCH, SIGTSTP, SIGCONT};

/// Signals wait until they are asked for: no handler runs at a bad moment.
class BlockedSignals
{
public:
    BlockedSignals()
    {
        signal(SIGCHLD, SIG_DFL);
        sigemptyset(&waited_);
        sigaddset(&waited_, SIGCHLD);
        for (int number : forwarded)
            sigaddset(&waited_, number);
        sigprocmask(SIG_BLOCK, &waited_, &before_);
    }
    ~BlockedSignals() { restore(); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

    void restore() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
    /// 0 when the wait was interrupted.
    int next(siginfo_t& info)
    {
        const int number = sigwaitinfo(&waited_, &info);
        return number > 0 ? number : 0;
    }

private:
    sigset_t waited_, before_;
};

[[noreturn]] void execute(const std::string& file,
                          const std::vector<std::string>& words, int report)
{
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    // Runs a text without "#!" with the shell, as execv does not.
    execvp(file.c_str(), arguments.data());
    const int error = errno;
    if (write(report, &error, sizeof error) < 0)
        _exit(status::ownFailure);
    _exit(status::cannotInvoke);
}

pid_t start(const std::string& file, const std::vector<std::string>& words,
            BlockedSignals& signals)
{
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0)
        throw Failure{status::ownFailure, std::strerror(errno)};
    const pid_t child = fork();
    if (child == 0) {
        signals.restore();
        execute(file, words, report[1]);
    }
    const int forkError = errno;
    close(report[1]);
    int error = 0;
    const bool failed = child < 0 || read(report[0], &error, sizeof error) > 0;
    close(report[0]);
    if (child < 0)
        throw Failure{status::ownFailure, std::strerror(forkError)};
    if (failed) {
        waitpid(child, nullptr, 0);
        throw Failure{status::cannotInvoke,
                      words[0] + ": " + std::strerror(error)};
    }
    return child;
}

/// A terminal sends its signals to the command too; others send theirs to
/// this process alone.
void forward(pid_t child, int number, const siginfo_t& info)
{
    if (info.si_code != SI_KERNEL || number == SIGCONT)
        kill(child, number);
}

/// Stopped from a terminal, the whole job is: whoever waits for this process
/// has to see it.
void stopAlong(int status)
{
    const int number = WSTOPSIG(status);
    if (number == SIGTSTP || number == SIGTTIN || number == SIGTTOU)
        raise(SIGSTOP);
}

/// False while it lives.
bool hasEnded(pid_t child, int& result)
{
    int status;
    while (waitpid(child, &status, WNOHANG | WUNTRACED) == child) {
        if (WIFSTOPPED(status)) {
            stopAlong(status);
            continue;
        }
        result = WIFSIGNALED(status) ? status::signalled + WTERMSIG(status)
                                     : WEXITSTATUS(status);
        return true;
    }
    return false;
}

} // namespace

int runChild(const std::string& file, const std::vector<std::string>& words)
{
    BlockedSignals signals;
    const pid_t child = start(file, words, signals);
    int result = 0;
    while (!hasEnded(child, result)) {
        siginfo_t info{};
        const int number = signals.next(info);
        if (number != 0 && number != SIGCHLD)
            forward(child, number, info);
    }
    return result;
}

} // namespace Sim
