// vek-ipmi fru
#include <gtest/gtest.h>

#include "tests/command/program.h"

namespace Tool
{
namespace
{

TEST(Fru, isShownDeviceByDevice)
{
    check({
        {"all", "$sim -- $tool fru", 0, "@fru.txt", ""},
        {"a line each", "$sim -- $tool fru --short", 0, "@fru-short.txt", ""},
        {"as JSON", "$sim -- $tool fru psu2 --json", 0, "@fru.json", ""},
        {"what is not as usual, as JSON",
         "$sim -- $tool fru --json | sed -n '/\"deviceId\": [6-9]/,/\"areas/p;"
         "/\"deviceId\": 10/,$p'",
         0, "@fru-more.json", ""},
        {"each device is read once, and no sensor",
         "$sim --count -- $tool fru 2>&1 >/dev/null | grep -cE "
         "'(get-fru-inventory-area-info +12|reserve-sdr-repository +1)$|"
         "get-sensor'",
         0, "2\n", ""},
        {"one alone, without the records",
         "$sim --count -- $tool fru 4 --no-names 2>&1 | sed -n '1,3p;/sdr/p'",
         0,
         "FRU device 4\n  Size                  128 bytes\n"
         "  Board date            2023-01-20T00:00:00Z\n",
         ""},
    });
}

TEST(Fru, isChosenByNumberOrName)
{
    const struct
    {
        const char *device, *head;
    } cases[] = {
        {"3", "Chassis (FRU device 3)"},
        {"0x0a", "Front Panel (FRU device 10)"},
        {"'riser 1'", "Riser 1 (FRU device 4)"},
        {"0@0x72", "Backplane (FRU device 0 of 72h on channel 6)"},
        {"0@0x72/6", "Backplane (FRU device 0 of 72h on channel 6)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(
            shell(std::string{"$sim -- $tool fru "} + c.device + " | head -n 1")
                .out,
            std::string{c.head} + "\n");
    check({
        {"none", "$sim -- $tool fru psu", 1, "",
         "no FRU device 'psu'.*\n  0  Baseboard\n.*\n  0@0x72/6  Backplane"},
        {"another channel's", "$sim -- $tool fru 0@0x72/5", 1, "",
         "no FRU device '0@0x72/5'"},
        {"no such number", "$sim -- $tool fru 77", 3, "",
         "device 77 is not there: CBh.*\n  List"},
        {"no names for a name", "$sim -- $tool fru psu1 --no-names", 1, "",
         "goes with the number"},
    });
}

// Twins, one of them physical; all kinds of faults in what devices hold.
constexpr char profile[] = R"sh(
echo '{"identity": {"manufacturer": 0}, "repository": {"records": [
 {"type": "fru-locator", "fru": 0, "entity": "power-supply", "name": "TWIN"},
 {"type": "fru-locator", "fru": 3, "entity": "power-supply", "name": "TWIN"},
 {"type": "fru-locator", "fru": 1, "entity": "system-board", "name": "ODD"},
 {"type": "fru-locator", "fru": 2, "entity": "disk", "name": "WORD"},
 {"type": "fru-locator", "logicalFru": false, "fru": 160, "name": "EEPROM"},
 {"type": "fru-locator", "fru": 4, "entity": "disk", "name": "EMPTY"}]},
 "frus": [
 {"device": 0, "size": 256, "corrupt": ["header-checksum", "record-checksum"],
  "board": {"name": {"encoding": "binary", "data": "00 11 22 33 44 55 66 77"}},
  "multi": [{"type": "power-supply", "inrushCurrent": 255},
            {"type": "0x0b", "data": "01 02"}]},
 {"device": 1, "size": 64, "corrupt": ["chassis-length"],
  "chassis": {"type": "rack-mount"}, "product": {"name": "still there"}},
 {"device": 2, "access": "word", "size": 32, "board": {"name": "a b"}},
 {"device": 3, "raw": "ff ff ff ff ff ff ff ff"},
 {"device": 4, "raw": "01 00 00 00 00 00 00 ff"}]}' >p.json
)sh";

constexpr char moreProfile[] = R"sh(
echo '{"identity": {"manufacturer": 0}, "repository": {"records": [
 {"type": "fru-locator", "fru": 5, "name": "A", "accessAddress": 114,
  "channel": 6},
 {"type": "fru-locator", "fru": 5, "name": "A", "accessAddress": 114,
  "channel": 7, "lun": 1},
 {"type": "fru-locator", "fru": 5, "name": "SPD", "deviceType": 16,
  "deviceModifier": 1}]},
 "frus": [{"device": 5, "raw": "11 08 0b 03 03 03 03 03 03 03 03 03"}]}' >p.json
)sh";

TEST(Fru, withFaultsIsShownAndToldSo)
{
    const std::string channels =
        std::string{moreProfile} + "$sim --profile p.json -- $tool fru ";
    const std::string faults = std::string{profile} +
                               "$sim --profile p.json -- $tool fru",
                      twins = faults + " twin";
    checkInFolder({
        {"what devices hold", faults.c_str(), 4, "@fru-faults.txt",
         "'WORD' .* may be misread: it is accessed by words"},
        {"twins on two channels", (channels + "5@0x72").c_str(), 1, "",
         "fits 2 FRU devices.*\n  5@0x72/6  A\n  5@0x72/7.1  A"},
        {"one of them", (channels + "5@0x72/7.1").c_str(), 4, "",
         "FRU device 5 of 72h on channel 7, LUN 1 was not read"},
        {"a memory module whose first byte looks like a FRU's",
         (channels + "5 --short | tail -n 1").c_str(), 0,
         "5       SPD   Unspecified 1                                       "
         "SPD\n",
         ""},
        {"twins", twins.c_str(), 1, "",
         "fits 2 FRU devices.*\n  0  TWIN\n  3  TWIN"},
        {"a part is not read, the others are",
         "$sim --fault cmd=read-fru-data,data=00:08,cc=c0 -- $tool fru 0 >a; "
         "s=$?; sed -n '4,5p' a; exit $s",
         4,
         "  Chassis problem       it cannot be read (C0h)\n"
         "  Board date            2023-03-01T08:15:00Z\n",
         "'Baseboard' .* to the end: C0h: node busy"},
        {"out of range, of bytes that are there",
         "$sim --fault cmd=read-fru-data,data=00:08,cc=c9 -- $tool fru 0 "
         "--json "
         ">a; s=$?; grep -A1 -E '\"complete|problems\": .$' a; exit $s",
         4,
         "      \"complete\": false,\n      \"contents\": \"fru\",\n--\n"
         "          \"problems\": [\n            \"it cannot be read (C9h)\"\n",
         "to the end: C9h"},
        {"busy from the start on",
         "$sim --fault cmd=read-fru-data,cc=81 -- $tool fru 0 --json >a; s=$?; "
         "grep -E '\"complete\"|\"contents' a; exit $s",
         4, "      \"complete\": false,\n      \"contents\": null,\n",
         "to the end: 81h: .*busy"},
        {"no device 0, and no record",
         "$sim --fault netfn=0a,cmd=20,cc=c1 --fault "
         "cmd=get-fru-inventory-area-info,cc=cb -- $tool fru",
         0,
         "FRU device 0\n  Contents              none: not present (CBh)\n\n"
         "1 FRU device, 1 not present\n",
         "no sensor data repository"},
        {"a device does not answer, the others do",
         "$sim --fault cmd=get-fru-inventory-area-info,data=01,cc=c3 -- "
         "$tool fru >a; s=$?; sed -n '/^PSU1/,/^PSU2/p;$p' a; exit $s",
         4,
         "PSU1 (FRU device 1)\n  Entity                Power Supply 1\n"
         "  Contents              not read: C3h: timeout while processing the "
         "command, no answer available\n\nPSU2 (FRU device 2)\n"
         "12 FRU devices, 2 not present, 1 not read to the end\n",
         "'PSU1' .* was not read: C3h"},
        {"without a repository",
         "$sim --fault netfn=0a,cmd=20,cc=c1 -- $tool fru | tail -n 1", 0,
         "1 FRU device\n", "no sensor data repository"},
        {"records that cannot be read",
         "$sim --fault netfn=0a,cmd=20,cc=c0 -- $tool fru psu1", 4, "",
         "not read: C0h.*no FRU device 'psu1' among the records"},
        {"no FRU commands", "$sim --profile minimal -- $tool fru", 3, "",
         "FRU device 0 was not read: C1h.*\n  This controller lacks"},
    });
}

TEST(Fru, thatIsSavedReadsTheSame)
{
    const std::string word =
        std::string{profile} + "$sim --profile p.json -- $tool fru save word F";
    checkInFolder({
        {"as text, and as ipmitool saves it",
         "$sim -- $tool fru save psu2 F; $sim -- ipmitool fru read 2 G >a; cmp "
         "F G; $sim -- $tool fru psu2 | tail -n +3 >a; "
         "$tool fru decode F | tail -n +2 | cmp a -",
         0, "256 bytes of 'PSU2' (FRU device 2) in F\n", ""},
        {"as JSON",
         "$sim -- $tool fru save 4 F --json >a; $tool fru decode F --json", 0,
         "@fru-image.json", ""},
        {"another controller's, to a pipe",
         "$sim -- $tool fru save backplane /dev/stdout | wc -c", 0, "256\n",
         ""},
        {"not to the end",
         "echo old >F; $sim --fault cmd=read-fru-data,data=01:2?,cc=d5 -- "
         "$tool fru save 1 F --no-names; s=$?; cat F; wc -c <F.partial; "
         "$tool fru decode F.partial | tail -n 2; exit $s",
         4,
         "32 bytes of FRU device 1 in F.partial\nold\n32\n"
         "  Board problem         it runs past the end\n"
         "  Records' problem      it has no last record\n",
         "not read to the end: D5h"},
        {"no device", "$sim -- $tool fru save '' F; s=$?; ls; exit $s", 1, "",
         "DEVICE: must not be empty"},
        {"not present", "$sim -- $tool fru save 7 F; s=$?; ls; exit $s", 3, "",
         "'DIMM C1' .* not saved: CBh"},
        {"by words", word.c_str(), 4, "", "accessed by words"},
        {"nothing but a header",
         "$sim -- $tool fru save 4 F >a; head -c 8 F >G; $tool fru decode G", 4,
         "G\n  Size                  8 bytes\n"
         "  Board problem         it runs past the end\n",
         "none of the areas in G"},
        {"no image", "$tool fru decode /etc/passwd", 4, "",
         "no FRU image: its format version 72h"},
        {"no file", "$tool fru decode F", 4, "", "cannot read F: No such"},
    });
}

} // namespace
} // namespace Tool
