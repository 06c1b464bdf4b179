// What is decoded from a FRU device's areas.
#include <gtest/gtest.h>
#include <vek-ipmi/IpmiFru.h>
#include <vek-ipmi/IpmiIfc.h>

using namespace Ipmi;

namespace
{

using Bytes = std::vector<uint8_t>;

template <typename Area>
Area areaOf(const Bytes& bytes)
{
    return Area{unsigned(bytes.size()), bytes.data()};
}

// An area's own bytes, then fields; each text is "C3 abc"-like bytes.
Bytes withFields(Bytes head, const std::vector<std::string>& texts)
{
    for (const std::string& text : texts) {
        head.push_back(uint8_t(0xc0 | text.size()));
        head.insert(head.end(), text.begin(), text.end());
    }
    head.push_back(0xc1);
    return head;
}

const Bytes chassisHead{1, 1, 0x17}, boardHead{1, 1, 0, 0, 0, 0},
    productHead{1, 1, 0};

TEST(Fru, fieldsOfAnArea)
{
    const auto product = areaOf<IpmiFruProduct>(withFields(
        productHead, {"maker ", "name", "part", "ver", "serial", "tag"}));
    EXPECT_EQ(product.getManufacturer(), "maker");
    EXPECT_EQ(product.getName(), "name");
    EXPECT_EQ(product.getPartNumber(), "part");
    EXPECT_EQ(product.getVersion(), "ver");
    EXPECT_EQ(product.getSerialNumber(), "serial");
    EXPECT_EQ(product.getAssetTag(), "tag");
    const auto board = areaOf<IpmiFruBoard>(
        withFields(boardHead, {"maker", "name", "serial", "part"}));
    EXPECT_EQ(board.getManufacturer() + board.getName() +
                  board.getSerialNumber() + board.getPartNumber(),
              "makernameserialpart");
    const auto chassis =
        areaOf<IpmiFruChassis>(withFields(chassisHead, {"part", "serial"}));
    EXPECT_EQ(chassis.getPartNumber(), "part");
    EXPECT_EQ(chassis.getManufacturer(), "n/a");
    // From a byte ahead: "t" is the type/length byte of BCD plus.
    EXPECT_EQ(chassis.getSerialNumber(), "n/a");
    // An empty part number's own byte is there instead.
    EXPECT_EQ(areaOf<IpmiFruChassis>(withFields(chassisHead, {"", "serial"}))
                  .getSerialNumber(),
              "n/a");
    // A length of two in the part number's last byte: the serial number's own
    // byte and its first character.
    EXPECT_EQ(
        areaOf<IpmiFruChassis>(withFields(chassisHead, {"par\xc2", "serial"}))
            .getSerialNumber(),
        " s");

    IpmiFruProduct copy = product;
    copy = *&copy;
    EXPECT_EQ(copy.getName(), "name");
    copy.set(unsigned(copy.size()), copy.bytes());
    EXPECT_EQ(copy.getName(), "name");
}

// The manufacturer of a board and the serial number behind it, for every kind
// of field and of end.
TEST(Fru, missingAndOddFields)
{
    const struct
    {
        const char* what;
        Bytes fields; ///< Behind the board's own bytes.
        const char* manufacturer;
        const char* name;
        const char* serialNumber;
    } cases[] = {
        {"nothing", {}, "n/a", "", "n/a"},
        {"an end mark first", {0xc1, 'x', 0xc1}, "x", "", "n/a"},
        {"empty fields", {0xc0, 0xc0, 0xc0, 0xc1}, "n/a", "", "n/a"},
        {"blanks stay", {0xc2, ' ', '\t', 0xc0, 0xc0}, "  ", "", "n/a"},
        {"not printable", {0xc3, 'a', 0x01, 'b', 0xc1, 0}, "a b", " ", "n/a"},
        {"6-bit", {0x83, 0x24, 0x08, 0x82, 0x80, 0x81, 0x21}, "D@@@", " ", "A"},
        {"6-bit at the end", {0x82, 0x24, 0x08}, "D@", "", "n/a"},
        {"binary and BCD plus",
         {0x02, 'a', 'b', 0x41, 0x12, 0xc1},
         "n/a",
         "",
         "n/a"},
        {"past the end", {0xc2, 'a', 'b', 0xc5, 'c', 'd'}, "ab", "", "n/a"},
        {"6-bit past the end", {0x83, 0x24, 0x08}, "n/a", "", "n/a"},
        {"a length that leads out", {0xff}, "n/a", "", "n/a"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Bytes bytes = boardHead;
        bytes.insert(bytes.end(), c.fields.begin(), c.fields.end());
        const auto board = areaOf<IpmiFruBoard>(bytes);
        EXPECT_EQ(board.getManufacturer(), c.manufacturer);
        EXPECT_EQ(board.getName(), c.name);
        EXPECT_EQ(board.getSerialNumber(), c.serialNumber);
        bytes[0] = 0x02;
        EXPECT_EQ(areaOf<IpmiFruBoard>(bytes).getManufacturer(), "n/a");
    }
    EXPECT_EQ(IpmiFruBoard{}.getManufacturer(), "n/a");
    EXPECT_EQ(IpmiFruBoard{}.getMfgDateTime8601(), "N/A");
}

TEST(Fru, chassisTypesAndDates)
{
    const struct
    {
        uint8_t version, type;
        const char* text;
    } types[] = {{1, 0x00, "Unspecified"},
                 {0x11, 0x17, "Rack Mount Chassis"},
                 {1, 0x02, "Unknown"},
                 {1, 0x24, "Stick PC"},
                 {1, 0x25, "unknown"},
                 {1, 0x26, "Unknown"},
                 {2, 0xff, "Unknown"},
                 {2, 0x17, "unknown"},
                 {0, 0x17, ""},
                 {0, 0x25, ""}};
    for (const auto& t : types)
        EXPECT_EQ(areaOf<IpmiFruChassis>({t.version, 1, t.type}).getType(),
                  t.text)
            << int(t.version) << ' ' << int(t.type);
    const auto date = [](uint8_t low, uint8_t middle, uint8_t high) {
        return areaOf<IpmiFruBoard>({1, 1, 0, low, middle, high})
            .getMfgDateTime8601();
    };
    EXPECT_EQ(date(0, 0, 0), "1996-01-01T00:00:00");
    EXPECT_EQ(date(0xff, 0xff, 0xff), "2027-11-24T20:15:00");
    EXPECT_EQ(date(0x3c, 0, 0), "1996-01-01T01:00:00");
}

Bytes multiRecord(uint8_t type, bool last, const Bytes& data)
{
    Bytes bytes{type, uint8_t(last ? 0x82 : 0x02), uint8_t(data.size()), 0, 0};
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

Bytes powerSupply(uint8_t flags, uint8_t tachometer)
{
    return {0x20, 0xf3,  0xff, 0xff, 30,   5,    0x28, 0x23,
            0x90, 0x33,  0x10, 0x27, 0x20, 0x4e, 47,   63,
            12,   flags, 0x20, 0x43, 0x13, 0xe8, 0x03, tachometer};
}

TEST(Fru, valuesOfMultiRecords)
{
    Bytes chain = multiRecord(0x00, false, powerSupply(0x1f, 7));
    for (const Bytes& more :
         {multiRecord(
              0x01, false,
              {0x81, 0x0c, 0xfe, 0, 0x80, 0xff, 0x7f, 1, 0, 2, 0, 3, 0}),
          multiRecord(0x02, false,
                      {0x0f, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 0xff, 0xff}),
          multiRecord(0x02, true, {0x01, 9, 9})})
        chain.insert(chain.end(), more.begin(), more.end());
    const auto multi = areaOf<IpmiFruMulti>(chain);
    const char* const values[FRU_KEY_COUNT] = {
        "800",   "65535",
        "30",    "5",
        "9000",  "13200",
        "10000", "20000",
        "47",    "63",
        "12",    "true",
        "true",  "true",
        "true",  "true",
        "4",     "800",
        "-12 V", "3.3 V",
        "1000",  "Two pulses per rotation",
        "yes",   "1",
        "-500",  "-32768",
        "32767", "1",
        "2",     "3",
        "15",    "1",
        "2",     "3",
        "4",     "5",
        "65535"};
    for (int key = 0; key < FRU_KEY_COUNT; ++key) {
        const FruKeyInfo* const info = getFruKeyInfo(key);
        EXPECT_EQ(multi.getValue(info->recordType, FruKey(key)), values[key])
            << info->name;
        EXPECT_EQ(multi.getValue(uint8_t(info->recordType ^ 3), FruKey(key)),
                  "");
    }
    EXPECT_EQ(getFruKeyInfo(FRU_KEY_COUNT), nullptr);
    EXPECT_EQ(multi.getValue(0x02, FruKey(99)), "");
    EXPECT_TRUE(multi.isMultiRecordTypePresent(0x02));
    EXPECT_FALSE(multi.isMultiRecordTypePresent(0x05));
    EXPECT_EQ(multi.getPowerSupplyValue(nullptr, FRU_PS_PEAK_VA), "");
    EXPECT_EQ(multi.getDCLoad(nullptr, FRU_DC_LOAD_NUMBER), "");
    // Elsewhere than in the object; a bit for each flag.
    const std::string flags[] = {
        "false fase false false true", "false fase false true false",
        "false fase false false false", "false true true false false",
        "true fase false false false"};
    for (unsigned bit = 0; bit < std::size(flags); ++bit) {
        const Bytes elsewhere = powerSupply(uint8_t(1u << bit), 0);
        std::string text;
        for (int key = FRU_PS_TACHOMETER_PULSES; key <= FRU_PS_PREDICTIVE_FAIL;
             ++key)
            text += (text.empty() ? "" : " ") +
                    multi.getPowerSupplyValue(elsewhere.data(), FruKey(key));
        EXPECT_EQ(text, flags[bit]);
    }
    // Within the object, and no record's data.
    const auto small = areaOf<IpmiFruMulti>({0, 0x82, 0, 0, 0});
    EXPECT_EQ(small.getPowerSupplyValue(small.bytes(), FRU_PS_PEAK_VA), "0");
    EXPECT_EQ(small.getPowerSupplyValue(small.bytes() + 2, FRU_PS_PEAK_VA), "");
}

TEST(Fru, chainsThatLie)
{
    const struct
    {
        const char* what;
        Bytes chain;
        FruKey key;
        const char* text;
    } cases[] = {
        {"nothing", {}, FRU_PS_PEAK_VA, ""},
        {"half a header", {0x00, 0x82, 24}, FRU_PS_PEAK_VA, ""},
        {"no data", {0x00, 0x82, 24, 0, 0}, FRU_PS_PEAK_VA, ""},
        {"a short record", multiRecord(0, true, {1, 2, 3}), FRU_PS_PEAK_VA, ""},
        {"one that ends with the field", multiRecord(0, true, {1, 2, 3, 4}),
         FRU_PS_PEAK_VA, "1027"},
        {"a length of 0",
         {0x05, 0x02, 0, 0, 0, 0, 0x82, 4, 0, 0, 1, 2, 3, 4},
         FRU_PS_PEAK_VA,
         ""},
        {"a length beyond the end",
         {0x05, 0x02, 0xff, 0, 0, 0, 0x82, 4, 0, 0, 1, 2, 3, 4},
         FRU_PS_PEAK_VA,
         ""},
        {"no last one", multiRecord(5, false, {1}), FRU_PS_PEAK_VA, ""},
        {"pin polarity", multiRecord(0, true, powerSupply(0x11, 0)),
         FRU_PS_TACHOMETER, "Failure on pin de-assertion"},
        {"the other", multiRecord(0, true, powerSupply(0x01, 0)),
         FRU_PS_TACHOMETER, "Failure on pin assertion"},
        {"one pulse", multiRecord(0, true, powerSupply(0x01, 1)),
         FRU_PS_TACHOMETER, "One pulse per rotation"},
        {"no tachometer", multiRecord(0, true, powerSupply(0x10, 1)),
         FRU_PS_TACHOMETER, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto multi = areaOf<IpmiFruMulti>(c.chain);
        EXPECT_EQ(multi.getValue(0x00, c.key), c.text);
    }
    Bytes odd = powerSupply(0, 0);
    odd[20] = 0x40;
    EXPECT_EQ(areaOf<IpmiFruMulti>(multiRecord(0, true, odd))
                  .getValue(0, FRU_PS_COMBINED_VOLTAGE_1),
              "n/a");
}

TEST(Fru, dumps)
{
    const Bytes bytes(17, 0xab);
    testing::internal::CaptureStdout();
    areaOf<IpmiFruChassis>(bytes).dump();
    areaOf<IpmiFruBoard>({1}).dump();
    areaOf<IpmiFruProduct>({2}).testDump();
    IpmiFruProduct{}.dump();
    areaOf<IpmiFruMulti>(bytes).dump();
    std::string line;
    for (int i = 0; i < 16; ++i)
        line += " 0xab";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Chassis Info Area : 0x11\nData 0x00:" + line +
                  "\nData 0x10: 0xab\n"
                  "Board Info Area : 0x01\nData 0x00: 0x01\n"
                  "IpmiFruOptional: Dump Entering.\n"
                  "Info Area : 0x01\nData 0x00: 0x02\n"
                  "IpmiFruOptional: Dump Exiting.\n"
                  "\n");
}

TEST(Fru, partsByTheAreasClass)
{
    const auto board = std::make_shared<IpmiFruBoard>(
        areaOf<IpmiFruBoard>(withFields(boardHead, {"ma", "na", "se", "pa"})));
    const auto part = IpmiIfc::getFruPart(board);
    EXPECT_EQ(part.kind + part.name + part.partNumber + part.version +
                  part.manufacturer + part.serialNumber + part.assetTag +
                  part.date,
              "Boardnapamase1996-01-01T00:00:00");
    EXPECT_EQ(IpmiIfc::getFruPart(std::make_shared<IpmiFruMulti>()).kind,
              "Multi");
    EXPECT_EQ(IpmiIfc::getFruPart(nullptr).name, "n/a");
    EXPECT_EQ(IpmiIfc::getFruPart(nullptr).kind, "");

    uint8_t locator[] = {1,    0,    0x51, 0x11, 11,   0x72, 0x05,
                         0x98, 0x70, 0x00, 0x10, 0x02, 7,    0x81};
    const IpmiFru fru{{sizeof locator, locator}, {board}, 0};
    EXPECT_EQ(fru.getSlaveAddress(), 0x72);
    EXPECT_EQ(fru.getOwnerId(), 5);
    EXPECT_EQ(fru.getLun(), 3);
    EXPECT_EQ(fru.getChannel(), 7);
    EXPECT_TRUE(fru.isLogical());
    EXPECT_EQ(fru.getEntity().getInstance(), 1u);
    EXPECT_EQ(fru.getOptionalRefArray().size(), 1u);
    EXPECT_EQ((IpmiFru{{}, {}, 0}.getOwnerId()), 0);
}

// An area's length and checksum are made right.
Bytes sound(Bytes area)
{
    area.resize((area.size() + 8) / 8 * 8);
    area[1] = uint8_t(area.size() / 8);
    for (size_t i = 0; i + 1 < area.size(); ++i)
        area.back() = uint8_t(area.back() - area[i]);
    return area;
}

// A header and one area behind it, which byte `which` of the header names.
Bytes imageOf(size_t which, const Bytes& area)
{
    Bytes image(8);
    image[0] = 1;
    image[which] = 1;
    image[7] = 0xfe;
    image.insert(image.end(), area.begin(), area.end());
    return image;
}

// Fields as "name=value;", then problems.
std::string toText(const IpmiFruContents& contents)
{
    std::string text;
    for (const std::string& problem : contents.problems)
        text += "!" + problem;
    for (const IpmiFruArea& area : contents.areas) {
        for (const IpmiFruField& field : area.fields)
            text += field.name + "=" + field.value + ";";
        for (const std::string& problem : area.problems)
            text += "!" + problem;
        if (area.multi)
            text += area.multi->getValue(0, FRU_PS_OVERALL_CAPACITY) + " W";
    }
    return text;
}

TEST(Fru, aWholeImageWithItsFaults)
{
    Bytes board = withFields({1, 1, 25, 0x3c, 0, 0}, {"maker", "na\xe9me"});
    board.pop_back();
    for (const uint8_t byte :
         {0x41, 0x1a, 0x83, 0x24, 0x08, 0x82, 0xc0, 0x02, 0xab, 0xcd, 0xc1})
        board.push_back(byte);
    const Bytes good = sound(board);
    const std::string fields =
        "manufacturing date=1996-01-01T01:00:00Z;manufacturer=maker;product "
        "name=na\xc3\xa9me;serial number=1;part number=D@@@;FRU file "
        "id=;custom 1=AB CD;";
    Bytes badSum = good, badVersion = good, noLength = good, cut = good,
          cutLater = good;
    badSum.back() ^= 1;
    badVersion[0] = 2;
    noLength[1] = 0;
    cut.resize(10);
    cutLater.resize(14);
    using namespace std::string_literals;
    const std::vector<std::string> unicode = {"G\0r\0\xf6\0\xdf\0\x22\x6f\0\0"s,
                                              "\x3d\xd8\0\xde"s,
                                              "\x3d\xd8\\\0\x85\0"s, "odd"};
    const Bytes power = multiRecord(0x00, true, powerSupply(0, 0));
    Bytes chain = power;
    uint8_t sum = 0;
    for (size_t i = 5; i < chain.size(); ++i)
        sum = uint8_t(sum + chain[i]);
    chain[3] = uint8_t(-sum);
    chain[4] = uint8_t(-(chain[0] + chain[1] + chain[2] + chain[3]));
    Bytes badData = chain;
    badData[20] ^= 4;
    const struct
    {
        const char* what;
        Bytes image;
        std::string text;
    } cases[] = {
        {"a board", imageOf(3, good), fields},
        {"a wrong checksum", imageOf(3, badSum),
         fields + "!its checksum is wrong (sum FFh)"},
        {"a version to come", imageOf(3, badVersion),
         "!its checksum is wrong (sum 01h)!its format version 02h is not "
         "known"},
        {"no length", imageOf(3, noLength), "!its length is 0"},
        {"an area cut short", imageOf(3, cut),
         "manufacturing date=1996-01-01T01:00:00Z;!it runs past the end"},
        {"between two fields", imageOf(3, cutLater),
         "manufacturing date=1996-01-01T01:00:00Z;manufacturer=maker;!it runs "
         "past the end"},
        {"Unicode", imageOf(4, sound(withFields({1, 1, 8}, unicode))),
         "manufacturer=Gr\u00f6\u00df\u6f22;product name=\U0001f600;part/model "
         "number=\\uD83D\\\\\\u0085;version=odd;"},
        {"a field past the end",
         imageOf(2, sound({1, 1, 0x17, 0xc2, 'a', 'b', 0xff})),
         "type=Rack Mount Chassis;part number=ab;!its field \"serial number\" "
         "runs past its end"},
        {"multi-records", imageOf(5, chain), "800 W"},
        {"with a wrong data checksum", imageOf(5, badData),
         "!the record at 08h has a wrong data checksum800 W"},
        {"with a wrong header checksum", imageOf(5, power),
         "!the record at 08h has a wrong header checksum"},
        {"a record of no length", imageOf(5, Bytes(64)),
         "!the record at 08h has no data"},
        {"internal use", imageOf(1, {1, 2, 3}), ""},
        {"internal use behind the end", imageOf(1, {}),
         "!it runs past the end"},
        {"an empty header", imageOf(7, {}),
         "!its header's checksum is wrong (sum FFh)"},
        {"nothing", {}, "!it has 0 bytes, a header takes 8"},
        {"erased", Bytes(16, 0xff), "!its format version FFh is not known"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(
            toText(decodeFruImage(c.image.data(), unsigned(c.image.size()))),
            c.text);
    }
}

} // namespace
