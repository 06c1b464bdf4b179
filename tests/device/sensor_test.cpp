// Sensors as the library discovers, reads and commands them.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <sstream>
#include <syslog.h>
#include <vek-ipmi/IpmiSensor.h>

#include "ipmi/IpmiIfcSensor.h"
#include "ipmi/IpmiMapper.h"
#include "tests/device/node_fixture.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

constexpr uint8_t bmc = 0x20;
constexpr uint8_t satellite = 0x52;
constexpr uint8_t thirdController = 0x72; // on channel 7

// Threshold sensor 1 of the BMC, 2 of a satellite on channel 0 at LUN 1,
// discrete sensor 3, 4 owned by software, 5 event-only.
std::vector<RecordBytes> fiveRecords()
{
    const RecordFields thresholds = {
        {10, 0x7f}, {11, 0x68}, {18, 0x3f}, {19, 0x3f}, {21, 1},  {24, 1},
        {36, 16},   {37, 15},   {38, 14},   {39, 11},   {40, 12}, {41, 13}};
    RecordFields bridged = thresholds;
    bridged.insert(bridged.end(), {{5, satellite}, {6, 0x01}});
    return {sensorRecord(1, 1, thresholds, "Temp"),
            sensorRecord(1, 2, bridged, "Bridged"),
            sensorRecord(2, 3, {{12, 0x0c}, {13, 0x6f}, {14, 1}}, "DIMM"),
            sensorRecord(1, 4, {{5, 0x41}}, "Software"),
            sensorRecord(3, 5, {{10, 1}}, "Events")};
}

class Sensors : public RecordsFixture
{
protected:
    void hold(const std::vector<RecordBytes>& records)
    {
        Sim::BmcState state = stateWith(records);
        for (const auto& [channel, address] :
             {std::pair{0, satellite}, {7, thirdController}})
        {
            state.satellites.emplace_back();
            state.satellites.back().busChannel = uint8_t(channel);
            state.satellites.back().address = address;
        }
        serveState(std::move(state));
    }
    void discover()
    {
        hold(fiveRecords());
        EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
        takeExchanges();
        Seam::takeLog();
    }
    static std::shared_ptr<IpmiSensor> sensor(unsigned number,
                                              unsigned owner = bmc)
    {
        return IpmiIfc::getSensor(number, owner);
    }
    static IpmiThresholdSensor& threshold()
    {
        return dynamic_cast<IpmiThresholdSensor&>(*sensor(1));
    }

    /// Requests of the sensor network function: command, sensor number, and
    /// where they went unless to the BMC.
    std::vector<std::string> sensorRequests()
    {
        std::vector<std::string> result;
        for (const SentRequest& r : takeExchanges()) {
            char text[64];
            if (r.netFn != 0x04)
                continue;
            snprintf(text, sizeof text, "%02x %d", r.command, r.data.at(0));
            result.push_back(text);
            if (r.channel != Sim::systemInterface) {
                snprintf(text, sizeof text, " @%d.%02x.%d", r.channel,
                         r.slaveAddress, r.lun);
                result.back() += text;
            }
        }
        return result;
    }
    Bytes lastRequest()
    {
        const auto sent = takeExchanges();
        return sent.empty() ? Bytes{} : sent.back().data;
    }
};

using Texts = std::vector<std::string>;

TEST_F(Sensors, whatDiscoveryAsksWhom)
{
    hold(fiveRecords());
    EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    EXPECT_EQ(sensorRequests(), (Texts{"27 2 @0.52.1", "25 2", "2d 2 @0.52.1",
                                       "27 1", "25 1", "2d 1", "2d 3", "27 5"}))
        << "the last record first; a hysteresis is asked of the BMC";
    EXPECT_EQ(IpmiIfc::getSensors().size(), 5u);
    EXPECT_TRUE(IpmiIfc::generatesMemoryEvents());
    EXPECT_EQ(g_IpmiNode[0].targetAddress, 0);
    EXPECT_TRUE(sensor(1)->lastReading().valid);
    EXPECT_EQ(sensor(4, 0x41)->lastReading().lastResult, -1);
    EXPECT_FALSE(sensor(2)) << "another owner's";
    EXPECT_TRUE(sensor(2, 0x100 | satellite)) << "low byte of the owner";
}

// Five passes after discovery, under a fault of sensor 1's reading.
TEST_F(Sensors, whoIsAskedAgain)
{
    const struct
    {
        const char* what;
        const char* fault;
        int asked; ///< Readings in five passes.
        int lastResult, repeats;
        size_t all; ///< Requests in the last pass.
    } cases[] = {
        {"healthy", "cmd=get-device-id,cc=C0", 5, 0, 6, 8},
        {"absent", "cmd=2d,netfn=04,data=01,cc=CB", 1, 0xcb, 0, 5},
        {"illegal", "cmd=2d,netfn=04,data=01,cc=CD", 1, 0xcd, 0, 5},
        {"timed out", "cmd=2d,netfn=04,data=01,cc=C3", 4, 0xc3, 3, 5},
        {"busy", "cmd=2d,netfn=04,data=01,cc=C0", 5, 0xc0, 4, 8},
        {"short", "cmd=2d,netfn=04,data=01,cut=2", 5, 0, 6, 8},
        {"long", "cmd=2d,netfn=04,data=01,pad=20", 5, 0, 6, 8},
        {"a lost answer ends the pass", "cmd=2d,netfn=04,data=01,lost", 5, -1,
         4, 4},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        discover();
        setFaults({c.fault});
        int asked = 0;
        Texts requests;
        for (int pass = 0; pass < 5; ++pass) {
            EXPECT_EQ(IpmiIfcSensorUpdateReading(0), 0);
            requests = sensorRequests();
            asked += int(std::count(requests.begin(), requests.end(), "2d 1"));
        }
        EXPECT_EQ(asked, c.asked);
        EXPECT_EQ(requests.size(), c.all);
        EXPECT_EQ(sensor(1)->lastReading().lastResult, c.lastResult);
        EXPECT_EQ(sensor(1)->lastReading().repeatCount, c.repeats);
        EXPECT_TRUE(sensor(1)->lastReading().valid) << "the old one is kept";
    }
}

// A reading that is asked for on the caller's thread.
TEST_F(Sensors, howAReadingIsJudged)
{
    const struct
    {
        const char* what;
        const char* fault;
        int byte, judged, health;
        const char* thrown;
    } cases[] = {
        {"well", "cmd=2d,netfn=04,flip=1:01", 0x01, 1, 5, nullptr},
        {"lower non-critical", "cmd=2d,netfn=04,flip=3:01", 0, 1, 10, nullptr},
        {"upper non-critical", "cmd=2d,netfn=04,flip=3:08", 0, 1, 10, nullptr},
        {"lower critical", "cmd=2d,netfn=04,flip=3:02", 0, 1, 25, nullptr},
        {"absent", "cmd=2d,netfn=04,cc=CB", 0, 0, 0, nullptr},
        {"busy", "cmd=2d,netfn=04,cc=C0", 0, 1, 0,
         "Threshold Sensor reading not available"},
        {"code 10h", "cmd=2d,netfn=04,cc=10", 0, 1, 0,
         "Threshold Sensor reading not available"},
        {"long", "cmd=2d,netfn=04,pad=9", 0, 1, 5, nullptr},
        {"one byte", "cmd=2d,netfn=04,cut=1", 0, 1, 5, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        discover();
        // A reading of 0 that passes no threshold.
        auto& model = Sim::Device::controller()->bmc().state().sensors;
        model.at(Sim::sensorKey(0, 1)).thresholds = {};
        model.at(Sim::sensorKey(0, 1)).compared = 0;
        model.at(Sim::sensorKey(0, 1)).reading = 0;
        setFaults({c.fault});
        int health = -1;
        EXPECT_EQ(threshold().getReading(), c.byte);
        EXPECT_EQ(threshold().getSensorState(health), c.judged);
        EXPECT_EQ(health, c.health);
        Seam::takeLog();
        if (c.thrown) {
            EXPECT_THROW(threshold().getState(true), CmpiStatus);
            EXPECT_EQ(logged(c.thrown), 1);
        } else {
            EXPECT_NO_THROW(threshold().getState(true));
        }
    }
    // The BMC's sensor after a bridged one: the whole target is put back.
    sensor(2, satellite)->getReading(true);
    threshold().getReading();
    EXPECT_EQ(sensorRequests().back(), "2d 1");
    // A software owner is never asked.
    int health = -1;
    EXPECT_EQ(sensor(4, 0x41)->getReading(), 0);
    EXPECT_EQ(sensor(4, 0x41)->getSensorState(health), 1);
    EXPECT_TRUE(takeExchanges().empty());
}

TEST_F(Sensors, discreteHealthComesFromTheTable)
{
    healthList.clear();
    sensorHealthMap.clear();
    std::istringstream table{"111,*,*,1:10\n111,12,1,1:25\n"};
    readHealthTable(table);
    discover();
    auto& states = Sim::Device::controller()
                       ->bmc()
                       .state()
                       .sensors.at(Sim::sensorKey(0, 3))
                       .states;
    for (const auto& [bits, wanted] :
         {std::pair{0, 5}, {2, 25}, {0x4002, 5}, {1, 5}})
    {
        int health = -1;
        states = uint16_t(bits);
        EXPECT_EQ(sensor(3)->getSensorState(health), 1);
        EXPECT_EQ(health, wanted) << bits;
    }
    healthList.clear();
    sensorHealthMap.clear();
}

TEST_F(Sensors, commandsAndTheirResults)
{
    discover();
    IpmiThresholdSensor& s = threshold();
    auto& model = Sim::Device::controller()->bmc().state().sensors.at(
        Sim::sensorKey(0, 1));
    IpmiSensor& discrete = *sensor(3);
    unsigned char flags = 0x11, positive = 1, negative = 2;
    unsigned short assertion = 0x1234, deassertion = 0x5678;
    const struct
    {
        const char* what;
        std::function<unsigned()> send;
        uint8_t command;
        Bytes data;
    } cases[] = {
        {"re-arm all", [&] { return s.rearmEvents(); }, 0x2a, {1, 0}},
        {"re-arm",
         [&] { return s.rearmEvents(0xffff, 0xf00f); },
         0x2a,
         {1, 0x80, 0xff, 0x0f, 0x0f, 0x00}},
        {"re-arm states",
         [&] { return discrete.rearmEvents(0xffff, 0x8001); },
         0x2a,
         {3, 0x80, 0xff, 0x7f, 0x01, 0x00}},
        {"event enable",
         [&] { return s.setEventEnable(0xc0, 0xffff, 0x0102); },
         0x28,
         {1, 0xc0, 0xff, 0x0f, 0x02, 0x01}},
        {"events",
         [&] { return s.getEventEnable(flags, assertion, deassertion); },
         0x29,
         {1}},
        {"hysteresis",
         [&] { return s.setHysteresis(3, 4); },
         0x24,
         {1, 0xff, 3, 4}},
        {"thresholds",
         [&] { return s.setThresholds(0, 0, 0, 85, 0, std::nan("")); },
         0x26,
         {1, 0x28, 0, 0, 0, 85, 0, 0}},
        {"defaults",
         [&] { return s.restoreDefaultThresholds(); },
         0x26,
         {1, 0x3f, 13, 12, 11, 14, 15, 16}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (const auto& [fault, result] : {std::pair{"netfn=04,cc=C1", 1u},
                                            {"netfn=04,cc=CD", 1u},
                                            {"netfn=04,cc=D5", 0xd5u},
                                            {"netfn=04,lost", 0xffu}})
        {
            setFaults({fault});
            EXPECT_EQ(c.send(), result) << fault;
        }
        setFaults({});
        takeExchanges();
        model.assertions = 0x0201;
        model.deassertions = 0x0c03;
        c.send();
        const auto sent = takeExchanges();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].command, c.command);
        EXPECT_EQ(sent[0].data, c.data);
    }
    EXPECT_EQ(flags & 0x80, 0x80);
    EXPECT_EQ(assertion, 0x0201);
    EXPECT_EQ(deassertion, 0x0c03);
    flags = 0x11;
    setFaults({"cmd=29,netfn=04,cc=D5"});
    EXPECT_EQ(s.getEventEnable(flags, assertion, deassertion), 0xd5u);
    EXPECT_EQ(flags + assertion + deassertion, 0x11 + 0x0201 + 0x0c03);
    setFaults({"cmd=29,netfn=04,flip=1:80"});
    assertion = 0x1234;
    s.getEventEnable(flags, assertion, deassertion);
    EXPECT_EQ(assertion, 0x1234) << "no messages: the masks say nothing";
    setFaults({"cmd=25,netfn=04,cc=C1"});
    EXPECT_EQ(s.getHysteresis(positive, negative, true), 1u);
    EXPECT_EQ(s.getHysteresis(positive, negative, false), 0u);
}

TEST_F(Sensors, thresholdsAsTheControllerHasThem)
{
    discover();
    auto& model = Sim::Device::controller()->bmc().state().sensors.at(
        Sim::sensorKey(0, 1));
    model.thresholds = {10, 9, 8, 50, 60, 70};
    const auto all = [](IpmiSensor& s) {
        return std::vector<double>{s.getLowerNonCriticalThreshold(true),
                                   s.getLowerCriticalThreshold(true),
                                   s.getLowerNonRecoverableThreshold(true),
                                   s.getUpperNonCriticalThreshold(true),
                                   s.getUpperCriticalThreshold(true),
                                   s.getUpperNonRecoverableThreshold(true)};
    };
    EXPECT_EQ(all(threshold()), (std::vector<double>{10, 9, 8, 50, 60, 70}));
    setFaults({"cmd=27,netfn=04,cc=C0"});
    EXPECT_EQ(threshold().getUpperCriticalThreshold(true), 0);
    setFaults({"cmd=27,netfn=04,flip=1:10"});
    EXPECT_EQ(threshold().getUpperCriticalThreshold(true), 0) << "not readable";
    setFaults({"cmd=27,netfn=04,cc=CD"});
    EXPECT_THROW(threshold().getUpperCriticalThreshold(true), CmpiStatus);
    EXPECT_EQ(logged("Failed to get threshold reading"), 1);
    EXPECT_THROW(sensor(3)->getLowerCriticalThreshold(true), CmpiStatus);
    EXPECT_EQ(sensor(3)->restoreDefaultThresholds(), 1u);
}

// Every controller gets the commands for its own sensors alone, whatever the
// threads do meanwhile. (The thread sanitizer watches.)
TEST_F(Sensors, threadsNeverMisaddressACommand)
{
    auto records = fiveRecords();
    records.push_back(
        sensorRecord(1, 6, {{5, thirdController}, {6, 0x70}}, "Third"));
    hold(records);
    Sim::Device::setTimeScale(0.001);
    std::thread node{[] {
        IpmiIfc::start(0);
    }};
    ASSERT_EQ(
        IpmiIfc::waitState(IpmiIfc::STATE_RUNNING | IpmiIfc::STATE_STOPPED),
        IpmiIfc::STATE_RUNNING);
    std::atomic<bool> done{false};
    std::vector<std::thread> callers;
    for (int i = 0; i < 8; ++i)
        callers.emplace_back([&done, i] {
            while (!done) {
                for (const auto& s : IpmiIfc::getSensors()) {
                    s->lastReading();
                    s->getStates();
                    if (i % 4 == 0)
                        s->getReading();
                    else if (i % 4 == 1)
                        s->rearmEvents();
                }
                IpmiIfc::getSensor(2, satellite);
            }
        });
    for (const auto type : {IpmiIfc::POLL_READINGS, IpmiIfc::POLL_FULL,
                            IpmiIfc::POLL_READINGS, IpmiIfc::POLL_FULL})
        IpmiIfc::pollAll(1, false, type, nullptr);
    done = true;
    for (std::thread& caller : callers)
        caller.join();
    IpmiIfc::stop();
    node.join();
    int bridged = 0;
    for (const SentRequest& r : takeExchanges()) {
        const bool isReading = r.command == 0x2d || r.command == 0x27;
        const bool isSensor = r.netFn == 0x04 && isReading;
        const int number = isSensor ? r.data.at(0) : 0;
        const bool local = r.channel == Sim::systemInterface;
        EXPECT_EQ(local, number != 2 && number != 6)
            << int(r.netFn) << ' ' << int(r.command) << ' ' << number;
        if (local)
            continue;
        ++bridged;
        EXPECT_EQ(r.slaveAddress, number == 2 ? satellite : thirdController);
        EXPECT_EQ(r.channel, number == 2 ? 0 : 7);
        EXPECT_EQ(r.lun, number == 2 ? 1 : 0);
    }
    EXPECT_GT(bridged, 8);
}

} // namespace
