#include <gtest/gtest.h>

#include "tools/print/fru.h"

namespace Tool
{
namespace
{

uint8_t minusSum(const Bytes& bytes)
{
    uint8_t sum = 0;
    for (const uint8_t byte : bytes)
        sum = static_cast<uint8_t>(sum - byte);
    return sum;
}

// A device that holds nothing but two records, the second one of one byte.
Bytes imageOf(uint8_t type, const Bytes& data)
{
    Bytes image = {1, 0, 0, 0, 0, 1, 0, 0xFE};
    Bytes header = {type, 0x02, static_cast<uint8_t>(data.size()),
                    minusSum(data)};
    header.push_back(minusSum(header));
    image.insert(image.end(), header.begin(), header.end());
    image.insert(image.end(), data.begin(), data.end());
    for (const int byte : {0xC0, 0x82, 0x01, 0xF8, 0xC5, 0x08})
        image.push_back(static_cast<uint8_t>(byte));
    return image;
}

// What is shown behind the size, without the blanks at the front of lines.
std::string linesOf(const Bytes& image)
{
    const std::string table = toTable(
        "",
        Ipmi::decodeFruImage(image.data(), static_cast<unsigned>(image.size())),
        {});
    std::string lines;
    for (const char c : table.substr(table.find("bytes\n") + 6))
        if (c != ' ' ||
            (!lines.empty() && lines.back() != ' ' && lines.back() != '\n'))
            lines += c;
    return lines;
}

TEST(FruRecords, areShownAsFarAsTheyGo)
{
    Bytes power(25); // One byte longer than its type.
    power[17] = 0x05;
    power[20] = 0x12; // Two voltages that share no wattage.
    power[23] = 30;
    const Bytes output = {0x91, 0x50, 0xFB, 0,    0, 0, 0,
                          50,   0,    0xFF, 0xFF, 2, 0};
    const struct
    {
        uint8_t type;
        Bytes data;
        std::string lines;
    } cases[] = {
        {0, power,
         "power supply (00h), 25 bytes at 08h\nCapacity 0 W\nPeak VA 0 "
         "VA\nInrush current 0 A\nInrush interval 0 ms\nInput range 1 low 0 "
         "V\nInput range 1 high 0 V\nInput range 2 low 0 V\nInput range 2 high "
         "0 V\nFrequency low 0 Hz\nFrequency high 0 Hz\nAC dropout time 0 "
         "ms\nHot swap no\nPower factor corr. no\nPredictive fail yes\nFail "
         "signal One pulse per rotation\nPeak capacity 0 W\nHeld for 0 "
         "s\nCombined wattage 0 W\nAuto-switch yes\nFails below 30 "
         "rotations/s\nBytes 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
         "00 05 00 00 12 00 00 1e 00\n"},
        {0, {1}, "power supply (00h), 1 byte at 08h\nBytes 01\n"},
        {1, output,
         "DC output (01h), 13 bytes at 08h\nOutput 1\nOn standby yes\nNominal "
         "voltage -12 V\nNegative deviation 0 V\nPositive deviation 0 "
         "V\nRipple and noise 50 mV\nMinimum current 65.535 A\nMaximum current "
         "0.002 A\n"},
        {9, output,
         "extended DC output (09h), 13 bytes at 08h\nOutput 1\nOn standby "
         "yes\nNominal voltage -12 V\nNegative deviation 0 V\nPositive "
         "deviation 0 V\nRipple and noise 50 mV\nMinimum current 6553.5 "
         "A\nMaximum current 0.2 A\n"},
        {10,
         {1, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 8, 0},
         "extended DC load (0Ah), 13 bytes at 08h\nOutput 1\nNominal voltage 0 "
         "V\nMinimum voltage 0 V\nMaximum voltage 0 V\nRipple and noise 0 "
         "mV\nMinimum current 0.07 A\nMaximum current 0.08 A\n"},
        {2, {5}, "DC load (02h), 1 byte at 08h\nOutput 5\n"},
        {3,
         {0x01, 'a'},
         "management access (03h), 2 bytes at 08h\nSystem URL a\n"},
        {3, {0x02}, "management access (03h), 1 byte at 08h\nSystem name -\n"},
        {3,
         {0x06, '\\', 1},
         "management access (03h), 3 bytes at 08h\nComponent ping addr "
         "\\\\\\x01\n"},
        {3,
         {0x07, 0xDE, 0xAD},
         "management access (03h), 3 bytes at 08h\nSystem unique ID dead\n"},
        {3,
         {0x08, 'a'},
         "management access (03h), 2 bytes at 08h\nBytes 08 61\n"},
        {4,
         {1, 0, 0, 7, 9, 0x81, 0xF0},
         "base compatibility (04h), 7 bytes at 08h\nManufacturer ID 1\nEntity "
         "ID 7\nCompatibility base 9\nCode start 1\nCode mask f0\n"},
        {5,
         {1, 0, 0, 7, 9},
         "extended compatibility (05h), 5 bytes at 08h\nBytes 01 00 00 07 "
         "09\n"},
        {6, {1}, "ASF fixed SMBus device (06h), 1 byte at 08h\nBytes 01\n"},
        {0xC0, {1, 2}, "OEM (C0h), 2 bytes at 08h\nBytes 01 02\n"},
    };
    for (const auto& c : cases) {
        const std::string lines = linesOf(imageOf(c.type, c.data));
        const size_t end = lines.find("Multi-record 2 OEM (C0h), 1 byte at ");
        ASSERT_NE(end, std::string::npos) << lines;
        EXPECT_EQ(lines.substr(0, end), "Multi-record 1 " + c.lines);
    }
}

TEST(FruRecords, endWhereTheImageEnds)
{
    const Bytes image = imageOf(0xC0, {1, 2, 3});
    for (size_t size = 8; size < image.size(); ++size) {
        const std::string lines = linesOf({image.data(), image.data() + size});
        EXPECT_EQ(lines.find("Multi-record 1") == 0, size >= 16) << lines;
        EXPECT_EQ(lines.find("Multi-record 2"), std::string::npos) << lines;
        EXPECT_NE(lines.find("Records' problem"), std::string::npos) << lines;
    }
}

} // namespace
} // namespace Tool
