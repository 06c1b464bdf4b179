/// vek-ipmi-lifecycle CASE: a node on the real driver, from start to stop.
///
///     poll             polled twice, and stopped
///     stop-in-flight [NETFN CMD SIZE]
///                      stopped while another thread waits for the answer to a
///                      request that the controller leaves unanswered
///     unbind           loses its interface and gets it back (sysfs)
///     events           does what lines of standard input say, and answers each
///                      with "done": "poll"; "interval", polls every 16 s from
///                      then on; "await", waits until such a poll has brought
///                      events. Two handlers print a line for each event that
///                      they get, "first ID" and "second ID".
///
/// Ends with status 0, or with 1 and a line that says what was not so.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <glob.h>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <vek-ipmi/IpmiIfc.h>
#include <vek-ipmi/IpmiSelData.h>

using Ipmi::IpmiIfc;

namespace
{

constexpr int noAnswer = 0xFF;

void expect(bool so, const std::string& what)
{
    if (!so)
        throw std::runtime_error(what);
}

int getDeviceId()
{
    uint8_t answer[32];
    uint16_t size = sizeof answer;
    return IpmiIfc::sendCmd(0x01, 0x06, 0, nullptr, &size, answer);
}

/// A node that runs. Its end is the test's to show: a failed test leaves the
/// process at once.
class Node
{
public:
    Node()
        : thread_{[] {
              IpmiIfc::start(-1);
          }}
    {
        const int state =
            IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED);
        expect(state == IpmiIfc::STATE_RUNNING, "the node does not run");
        poll();
    }
    void poll()
    {
        bool shutdown = false;
        IpmiIfc::pollAll(1, false, IpmiIfc::POLL_NORMAL, &shutdown);
    }
    void stop()
    {
        IpmiIfc::stop();
        thread_.join();
        expect(IpmiIfc::getState() == IpmiIfc::STATE_STOPPED, "not stopped");
        expect(getDeviceId() == noAnswer, "a stopped node still sends");
    }

private:
    std::thread thread_;
};

void pollCase(const std::vector<int>&)
{
    Node node;
    node.poll();
    expect(getDeviceId() == 0, "no answer to Get Device ID");
    Ipmi::ipmiifc_device_id id{};
    expect(IpmiIfc::getManagementControllerInfo(id) == 0, "no identity");
    expect((id.ipmiVersion & 0x0F) == 2, "not IPMI 2");
    node.stop();
}

void stopInFlightCase(const std::vector<int>& request)
{
    expect(request.size() == 3, "which request?");
    Node node;
    std::vector<uint8_t> data(size_t(request[2]) + 1);
    std::atomic<int> code{-1};
    std::thread waiting{[&] {
        uint16_t none = 0;
        code =
            IpmiIfc::sendCmd(uint8_t(request[1]), uint8_t(request[0]),
                             uint16_t(request[2]), data.data(), &none, nullptr);
    }};
    std::this_thread::sleep_for(std::chrono::seconds{1});
    expect(code == -1, "the request was answered");
    node.stop();
    waiting.join();
    // Left alone, the driver ends the exchange with C3h after 4 s.
    expect(code == noAnswer,
           "the exchange ended with " + std::to_string(code.load()));
}

/// The driver's directory in sysfs, and the interface's name there.
struct Interface
{
    std::string directory, name;

    Interface()
    {
        glob_t found{};
        if (glob("/sys/bus/platform/drivers/ipmi_si/IPI*", 0, nullptr,
                 &found) == 0)
            directory = found.gl_pathv[0];
        globfree(&found);
        const size_t slash = directory.rfind('/');
        expect(slash != std::string::npos, "no interface in sysfs");
        name = directory.substr(slash + 1);
        directory.resize(slash + 1);
    }
    void set(const char* file) const
    {
        std::ofstream out{directory + file};
        expect(bool(out << name << std::flush), directory + file);
    }
};

void unbindCase(const std::vector<int>&)
{
    const Interface interface;
    Node node;
    expect(getDeviceId() == 0, "no answer before");
    interface.set("unbind");
    node.poll();
    expect(getDeviceId() == noAnswer, "an answer without an interface");
    interface.set("bind");
    node.poll();
    expect(getDeviceId() == 0, "no answer after it came back");
    expect(IpmiIfc::getState() == IpmiIfc::STATE_RUNNING, "not running");
    node.stop();
}

std::atomic<unsigned> handled{0};

void tell(const char* handler, const Ipmi::IpmiSelData* record)
{
    if (!record)
        return; // The end of a pass.
    std::printf("%s %d\n", handler, record->recordId());
    ++handled;
}

void awaitEvents()
{
    const unsigned before = handled;
    for (int tenths = 0; handled == before && tenths < 400; ++tenths)
        std::this_thread::sleep_for(std::chrono::milliseconds{100});
    // The poll goes on, and nothing more may come of it.
    std::this_thread::sleep_for(std::chrono::seconds{2});
}

void eventsCase(const std::vector<int>&)
{
    Node node;
    using Handler = Ipmi::SelEventHandler;
    const Handler first = [](void*, Ipmi::IpmiSelData* record) {
        tell("first", record);
    };
    const Handler second = [](void*, Ipmi::IpmiSelData* record) {
        tell("second", record);
    };
    for (const Handler handler : {first, second})
        expect(IpmiIfc::registerSelEventHandler(handler, nullptr) == 0,
               "not registered");
    for (std::string word; std::getline(std::cin, word);) {
        if (word == "interval")
            IpmiIfc::setPollingInterval(1);
        if (word == "await")
            awaitEvents();
        else
            node.poll();
        std::puts("done");
        std::fflush(stdout);
    }
    node.stop();
}

} // namespace

int main(int argc, char** argv)
{
    const std::map<std::string, void (*)(const std::vector<int>&)> cases{
        {"poll", pollCase},
        {"stop-in-flight", stopInFlightCase},
        {"unbind", unbindCase},
        {"events", eventsCase}};
    std::vector<int> numbers;
    for (int i = 2; i < argc; ++i)
        numbers.push_back(int(std::strtol(argv[i], nullptr, 0)));
    const auto found = cases.find(argc < 2 ? "" : argv[1]);
    if (found != cases.end()) {
        try {
            found->second(numbers);
            return 0;
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
        } catch (const CmpiStatus& status) {
            std::fprintf(stderr, "CmpiStatus %d\n", int(status.rc()));
        }
        // Threads may be left waiting for what will never come.
        std::_Exit(1);
    }
    std::fprintf(stderr, "usage: %s poll|stop-in-flight|unbind|events\n",
                 argv[0]);
    return 1;
}
