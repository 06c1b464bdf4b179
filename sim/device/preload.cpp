/// libvek-ipmi-sim.so: the device layer for anybody's program, as the
/// environment says (sim/environment.h).
#include <cerrno>
#include <cstdio>

#include <unistd.h>

#include "sim/counters.h"
#include "sim/device/layer.h"
#include "sim/device/real.h"
#include "sim/environment.h"

namespace
{

namespace Layer = Sim::Layer;

bool looksLikeRoot = false;

std::unique_ptr<Sim::Controller> make(const Sim::Setup& setup)
{
    Sim::Mistakes mistakes;
    auto controller = Sim::makeController(setup, mistakes);
    for (const Sim::Mistake& mistake : mistakes)
        std::fprintf(stderr, "vek-ipmi-sim: %s: %s\n", mistake.place.c_str(),
                     mistake.reason.c_str());
    return controller;
}

/// Joins at the first exchange: most processes of a run make none.
Sim::Driver::Observer countInto(const std::string& file)
{
    auto counters = std::make_shared<Sim::SharedCounters>();
    return [=, joined = false](const Sim::Request& request,
                               const Sim::Outcome& outcome) mutable {
        if (outcome.kind == Sim::Outcome::Kind::SendErrno ||
            outcome.kind == Sim::Outcome::Kind::Vanish)
            return; // It never reached the controller.
        if (!joined && !counters->join(file))
            std::fprintf(stderr, "vek-ipmi-sim: cannot reach the counters: "
                                 "this process is not counted\n");
        joined = true;
        counters->add(request.netFn, request.command);
    };
}

__attribute__((constructor)) void configure()
{
    if (!Layer::active())
        return;
    const Sim::Environment environment = Sim::readEnvironment();
    looksLikeRoot = !environment.realUserId;
    Layer::with([&](Sim::Driver& driver) {
        driver.setFactory([setup = environment.setup] { return make(setup); });
        if (!environment.countFile.empty())
            driver.setObserver(countInto(environment.countFile));
    });
}

} // namespace

extern "C"
{

    int vek_ipmi_sim_serves();

    /// 1 when an open of /dev/ipmi0 in this process reaches a simulated
    /// controller. Programs that must not reach another one ask for this
    /// function by dlsym.
    int vek_ipmi_sim_serves()
    {
        bool serves = false;
        if (Layer::active())
            Layer::with([&](Sim::Driver& driver) {
                serves = driver.controller() != nullptr;
            });
        return serves;
    }

    uid_t getuid() noexcept
    {
        static const auto next = Sim::nextDefinition<uid_t()>("getuid");
        return looksLikeRoot ? 0 : next();
    }

    uid_t geteuid() noexcept
    {
        static const auto next = Sim::nextDefinition<uid_t()>("geteuid");
        return looksLikeRoot ? 0 : next();
    }

    // The ways to a controller that do without the driver: by its ports, some
    // clients try them first.
    int iopl(int level);
    int ioperm(unsigned long from, unsigned long count, int on);

    int iopl(int)
    {
        errno = EPERM;
        return -1;
    }

    int ioperm(unsigned long, unsigned long, int)
    {
        errno = EPERM;
        return -1;
    }

} // extern "C"
