// What the library adds to one exchange: IpmiIfc::sendCmd beside a bare loop
// of ioctl, poll and ioctl, on the same simulated device without latency.
//
//     build/release/bench/transport-bench
//
// Both run interleaved in one process. The last line gives the ratios of their
// medians (CPU time is the one to trust on a busy machine), and the
// allocations that the library itself makes for an exchange (the simulated
// controller's are in both).
#include <algorithm>
#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <map>
#include <memory>
#include <new>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "sim/profile/profile.h"
#include <vek-ipmi/IpmiCommandLine.h>
#include <vek-ipmi/IpmiIfc.h>

namespace
{

std::atomic<uint64_t> allocations{0};

constexpr uint8_t app = 0x06;
constexpr uint8_t getDeviceId = 0x01;

class AllocationCount
{
public:
    explicit AllocationCount(benchmark::State& state) : state_{state} {}
    ~AllocationCount()
    {
        state_.counters["allocations"] = benchmark::Counter(
            double(allocations - before_), benchmark::Counter::kAvgIterations);
    }

private:
    benchmark::State& state_;
    uint64_t before_ = allocations;
};

void bareLoop(benchmark::State& state)
{
    const int fd = open("/dev/ipmi0", O_RDWR | O_CLOEXEC);
    ipmi_system_interface_addr address{IPMI_SYSTEM_INTERFACE_ADDR_TYPE,
                                       IPMI_BMC_CHANNEL, 0};
    ipmi_req request{};
    request.addr = reinterpret_cast<unsigned char*>(&address);
    request.addr_len = sizeof address;
    request.msg.netfn = app;
    request.msg.cmd = getDeviceId;
    AllocationCount count{state};
    for (auto _ : state) {
        ioctl(fd, IPMICTL_SEND_COMMAND, &request);
        pollfd ready{fd, POLLIN, 0};
        poll(&ready, 1, 30000);
        uint8_t answer[32];
        ipmi_addr from;
        ipmi_recv message{};
        message.addr = reinterpret_cast<unsigned char*>(&from);
        message.addr_len = sizeof from;
        message.msg.data = answer;
        message.msg.data_len = sizeof answer;
        if (ioctl(fd, IPMICTL_RECEIVE_MSG_TRUNC, &message) < 0 || answer[0])
            state.SkipWithError("no good answer");
        benchmark::DoNotOptimize(answer);
    }
    close(fd);
}

void sendCmd(benchmark::State& state)
{
    AllocationCount count{state};
    for (auto _ : state) {
        uint8_t answer[32];
        uint16_t size = sizeof answer;
        if (Ipmi::IpmiIfc::sendCmd(getDeviceId, app, 0, nullptr, &size,
                                   answer) != 0)
            state.SkipWithError("no good answer");
        benchmark::DoNotOptimize(answer);
    }
}

// Prints as usual, and keeps the time and allocations of every repetition.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            Series& series = series_[run.run_name.function_name];
            series.wallTimes.push_back(run.GetAdjustedRealTime());
            series.cpuTimes.push_back(run.GetAdjustedCPUTime());
            series.allocations = run.counters.at("allocations");
        }
    }

    bool printRatio()
    {
        Series& bare = series_["bareLoop"];
        Series& library = series_["sendCmd"];
        if (bare.wallTimes.empty() || library.wallTimes.empty())
            return false;
        std::printf("sendCmd / bare loop: wall %.3f, CPU %.3f; %+.1f "
                    "allocations an exchange\n",
                    median(library.wallTimes) / median(bare.wallTimes),
                    median(library.cpuTimes) / median(bare.cpuTimes),
                    library.allocations - bare.allocations);
        return true;
    }

private:
    struct Series
    {
        std::vector<double> wallTimes;
        std::vector<double> cpuTimes;
        double allocations = 0;
    };

    static double median(std::vector<double>& values)
    {
        const auto middle = values.begin() + long(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    std::map<std::string, Series> series_;
};

} // namespace

// Not inlined, or the compiler sees malloc and free where it wants a pair of
// operators.
[[gnu::noinline]] void* operator new(size_t size)
{
    ++allocations;
    if (void* memory = malloc(size))
        return memory;
    throw std::bad_alloc{};
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept
{
    free(memory);
}

BENCHMARK(bareLoop);
BENCHMARK(sendCmd);

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=9";
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, {repetitions, interleaved});
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());

    Sim::Device::install(std::make_unique<Sim::Controller>(
        Sim::builtinProfile(), Sim::FaultSet{}));
    Sim::Device::record(false);
    if (Ipmi::IpmiIfcOpenIpmiOpen(0) < 0 || Ipmi::IpmiIfcInitForCLI(0) != 0)
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.printRatio() ? 0 : 1;
}
