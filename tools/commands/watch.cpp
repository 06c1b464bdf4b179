#include "tools/commands/watch.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <pthread.h>
#include <thread>
#include <unistd.h>

#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

#include "tools/collect/health_source.h"
#include "tools/collect/repository.h"
#include "tools/device.h"
#include "tools/print/output.h"
#include "tools/print/screen.h"

namespace Tool
{

namespace
{

using Ipmi::IpmiIfc;

void checkDevice()
{
    if (getuid() != 0)
        throw Failure{Status::noDevice, "no permission to run the node",
                      "Watching needs the real user id of root; without it, "
                      "run the command again and again."};
    if (Ipmi::IpmiIfcOpenIpmiOpen(0) < 0)
        throw openFailure(errno, true);
    Ipmi::IpmiIfcOpenIpmiClose(0);
}

// The signals that end it, for all threads that are started from here on.
class Signals
{
public:
    Signals()
    {
        sigemptyset(&interrupts_);
        sigaddset(&interrupts_, SIGINT);
        sigaddset(&interrupts_, SIGTERM);
        all_ = interrupts_;
        sigaddset(&all_, ownEnd);
        pthread_sigmask(SIG_BLOCK, &all_, nullptr);
    }
    void wait() const
    {
        int signal = 0;
        sigwait(&all_, &signal);
    }
    // Whether one came within a tenth of a second.
    bool waitShortly() const
    {
        constexpr timespec tenth{0, 100'000'000};
        return sigtimedwait(&all_, nullptr, &tenth) > 0;
    }
    // The user's next one ends the process as it does any other.
    void release() const
    {
        pthread_sigmask(SIG_UNBLOCK, &interrupts_, nullptr);
    }
    static void raise() { kill(getpid(), ownEnd); }

private:
    // One that stays blocked: it may come when the user's have ended the wait.
    static constexpr int ownEnd = SIGUSR1;

    sigset_t interrupts_{}, all_{};
};

// The node on a thread of its own, which also reads the sensors.
class Node
{
public:
    Node()
        : thread_{[] {
              run();
          }}
    {}
    ~Node() { end(); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // Every pass that somebody waits for is over then.
    void end()
    {
        if (!thread_.joinable())
            return;
        IpmiIfc::stop(0);
        thread_.join();
    }

    static bool isIn(unsigned states)
    {
        return (unsigned(IpmiIfc::getState(0)) & states) != 0;
    }

private:
    // What it throws it has logged, and the state says that it stopped.
    static void run()
    {
        try {
            IpmiIfc::start(0, 0);
        } catch (const CmpiStatus&) {
        }
    }

    std::thread thread_;
};

// Asks for polls and shows what came of them. pollAll takes two seconds at
// least, which sets the pace.
class Poller
{
public:
    explicit Poller(const Watching& watching)
        : watching_{watching}, thread_{[this] {
              run();
          }}
    {}
    ~Poller()
    {
        askToEnd();
        if (thread_.joinable())
            thread_.join();
    }
    Poller(const Poller&) = delete;
    Poller& operator=(const Poller&) = delete;

    // It ends with the poll that is under way.
    void askToEnd()
    {
        const std::lock_guard lock{mutex_};
        __atomic_store_n(&over_, true, __ATOMIC_RELAXED);
        wake_.notify_one();
    }

    void end()
    {
        thread_.join();
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    bool isOver() const { return __atomic_load_n(&over_, __ATOMIC_RELAXED); }

    void poll(IpmiIfc::IPMI_POLL_TYPE type, bool serial, WaitText text)
    {
        const Patience patience{std::move(text)};
        IpmiIfc::pollAll(1, serial, type, &over_);
    }

    void rest()
    {
        std::unique_lock lock{mutex_};
        wake_.wait_for(lock, std::chrono::seconds{watching_.pause},
                       [this] { return isOver(); });
    }

    void run()
    {
        try {
            poll(watching_.first, true, watching_.waiting);
            while (!isOver()) {
                watching_.show();
                rest();
                if (!isOver())
                    IpmiIfc::pollAll(1, false, watching_.next, &over_);
            }
        } catch (...) {
            // The end leaves exchanges without an answer.
            if (isOver())
                return;
            failure_ = std::current_exception();
            Signals::raise();
        }
    }

    const Watching& watching_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool over_ = false; ///< As pollAll takes it; only by the atomics above.
    std::exception_ptr failure_;
    std::thread thread_;
};

// False when a signal came first.
bool waitForStart(const Signals& signals)
{
    constexpr unsigned ends = IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED;
    const Patience patience{progressText};
    while (!Node::isIn(ends))
        if (signals.waitShortly())
            return false;
    return true;
}

void start(const Signals& signals)
{
    // Only the end of its exchanges, of 30 s each, would end the start, and
    // nothing has been shown that is to be cleared up.
    if (!waitForStart(signals))
        _exit(int(Status::done));
    if (!Node::isIn(IpmiIfc::STATE_RUNNING))
        throw Failure{Status::failed, "the node did not start",
                      "--verbose says more."};
}

} // namespace

Status watch(const Watching& watching)
{
    checkDevice();
    if (watching.check)
        watching.check();
    loadHealthTable();
    const Signals signals;
    Node node;
    start(signals);
    Poller poller{watching};
    signals.wait();
    poller.askToEnd();
    watching.over();
    signals.release();
    const Patience patience{[] {
        return std::string{"waiting for the last answer ..."};
    }};
    node.end();
    poller.end();
    return Status::done;
}

Status watch(const std::function<std::string()>& draw, bool inPlace)
{
    Screen screen{inPlace};
    return watch({IpmiIfc::POLL_FULL, IpmiIfc::POLL_READINGS,
                  [&] { screen.put(draw()); }, [&] { screen.restore(); }, 0,
                  progressText});
}

} // namespace Tool
