#include "ipmi/IpmiFruImage.h"

#include <algorithm>

#include "ipmi/IpmiFruRecord.h"
#include "ipmi/IpmiText.h"

namespace Ipmi
{

namespace
{

constexpr unsigned unit = 8; ///< Offsets and lengths count in so many bytes.
constexpr unsigned headerSize = 8;
constexpr uint8_t knownVersion = 1;

uint8_t sumOf(RecordView bytes)
{
    uint8_t sum = 0;
    for (size_t i = 0; i < bytes.size(); ++i)
        sum = uint8_t(sum + bytes.u8(i));
    return sum;
}

/// How the fields of an area are laid out (10. to 12.).
struct Layout
{
    static constexpr size_t most = 7;

    IpmiFruArea::Kind kind;
    unsigned languageAt; ///< 0: it has none.
    unsigned fieldsAt;
    size_t named;
    const char* names[most];
};

const Layout* layoutOf(IpmiFruArea::Kind kind)
{
    static constexpr Layout layouts[] = {
        {IpmiFruArea::CHASSIS, 0, 3, 2, {"part number", "serial number"}},
        {IpmiFruArea::BOARD,
         2,
         6,
         5,
         {"manufacturer", "product name", "serial number", "part number",
          "FRU file id"}},
        {IpmiFruArea::PRODUCT,
         2,
         3,
         Layout::most,
         {"manufacturer", "product name", "part/model number", "version",
          "serial number", "asset tag", "FRU file id"}},
    };
    for (const Layout& layout : layouts)
        if (layout.kind == kind)
            return &layout;
    return nullptr;
}

// 8-bit text is UTF-16 in languages other than English (13.), which an odd
// number of bytes cannot be.
std::string decodeText(RecordView bytes, bool english)
{
    const bool isWide = !english && bytes.size() % 2 == 0;
    return isWide ? decodeUtf16(bytes) : decodeLatin1(bytes, true);
}

IpmiFruField fieldOf(const std::string& name, uint8_t typeLength,
                     RecordView bytes, bool english)
{
    enum Type
    {
        binary = 0,
        bcdPlus = 1,
        sixBit = 2
    };
    switch (typeLength >> 6) {
    case binary:
        return {name, hexBytes(bytes), true};
    case bcdPlus:
        return {name, trimmed(decodeBcdPlus(bytes)), false};
    case sixBit:
        return {name, withDoubledBackslashes(trimmed(decodePacked(bytes))),
                false};
    default:
        return {name, trimmed(decodeText(bytes, english)), false};
    }
}

void addOwnFields(IpmiFruArea& area)
{
    const auto size = unsigned(area.bytes.size());
    if (area.kind == IpmiFruArea::CHASSIS)
        area.fields.push_back(
            {"type", IpmiFruChassis{size, area.bytes.data()}.getType(), false});
    constexpr size_t dateAt = 3, dateSize = 3;
    const RecordView bytes{area.bytes.data(), area.bytes.size()};
    if (area.kind != IpmiFruArea::BOARD || !bytes.has(dateAt, dateSize))
        return;
    const bool given = bytes.u16(dateAt) || bytes.u8(dateAt + 2);
    area.fields.push_back(
        {"manufacturing date",
         given
             ? IpmiFruBoard{size, area.bytes.data()}.getMfgDateTime8601() + "Z"
             : "",
         false});
}

// The last byte of a whole area is the checksum, which no field may take; of
// another one the fields that are there are shown.
void addFields(IpmiFruArea& area, const Layout& layout, bool isWhole)
{
    constexpr uint8_t english = 25;
    const RecordView bytes =
        RecordView{area.bytes.data(), area.bytes.size()}.part(
            0, area.bytes.size() - (isWhole ? 1 : 0));
    const uint8_t language =
        layout.languageAt ? bytes.u8(layout.languageAt) : uint8_t{0};
    size_t at = layout.fieldsAt;
    for (size_t number = 0; bytes.u8(at) != fruEndMark; ++number) {
        const size_t named = layout.named;
        const std::string name =
            number < named ? layout.names[number]
                           : "custom " + std::to_string(number - named + 1);
        const uint8_t typeLength = bytes.u8(at);
        const size_t length = typeLength & 0x3f;
        if (!bytes.has(at) || !bytes.has(at + 1, length)) {
            if (!isWhole)
                return;
            area.problems.push_back(bytes.has(at) ? "its field \"" + name +
                                                        "\" runs past its end"
                                                  : "it has no end mark");
            return;
        }
        area.fields.push_back(fieldOf(name, typeLength,
                                      bytes.part(at + 1, length),
                                      language == 0 || language == english));
        at += 1 + length;
    }
}

std::string cannotBeRead(int result)
{
    if (result == fruRunsPastEnd)
        return "it runs past the end";
    return "it cannot be read (" +
           (result < 0 ? std::string{"no usable answer"}
                       : hexText(unsigned(result))) +
           ")";
}

// As many bytes as there are. A controller that says "out of range" of bytes
// that it says are there has failed; of others it is right.
int readPart(FruSource& source, unsigned offset, unsigned& count, uint8_t* out)
{
    constexpr int outOfRange = 0xc9;
    const unsigned wanted = count, size = source.size();
    const int result = source.read(offset, count, out);
    const bool isInside = offset <= size && wanted <= size - offset;
    return result == outOfRange && !isInside ? fruRunsPastEnd : result;
}

// Whether all of the bytes are there.
bool readBytes(FruSource& source, IpmiFruArea& area, unsigned size)
{
    area.bytes.resize(size);
    unsigned count = size;
    const int result = readPart(source, area.offset, count, area.bytes.data());
    area.bytes.resize(std::min(count, size));
    area.result = result;
    if (result != 0)
        area.problems.push_back(cannotBeRead(result));
    return result == 0;
}

void readInfoArea(FruSource& source, IpmiFruArea& area, const Layout& layout)
{
    if (!readBytes(source, area, 2))
        return;
    const uint8_t version = area.bytes[0] & 0x0f;
    const unsigned size = area.bytes[1] * unit;
    if (size == 0) {
        area.problems.push_back("its length is 0");
        return;
    }
    const bool isWhole = readBytes(source, area, size);
    if (area.bytes.size() < layout.fieldsAt)
        return;
    const uint8_t sum = sumOf({area.bytes.data(), area.bytes.size()});
    if (isWhole && sum != 0)
        area.problems.push_back("its checksum is wrong (sum " + hexText(sum) +
                                ")");
    if (version != knownVersion) {
        area.problems.push_back("its format version " + hexText(area.bytes[0]) +
                                " is not known");
        return;
    }
    addOwnFields(area);
    addFields(area, layout, isWhole);
}

// Nothing in it says how long it is: up to the next area, or to the end.
void readInternalArea(FruSource& source, IpmiFruArea& area, unsigned end)
{
    if (end > area.offset) {
        readBytes(source, area, end - area.offset);
        return;
    }
    area.result = fruRunsPastEnd;
    area.problems.push_back(cannotBeRead(area.result));
}

// Record by record; what has been read is kept.
void readChain(FruSource& source, IpmiFruArea& area)
{
    for (;;) {
        IpmiFruArea record{};
        record.offset = area.offset + unsigned(area.bytes.size());
        const auto giveUp = [&](const std::string& problem) {
            area.result = record.result;
            area.problems.push_back(problem);
        };
        const std::string where = "the record at " + hexText(record.offset);
        if (record.offset >= source.size())
            return giveUp("it has no last record");
        if (!readBytes(source, record, fruRecordHeaderSize))
            return giveUp(where + ": " + record.problems.back());
        const RecordView head{record.bytes.data(), record.bytes.size()};
        const FruRecordHeader header{head};
        if (sumOf(head) != 0)
            return giveUp(where + " has a wrong header checksum");
        if (header.dataSize() == 0)
            return giveUp(where + " has no data");
        const bool isLast = header.isLast();
        const unsigned dataSize = header.dataSize();
        const uint8_t checksum = header.dataChecksum();
        if (!readBytes(source, record, fruRecordHeaderSize + dataSize))
            return giveUp(where + ": " + record.problems.back());
        const RecordView bytes{record.bytes.data(), record.bytes.size()};
        if (uint8_t(sumOf(bytes.part(fruRecordHeaderSize, dataSize)) +
                    checksum) != 0)
            area.problems.push_back(where + " has a wrong data checksum");
        area.bytes.insert(area.bytes.end(), record.bytes.begin(),
                          record.bytes.end());
        if (isLast)
            return;
    }
}

void readMultiArea(FruSource& source, IpmiFruArea& area)
{
    readChain(source, area);
    if (!area.bytes.empty())
        area.multi = std::make_shared<IpmiFruMulti>(unsigned(area.bytes.size()),
                                                    area.bytes.data());
}

/// Which byte of the common header is whose offset (8.).
struct HeaderByte
{
    unsigned at;
    IpmiFruArea::Kind kind;
};
constexpr HeaderByte headerBytes[] = {
    {1, IpmiFruArea::INTERNAL}, {2, IpmiFruArea::CHASSIS},
    {3, IpmiFruArea::BOARD},    {4, IpmiFruArea::PRODUCT},
    {5, IpmiFruArea::MULTI},
};

// Of the area behind it, or of the device.
unsigned endOf(RecordView header, unsigned offset, unsigned size)
{
    unsigned end = size;
    for (const HeaderByte& byte : headerBytes) {
        const unsigned other = header.u8(byte.at) * unit;
        if (other > offset)
            end = std::min(end, other);
    }
    return end;
}

class BytesSource : public FruSource
{
public:
    BytesSource(const uint8_t* bytes, size_t size) : bytes_{bytes, size} {}

    unsigned size() const override { return unsigned(bytes_.size()); }
    int read(unsigned offset, unsigned& count, uint8_t* out) override
    {
        constexpr int outOfRange = 0xc9;
        const RecordView part = bytes_.part(offset, count);
        part.copyTo(out, 0, part.size());
        const bool whole = part.size() == count;
        count = unsigned(part.size());
        return whole ? 0 : outOfRange;
    }

private:
    RecordView bytes_;
};

} // namespace

void decodeFru(FruSource& source, IpmiFruContents& contents)
{
    uint8_t bytes[headerSize] = {};
    unsigned count = sizeof bytes;
    const int result = readPart(source, 0, count, bytes);
    contents.headerResult = result;
    if (result != 0) {
        contents.problems.push_back(
            result == fruRunsPastEnd
                ? "it has " + std::to_string(source.size()) +
                      " bytes, a header takes 8"
                : "its header: " + cannotBeRead(result));
        return;
    }
    const RecordView header{bytes, sizeof bytes};
    contents.version = header.u8(0);
    if ((header.u8(0) & 0x0f) != knownVersion) {
        contents.problems.push_back("its format version " +
                                    hexText(header.u8(0)) + " is not known");
        return;
    }
    if (const uint8_t sum = sumOf(header))
        contents.problems.push_back("its header's checksum is wrong (sum " +
                                    hexText(sum) + ")");
    for (const HeaderByte& byte : headerBytes) {
        IpmiFruArea area{};
        area.kind = byte.kind;
        area.offset = header.u8(byte.at) * unit;
        if (area.offset == 0)
            continue;
        if (area.kind == IpmiFruArea::INTERNAL)
            readInternalArea(source, area,
                             endOf(header, area.offset, source.size()));
        else if (area.kind == IpmiFruArea::MULTI)
            readMultiArea(source, area);
        else
            readInfoArea(source, area, *layoutOf(area.kind));
        contents.areas.push_back(std::move(area));
    }
}

IpmiFruContents decodeFruImage(const unsigned char* bytes, unsigned size)
{
    IpmiFruContents contents;
    contents.size = size;
    BytesSource source{bytes, size};
    decodeFru(source, contents);
    return contents;
}

} // namespace Ipmi
