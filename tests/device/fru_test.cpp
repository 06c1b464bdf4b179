// FRU devices as the library reads them from a controller.
#include <cstring>
#include <syslog.h>

#include "ipmi/IpmiIfcEntity.h"
#include "ipmi/IpmiIfcFru.h"
#include "sim/model/bmc.h"
#include "tests/device/node_fixture.h"

using namespace Ipmi;

namespace
{

constexpr uint8_t satellite = 0x72;

// An area of these fields, its length and checksum right.
Bytes area(Bytes head, const std::vector<std::string>& texts)
{
    for (const std::string& text : texts) {
        head.push_back(uint8_t(0xc0 | text.size()));
        head.insert(head.end(), text.begin(), text.end());
    }
    head.push_back(0xc1);
    head.resize((head.size() + 8) / 8 * 8);
    head[1] = uint8_t(head.size() / 8);
    for (size_t i = 0; i + 1 < head.size(); ++i)
        head.back() = uint8_t(head.back() - head[i]);
    return head;
}

const Bytes chassis = area({1, 0, 0x17}, {"partnumber", "serial"});
const Bytes board =
    area({1, 0, 0, 0, 0, 0}, {"maker", "a board", "serial", "part"});
const Bytes product = area({1, 0, 0}, {"maker", "a product", "part"});

Bytes multiRecord(bool last, const Bytes& data)
{
    Bytes record{0x01, uint8_t(last ? 0x82 : 0x02), uint8_t(data.size()), 0x55};
    uint8_t sum = 0;
    for (const uint8_t byte : record)
        sum = uint8_t(sum - byte);
    record.push_back(sum);
    record.insert(record.end(), data.begin(), data.end());
    return record;
}
const Bytes multi = [] {
    Bytes chain = multiRecord(false, Bytes(13, 0x01));
    const Bytes last = multiRecord(true, Bytes(3, 0x02));
    chain.insert(chain.end(), last.begin(), last.end());
    return chain;
}();

// The areas of a common header, in its order; an empty one is absent.
Bytes image(const Bytes& chassisArea, const Bytes& boardArea,
            const Bytes& productArea, const Bytes& multiArea)
{
    const Bytes* const areas[] = {&chassisArea, &boardArea, &productArea,
                                  &multiArea};
    constexpr size_t firstArea = 2;
    Bytes bytes{1, 0, 0, 0, 0, 0, 0, 0xee}; // its checksum is not looked at
    for (size_t i = 0; i < std::size(areas); ++i) {
        if (areas[i]->empty())
            continue;
        bytes[firstArea + i] = uint8_t(bytes.size() / 8);
        bytes.insert(bytes.end(), areas[i]->begin(), areas[i]->end());
        bytes.resize((bytes.size() + 7) / 8 * 8);
    }
    return bytes;
}

Sim::FruDevice device(uint8_t id, Bytes contents)
{
    Sim::FruDevice fru;
    fru.device = id;
    fru.size = uint16_t(contents.size());
    fru.contents = std::move(contents);
    return fru;
}

// Address 0 stands for the node's own controller.
Bytes locator(uint8_t address, uint8_t id, uint8_t flags = 0x80,
              uint8_t type = 0x10, uint8_t modifier = 0x02)
{
    constexpr uint8_t lun1 = 0x08, channel7 = 0x70;
    const bool bridged = address == satellite;
    return {0,
            0,
            0x51,
            0x11,
            12,
            address,
            id,
            uint8_t(flags | (bridged ? lun1 : 0)),
            bridged ? channel7 : uint8_t{0},
            0,
            type,
            modifier,
            7,
            1,
            0,
            0,
            0};
}

class Frus : public RecordsFixture
{
protected:
    void TearDown() override
    {
        fru_max_req_size = 23;
        RecordsFixture::TearDown();
    }

    void hold(std::vector<Sim::FruDevice> frus,
              const std::vector<Bytes>& locators = {})
    {
        Sim::BmcState state = stateWith(locators);
        constexpr uint8_t ipmb = 1;
        state.channels.push_back({7, ipmb, ipmb, 0, 0, 7154, {0, 0}});
        state.frus = std::move(frus);
        Sim::BmcState other;
        other.address = satellite;
        other.busChannel = 7;
        other.frus = {device(0, image(chassis, {}, {}, {})),
                      device(3, image({}, board, {}, {}))};
        for (Sim::FruDevice& fru : other.frus)
            fru.lun = 1;
        state.satellites.push_back(std::move(other));
        serveState(std::move(state));
        fru_max_req_size = 23;
        takeExchanges();
        Seam::takeLog();
    }

    /// Reads of data as "offset,count", behind "device@address:" where these
    /// change; whom the exchange was for is 0 for the node's own controller.
    std::string reads()
    {
        std::string text, last;
        for (const SentRequest& r : takeExchanges()) {
            if (r.netFn != 0x0a || (r.command != 0x11 && r.command != 0x10))
                continue;
            const bool local = r.channel == Sim::systemInterface;
            const std::string whom =
                std::to_string(r.data[0]) + "@" +
                (local ? "bmc:"
                       : std::to_string(r.slaveAddress) + "/" +
                             std::to_string(r.channel) + "." +
                             std::to_string(r.lun) + ":");
            if (whom != last)
                text += (text.empty() ? "" : " ") + whom;
            last = whom;
            if (r.command == 0x11)
                text += " " + std::to_string(r.data[1] | r.data[2] << 8) + "," +
                        std::to_string(r.data[3]);
        }
        return text;
    }

    static std::string kinds()
    {
        std::string text;
        for (const auto& fru : IpmiIfc::getFrus()) {
            text += (text.empty() ? "" : " ") +
                    std::to_string(fru->getOwnerId()) + ":";
            for (const auto& one : fru->getOptionalRefArray())
                text += IpmiIfc::getFruPart(one).kind;
        }
        return text;
    }
};

// 60 bytes of a device, in the chunks that it takes.
TEST_F(Frus, readingData)
{
    const struct
    {
        const char* what;
        const char* faults;
        uint8_t limit, code;
        int result;
        unsigned stored;
        const char* reads;
        int most; ///< Bytes asked for at once from then on.
    } cases[] = {
        {"plain", "", 0, 0, 0, 60, "0,23 23,23 46,14", 23},
        {"smaller chunks", "", 20, 0xc7, 0, 60,
         "0,23 0,22 0,21 0,20 20,20 40,20", 20},
        {"the smallest", "", 8, 0xca, 0, 60,
         "0,23 0,22 0,21 0,20 0,19 0,18 0,17 0,16 0,15 0,14 0,13 0,12 0,11 "
         "0,10 0,9 0,8 8,8 16,8 24,8 32,8 40,8 48,8 56,4",
         8},
        {"too small", "", 7, 0xcc, 0xcc, 0,
         "0,23 0,22 0,21 0,20 0,19 0,18 0,17 0,16 0,15 0,14 0,13 0,12 0,11 "
         "0,10 0,9 0,8",
         8},
        {"busy at first", "F,nth=1,cc=C0", 0, 0, 0xc0, 0, "0,23", 23},
        {"busy later", "F,after=1,count=4,cc=C3", 0, 0, 0, 60,
         "0,23 23,23 23,23 23,23 23,23 23,23 46,14", 23},
        {"busy for good", "F,after=1,cc=C3", 0, 0, 0xc3, 23,
         "0,23 23,23 23,23 23,23 23,23 23,23", 23},
        {"refused", "F,nth=2,cc=D5", 0, 0, 0xd5, 23, "0,23 23,23", 23},
        {"no answer", "F,nth=2,lost", 0, 0, -1, 23, "0,23 23,23", 23},
        {"more than asked for", "F,nth=3,flip=1:10", 0, 0, -1, 46,
         "0,23 23,23 46,14", 23},
        {"less than it says", "F,nth=1,cut=12", 0, 0, 0, 60,
         "0,23 10,23 33,23 56,4", 23},
        {"nothing, again and again", "F,after=1,cut=2", 0, 0, -1, 23,
         "0,23 23,23 23,23 23,23 23,23 23,23 23,23 23,23 23,23", 23},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes contents(60);
        for (size_t i = 0; i < contents.size(); ++i)
            contents[i] = uint8_t(i);
        Sim::FruDevice fru = device(5, contents);
        fru.readLimit = c.limit;
        fru.limitCode = c.code;
        hold({fru});
        setFaults(rules(c.faults));
        uint8_t bytes[60] = {};
        unsigned length = sizeof bytes;
        Seam::takeSleeps();
        EXPECT_EQ(IpmiIfcReadFru(0, 5, 0, 0, &length, bytes), c.result);
        const bool waits =
            std::string{c.what}.rfind("busy ", 0) == 0 && c.stored > 0;
        EXPECT_EQ(Seam::takeSleeps(), waits
                                          ? (std::vector<unsigned>{1, 2, 3, 4})
                                          : std::vector<unsigned>{});
        EXPECT_EQ(length, c.stored);
        EXPECT_EQ(Bytes(bytes, bytes + length),
                  Bytes(contents.begin(), contents.begin() + length));
        EXPECT_EQ(reads(), std::string{"5@bmc: "} + c.reads);
        EXPECT_EQ(fru_max_req_size, c.most);
    }
    unsigned length = 0;
    uint8_t byte;
    EXPECT_EQ(IpmiIfcReadFru(0, 5, 0, 0, &length, &byte), -1);
    length = 4;
    EXPECT_EQ(IpmiIfcReadFru(0, 5, 0, 0, &length, nullptr), -1);
    EXPECT_EQ(length, 4u);
}

TEST_F(Frus, aDeviceOfWordsGetsHalfTheCountAndTheWholeOffset)
{
    Sim::FruDevice fru = device(5, Bytes(60, 0x11));
    fru.words = fru.byteOffsets = true;
    hold({fru});
    uint8_t bytes[30];
    unsigned length = sizeof bytes;
    EXPECT_EQ(IpmiIfcReadFru(0, 5, 1, 0, &length, bytes), 0);
    EXPECT_EQ(reads(), "5@bmc: 0,12 12,9 21,5 26,2 28,1 29,1");
}

// Which area of a device is kept, and what the log says of the others.
TEST_F(Frus, oneAreaOfADevice)
{
    Bytes badSum = board, noLength = board, unknown = image({}, board, {}, {});
    badSum[7] ^= 1;
    noLength[1] = 0;
    unknown[0] = 0x11;
    Bytes badHeader = multi;
    badHeader[18 + 4] ^= 1;
    const Bytes noPart = area({1, 0, 0x17}, {"", "serial"});
    const struct
    {
        const char* what;
        Bytes image;
        const char* kinds;
        const char* line;
    } cases[] = {
        {"all", image(chassis, board, product, multi), "0:Chassis", ""},
        {"no chassis", image({}, board, product, multi), "0:Board", ""},
        {"multi-records and product", image({}, {}, product, multi), "0:Multi",
         ""},
        {"a product", image({}, {}, product, {}), "0:Product", ""},
        {"nothing", image({}, {}, {}, {}), "0:", ""},
        {"no part number", image(noPart, {}, {}, {}), "0:", ""},
        {"a wrong checksum", image({}, badSum, {}, {}),
         "0:", "IpmiIfcFruBoard: checksum of record failed. Checksum = "},
        {"no length", image({}, noLength, {}, {}), "0:",
         "IpmiIfcFruBoard: Reading FRU Board Info Area length for 0x0 FAILED"},
        {"a chain with a bad header", image({}, {}, {}, badHeader),
         "0:", "IpmiIfcFruMulti: checksum of header failed. Checksum = 0x"},
        {"a chain without end",
         image({}, {}, {}, multiRecord(false, Bytes(3, 1))), "0:",
         "IpmiIfcFruMultiLength: Reading FRU Multi Record Header for 0x0 at "
         "offset 0x10 FAILED cc=0xc9"},
        {"of an unknown version", unknown,
         "0:", "IpmiIfcRhFruInv: Unknown FRU header version 0x11"},
        {"too short for a header",
         {1, 0, 0},
         "0:",
         "IpmiIfcRhFruInv: Reading FRU header for 0x0 FAILED cc=0xc9"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        hold({device(0, c.image)});
        EXPECT_EQ(IpmiIfcFruInstantiateAll(0), 0);
        EXPECT_EQ(kinds(), c.kinds);
        std::string first;
        for (const Seam::LogLine& line : Seam::takeLog())
            if (first.empty() && line.priority <= LOG_WARNING)
                first = line.text;
        EXPECT_EQ(first.substr(0, strlen(c.line)), c.line);
        EXPECT_EQ(first.empty(), c.line[0] == 0);
    }
    hold({device(0, image({}, board, {}, multi))});
    IpmiIfcFruInstantiateAll(0);
    const auto both = std::dynamic_pointer_cast<IpmiFruBoard>(
        IpmiIfc::getFrus().at(0)->getOptionalRefArray().at(0));
    ASSERT_TRUE(both && both->hasMultiRecord());
    EXPECT_EQ(both->getMultiRecord()->getValue(1, FRU_DC_OUTPUT_NUMBER), "1");
}

TEST_F(Frus, aPassOverAllDevices)
{
    const Bytes whole = image(chassis, {}, {}, {});
    hold({device(0, whole), device(5, image({}, {}, product, {}))},
         {locator(0, 5), locator(satellite, 3), locator(0x20, 9, 0x00),
          locator(0, 7, 0x80, 0x08, 0x01)});
    EXPECT_EQ(IpmiIfcSdrGetInfo(0), 0);
    takeExchanges();
    fru_max_req_size = 11;
    EXPECT_EQ(IpmiIfcFruInstantiateAll(0), 0);
    // The last record first; behind the satellite's, records without an address
    // mean its devices, too.
    EXPECT_EQ(kinds(), "7: 3:Board 5: 0:Chassis");
    EXPECT_EQ(
        reads(),
        "3@114/7.1: 0,8 8,2 8,23 31,17 5@114/7.1: 0@114/7.1: 0,8 8,2 8,23 "
        "31,1");
    EXPECT_EQ(g_IpmiNode[0].targetAddress, 0);
    EXPECT_EQ(IpmiIfc::getFruDeviceHeader().deviceId, 0);
    EXPECT_EQ(IpmiIfc::getFruDeviceHeader().areaSize[0], 32);
    EXPECT_EQ(logged("Unhandled physical FRU 09 20 00 00"), 1);
    const auto before = IpmiIfc::getFrus();
    setFaults({"cmd=get-fru-inventory-area-info,cc=D5"});
    IpmiIfcFruInstantiateAll(0);
    EXPECT_EQ(kinds(), "7: 3: 5: 0:");
    EXPECT_EQ(before[1]->getOptionalRefArray().size(), 1u) << "a caller's copy";
    setFaults({"cmd=read-fru-data,nth=1,cc=C3"});
    IpmiIfcFruInstantiateAll(0);
    EXPECT_EQ(logged("FAILED"), 0) << "a time-out is silent";
    EXPECT_EQ(IpmiIfcFruInstantiateAll(4), -1);
}

TEST_F(Frus, allOfADevice)
{
    const Bytes whole = image(chassis, board, product, multi);
    hold({device(0, whole)}, {locator(satellite, 3)});
    IpmiIfcSdrGetInfo(0);
    IpmiIfcFruInstantiateAll(0);
    const auto frus = IpmiIfc::getFrus();
    const FruDeviceHeader before = IpmiIfc::getFruDeviceHeader();
    takeExchanges();
    setFaults({"cmd=read-fru-data,nth=1,cc=CA",
               "cmd=read-fru-data,data=00:20,nth=2,cc=D5"});
    const IpmiFruContents contents = IpmiIfc::getFruAreas(nullptr);
    EXPECT_EQ(contents.result, 0);
    EXPECT_EQ(contents.size, whole.size());
    ASSERT_EQ(contents.areas.size(), 4u);
    EXPECT_EQ(contents.areas[0].fields[2].value, "serial");
    EXPECT_EQ(contents.areas[1].problems,
              (std::vector<std::string>{"it cannot be read (D5h)"}));
    EXPECT_EQ(contents.areas[2].fields[1].value, "a product");
    EXPECT_TRUE(contents.areas[3].multi);
    EXPECT_EQ(fru_max_req_size, 23) << "as it was";
    EXPECT_EQ(IpmiIfc::getFruDeviceHeader().deviceId, before.deviceId);
    takeExchanges();
    std::vector<unsigned char> bytes;
    EXPECT_EQ(IpmiIfc::readFruImage(0, frus[0], bytes), 0);
    EXPECT_EQ(bytes, image({}, board, {}, {})) << "the satellite's";
    EXPECT_EQ(IpmiIfc::getFruAreas(frus[0]).areas.size(), 1u);
    EXPECT_EQ(IpmiIfc::getFruAreas(nullptr).areas.size(), 4u);
    setFaults({"cmd=get-fru-inventory-area-info,cc=CB"});
    EXPECT_EQ(IpmiIfc::getFruAreas(nullptr).result, 0xcb);
    EXPECT_EQ(IpmiIfc::readFruImage(0, nullptr, bytes), 0xcb);
    EXPECT_TRUE(bytes.empty());
}

// The loop's own areas, from start to stop.
TEST_F(Frus, aNodeReadsThemAndForgetsTheTree)
{
    hold({device(0, image({}, board, {}, {}))}, {locator(0, 0)});
    IpmiIfcOpenIpmiClose(0);
    startNode(0);
    ASSERT_EQ(waitUntilRunning(), IpmiIfc::STATE_RUNNING);
    IpmiIfc::pollAll(1, false, IpmiIfc::POLL_FULL, nullptr);
    EXPECT_EQ(kinds(), "0:Board");
    EXPECT_EQ(IpmiIfc::getLan()->getChannelNumber(), 1u) << "looked for";
    const entity_id entity{7, 1};
    IpmiIfcEntityAddParent(0, &entity, 0);
    EXPECT_EQ(IpmiIfc::getEntityTree().size(), 1u);
    stopNode();
    EXPECT_EQ(IpmiIfc::getEntityTree().size(), 0u);
}

} // namespace
