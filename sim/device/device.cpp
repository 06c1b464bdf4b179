#include "sim/device/device.h"

#include "sim/device/layer.h"

namespace Sim::Device
{

namespace
{

/// Used under the layer's lock.
std::vector<Exchange>& recorded()
{
    static auto* all = new std::vector<Exchange>;
    return *all;
}

void recordOne(const Request& request, const Outcome& outcome)
{
    recorded().push_back({request, outcome});
}

} // namespace

void install(std::unique_ptr<Controller> controller)
{
    // A std::function must be copyable.
    auto shared =
        std::make_shared<std::unique_ptr<Controller>>(std::move(controller));
    Layer::with([&](Driver& driver) {
        driver.setFactory([shared] { return std::move(*shared); });
        driver.setObserver(recordOne);
        recorded().clear();
    });
}

void reset()
{
    Layer::with([](Driver& driver) {
        driver.setFactory(nullptr);
        driver.clock().setScale(1);
        recorded().clear();
    });
}

std::vector<Exchange> exchanges()
{
    std::vector<Exchange> copy;
    Layer::with([&](Driver&) { copy = recorded(); });
    return copy;
}

void record(bool on)
{
    Layer::with(
        [on](Driver& driver) { driver.setObserver(on ? recordOne : nullptr); });
}

Controller* controller()
{
    Controller* found = nullptr;
    Layer::with([&](Driver& driver) { found = driver.controller(); });
    return found;
}

void vanish()
{
    Layer::with([](Driver& driver) { driver.vanish(std::nullopt); });
}

void comeBack()
{
    Layer::with([](Driver& driver) { driver.comeBack(); });
}

void injectEvent(const Bytes& event)
{
    Layer::with([&](Driver& driver) { driver.event(event); });
}

int openCount()
{
    int count = 0;
    Layer::with([&](Driver& driver) { count = driver.opens(); });
    return count;
}

void failNextReceive(int errnoValue)
{
    Layer::with([&](Driver& driver) { driver.failNextReceive(errnoValue); });
}

void setTimeScale(double scale)
{
    Layer::with([&](Driver& driver) { driver.clock().setScale(scale); });
}

} // namespace Sim::Device
