// The SDR repository as the library reads it from a controller.
#include <new>
#include <syslog.h>

#include "ipmi/IpmiIfcSdr.h"
#include "sim/model/bmc.h"
#include "tests/device/node_fixture.h"
#include "tests/support/sdr_records.h"

using namespace Ipmi;

namespace
{

class Sdr : public RecordsFixture
{
protected:
    /// A controller with these records, ids from 10h on.
    void hold(const std::vector<RecordBytes>& records)
    {
        serveState(stateWith(records));
    }
    Sim::Repository& repository()
    {
        return *Sim::Device::controller()->bmc().state().repository;
    }

    std::vector<std::string> getSdrs()
    {
        std::vector<std::string> result;
        for (const SentRequest& r : takeExchanges()) {
            char text[32];
            if (r.netFn != 0x0a || r.command != 0x23)
                continue;
            snprintf(text, sizeof text, "%02x+%d,%d", r.data[2], r.data[4],
                     r.data[5]);
            result.push_back(text);
        }
        return result;
    }

    std::vector<unsigned> heldIds()
    {
        std::vector<unsigned> ids;
        for (const IpmiSdrEntry& entry : IpmiIfc::getSdrRecords())
            ids.push_back(entry.recordId);
        return ids;
    }
};

using Texts = std::vector<std::string>;

TEST_F(Sdr, aRecordIsReadFromItsEnd)
{
    hold({sensorRecord(1, 1, {}, "Inlet"), sensorRecord(2, 2, {}, "PS")});
    EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    EXPECT_EQ(getSdrs(),
              (Texts{"00+0,5", "11+0,5", "00+37,16", "00+21,16", "00+5,16",
                     "00+0,5", "11+18,16", "11+2,16", "11+0,2"}));
    const auto records = IpmiIfc::getSdrRecords();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].recordId, 0) << "as it was asked for";
    EXPECT_EQ(records[0].bytes, repository().records[0].bytes);
    EXPECT_EQ(records[1].bytes, repository().records[1].bytes);
    EXPECT_EQ(IpmiIfc::getSdr().recordCount[0], 2);
    const IpmiSdrProgress progress = IpmiIfcSdrGetProgress(0);
    EXPECT_EQ(progress.total + progress.headers * 10 + progress.records * 100,
              222u);
}

// What each fault costs in exchanges, what is left, and what the log says.
// Three records: ids 10h, 11h, 12h of 53, 33 and 22 bytes.
TEST_F(Sdr, recordsOfOneTypeAlone)
{
    hold({sensorRecord(1, 1), sensorRecord(0xc0, 7), sensorRecord(2, 2)});
    const uint8_t oem = 0xc0;
    EXPECT_EQ(IpmiIfcSdrReadRecordsOf(0, &oem, 1), 0);
    EXPECT_EQ(heldIds(), (std::vector<unsigned>{0x11}));
    EXPECT_EQ(IpmiIfcSdrGetProgress(0).records, 3u) << "none is missing";
    EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    EXPECT_EQ(heldIds().size(), 3u) << "all, when all are asked for again";
}

TEST_F(Sdr, faultsWhileTheRepositoryIsRead)
{
    const struct
    {
        const char* what;
        Texts faults;
        size_t reads;
        std::vector<unsigned> held;
        const char* line;
        int lines;
    } cases[] = {
        {"none", {}, 12, {0, 0x11, 0x12}, "", 0},
        {"a header cancelled",
         {"cmd=get-sdr,nth=2,cc=C5"},
         13,
         {0, 0x11, 0x12},
         "",
         0},
        {"a header cancelled for good",
         {"cmd=get-sdr,cc=C5"},
         4,
         {},
         "IpmiIfcSdrGetHeaders: retry expired.",
         1},
        {"a header never answered",
         {"cmd=get-sdr,after=1,lost"},
         5,
         {},
         "IpmiIfcSdrGetHeaders: retry expired.",
         1},
        {"a record cancelled",
         {"cmd=get-sdr,data=??:??:11:00:01,nth=1,cc=C5"},
         13,
         {0, 0x11, 0x12},
         "",
         0},
        {"a record cancelled for good",
         {"cmd=get-sdr,data=??:??:11:00:11,cc=C5"},
         13,
         {0, 0x12},
         "IpmiIfcSdrReadRecordId: retry expired.",
         1},
        {"a record that is gone",
         {"cmd=get-sdr,data=??:??:11:00:11,cc=CB"},
         10,
         {0, 0x12},
         "sensor not found, record id: 11",
         1},
        {"busy twice",
         {"cmd=get-sdr,data=??:??:11:00:11,count=2,cc=C0"},
         14,
         {0, 0x11, 0x12},
         "record id: 11, error 192. Try again...",
         2},
        {"short",
         {"cmd=get-sdr,data=??:??:11:00:11,nth=1,cut=18"},
         13,
         {0, 0x11, 0x12},
         "data length mismatch req=19,resp=18",
         1},
        {"long",
         {"cmd=get-sdr,data=??:??:11:00:11,nth=1,pad=20"},
         13,
         {0, 0x11, 0x12},
         "data length mismatch req=19,resp=20",
         1},
        {"too much at once, once",
         {"cmd=get-sdr,data=??:??:11:00:11,nth=1,cc=CA"},
         13,
         {0, 0x11, 0x12},
         "Try again",
         0},
        {"too much at once, always",
         {"cmd=get-sdr,data=??:??:11:00:11,cc=C7"},
         13,
         {0, 0x12},
         "Try again",
         0},
        {"no information",
         {"cmd=get-sdr-repository-info,cc=C1"},
         0,
         {},
         "Unable",
         0},
        {"information cut",
         {"cmd=get-sdr-repository-info,cut=14"},
         0,
         {},
         "wrong size e (expecting f)",
         1},
        {"of a version to come",
         {"cmd=get-sdr-repository-info,flip=1:02"},
         0,
         {},
         "Unexpected SDR Repository info version 0x53",
         1},
        {"of an old version",
         {"cmd=get-sdr-repository-info,flip=1:40"},
         0,
         {},
         "invalid version. version = 0x11",
         1},
        {"that old version is logged once",
         {"cmd=get-sdr-repository-info,flip=1:40"},
         0,
         {},
         "invalid version",
         0},
        {"of no version",
         {"cmd=get-sdr-repository-info,flip=1:51"},
         0,
         {},
         "",
         0},
        {"no records", {"cmd=get-sdr-repository-info,flip=2:03"}, 0, {}, "", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        resetNode();
        IpmiIfcSdrCleanUpAll(0);
        hold({sensorRecord(1, 1, {}, "Inlet"), sensorRecord(2, 2, {}, "P"),
              sensorRecord(3, 3, {}, "Event")});
        setFaults(c.faults);
        Seam::takeLog();
        IpmiIfcSdrGetInfo(0);
        EXPECT_EQ(getSdrs().size(), c.reads);
        std::vector<unsigned> held = heldIds();
        EXPECT_EQ(held, c.held);
        if (*c.line) {
            EXPECT_EQ(logged(c.line), c.lines);
        }
    }
}

// The retry repeats the request; the next chunks shrink, down to one byte.
TEST_F(Sdr, whatAControllerRefusesToReturnAtOnce)
{
    hold({sensorRecord(1, 1, {}, "Inlet")});
    setFaults({"cmd=get-sdr,data=??:??:00:00:25,nth=1,cc=CA"});
    IpmiIfcSdrGetInfo(0);
    EXPECT_EQ(getSdrs(), (Texts{"00+0,5", "00+37,16", "00+37,16", "00+22,15",
                                "00+7,15", "00+0,7"}));
    EXPECT_EQ(heldIds().size(), 1u);

    setFaults({"cmd=get-sdr,data=??:??:00:00:25,nth=1,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:25,nth=2,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:25,nth=3,cc=C7",
               "cmd=get-sdr,data=??:??:00:00:18,count=3,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:0e,count=3,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:07,count=3,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:03,count=3,cc=CA",
               "cmd=get-sdr,data=??:??:00:00:02,count=3,cc=CA"});
    uint8_t buffer[53];
    Seam::takeLog();
    EXPECT_EQ(IpmiIfcSdrReadRecordId(0, 0, buffer, sizeof buffer), 0);
    const Texts reads = getSdrs();
    EXPECT_EQ(reads.back(), "00+0,1");
    EXPECT_EQ(logged("error 202. Try again..."), 11) << "from 8 bytes down";
    EXPECT_EQ(IpmiIfcSdrReadRecordId(0, 0, buffer, 0), -1);
}

TEST_F(Sdr, aChainThatLies)
{
    const struct
    {
        const char* what;
        const char* fault;
        size_t headers;
        int warnings;
    } cases[] = {
        {"more records than claimed", "cmd=get-sdr-repository-info,flip=2:05",
         2, 0}, // 4 become 1: one more than claimed is read
        {"fewer", "cmd=get-sdr-repository-info,flip=3:ff", 4, 0},
        {"back to the second", "cmd=get-sdr,data=??:??:12,flip=1:02", 3, 1},
        {"back to the first by its own id",
         "cmd=get-sdr,data=??:??:12,flip=1:03", 3, 1},
        {"to itself", "cmd=get-sdr,data=??:??:12,flip=1:01", 3, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        hold({sensorRecord(3, 1), sensorRecord(3, 2), sensorRecord(3, 3),
              sensorRecord(3, 4)});
        setFaults({c.fault});
        Seam::takeLog();
        EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
        EXPECT_EQ(heldIds().size(), c.headers);
        EXPECT_EQ(logged("was met before"), c.warnings);
    }
}

TEST_F(Sdr, sharedRecordsBecomeOneForEachSensor)
{
    auto numbers = [](size_t at, size_t modifier) {
        std::vector<unsigned> result;
        for (const auto& r : IpmiIfc::getSdrRecords()) {
            result.push_back(r.bytes[7]);
            result.push_back(r.bytes[9]);
            result.push_back(r.bytes[at]);
            result.push_back(modifier < r.bytes.size() ? r.bytes[modifier]
                                                       : 0xaaaa);
        }
        return result;
    };
    using Numbers = std::vector<unsigned>;
    hold({sensorRecord(2, 0x10, {{23, 0x43}, {24, 0x80}, {9, 0x7f}}, "Fan")});
    IpmiIfcSdrGetInfo(0);
    EXPECT_EQ(numbers(23, 24), (Numbers{0x12, 1, 0x41, 0x82, 0x11, 0, 0x42,
                                        0x81, 0x10, 0x7f, 0x43, 0x80}));
    hold({sensorRecord(3, 0xff, {{12, 0x02}, {13, 0x7f}, {9, 0x83}})});
    IpmiIfcSdrGetInfo(0);
    EXPECT_EQ(numbers(12, 13),
              (Numbers{0x00, 0x83, 0x01, 0x00, 0xff, 0x83, 0x02, 0x7f}));

    // Cut behind the share count: nothing behind the record is touched.
    RecordBytes cut = sensorRecord(2, 0x10, {{23, 0x02}});
    cut.resize(24);
    cut[4] = 19;
    hold({cut});
    IpmiIfcSdrGetInfo(0);
    EXPECT_EQ(numbers(23, 24),
              (Numbers{0x11, 1, 0x01, 0xaaaa, 0x10, 1, 0x02, 0xaaaa}));
}

// A length byte above 250 wraps to a record of less than its header.
TEST_F(Sdr, oddRecordsLeaveTheOthersAlone)
{
    RecordBytes wraps = sensorRecord(1, 9);
    wraps[4] = 0xff;
    RecordBytes empty = wraps;
    empty[4] = 0xfb;
    RecordBytes tooLong = sensorRecord(2, 8, {}, std::string(40, 'x'));
    RecordBytes oem = sensorRecord(0xc0, 7);
    hold({sensorRecord(1, 1), wraps, empty, tooLong, oem, sensorRecord(2, 2)});
    Seam::takeLog();
    EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    EXPECT_EQ(heldIds(), (std::vector<unsigned>{0x11, 0, 0x15, 0x13, 0x14}))
        << "by list, the last first; of 12h nothing could be asked for";
    EXPECT_EQ(IpmiIfc::getSdrRecords()[0].bytes.size(), 4u);
    EXPECT_EQ(logged("SDR is too long"), 1);
    EXPECT_TRUE(IpmiIfc::getSensor(1, 0x20));
    EXPECT_TRUE(IpmiIfc::getSensor(2, 0x20));
    EXPECT_FALSE(IpmiIfc::getSensor(8, 0x20));
}

// Every allocation of a refresh fails once: nothing leaks (the sanitizers
// watch), and the next refresh has all.
TEST_F(Sdr, withoutMemory)
{
    hold({sensorRecord(1, 1), sensorRecord(2, 2, {{23, 2}})});
    for (int nth = 1; nth <= 12; ++nth) {
        Seam::failNth(Seam::Call::allocate, nth);
        IpmiIfcSdrGetInfo(0);
        Seam::failNth(Seam::Call::allocate, 0);
        EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
        EXPECT_EQ(heldIds().size(), 3u) << nth;
    }
}

TEST_F(Sdr, nodesWithoutARecordOfTheirOwn)
{
    hold({sensorRecord(1, 1)});
    for (int node : {-1, 4, 5}) {
        EXPECT_EQ(IpmiIfcSdrGetInfo(node), -1);
        EXPECT_EQ(IpmiIfcSdrGetAll(node), -1);
        EXPECT_EQ(IpmiIfcSdrReserve(node), -1);
        EXPECT_EQ(IpmiIfcSdrCleanUpAll(node), -1);
        EXPECT_EQ(IpmiIfcSensorUpdateReading(node), -1);
        EXPECT_TRUE(IpmiIfc::getSensors(node).empty());
        EXPECT_EQ(IpmiIfc::getSdr(node).sdrVersion, 0);
    }
    EXPECT_TRUE(takeExchanges().empty());
    // The first read does everything twice: once in the answer's handler.
    EXPECT_EQ(IpmiIfcSdrGetAll(0), 0);
    EXPECT_EQ(getSdrs().size(), 8u);
}

} // namespace
