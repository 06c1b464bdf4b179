// A day of polls in seconds: what changes, fails and is read meanwhile leaves
// memory as it was, save for what grows by intent.
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <new>
#include <set>
#include <vek-ipmi/IpmiEntity.h>
#include <vek-ipmi/IpmiLan.h>
#include <vek-ipmi/IpmiSelData.h>
#include <vek-ipmi/IpmiSensor.h>

#include "sim/device/layer.h"
#include "sim/fault/fault.h"
#include "sim/profile/profile.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

std::atomic<long> allocations{0}, bytes{0}; // Of this process, not yet freed.
std::atomic<int64_t> now{1700000000};
std::atomic<int> recordsTold{0}, passesTold{0};

void tell(void*, IpmiSelData* record)
{
    ++(record ? recordsTold : passesTold);
}

constexpr int pollsAnHour = 64;

// Each undoes what it did the time before, so that an hour ends as it began.
const struct
{
    int every; // So many polls, of which half an hour is a multiple.
    void (*make)(Sim::BmcState&);
} changes[] = {
    {2,
     [](auto& bmc) {
         for (auto& s : bmc.sensors)
             s.second.reading ^= 1;
     }},
    {8,
     [](auto& bmc) {
         bmc.repository->change(now);
     }},
    {32,
     [](auto& bmc) {
         bmc.repository->change(now, false);
     }},
    {16,
     [](auto& bmc) {
         for (auto& f : bmc.frus)
             f.contents[20] ^= 1;
     }},
    {8,
     [](auto& bmc) {
         bmc.lan[0].parameters[Sim::lan::address << 8][3] ^= 1;
     }},
};

// An hour each, and then again.
const std::vector<std::string> faults[] = {
    {},
    {"rate=0.05,cc=c0"},
    {"netfn=04,rate=0.02,silence", "netfn=0a,rate=0.005,silence"},
    {"rate=0.002,lost"},
    {"cmd=read-fru-data,rate=0.05,cc=c3", "cmd=read-fru-data,every=7,cut=5"},
    {"cmd=get-lan-configuration,rate=0.3,cc=80", "cmd=get-sdr,rate=0.02,cc=c5"},
    {"rate=0.02,seed=3,cut=3", "rate=0.02,seed=4,stale"}, // Garbles records.
    {"cmd=get-sel-info,rate=0.2,cc=ff", "rate=0.01,send-errno=EBUSY"},
};
constexpr size_t garbling = 6;

void readSensors()
{
    for (const auto& sensor : IpmiIfc::getSensors())
        sensor->getName();
    int state;
    if (const auto sensor = IpmiIfc::getSensor(1, 0x20))
        sensor->getSensorState(state);
    IpmiIfc::getSdrRecords();
}

void readSel()
{
    for (const auto& record : IpmiIfc::getSelData())
        record->caption();
    IpmiIfc::getSel();
}

void readFrus()
{
    static size_t round = 0;
    const auto frus = IpmiIfc::getFrus();
    for (const auto& fru : frus)
        for (const auto& area : fru->getOptionalRefArray())
            IpmiIfc::getFruPart(area);
    if (!frus.empty())
        IpmiIfc::getFruAreas(frus[++round % frus.size()]);
}

void readOthers()
{
    for (const auto& entity : IpmiIfc::getEntities())
        entity.getParent();
    IpmiIfc::getEntityTree();
    IpmiIfc::getLan()->getIPv4Address();
    IpmiIfc::getLan()->getIPv6Addresses();
    IpmiIfc::GetBmcFWVersion();
    sendChassisStatus();
}

/// Threads that ask for what was read, until they are let go.
class Readers
{
public:
    Readers()
    {
        for (size_t i = 0; i < std::size(reads); ++i)
            threads_.emplace_back([this, i] {
                for (; !stop_; ++rounds[i], usleep(10000))
                    reads[i]();
            });
    }
    ~Readers()
    {
        stop_ = true;
        for (auto& thread : threads_)
            thread.join();
    }
    Readers(const Readers&) = delete;
    Readers& operator=(const Readers&) = delete;

    static constexpr void (*reads[])() = {readSensors, readSel, readFrus,
                                          readOthers};
    static inline std::atomic<int> rounds[std::size(reads)];

private:
    std::atomic<bool> stop_{false};
    std::vector<std::thread> threads_;
};

using Endurance = NodeFixture;

void serveDay()
{
    Seam::setTimeScale(1000);
    Sim::Device::setTimeScale(0.001);
    auto bmc = Sim::builtinProfile();
    bmc->setClock([] { return now.load(); });
    // The first address's prefix length: at 0 the library takes the address.
    bmc->state().lan[0].parameters[Sim::lan::ipv6Static << 8].at(18) = 0;
    Sim::Device::install(
        std::make_unique<Sim::Controller>(std::move(bmc), Sim::FaultSet{}));
    Sim::Device::record(false);
}

void poll(IpmiIfc::IPMI_POLL_TYPE type)
{
    IpmiIfc::pollAll(1, true, type, nullptr);
    Seam::takeLog();
}

void changeBy(int number)
{
    Sim::Layer::with([number](Sim::Driver& driver) {
        Sim::Bmc& bmc = driver.controller()->bmc();
        now += 20;
        if (number % 8 == 3)
            bmc.logEvent({});
        for (const auto& change : changes)
            if (number % change.every == 0)
                change.make(bmc.state());
    });
}

// Each poll begins with the question after the log.
uint64_t logQuestions()
{
    uint64_t count = 0;
    Sim::Layer::with([&count](Sim::Driver& driver) {
        const auto& counts = driver.controller()->counts();
        const auto found = counts.find(uint16_t{0x0a40}); // Get SEL Info
        count = found == counts.end() ? 0 : found->second;
    });
    return count;
}

/// Returns how many polls reached the controller.
int pollAnHour(bool deviceGoes)
{
    int polls = 0;
    const Readers readers;
    for (int i = 0; i < pollsAnHour; ++i) {
        changeBy(i);
        if (deviceGoes && i == 40)
            removeDevice();
        const uint64_t before = logQuestions();
        poll(i % 32 == 9  ? IpmiIfc::POLL_FULL
             : i % 5 == 1 ? IpmiIfc::POLL_READINGS
                          : IpmiIfc::POLL_NORMAL);
        polls += logQuestions() != before;
        returnDevice();
    }
    return polls;
}

long addresses()
{
    return long(IpmiIfc::getLan()->getIPv6Addresses().size());
}

/// Of the tree; each once in its place.
long entities()
{
    using Key = std::pair<unsigned, unsigned>;
    std::set<Key> containers;
    long count = 0;
    for (const auto& one : IpmiIfc::getEntityTree()) {
        std::set<Key> contents;
        for (const auto& entity : one.contents)
            contents.emplace(entity.getId(), entity.getInstance());
        EXPECT_EQ(contents.size(), one.contents.size());
        containers.emplace(one.entity.getId(), one.entity.getInstance());
        count += 1 + long(contents.size());
    }
    EXPECT_EQ(containers.size(), IpmiIfc::getEntityTree().size());
    return count;
}

/// What is held when nothing goes on and all is known of the same.
struct Held
{
    long allocations, bytes, addresses, entities;
};

long usable(size_t size)
{
    const std::unique_ptr<void, void (*)(void*)> memory{malloc(size), free};
    return long(malloc_usable_size(memory.get()));
}

// A list that grows by doubling, and the texts in it.
long bytesOfAddresses(long count)
{
    constexpr size_t textSize = 32; // With the room that it has.
    size_t room = 1;
    while (long(room) < count)
        room *= 2;
    return usable(room * sizeof(std::string)) + count * usable(textSize);
}

// Allocations without one for each address (a text too long to be kept
// without) and for each entity, which a garbled record may have named.
Held heldAtRest()
{
    Sim::Device::controller()->bmc().clearEventLog();
    for (int i = 0; i < 2; ++i, now += 20) {
        Sim::Device::controller()->bmc().logEvent({});
        poll(IpmiIfc::POLL_FULL);
    }
    Seam::takeSleeps();
    Held held{allocations, bytes, addresses(), entities()};
    held.allocations -= held.addresses + held.entities;
    held.bytes -= bytesOfAddresses(held.addresses);
    return held;
}

long openFiles()
{
    const std::filesystem::directory_iterator all{"/proc/self/fd"};
    return std::distance(begin(all), end(all));
}

TEST_F(Endurance, aDayLeavesMemoryAsItWas)
{
    constexpr int hours = 56, warmUp = int(std::size(faults));
    static_assert((hours - warmUp) * pollsAnHour >= 3000);
    serveDay();
    const long files = openFiles();
    startNode(0);
    ASSERT_EQ(waitUntilRunning(), IpmiIfc::STATE_RUNNING);
    IpmiIfc::registerSelEventHandler(tell, nullptr);
    Held before{}, held{};
    int polls = 0;
    for (int i = 0; i < hours && !HasFailure(); ++i) {
        const size_t kind = size_t(i) % std::size(faults);
        const long known = held.entities;
        setFaults(faults[kind]);
        polls += pollAnHour(i % 4 == 1);
        setFaults({});
        held = heldAtRest();
        if (i < warmUp)
            before = held;
        EXPECT_EQ(held.allocations, before.allocations) << "after hour " << i;
        if (i >= warmUp && kind != garbling) {
            EXPECT_EQ(held.entities, known) << "after hour " << i;
        }
    }
    EXPECT_GE(polls, 3000);
    EXPECT_GT(held.addresses, before.addresses + hours - warmUp);
    // Beside addresses and entities not a byte for each poll.
    const long named = held.entities - before.entities;
    EXPECT_LT(held.bytes - before.bytes, 3000 + 100 * named);
    EXPECT_GT(recordsTold, hours);
    EXPECT_GT(passesTold, hours);
    for (const auto& rounds : Readers::rounds)
        EXPECT_GT(rounds, hours);
    EXPECT_GT(IpmiIfc::getSensors().size(), 50u);
    {
        const Readers readers;
        setFaults(faults[1]);
        stopNode();
    }
    EXPECT_EQ(IpmiIfc::getState(), IpmiIfc::STATE_STOPPED);
    EXPECT_TRUE(IpmiIfc::getSdrRecords().empty());
    EXPECT_TRUE(IpmiIfc::getEntityTree().empty());
    EXPECT_EQ(openFiles(), files);
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
    bytes += long(malloc_usable_size(memory));
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    allocations -= memory != nullptr;
    bytes -= long(malloc_usable_size(memory));
    free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept
{
    operator delete(memory);
}
