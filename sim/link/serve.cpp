#include "sim/link/serve.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "sim/link/session.h"

namespace Sim
{
namespace
{

using SteadyClock = std::chrono::steady_clock;

/// A descriptor that closes itself; -1: none.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : fd_{fd} {}
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void reset(int fd = -1)
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = fd;
    }
    int get() const { return fd_; }
    bool open() const { return fd_ >= 0; }

private:
    int fd_;
};

[[noreturn]] void fail(const std::string& what, int error)
{
    throw std::runtime_error(what + ": " + std::strerror(error));
}

/// SIGTERM and SIGINT as a readable descriptor, until its end.
class EndSignals
{
public:
    EndSignals()
    {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGTERM);
        sigaddset(&set, SIGINT);
        sigprocmask(SIG_BLOCK, &set, &before_);
        fd_.reset(signalfd(-1, &set, SFD_CLOEXEC));
        if (!fd_.open())
            fail("signalfd", errno);
    }
    /// Takes what came, else it would end the process after all.
    ~EndSignals()
    {
        signalfd_siginfo info;
        pollfd p{fd_.get(), POLLIN, 0};
        while (poll(&p, 1, 0) > 0 &&
               read(fd_.get(), &info, sizeof info) == ssize_t(sizeof info))
            ;
        sigprocmask(SIG_SETMASK, &before_, nullptr);
    }
    int get() const { return fd_.get(); }

private:
    sigset_t before_;
    Descriptor fd_;
};

struct Place
{
    sockaddr_storage address{};
    socklen_t length = 0;
};

Place resolve(const std::string& where)
{
    const size_t colon = where.rfind(':');
    if (colon == std::string::npos || colon + 1 == where.size())
        throw std::runtime_error("not HOST:PORT: " + where);
    std::string host = where.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    // getaddrinfo would take a larger number modulo 65536.
    const std::string port = where.substr(colon + 1);
    const bool isNumber =
        port.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && (port.size() > 5 || std::stoul(port) > 65535))
        throw std::runtime_error(where + ": no port is above 65535");
    addrinfo hints{}, *found = nullptr;
    hints.ai_socktype = SOCK_STREAM;
    const int error = getaddrinfo(host.empty() ? "127.0.0.1" : host.c_str(),
                                  port.c_str(), &hints, &found);
    if (error != 0)
        throw std::runtime_error(where + ": " + gai_strerror(error));
    Place place;
    std::memcpy(&place.address, found->ai_addr, found->ai_addrlen);
    place.length = found->ai_addrlen;
    freeaddrinfo(found);
    return place;
}

/// Listens, and makes of port 0 the port that was given.
int listenAt(Place& place)
{
    const int fd =
        socket(place.address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    auto* address = reinterpret_cast<sockaddr*>(&place.address);
    if (fd >= 0)
        setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (fd < 0 || bind(fd, address, place.length) < 0 || listen(fd, 1) < 0 ||
        getsockname(fd, address, &place.length) < 0)
    {
        const int error = errno;
        close(fd);
        fail("cannot listen", error);
    }
    return fd;
}

void announce(const Place& place)
{
    char host[NI_MAXHOST], port[NI_MAXSERV];
    getnameinfo(reinterpret_cast<const sockaddr*>(&place.address), place.length,
                host, sizeof host, port, sizeof port,
                NI_NUMERICHOST | NI_NUMERICSERV);
    std::printf("listening on %s:%s\n", host, port);
    std::fflush(stdout);
}

class Server
{
public:
    Server(const std::string& where, Controller& controller)
        : session_{controller}, place_{resolve(where)}
    {
        listener_.reset(listenAt(place_));
        announce(place_);
    }

    /// Returns when a signal asks for the end.
    void run()
    {
        for (;;) {
            pollfd waits[] = {
                {signals_.get(), POLLIN, 0},
                {connection_.open() ? -1 : listener_.get(), POLLIN, 0},
                {connection_.get(), POLLIN, 0}};
            if (poll(waits, 3, timeout()) < 0 && errno != EINTR)
                fail("poll", errno);
            if (waits[0].revents)
                return;
            if (waits[1].revents)
                take();
            if (waits[2].revents)
                receive();
            sendDue();
            comeBack();
        }
    }

private:
    struct Pending
    {
        SteadyClock::time_point due, tooLate;
        Bytes frame;
    };

    /// Milliseconds until something is due; -1: nothing is.
    int timeout() const
    {
        auto next = away_ ? back_ : SteadyClock::time_point::max();
        for (const Pending& p : pending_)
            next = std::min(next, p.due);
        if (next == SteadyClock::time_point::max())
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            next - SteadyClock::now());
        return int(std::clamp<long long>(left.count(), 0, 60000));
    }

    void take()
    {
        const int yes = 1;
        connection_.reset(
            accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!connection_.open())
            return;
        setsockopt(connection_.get(), IPPROTO_TCP, TCP_NODELAY, &yes,
                   sizeof yes);
        act(session_.connected());
    }

    void receive()
    {
        uint8_t buffer[1024];
        const ssize_t size = read(connection_.get(), buffer, sizeof buffer);
        if (size > 0)
            act(session_.receive(buffer, size_t(size)));
        else if (size == 0 || errno != EINTR)
            drop();
    }

    void act(LinkStep step)
    {
        const auto now = SteadyClock::now();
        for (LinkReply& reply : step.replies)
            pending_.push_back({now + reply.delay, now + latestAnswer,
                                std::move(reply.frame)});
        if (step.vanish)
            vanish(step.away);
    }

    void sendDue()
    {
        const auto now = SteadyClock::now();
        const auto sent = [&](const Pending& p) {
            if (p.due > now)
                return false;
            if (p.tooLate >= now &&
                ::send(connection_.get(), p.frame.data(), p.frame.size(),
                       MSG_NOSIGNAL | MSG_DONTWAIT) != ssize_t(p.frame.size()))
                broken_ = true;
            return true;
        };
        pending_.erase(std::remove_if(pending_.begin(), pending_.end(), sent),
                       pending_.end());
        if (broken_)
            drop();
    }

    void drop()
    {
        connection_.reset();
        pending_.clear();
        broken_ = false;
    }

    /// The listener goes as well: a connection that waits in its queue would
    /// look alive to the machine.
    void vanish(std::chrono::microseconds away)
    {
        drop();
        listener_.reset();
        away_ = away.count() > 0;
        back_ = SteadyClock::now() + away;
    }

    void comeBack()
    {
        if (!away_ || back_ > SteadyClock::now())
            return;
        away_ = false;
        listener_.reset(listenAt(place_));
    }

    LinkSession session_;
    Place place_;
    EndSignals signals_;
    Descriptor listener_, connection_;
    std::vector<Pending> pending_;
    bool broken_ = false;
    bool away_ = false; ///< Vanished, and will be back at back_.
    SteadyClock::time_point back_;
};

} // namespace

int serve(const std::string& where, Controller& controller)
try {
    Server(where, controller).run();
    return 0;
} catch (const std::runtime_error& error) {
    std::fprintf(stderr, "vek-ipmi-sim: %s\n", error.what());
    return 125;
}

} // namespace Sim
