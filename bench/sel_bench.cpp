// What the event log costs: the lookup of a description by its code, beside
// other ways to find it; a read of the whole log, for each of its records; and
// a poll that finds one new record.
//
//     build/release/bench/sel-bench
//
// The lookups run interleaved in one process; the last lines give the ratios
// of their medians. The controller has no latency, so CPU time is the
// library's and the simulated controller's together; exchanges are what counts
// on hardware.
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>
#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

#include "ipmi/IpmiEventLookup.h"
#include "ipmi/IpmiNode.h"
#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#ifdef VEK_GPERF
#include <cstring> // what it needs
#include <event_codes.inc>
#endif

using namespace Ipmi;

namespace
{

std::atomic<uint64_t> allocations{0};
std::atomic<size_t> bytesInUse{0};

using Codes = std::vector<uint32_t>;

const EventText* byPerfectHash(uint32_t code)
{
    const EventText& row = ipmi_sel_data[perfect_hash_lookup(code)];
    return row.code() == code ? &row : nullptr;
}

const EventText* byUnorderedMap(uint32_t code)
{
    static const auto* const rows = [] {
        auto* made = new std::unordered_map<uint32_t, const EventText*>;
        for (const EventText& row : ipmi_sel_data)
            made->emplace(row.code(), &row);
        return made;
    }();
    const auto found = rows->find(code);
    return found == rows->end() ? nullptr : found->second;
}

const EventText* bySortedArray(uint32_t code)
{
    const auto row =
        std::lower_bound(ipmi_sel_data.begin(), ipmi_sel_data.end(), code,
                         [](const EventText& one, uint32_t wanted) {
                             return one.code() < wanted;
                         });
    return row != ipmi_sel_data.end() && row->code() == code ? &*row : nullptr;
}

#ifdef VEK_GPERF
const EventText* byGperf(uint32_t code)
{
    const char key[] = {char(code >> 24), char(code >> 16), char(code >> 8),
                        char(code)};
    const GperfRow* const found = findGperfRow(key, sizeof key);
    return found ? &ipmi_sel_data[found->row] : nullptr;
}
#endif

// In no order that a processor could learn.
Codes mixed(Codes codes)
{
    std::shuffle(codes.begin(), codes.end(), std::mt19937{1});
    return codes;
}

Codes knownCodes()
{
    Codes codes;
    for (const EventText& row : ipmi_sel_data)
        codes.push_back(row.code());
    return mixed(codes);
}

// A bit away from those that there are.
Codes unknownCodes()
{
    Codes codes;
    for (const EventText& row : ipmi_sel_data)
        for (unsigned bit = 0; bit < 32; bit += 5) {
            const uint32_t code = row.code() ^ 1u << bit;
            if (!bySortedArray(code))
                codes.push_back(code);
        }
    codes = mixed(codes);
    codes.resize(eventTextCount);
    return codes;
}

template <const EventText* (*find)(uint32_t)>
void lookup(benchmark::State& state, const Codes& codes, bool known)
{
    for (const uint32_t code : codes)
        if (known != (find(code) && find(code)->code() == code))
            state.SkipWithError("a wrong row");
    const uint64_t before = allocations;
    for (auto _ : state)
        for (const uint32_t code : codes)
            benchmark::DoNotOptimize(find(code));
    const double lookups = double(state.iterations()) * double(codes.size());
    state.counters["allocations"] = double(allocations - before) / lookups;
    state.counters["time/lookup"] = benchmark::Counter(
        lookups, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// A controller that holds so many events, one a second.
int64_t now;

Sim::EventLog& serveLog(unsigned events)
{
    Sim::BmcState state;
    state.eventLog.emplace().capacity = 0xfffe;
    IpmiIfcOpenIpmiClose(0);
    Sim::Device::install(std::make_unique<Sim::Controller>(
        std::make_unique<Sim::Bmc>(std::move(state)), Sim::FaultSet{}));
    Sim::Device::record(false);
    Sim::Bmc& bmc = Sim::Device::controller()->bmc();
    now = 0x60000000;
    bmc.setClock([] { return now; });
    for (; events; --events, ++now)
        bmc.logEvent({});
    if (IpmiIfcOpenIpmiOpen(0) < 0)
        abort();
    return *bmc.state().eventLog;
}

double exchanges()
{
    double sum = 0;
    for (const auto& [command, count] : Sim::Device::controller()->counts())
        sum += double(count);
    return sum;
}

// As after a clear, which the library knows by its time: another each time.
void readWhole(Sim::EventLog& log)
{
    static uint32_t erased = 0;
    log.erased = ++erased;
    IpmiIfcSelGetInfo(0, nullptr);
}

void readLog(benchmark::State& state)
{
    const auto records = unsigned(state.range(0));
    Sim::EventLog& log = serveLog(records);
    {
        // Or the place of an earlier run's records were used again.
        VEK::MutexLock lock{g_IpmiNode[0].selMutex};
        decltype(IpmiIfc::getSelData()){}.swap(*g_IpmiNode[0].selRecords);
    }
    const size_t memory = bytesInUse;
    readWhole(log);
    state.counters["bytes/record"] = double(bytesInUse - memory) / records;
    const double sent = exchanges();
    for (auto _ : state)
        readWhole(log);
    if (IpmiIfc::getSelData().size() != records)
        state.SkipWithError("records are missing");
    const double read = double(state.iterations()) * records;
    state.counters["exchanges/record"] = (exchanges() - sent) / read;
    state.counters["time/record"] = benchmark::Counter(
        read, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// One record more in each poll.
void incrementalPoll(benchmark::State& state)
{
    const auto records = size_t(state.range(0));
    readWhole(serveLog(unsigned(records)));
    const double sent = exchanges();
    for (auto _ : state) {
        ++now;
        Sim::Device::controller()->bmc().logEvent({});
        IpmiIfcSelGetInfo(0, nullptr);
    }
    if (IpmiIfc::getSelData().size() != records + size_t(state.iterations()))
        state.SkipWithError("records are missing");
    state.counters["exchanges"] =
        (exchanges() - sent) / double(state.iterations());
}

// Prints as usual, and keeps the medians of CPU time.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.aggregate_name == "median")
                medians_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }

    /// Of each lookup to that by the perfect hash of the same codes.
    void printRatios() const
    {
        for (const auto& [name, time] : medians_) {
            const auto own =
                medians_.find("perfect hash" + name.substr(name.find(',')));
            if (own != medians_.end())
                std::printf("%-24s %.2f times the perfect hash\n", name.c_str(),
                            time / own->second);
        }
    }

private:
    std::map<std::string, double> medians_;
};

template <const EventText* (*find)(uint32_t)>
void registerLookup(const std::string& name)
{
    for (const bool known : {true, false}) {
        const Codes codes = known ? knownCodes() : unknownCodes();
        benchmark::RegisterBenchmark(
            (name + (known ? ", known" : ", unknown")).c_str(),
            [codes, known](benchmark::State& state) {
                lookup<find>(state, codes, known);
            })
            ->MinTime(0.1)
            ->Repetitions(9)
            ->ReportAggregatesOnly();
    }
}

} // namespace

// Not inlined, or the compiler sees malloc and free where it wants a pair of
// operators.
[[gnu::noinline]] void* operator new(size_t size)
{
    void* const memory = malloc(size);
    if (!memory)
        throw std::bad_alloc{};
    ++allocations;
    bytesInUse += malloc_usable_size(memory);
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    bytesInUse -= malloc_usable_size(memory);
    free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept
{
    operator delete(memory);
}

BENCHMARK(readLog)->Arg(10)->Arg(1000)->Arg(60000);
BENCHMARK(incrementalPoll)->Arg(10)->Arg(1000)->Arg(60000)->Iterations(1000);

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, interleaved);
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());

    registerLookup<byPerfectHash>("perfect hash");
    registerLookup<byUnorderedMap>("unordered_map");
    registerLookup<bySortedArray>("sorted array");
#ifdef VEK_GPERF
    registerLookup<byGperf>("gperf");
#endif
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    return 0;
}
