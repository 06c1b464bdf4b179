/// A management controller as a plain object: a request in, an answer out,
/// and a clock that it is handed.
#ifndef VEK_SIM_MODEL_BMC_H
#define VEK_SIM_MODEL_BMC_H

#include <functional>
#include <optional>
#include <vector>

#include "sim/model/channel.h"
#include "sim/model/chassis.h"
#include "sim/model/fru.h"
#include "sim/model/identity.h"
#include "sim/model/lan.h"
#include "sim/model/message.h"
#include "sim/model/messaging.h"
#include "sim/model/sdr.h"
#include "sim/model/sel.h"
#include "sim/model/sensor.h"
#include "sim/model/system_info.h"

namespace Sim
{

/// A request that is answered with the same bytes always, whatever the
/// command table says: with these, any odd controller can be modelled.
struct FixedAnswer
{
    uint8_t netFn = 0;
    uint8_t command = 0;
    Bytes data;   ///< What the request's data begin with.
    Bytes answer; ///< Completion code first; empty: the controller is silent.
};

/// All that a controller knows, one member an area. An area that a profile
/// does not give is not there, and its commands answer C1h.
struct BmcState
{
    uint8_t busChannel = 0; ///< Where the BMC reaches it.
    uint8_t address = 0x20;
    Identity identity;
    std::optional<SystemInfo> systemInfo;
    std::optional<Chassis> chassis;
    std::optional<Messaging> messaging;
    std::vector<Channel> channels;
    std::optional<Repository> repository;
    std::optional<EventLog> eventLog;
    Sensors sensors; ///< By sensorKey.
    std::vector<FruDevice> frus;
    std::vector<LanConfig> lan; ///< One a channel.
    /// Further controllers, each on a bus that a channel of this one leads to.
    std::vector<BmcState> satellites;
    std::vector<FixedAnswer> answers;

    /// Null when there is no channel of that number.
    const Channel* channel(uint8_t number) const;
};

class Bmc
{
public:
    /// Seconds since 1970.
    using Clock = std::function<int64_t()>;
    using Bridge = std::function<std::optional<Bytes>(const Request&)>;

    /// Sensors that the repository's records tell of are made, each at the
    /// controller that owns it, unless the state has them already.
    explicit Bmc(BmcState state);

    /// Completion code first. No value: nobody answers, as for a request that
    /// is bridged to a controller that is not there.
    std::optional<Bytes> answer(const Request& request);

    /// Back to the state it was made with.
    void reset();

    /// The LUN of the request that is being answered.
    uint8_t lun() const { return lun_; }

    /// Carries a message to another controller: by answer(), unless whoever
    /// stands in front of this one wants to see it.
    std::optional<Bytes> bridge(const Request& request);
    void setBridge(Bridge bridge) { bridge_ = std::move(bridge); }

    /// Itself, or one of the satellites. Null when nobody is there.
    Bmc* reach(uint8_t channel, uint8_t address);

    /// A test's hook: answers every request instead of the model.
    using Script = std::function<std::optional<Bytes>(const Request&)>;
    void answerBy(Script script) { script_ = std::move(script); }

    /// A test's hook: an event message of 16 bytes for the event buffer.
    void queueEvent(Bytes event);
    /// The event that has waited longest, if one waits.
    bool takeEvent(Bytes& event);

    /// A record in the log, if there is one and the global enables let it,
    /// and in the event message buffer, if that is enabled.
    void logEvent(const EventMessage& event, int64_t secondsAgo = 0);
    void clearEventLog();

    BmcState& state() { return state_; }
    const BmcState& state() const { return state_; }

    /// Its satellites' clock as well. The time since the start begins anew.
    void setClock(const Clock& clock);
    int64_t now() const { return clock_(); }
    int64_t uptime() const { return now() - started_; } ///< Seconds.

private:
    std::optional<Bytes> answerHere(const Request& request);
    void start();

    /// Logs what the sensors, its satellites' too, have to tell until now.
    void watchSensors();
    void watch(const BmcState& owner, Sensor& sensor, int64_t second);
    template <class Each>
    void forEachSensor(const Each& each);

    BmcState initial_;
    BmcState state_; ///< Its satellites have moved out.
    std::vector<Bmc> satellites_;
    Clock clock_;
    Bridge bridge_;
    Script script_;
    int64_t started_ = 0;
    int64_t watched_ = 0; ///< Seconds since the start, as uptime().
    uint8_t lun_ = 0;
};

} // namespace Sim

#endif
