#include "tests/device/node_fixture.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiTransport.h"
#include "sim/fault/fault.h"
#include "sim/model/bmc.h"
#include "sim/profile/profile.h"

using namespace Ipmi;

namespace
{

// A second takes this long: waits of 30 s become 150 ms.
constexpr double secondsPerSecond = 200;

Sim::FaultSet faultSet(const std::vector<std::string>& rules)
{
    Sim::FaultSet set;
    for (const std::string& rule : rules) {
        Sim::Mistake mistake;
        const auto fault = Sim::parseFault(rule, mistake);
        if (!fault)
            throw std::invalid_argument(rule);
        set.add(*fault);
    }
    return set;
}

// They would stand between a test and its exchanges.
void forgetRecords()
{
    Sim::BmcState& state = Sim::Device::controller()->bmc().state();
    state.repository.reset();
    state.eventLog.reset();
}

template <typename Condition>
bool eventually(Condition condition)
{
    for (int tries = 0; tries < 5000; ++tries) {
        if (condition())
            return true;
        usleep(1000);
    }
    return false;
}

} // namespace

std::vector<std::string> texts(const std::vector<Seam::LogLine>& lines)
{
    std::vector<std::string> result;
    for (const auto& line : lines)
        result.push_back(line.text);
    return result;
}

int logged(const std::string& text)
{
    const auto lines = Seam::takeLog();
    return int(std::count_if(lines.begin(), lines.end(), [&](const auto& l) {
        return l.text.find(text) != std::string::npos;
    }));
}

std::vector<std::string> rules(const std::string& words)
{
    static const std::map<char, const char*> commands{{'I', "get-sel-info"},
                                                      {'E', "get-sel-entry"},
                                                      {'R', "reserve-sel"},
                                                      {'C', "clear-sel"},
                                                      {'F', "read-fru-data"}};
    std::vector<std::string> result;
    std::istringstream in{words};
    for (std::string word; in >> word;)
        result.push_back(std::string{"cmd="} + commands.at(word[0]) +
                         word.substr(1));
    return result;
}

int openCount()
{
    return Sim::Device::openCount();
}

void failNextReceive(int errnoValue)
{
    Sim::Device::failNextReceive(errnoValue);
}

void injectEvent()
{
    Sim::Device::injectEvent(Bytes(16, 0x02));
}

void removeDevice()
{
    Sim::Device::vanish();
}

void returnDevice()
{
    Sim::Device::comeBack();
}

int sendChassisStatus()
{
    uint8_t answer[32];
    uint16_t size = sizeof answer;
    return IpmiIfc::sendCmd(0x01, 0x00, 0, nullptr, &size, answer);
}

void NodeFixture::SetUp()
{
    Seam::setTimeScale(secondsPerSecond);
    Sim::Device::setTimeScale(1 / secondsPerSecond);
    Sim::Device::install(std::make_unique<Sim::Controller>(
        Sim::builtinProfile(), Sim::FaultSet{}));
    forgetRecords();
    resetNode();
    Seam::takeLog();
    takeExchanges();
}

void NodeFixture::TearDown()
{
    joinNode();
    IpmiIfcOpenIpmiClose(0);
    Sim::Device::reset();
}

void NodeFixture::resetNode()
{
    for (auto& node : g_IpmiNode) {
        node.shutdownFlag = false;
        VEK::MutexLock lock{node.pollMutex};
        node.pollCount = 0;
    }
    InitIpmiNode(0);
    g_IpmiNode[0].myAddress = 0;
    g_IpmiNode[0].targetAddress = 0;
}

void NodeFixture::serveState(Sim::BmcState state)
{
    Sim::Device::install(std::make_unique<Sim::Controller>(
        std::make_unique<Sim::Bmc>(std::move(state)), Sim::FaultSet{}));
    taken_ = 0;
    IpmiIfcOpenIpmiClose(0);
    IpmiIfcOpenIpmiOpen(0);
}

void NodeFixture::serve(const std::vector<std::string>& faults)
{
    Sim::Device::controller()->bmc().reset();
    forgetRecords();
    setFaults(faults);
}

void NodeFixture::setFaults(const std::vector<std::string>& faults)
{
    Sim::Device::controller()->setFaults(faultSet(faults));
}

std::vector<SentRequest> NodeFixture::takeExchanges()
{
    const auto all = Sim::Device::exchanges();
    std::vector<SentRequest> result;
    for (size_t i = std::min(taken_, all.size()); i < all.size(); ++i)
        result.push_back(all[i].request);
    taken_ = all.size();
    return result;
}

void NodeFixture::waitForExchange(int netFn, int command)
{
    EXPECT_TRUE(eventually([=] {
        const auto all = Sim::Device::exchanges();
        return std::any_of(all.begin(), all.end(), [=](const auto& e) {
            return (netFn < 0 || e.request.netFn == netFn) &&
                   (command < 0 || e.request.command == command);
        });
    }));
}

void NodeFixture::startNode(int interval)
{
    thread_ = std::thread{[interval] {
        IpmiIfc::start(interval);
    }};
}

IpmiIfc::IPMI_STATE NodeFixture::waitUntilRunning()
{
    const auto state =
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED);
    // Its loop is then ready for polls.
    eventually([] {
        VEK::MutexLock lock{g_IpmiNode[0].pollMutex};
        return g_IpmiNode[0].pollCount != 0;
    });
    return state;
}

void NodeFixture::stopNode()
{
    IpmiIfc::stop();
    joinNode();
}

void NodeFixture::joinNode()
{
    if (thread_.joinable())
        thread_.join();
}

void RecordsFixture::SetUp()
{
    NodeFixture::SetUp();
    ASSERT_GE(IpmiIfcOpenIpmiOpen(0), 0);
}

void RecordsFixture::TearDown()
{
    IpmiIfcSdrCleanUpHeaders(0);
    IpmiIfcSdrCleanUpAll(0);
    NodeFixture::TearDown();
}

Sim::BmcState RecordsFixture::stateWith(const std::vector<Bytes>& records)
{
    Sim::BmcState state;
    state.repository.emplace();
    uint16_t id = 0x10;
    for (Bytes bytes : records) {
        bytes[0] = uint8_t(id);
        state.repository->records.push_back({id++, bytes, {}});
    }
    return state;
}
