// What sensors cost: discovery and refresh of 10, 100 and 1,000 of them, which
// should cost the same for each, and callers beside a refresh.
//
//     build/release/bench/sensor-bench
//
// The controller has no latency, so CPU time is the library's and the
// simulated controller's together; exchanges are what counts on hardware.
#include <atomic>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <memory>
#include <thread>
#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSensor.h>

#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

constexpr unsigned sensorsOfAnOwner = 250;

// Threshold sensors of the BMC and, above 250, of satellites.
void serveSensors(unsigned count)
{
    Sim::BmcState state;
    state.repository.emplace();
    for (unsigned i = 0; i < count; ++i) {
        const auto owner = uint8_t(0x20 + 2 * (i / sensorsOfAnOwner));
        RecordBytes record = sensorRecord(
            1, uint8_t(i % sensorsOfAnOwner),
            {{5, owner}, {11, 0x68}, {18, 0x3f}, {24, 1}}, "Sensor");
        const auto id = uint16_t(i + 1);
        record[0] = uint8_t(id & 0xff);
        record[1] = uint8_t(id >> 8);
        state.repository->records.push_back({id, record, {}});
    }
    for (unsigned i = 1; i <= count / sensorsOfAnOwner; ++i) {
        state.satellites.emplace_back();
        state.satellites.back().address = uint8_t(0x20 + 2 * i);
    }
    IpmiIfcCloseForCLI(0);
    IpmiIfcOpenIpmiClose(0);
    Sim::Device::install(std::make_unique<Sim::Controller>(
        std::make_unique<Sim::Bmc>(std::move(state)), Sim::FaultSet{}));
    Sim::Device::record(false);
    if (IpmiIfcOpenIpmiOpen(0) < 0 || IpmiIfcInitForCLI(0) != 0)
        abort();
}

double exchanges()
{
    double sum = 0;
    for (const auto& [command, count] : Sim::Device::controller()->counts())
        sum += double(count);
    return sum;
}

void report(benchmark::State& state, double exchangesBefore, unsigned sensors)
{
    const double runs = double(state.iterations()) * sensors;
    state.counters["exchanges/sensor"] = (exchanges() - exchangesBefore) / runs;
    state.counters["time/sensor"] = benchmark::Counter(
        runs, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void discovery(benchmark::State& state)
{
    const auto sensors = unsigned(state.range(0));
    // What an earlier run left is freed before it is counted.
    serveSensors(0);
    IpmiIfcSdrGetInfo(0);
    serveSensors(sensors);
    const size_t before = mallinfo2().uordblks;
    IpmiIfcSdrGetInfo(0);
    state.counters["bytes/sensor"] =
        double(mallinfo2().uordblks - before) / sensors;
    const double sent = exchanges();
    for (auto _ : state)
        IpmiIfcSdrGetInfo(0);
    if (IpmiIfc::getSensors().size() != sensors)
        state.SkipWithError("sensors are missing");
    report(state, sent, sensors);
}

void refresh(benchmark::State& state)
{
    const auto sensors = unsigned(state.range(0));
    serveSensors(sensors);
    IpmiIfcSdrGetInfo(0);
    const double sent = exchanges();
    for (auto _ : state)
        IpmiIfcSensorUpdateReading(0);
    report(state, sent, sensors);
}

// Calls beside a thread that refreshes the readings of 100 sensors.
std::atomic<bool> done;
std::thread poller;

void startPolling(const benchmark::State&)
{
    serveSensors(100);
    IpmiIfcSdrGetInfo(0);
    done = false;
    poller = std::thread{[] {
        while (!done)
            IpmiIfcSensorUpdateReading(0);
    }};
}

void stopPolling(const benchmark::State&)
{
    done = true;
    poller.join();
}

void getSensors(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(IpmiIfc::getSensors());
}

void getSensor(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(IpmiIfc::getSensor(50, 0x20));
}

} // namespace

BENCHMARK(discovery)->RangeMultiplier(10)->Range(10, 1000);
BENCHMARK(refresh)->RangeMultiplier(10)->Range(10, 1000);
BENCHMARK(getSensors)
    ->Setup(startPolling)
    ->Teardown(stopPolling)
    ->ThreadRange(1, 16);
BENCHMARK(getSensor)
    ->Setup(startPolling)
    ->Teardown(stopPolling)
    ->ThreadRange(1, 16);

BENCHMARK_MAIN();
