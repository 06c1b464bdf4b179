// What the polling loop asks of the built-in controller when nothing changes,
// in exchanges by command: from start to the first complete caches, an
// ordinary poll (seven in eight), a periodic pass (the eighth: readings and
// LAN), and a full pass (records, sensors, FRU devices and LAN).
//
//     build/release/bench/pass-bench      (as root: the library asks for it)
//
// It takes eight seconds, which is how long the library's callers wait.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <thread>
#include <unistd.h>
#include <vek-ipmi/IpmiIfc.h>

#include "ipmi/IpmiNode.h"
#include "sim/device/device.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "sim/model/command.h"
#include "sim/profile/profile.h"

using Ipmi::IpmiIfc;

namespace
{

using Counts = std::map<uint16_t, uint64_t>;
using Rows = std::map<uint16_t, std::array<uint64_t, 4>>;

// Since the last call, into a column.
void take(Rows& rows, size_t column)
{
    static Counts before;
    // A row that only an earlier column has stays at 0 here.
    const Counts now = Sim::Device::controller()->counts();
    for (const auto& [command, count] : now)
        rows[command][column] = count - before[command];
    before = now;
}

void print(const Rows& rows)
{
    std::array<unsigned long long, 4> sums{};
    std::printf("%-5s %-28s %9s %9s %9s %9s\n", "", "", "start", "poll",
                "periodic", "full");
    for (const auto& [key, counts] : rows) {
        const auto netFn = uint8_t(key >> 8), code = uint8_t(key);
        const Sim::Command* const command = Sim::findCommand(netFn, code);
        std::printf("%02x %02x %-28s", netFn, code,
                    command ? command->name : "");
        for (size_t i = 0; i < sums.size(); ++i) {
            std::printf(" %9llu", static_cast<unsigned long long>(counts[i]));
            sums[i] += counts[i];
        }
        std::printf("\n");
    }
    std::printf("%-34s %9llu %9llu %9llu %9llu\n", "exchanges", sums[0],
                sums[1], sums[2], sums[3]);
}

void startNode()
{
    try {
        IpmiIfc::start(0);
    } catch (const CmpiStatus& status) {
        std::fprintf(stderr, "pass-bench: %s\n", status.msg());
        std::exit(1);
    }
}

// Until the first pass is done, for which the loop holds its mutex.
void waitForLoop()
{
    IpmiIfc::waitState(IpmiIfc::STATE_RUNNING);
    Ipmi::IpmiNode& node = Ipmi::g_IpmiNode[0];
    for (bool waits = false; !waits; usleep(1000)) {
        VEK::MutexLock lock{node.pollMutex};
        waits = node.pollCount != 0;
    }
}

void poll(IpmiIfc::IPMI_POLL_TYPE type)
{
    IpmiIfc::pollAll(1, true, type, nullptr);
}

} // namespace

int main()
{
    Sim::Device::install(std::make_unique<Sim::Controller>(
        Sim::builtinProfile(), Sim::FaultSet{}));
    Sim::Device::record(false);
    Rows rows;
    std::thread node{startNode};
    waitForLoop();
    take(rows, 0);
    for (int count = 2; count < 8; ++count) {
        poll(IpmiIfc::POLL_NORMAL);
        take(rows, 1);
    }
    poll(IpmiIfc::POLL_NORMAL);
    take(rows, 2);
    poll(IpmiIfc::POLL_FULL);
    take(rows, 3);
    IpmiIfc::stop();
    node.join();
    print(rows);
    return 0;
}
