#include "sim/model/fru.h"

#include <algorithm>
#include <ctime>
#include <set>

#include "sim/profile/describe.h"
#include "sim/profile/field_reader.h"
#include "sim/profile/fru_image.h"
#include "sim/profile/fru_record.h"

namespace Sim
{
namespace
{

constexpr auto decimal = Fields::Base::Decimal;
constexpr auto hexadecimal = Fields::Base::Hexadecimal;

// Platform Management FRU Information Storage Definition v1.0, 13.
constexpr uint8_t binary = 0, eightBit = uint8_t(IdEncoding::EightBit);
constexpr size_t longestField = 63;
constexpr Word encodings[] = {
    {"binary", binary}, {"bcd-plus", 1}, {"6-bit", 2}, {"8-bit", eightBit}};

std::optional<Bytes> encodeField(const std::string& text, uint8_t encoding)
{
    if (encoding == binary)
        return std::nullopt;
    auto bytes = encodeText(text, IdEncoding(encoding));
    return bytes && bytes->size() <= longestField ? bytes : std::nullopt;
}

std::string textOf(const FruField& field)
{
    if (field.encoding == binary)
        return {};
    const auto encoding = IdEncoding(field.encoding);
    const size_t size = field.data.size();
    // Bits that are left over are no character.
    return decodeText(field.data, encoding,
                      encoding == IdEncoding::SixBit ? size * 4 / 3 : size * 2);
}

/// Whether a text says it all, and as people would write it.
bool isText(const FruField& field)
{
    const std::string text = textOf(field);
    return encodeField(text, field.encoding) == field.data &&
           std::none_of(text.begin(), text.end(),
                        [](char c) { return uint8_t(c) < ' '; });
}

void describeText(Fields& io, FruField& field)
{
    const uint8_t encoding = field.encoding;
    std::string text = textOf(field);
    io.text("text", text, [encoding](const std::string& value) {
        return encodeField(value, encoding)
                   ? ""
                   : "more than 63 bytes, or characters that the encoding "
                     "lacks";
    });
    if (io.reads())
        field.data = encodeField(text, encoding).value_or(Bytes{});
}

void describe(Fields& io, FruField& field)
{
    if (io.reads() || field.encoding != eightBit)
        io.choice("encoding", field.encoding, encodings);
    if (io.reads() ? io.has("data") : !isText(field))
        io.bytes("data", field.data, 0, longestField);
    else
        describeText(io, field);
    if (field.encoding == eightBit && field.data.size() == 1)
        io.refuse("text", "one 8-bit character alone reads as the last field");
}

constexpr char dateFormat[] = "%Y-%m-%dT%H:%M";
constexpr time_t dateEpoch = 820454400; // 1996

std::string formatDate(uint32_t minutes)
{
    const time_t seconds = dateEpoch + time_t(minutes) * 60;
    struct tm parts = {};
    char text[32] = "";
    if (gmtime_r(&seconds, &parts))
        std::strftime(text, sizeof text, dateFormat, &parts);
    return text;
}

std::optional<uint32_t> parseDate(const std::string& text)
{
    constexpr time_t most = 0xFFFFFF;
    struct tm parts = {};
    if (!strptime(text.c_str(), dateFormat, &parts))
        return std::nullopt;
    const time_t minutes = (timegm(&parts) - dateEpoch) / 60;
    if (minutes < 0 || minutes > most || formatDate(uint32_t(minutes)) != text)
        return std::nullopt;
    return uint32_t(minutes);
}

void describeDate(Fields& io, uint32_t& minutes)
{
    std::optional<std::string> text;
    if (minutes != 0)
        text = formatDate(minutes);
    io.text("date", text, [](const std::string& value) {
        return parseDate(value) ? ""
                                : "expected a time from \"1996-01-01T00:00\" "
                                  "to \"2027-11-24T20:15\"";
    });
    if (text)
        minutes = parseDate(*text).value_or(minutes);
}

// SMBIOS 3.6, 7.4.1.
constexpr Word chassisTypes[] = {
    {"unspecified", 0x00},     {"other", 0x01},        {"unknown", 0x02},
    {"desktop", 0x03},         {"tower", 0x07},        {"main-server", 0x11},
    {"expansion", 0x12},       {"peripheral", 0x15},   {"raid", 0x16},
    {"rack-mount", 0x17},      {"multi-system", 0x19}, {"blade", 0x1C},
    {"blade-enclosure", 0x1D},
};

template <size_t count>
void describeFields(Fields& io, FruArea& area, const char* const (&keys)[count])
{
    area.fields.resize(count);
    for (size_t i = 0; i < count; ++i)
        if (io.reads() || !area.fields[i].isEmpty())
            io.object(keys[i], area.fields[i], describe, "text");
    io.list("custom", area.custom, describe, "text");
}

void describeChassis(Fields& io, FruArea& area)
{
    uint32_t type = area.code;
    io.code("type", type, 0xFF, chassisTypes);
    area.code = uint8_t(type);
    describeFields(io, area, {"partNumber", "serialNumber"});
}

void describeBoard(Fields& io, FruArea& area)
{
    io.number("language", area.code, decimal);
    describeDate(io, area.date);
    describeFields(
        io, area,
        {"manufacturer", "name", "serialNumber", "partNumber", "file"});
}

void describeProduct(Fields& io, FruArea& area)
{
    io.number("language", area.code, decimal);
    describeFields(io, area,
                   {"manufacturer", "name", "partNumber", "version",
                    "serialNumber", "assetTag", "file"});
}

constexpr Word corruptions[] = {
    {"header-checksum", FruImage::headerChecksum},
    {"chassis-checksum", FruImage::chassisChecksum},
    {"board-checksum", FruImage::chassisChecksum << FruImage::board},
    {"product-checksum", FruImage::chassisChecksum << FruImage::product},
    {"chassis-length", FruImage::chassisLength},
    {"board-length", FruImage::chassisLength << FruImage::board},
    {"product-length", FruImage::chassisLength << FruImage::product},
    {"record-checksum", FruImage::recordChecksum},
    {"record-header", FruImage::recordHeader},
    {"record-length", FruImage::recordLength},
    {"no-last-record", FruImage::noLastRecord},
};

void describe(Fields& io, FruImage& image)
{
    constexpr size_t longestInternal = 2039;
    if (io.reads() || !image.internal.empty())
        io.bytes("internal", image.internal, 1, longestInternal);
    io.object("chassis", image.areas[FruImage::chassis], describeChassis);
    io.object("board", image.areas[FruImage::board], describeBoard);
    io.object("product", image.areas[FruImage::product], describeProduct);
    io.list("multi", image.records, Sim::describe);
    if (io.reads())
        io.bits("corrupt", image.corrupt, corruptions);
}

void describeContents(Fields& io, FruDevice& fru)
{
    constexpr size_t most = 0xFFFF;
    std::optional<FruImage> image;
    if (!io.reads())
        image = parseFru(fru.contents);
    else if (!io.has("raw"))
        image.emplace();
    if (!image) {
        io.bytes("raw", fru.contents, 0, most);
        return;
    }
    describe(io, *image);
    const auto contents = buildFru(*image);
    if (!contents || contents->size() > most)
        io.refuse("device", "its areas are too long");
    else
        fru.contents = *contents;
}

void describe(Fields& io, FruRange& range)
{
    io.require("offset");
    io.require("count");
    io.number("offset", range.offset, decimal);
    io.number("count", range.count, decimal);
}

constexpr Word accesses[] = {{"byte", 0}, {"word", 1}};

void describe(Fields& io, FruDevice& fru)
{
    uint8_t words = fru.words;
    io.require("device");
    io.number("device", fru.device, decimal);
    io.number("lun", fru.lun, decimal, 3);
    io.choice("access", words, accesses);
    io.flag("byteOffsets", fru.byteOffsets);
    io.number("size", fru.size, decimal);
    io.number("readLimit", fru.readLimit, decimal);
    io.number("limitCode", fru.limitCode, hexadecimal);
    io.flag("busy", fru.busy);
    io.number("writeSeconds", fru.writeSeconds, decimal);
    io.list("protected", fru.writeProtected, describe);
    describeContents(io, fru);
    fru.words = words;
    if (io.reads() && !io.has("size"))
        fru.size = uint16_t(fru.contents.size());
}

} // namespace

void describeFrus(Fields& io, std::vector<FruDevice>& frus)
{
    io.list("frus", frus, describe);
    std::set<std::pair<uint8_t, uint8_t>> seen;
    for (const FruDevice& fru : frus)
        if (!seen.insert({fru.lun, fru.device}).second)
            io.refuse("frus", "device " + std::to_string(fru.device) +
                                  " of LUN " + std::to_string(fru.lun) +
                                  " stands twice");
}

FruDevice makeFruDevice(const std::string& text)
{
    FruDevice fru;
    const bool isJson = !text.empty() && text[0] == '{';
    readObject(isJson ? text : R"({"device": 0, "raw": ")" + text + "\"}",
               [&](Fields& io) { describe(io, fru); });
    return fru;
}

} // namespace Sim
