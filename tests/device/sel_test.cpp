// The event log as the library reads it from a controller, and the handlers.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <syslog.h>
#include <vek-ipmi/IpmiEvent.h>

#include "ipmi/IpmiIfcSdr.h"
#include "ipmi/IpmiIfcSel.h"
#include "sim/model/bmc.h"
#include "tests/device/node_fixture.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

int64_t now = 1000; ///< As the controller's clock shows it.

// What handlers were given: a letter for each and the record's id, "0" for
// null. The first two letters are registered by the fixture.
std::string handed;

template <char letter>
void handle(void*, IpmiSelData* record)
{
    handed += (handed.empty() ? "" : " ") + std::string{letter} +
              std::to_string(record ? record->recordId() : 0);
}

template <char letter>
constexpr SelEventHandler handler = handle<letter>;

// Degrees C, a raw value each.
Bytes inlet()
{
    constexpr uint8_t sensorType = 12, baseUnit = 21, factorM = 24;
    return sensorRecord(1, 1, {{sensorType, 1}, {baseUnit, 1}, {factorM, 1}},
                        "Inlet");
}

class Sel : public RecordsFixture
{
protected:
    void SetUp() override
    {
        RecordsFixture::SetUp();
        hold(3);
    }
    void TearDown() override
    {
        forget();
        IpmiIfcSelCleanUpEventHandlers(0);
        RecordsFixture::TearDown();
    }

    void forget()
    {
        resetNode();
        IpmiNode& node = g_IpmiNode[0];
        {
            VEK::MutexLock refreshing{node.selRefreshMutex};
            *node.selRefresh = {};
        }
        VEK::MutexLock lock{node.selMutex};
        node.selRecords->clear();
        node.selSummary->reset();
    }

    /// A controller with so many events, with ids from 1 on, one a second from
    /// 1001 on, and two handlers.
    void hold(int events)
    {
        forget();
        Sim::BmcState state = stateWith({inlet()});
        state.eventLog.emplace();
        state.eventLog->capacity = 0x1000;
        serveState(std::move(state));
        Sim::Device::controller()->bmc().setClock([] { return now; });
        log().erased = 900;
        now = 1000;
        add(events);
        handed.clear();
        IpmiIfcSelCleanUpEventHandlers(0);
        IpmiIfc::registerSelEventHandler(handler<'A'>, nullptr);
        IpmiIfc::registerSelEventHandler(handler<'B'>, nullptr);
        takeExchanges();
        Seam::takeLog();
    }

    static Sim::EventLog& log()
    {
        return *Sim::Device::controller()->bmc().state().eventLog;
    }

    static void add(int events)
    {
        for (int i = 0; i < events; ++i) {
            ++now;
            Sim::Device::controller()->bmc().logEvent({});
        }
    }

    /// What was asked of the log: "i" information, "r" reservation, "c" clear,
    /// and of a record "id+offset,size", or its id alone when all was asked;
    /// "!" without a reservation.
    std::string asked()
    {
        std::string text;
        for (const SentRequest& r : takeExchanges()) {
            const Bytes& d = r.data;
            std::string one;
            if (r.netFn != 0x0a)
                continue;
            if (r.command == 0x43)
                one = std::string{d[0] | d[1] ? "" : "!"} +
                      std::to_string(d[2] | d[3] << 8) +
                      (d[5] == 16 ? ""
                                  : "+" + std::to_string(d[4]) + "," +
                                        std::to_string(d[5]));
            else
                one = r.command == 0x40   ? "i"
                      : r.command == 0x42 ? "r"
                      : r.command == 0x47 ? "c"
                                          : "?";
            text += (text.empty() ? "" : " ") + one;
        }
        return text;
    }

    static std::string heldIds()
    {
        std::string text;
        for (const auto& record : IpmiIfc::getSelData())
            text += (text.empty() ? "" : " ") + record->recordId(0);
        return text;
    }

    static int poll() { return IpmiIfcSelGetInfo(0, nullptr); }
};

TEST_F(Sel, oneRecord)
{
    const struct
    {
        const char* what;
        const char* faults;
        uint8_t readLimit;
        uint16_t id;
        const char* asked; ///< Behind the first reservation.
        int result;
    } cases[] = {
        {"whole", "", 0, 2, "2", 0},
        {"its end first", "", 15, 2, "2 2+1,15 2+0,1", 0},
        {"in small chunks", "", 13, 2, "2 2+1,15 2+2,14 2+3,13 2+0,3", 0},
        {"in too small ones", "", 12, 2, "2 2+1,15 2+2,14 2+3,13", -1},
        {"cancelled", "E,nth=1,cc=C5", 0, 2, "2 r 2", 0},
        {"by another program in mid-record", "E,nth=3,other-reader", 15, 2,
         "2 2+1,15 2+0,1 r 2+0,1", 0},
        {"and there is no other to have", "E,nth=1,cc=C5 R,after=1,cc=D5", 0, 2,
         "2 r !2", 0},
        {"no answer", "E,nth=1,lost", 0, 2, "2 2", 0},
        {"busy", "E,cc=C0", 0, 2, "2 2 2 2", -1},
        {"gone", "", 0, 9, "9 9 9 9", -1},
        {"short", "E,nth=1,cut=18", 0, 2, "2 2", 0},
        {"long", "E,nth=1,pad=20", 0, 2, "2 2", 0},
        {"another's", "E,nth=1,flip=3:01", 0, 2, "2 2", 0},
        {"high byte", "E,flip=4:01", 0, 2, "2 2 2 2", -1},
        {"half an id", "E,nth=3,flip=3:01", 15, 2, "2 2+1,15 2+0,1 2+0,1", 0},
        {"bytes that are no id", "E,nth=2,flip=3:01", 15, 2, "2 2+1,15 2+0,1",
         0},
        {"the first one", "E,flip=3:05", 0, 0, "0", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        hold(3);
        log().readLimit = c.readLimit;
        setFaults(rules(c.faults));
        EXPECT_EQ(IpmiIfcSelReserve(0), 0);
        ipmiifc_sel_entry entry{0xaa, c.id, {}};
        EXPECT_EQ(IpmiIfcSelReadEntry(0, &entry), c.result);
        EXPECT_EQ(asked(), std::string{"r "} + c.asked);
        EXPECT_EQ(entry.nextRecordId, c.result ? c.id : c.id ? 3 : 2);
        if (c.result == 0) {
            EXPECT_EQ(entry.completionCode, 0);
            EXPECT_EQ(entry.record.timeStamp[0],
                      uint8_t(1000 + (c.id ? 2 : 1)));
        }
    }
}

// Three records, read for the first time.
TEST_F(Sel, theWholeLog)
{
    constexpr char repeats[] = "Node 0: the SEL repeats itself";
    const struct
    {
        const char* what;
        const char* faults;
        const char* asked;
        const char* held;
        bool complete;
        const char* line;
    } cases[] = {
        {"none", "", "i r 0 2 3", "1 2 3", true, ""},
        {"fewer than there are", "I,entries=2", "i r 0 2", "1 2", false, ""},
        {"more than there are", "I,entries=200", "i r 0 2 3", "1 2 3", true,
         ""},
        {"none at all", "I,entries=0", "i r", "", true,
         "IpmiIfcSelGetAll: node 0 no record count"},
        {"a record that cannot be read", "E,data=??:??:02:00,cc=D5",
         "i r 0 2 2 2 2 2 2 2 2", "1", false, ""},
        {"one that can be read later", "E,data=??:??:02:00,count=4,cc=D5",
         "i r 0 2 2 2 2 2", "1 2", false, ""},
        {"from the last to the first",
         "E,data=??:??:03:00,next-id=0001 I,entries=999", "i r 0 2 3", "1 2 3",
         true, repeats},
        {"to the very first", "E,data=??:??:03:00,next-id=0000 I,entries=999",
         "i r 0 2 3", "1 2 3", true, repeats},
        {"to itself", "E,data=??:??:02:00,next-id=0002", "i r 0 2", "1 2", true,
         repeats},
        {"cleared before it is read", "E,nth=1,clear-sel",
         "i r 0 r 0 0 0 0 0 0 0 0 0 0 0", "", false, ""},
        {"no version", "I,flip=1:51", "i r", "", false, ""},
        {"an old version", "I,flip=1:01", "i r", "", false,
         "IpmiIfcSelGetAll: invalid version. Version = 0x50"},
        {"which is logged once", "I,flip=1:01", "i r", "", false, ""},
        {"another version", "I,flip=1:53", "i r 0 2 3", "1 2 3", true, ""},
        {"information cut", "I,cut=14", "i", "", false,
         "IpmiIfcRhSelInfo: answer too short (14)"},
        {"refused", "I,cc=C1", "i", "", false,
         "IpmiIfcSelGetInfo: IPMI_CMD_GET_SEL_INFO cc=0xc1"},
        {"not in a state for it", "I,cc=81", "i", "", false, ""},
        {"no reservations", "R,cc=C1", "i r r !0 !2 !3", "1 2 3", true,
         "node: 0 reserve sel command is not supported"},
        {"a reservation refused", "R,nth=1,cc=D5", "i r r 0 2 3", "1 2 3", true,
         "node: 0 reserve sel failed cc 0xd5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        hold(3);
        setFaults(rules(c.faults));
        const bool answered = poll() == 0;
        EXPECT_EQ(asked(), c.asked);
        EXPECT_EQ(heldIds(), c.held);
        EXPECT_EQ(answered && IpmiIfcSelGetProgress(0).complete, c.complete);
        const auto lines = texts(Seam::takeLog());
        EXPECT_EQ(lines.empty() ? "" : lines[0].substr(0, strlen(c.line)),
                  c.line);
        EXPECT_LE(lines.size(), 2u);
        EXPECT_EQ(handed, "");
    }
}

TEST_F(Sel, whatALogTellsOfItself)
{
    EXPECT_EQ(IpmiIfc::getSel(), nullptr);
    hold(300);
    unsigned short count = 0;
    EXPECT_EQ(IpmiIfcSelGetInfo(0, &count), 0);
    EXPECT_EQ(count, 44) << "its low byte";
    EXPECT_EQ(IpmiIfc::getSelData().size(), 300u);
    EXPECT_EQ(IpmiIfc::getSel()->getCurrentNumberOfRecords(), 300);
    EXPECT_EQ(IpmiIfc::getSel()->getMaxNumberOfRecords(), 0x1000);
    EXPECT_EQ(IpmiIfc::getRawSelHeader().selVersion, 0x51);
    const IpmiSelProgress progress = IpmiIfcSelGetProgress(0);
    EXPECT_EQ(progress.total, 300u);
    EXPECT_EQ(progress.read, 300u);
    EXPECT_EQ(IpmiIfc::GetSelClock(), now);
    IpmiIfc::setLastProcessedSELEntry(0x123);
    EXPECT_EQ(IpmiIfc::getLastProcessedSELEntry(), 0x123);
    IpmiIfc::setLastProcessedSELEntry(0xffff);
    EXPECT_EQ(IpmiIfc::getLastProcessedSELEntry(), 0) << "none";
    setFaults({"cmd=get-last-processed-event-id,nth=1,cut=8",
               "cmd=get-last-processed-event-id,nth=1,cc=D5",
               "cmd=get-sel-time,nth=1,cut=4", "cmd=get-sel-time,cc=D5"});
    Seam::takeLog();
    EXPECT_EQ(IpmiIfc::getLastProcessedSELEntry(), 0);
    EXPECT_EQ(IpmiIfc::GetSelClock(), 0u);
    EXPECT_EQ(texts(Seam::takeLog()),
              (std::vector<std::string>{
                  "Failed get last processed SEL entry request 0xd5",
                  "GetSelClock: IPMI_CMD_GET_SEL_TIME for node 0 failed d5"}));
    IpmiIfcOpenIpmiClose(0);
    setFaults({});
    EXPECT_EQ(IpmiIfc::GetSelClock(), now);
    EXPECT_LT(g_IpmiNode[0].devFd, 1) << "closed again";
}

TEST_F(Sel, aLogWithoutTimesIsReadOnce)
{
    log().added = log().erased = 0;
    poll();
    EXPECT_EQ(asked(), "i r 0 2 3");
    EXPECT_TRUE(IpmiIfcSelGetProgress(0).complete);
    poll();
    EXPECT_EQ(asked(), "i");
    EXPECT_EQ(heldIds(), "1 2 3");
}

// Each row goes on from the one before: what happens to the log, what the next
// poll asks, and what it hands to the two handlers.
TEST_F(Sel, eachNewEventOnceAndInOrder)
{
    using Log = Sim::EventLog;
    const auto nothing = [](Log&) {
    };
    const struct
    {
        const char* what;
        void (*happens)(Log&);
        const char* faults;
        const char* asked;
        const char* handed;
    } polls[] = {
        {"first", nothing, "", "i r 0 2 3", ""},
        {"nothing new", nothing, "", "i", ""},
        {"two events", [](Log&) { add(2); }, "", "i r 3 4 5", "B4 A4 B5 A5"},
        {"one more in that second",
         [](Log&) {
             --now;
             add(1);
         },
         "", "i", ""},
        {"and a later one", [](Log&) { add(1); }, "", "i r 5 6 7", "B7 A7"},
        {"the clock set back",
         [](Log&) {
             now = 500;
             add(1);
         },
         "", "i r 7 8", ""},
        {"old events are no news", [](Log&) { add(1); }, "", "i r 8 9",
         "B9 A9"},
        {"an event that cannot be read", [](Log&) { add(2); },
         "E,data=??:??:0b:00,cc=D5", "i r 9 10 11 11 11 11", ""},
        {"still not", nothing, "E,data=??:??:0b:00,cc=D5", "i r 10 11 11 11 11",
         ""},
        {"now it can", nothing, "", "i r 10 11", "B10 A10 B11 A11"},
        {"one that came behind the information",
         [](Log& log) {
             add(1);
             log.records.push_back({13, log.records.back().bytes});
             log.records.back().bytes[0] = 13;
             log.records.back().bytes[3] += 1;
         },
         "", "i r 11 12 13", "B12 A12 B13 A13"},
        {"it is not news again",
         [](Log& log) {
             log.lastId = 13;
             log.added = uint32_t(++now);
         },
         "", "i r 13", ""},
        {"one that cancels the reservation", [](Log&) { add(1); },
         "E,nth=1,other-reader", "i r 13 r 13 14", "B14 A14"},
        {"the last record was deleted, by the ring say",
         [](Log& log) {
             log.records.pop_back();
             add(1);
         },
         "", "i r 14 14 14 14", ""},
        {"again", nothing, "", "i r 14 14 14 14", ""},
        {"read anew", nothing, "", "i r 0 2 3 4 5 6 7 8 9 10 11 12 13 15",
         "B15 A15"},
        {"the log leads back", [](Log&) { add(1); },
         "E,data=??:??:10:00,next-id=0003", "i r 15 16 3", "B16 A16"},
        {"cleared",
         [](Log& log) {
             log.clear(++now);
             add(2);
         },
         "", "i r 0 2", "B1 A1 B2 A2"},
        {"cleared without a stamp, and grown again",
         [](Log& log) {
             const uint32_t erased = log.erased;
             log.clear(++now);
             log.erased = erased;
             add(3);
         },
         "", "i r 2 r 0 2 3", "B1 A1 B2 A2 B3 A3"},
        {"cleared, and read in part",
         [](Log& log) {
             log.clear(++now);
             add(3);
         },
         "E,data=??:??:02:00,cc=D5", "i r 0 2 2 2 2 2 2 2 2", "B1 A1"},
        {"and not at all", nothing, "E,cc=D5", "i r 0 0 0 0 0 0 0 0 0 0 0 0",
         ""},
        {"and the rest", nothing, "", "i r 0 2 3", "B2 A2 B3 A3"},
        {"an answer without times", [](Log&) { add(1); }, "I,cut=7", "i", ""},
        {"an OEM record and an event",
         [](Log& log) {
             log.add({0, 0, 0xc0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9},
                     ++now);
             add(1);
         },
         "", "i r 3 4 5 6", "B4 A4 B6 A6"},
    };
    for (const auto& p : polls) {
        SCOPED_TRACE(p.what);
        p.happens(log());
        setFaults(rules(p.faults));
        handed.clear();
        EXPECT_EQ(poll(), 0);
        EXPECT_EQ(asked(), p.asked);
        EXPECT_EQ(handed, p.handed);
    }
    EXPECT_EQ(heldIds(), "1 2 3 4 5 6") << "no record twice";
    handed.clear();
    IpmiIfcSelGenerateEvents(0, uint32_t(now - 1));
    EXPECT_EQ(handed, "B6 A6") << "later than that";
    handed.clear();
    IpmiIfcSelGenerateEvents(0, 0xffffffff);
    EXPECT_EQ(std::count(handed.begin(), handed.end(), 'A'), 5) << "all events";
}

TEST_F(Sel, commandLineModeReadsAllAndHandsOnNothing)
{
    ASSERT_EQ(IpmiIfcInitForCLI(0), 0);
    IpmiIfc::registerSelEventHandler(handler<'A'>, nullptr);
    for (const char* expected : {"i r 0 2 3", "i r 0 2 3 4"}) {
        asked();
        poll();
        EXPECT_EQ(asked(), expected);
        add(1);
    }
    IpmiIfcSelGenerateEvents(0, 0xffffffff);
    EXPECT_EQ(handed, "");
    IpmiIfcCloseForCLI(0);
}

void unregisterAll(void*, IpmiSelData* record)
{
    handle<'U'>(nullptr, record);
    for (const SelEventHandler h :
         {handler<'A'>, handler<'B'>, SelEventHandler{unregisterAll}})
        IpmiIfc::unRegisterSelEventHandler(h);
}

void throws(void*, IpmiSelData* record)
{
    handle<'T'>(nullptr, record);
    throw 1;
}

TEST_F(Sel, handlersComeAndGo)
{
    const auto call = [] {
        handed.clear();
        announceRefresh(g_IpmiNode[0]);
        return handed;
    };
    EXPECT_EQ(IpmiIfc::registerSelEventHandler(nullptr, nullptr), 5);
    EXPECT_EQ(IpmiIfc::unRegisterSelEventHandler(nullptr), 5);
    EXPECT_EQ(IpmiIfc::registerSelEventHandler(handler<'A'>, &handed), 0);
    IpmiIfc::registerSelEventHandler(handler<'C'>, nullptr);
    IpmiIfc::registerSelEventHandler(handler<'D'>, nullptr);
    EXPECT_EQ(call(), "D0 C0 B0 A0");
    EXPECT_EQ(IpmiIfc::unRegisterSelEventHandler(handler<'B'>), 0);
    EXPECT_EQ(call(), "D0 A0") << "C went with it";
    EXPECT_EQ(IpmiIfc::unRegisterSelEventHandler(handler<'C'>), 2);
    EXPECT_EQ(IpmiIfc::unRegisterSelEventHandler(handler<'D'>), 0);
    EXPECT_EQ(call(), "A0");
    IpmiIfc::registerSelEventHandler(handler<'B'>, nullptr);
    IpmiIfc::registerSelEventHandler(throws, nullptr);
    EXPECT_EQ(call(), "T0") << "what is thrown ends this walk";
    poll();
    add(1);
    handed.clear();
    poll();
    EXPECT_EQ(handed, "T4 B4 A4") << "and not that of an event";
    IpmiIfc::unRegisterSelEventHandler(throws);
    IpmiIfc::registerSelEventHandler(unregisterAll, nullptr);
    add(2);
    handed.clear();
    poll();
    EXPECT_EQ(handed, "U5") << "none is called once it is unregistered";
    EXPECT_EQ(call(), "");
}

TEST_F(Sel, clearing)
{
    const struct
    {
        const char* what;
        const char* faults;
        int result;
        const char* asked;
        size_t left;
    } cases[] = {
        {"cleared", "", 0, "r c i r", 0},
        {"busy once", "C,nth=1,cc=C0", 0, "r c c i r", 0},
        {"busy", "C,cc=C0", 2, "r c c c c c", 3},
        {"a reservation lost", "C,nth=1,other-reader", 2,
         "r c r c r c r c r c r", 3},
        {"refused", "C,cc=D4", 5, "r c", 3},
        {"no answer", "C,lost", 4, "r c", 0},
        {"an erasure that failed", "C,flip=1:02", 2, "r c i r", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        hold(3);
        poll();
        asked();
        now += 5;
        setFaults(rules(c.faults));
        EXPECT_EQ(IpmiIfc::getSel()->clear(), c.result);
        EXPECT_EQ(asked(), c.asked);
        EXPECT_EQ(log().records.size(), c.left);
    }
}

TEST_F(Sel, recordsAndTheirSensors)
{
    Sim::EventMessage event;
    event.sensorType = 0x01;
    event.sensor = 1;
    event.eventType = 0x01;
    event.data = {0x59, 0x60, 0x5f};
    Sim::Device::controller()->bmc().logEvent(event);
    event.sensor = 9;
    Sim::Device::controller()->bmc().logEvent(event);
    poll();
    const auto records = IpmiIfc::getSelData();
    ASSERT_EQ(records.size(), 5u);
    EXPECT_EQ(records[3]->details(), "raw reading 60h, raw threshold 5Fh")
        << "no sensors were read yet";
    EXPECT_EQ(records[3]->getSensorNumber(), 1) << "now they are";
    EXPECT_EQ(records[4]->getSensorNumber(), 0);
    EXPECT_EQ(records[3]->details(),
              "reading 96 degrees C, threshold 95 degrees C");
    EXPECT_EQ(records[3]->recordDataString(),
              "*1.0.32*4 0*2*" + std::to_string(now & 0xff) +
                  " 3 0 0*32 0*4*1*1*false*1*89*96*95*1*");
    takeExchanges();
    unsigned short id = 7;
    EXPECT_EQ(records[3]->reserve(id), 0xc7) << "no data";
    EXPECT_EQ(id, 0);
    EXPECT_EQ(records[3]->clear(), 0xc5) << "without a reservation";
    EXPECT_EQ(takeExchanges().back().data, (Bytes{0, 0, 4, 0}));
    setFaults({"cmd=delete-sel-entry,cc=CD"});
    id = 7;
    EXPECT_EQ(records[3]->reserve(id), 1);
    EXPECT_EQ(id, 7);
}

// The thread sanitizer watches.
TEST_F(Sel, threadsBesideThePollingOne)
{
    Sim::Device::setTimeScale(0.001);
    startNode(0);
    ASSERT_EQ(waitUntilRunning(), IpmiIfc::STATE_RUNNING);
    IpmiIfc::registerSelEventHandler(handler<'A'>, nullptr);
    std::atomic<bool> done{false};
    std::vector<std::thread> callers;
    for (int i = 0; i < 8; ++i)
        callers.emplace_back([&done, i] {
            const SelEventHandler own[] = {
                [](void*, IpmiSelData* r) { r ? r->caption() : ""; },
                [](void*, IpmiSelData*) {
                    IpmiIfc::getSel();
                }};
            while (!done) {
                for (const auto& record : IpmiIfc::getSelData())
                    record->details();
                if (i < 2) {
                    IpmiIfc::registerSelEventHandler(own[i], nullptr);
                    IpmiIfc::unRegisterSelEventHandler(own[i]);
                } else if (i == 2) {
                    IpmiIfc::clearSel();
                }
                IpmiIfc::getRawSelHeader();
                IpmiIfcSelGetProgress(0);
            }
        });
    for (int i = 0; i < 4; ++i) {
        uint8_t event[8] = {0x41, 4, 1, 1, 1, 9, 0, 0};
        uint16_t size = 8;
        uint8_t answer[8];
        EXPECT_EQ(IpmiIfc::sendCmd(0x02, 0x04, 8, event, &size, answer), 0);
        IpmiIfc::pollAll(1, false, IpmiIfc::POLL_NORMAL, nullptr);
    }
    done = true;
    for (std::thread& caller : callers)
        caller.join();
    stopNode();
}

} // namespace
