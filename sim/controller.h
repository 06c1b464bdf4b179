/// A simulated controller as a front end sees it: the model, its faults, its
/// latency and its counters behind one call.
#ifndef VEK_SIM_CONTROLLER_H
#define VEK_SIM_CONTROLLER_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sim/model/message.h"
#include "sim/profile/mistake.h"

namespace Sim
{

class Bmc;      // sim/model/bmc.h
class FaultSet; // sim/fault/fault.h

/// What becomes of one exchange. A front end acts it out.
struct Outcome
{
    enum class Kind
    {
        Answer,    ///< bytes, after delay.
        Silence,   ///< The controller says nothing: the driver makes C3h of it.
        Lost,      ///< Nothing ever comes, not even from the driver.
        SendErrno, ///< The send itself fails with errnoValue.
        Vanish     ///< The device goes away for `delay` (0: for good).
    };
    Kind kind = Kind::Answer;
    Bytes bytes;       ///< Completion code first.
    uint8_t netFn = 0; ///< Of the answer: odd, unless a fault changed it.
    uint8_t command = 0;
    std::chrono::microseconds delay{0};
    int errnoValue = 0;
};

/// Not for several threads at once: a front end serialises.
class Controller
{
public:
    /// Seconds since 1970 as the controller sees them.
    using Clock = std::function<int64_t()>;

    Controller(std::unique_ptr<Bmc> bmc, FaultSet faults,
               std::chrono::microseconds latency = {});
    ~Controller();

    Outcome exchange(const Request& request);

    /// Other rules from now on, as if they had seen nothing yet.
    void setFaults(FaultSet faults);

    /// errno for an open, or 0 when the device opens.
    int openErrno();

    /// An event message for the driver's event queue (IPMI v2.0, 22.8), if
    /// one waits: 16 bytes as Read Event Message Buffer gives them.
    bool nextEvent(Bytes& event);

    /// Exchanges that reached the controller, by netFn << 8 | command.
    const std::map<uint16_t, uint64_t>& counts() const;

    Bmc& bmc();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// What a front end is asked to simulate.
struct Setup
{
    std::string profile = "two-socket"; ///< A built-in one, or a file.
    std::vector<std::string> faults;    ///< Rules, after the profile's own.
    std::chrono::microseconds latency{0};
};

/// Null, with every mistake named, when profile or rules cannot be read.
std::unique_ptr<Controller> makeController(const Setup& setup,
                                           Mistakes& mistakes);

} // namespace Sim

#endif
