#include "sim/profile/fru_image.h"

#include <algorithm>
#include <numeric>

#include "sim/model/record.h"

namespace Sim
{
namespace
{

constexpr size_t block = 8, mostArea = block * 0xFF;
constexpr size_t headerSize = 8, recordHeaderSize = 5;
constexpr uint8_t version = 0x01, recordVersion = 0x02, endOfList = 0x80;
constexpr uint8_t endOfFields = 0xC1;
constexpr size_t dateAt = 3;

/// Where the common header has an area's offset.
constexpr size_t internalAt = 1, chassisAt = 2, recordsAt = 5;

uint8_t checksum(const Bytes& bytes)
{
    return uint8_t(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

Bytes slice(const Bytes& bytes, size_t from, size_t to)
{
    return {bytes.begin() + std::ptrdiff_t(from),
            bytes.begin() + std::ptrdiff_t(to)};
}

void appendField(Bytes& bytes, const FruField& field)
{
    bytes.push_back(uint8_t(field.encoding << 6 | field.data.size()));
    append(bytes, field.data);
}

Bytes buildArea(const FruArea& area, FruImage::Area kind, unsigned corrupt)
{
    Bytes bytes{version, 0, area.code};
    if (kind == FruImage::board)
        for (int shift : {0, 8, 16})
            bytes.push_back(uint8_t(area.date >> shift));
    for (size_t i = 0; i < FruImage::fieldCounts[kind]; ++i)
        appendField(bytes,
                    i < area.fields.size() ? area.fields[i] : FruField{});
    for (const FruField& field : area.custom)
        appendField(bytes, field);
    bytes.push_back(endOfFields);
    bytes.resize((bytes.size() / block + 1) * block);
    const bool lies = corrupt & unsigned{FruImage::chassisLength} << kind;
    bytes[1] = uint8_t(lies ? 0xFF : bytes.size() / block);
    bytes.back() = checksum(bytes);
    if (corrupt & unsigned{FruImage::chassisChecksum} << kind)
        ++bytes.back();
    return bytes;
}

Bytes buildRecord(const FruRecord& record, bool last, unsigned corrupt)
{
    Bytes header{record.type, uint8_t(recordVersion | (last ? endOfList : 0)),
                 uint8_t(record.data.size()), checksum(record.data)};
    if (corrupt & FruImage::noLastRecord)
        header[1] = recordVersion;
    if (corrupt & FruImage::recordLength)
        header[2] = 0xFF;
    if (corrupt & FruImage::recordChecksum)
        ++header[3];
    header.push_back(checksum(header));
    if (corrupt & FruImage::recordHeader)
        ++header.back();
    append(header, record.data);
    return header;
}

Bytes buildRecords(const FruImage& image)
{
    Bytes bytes;
    for (const FruRecord& record : image.records) {
        const bool last = &record == &image.records.back();
        append(bytes, buildRecord(record, last, last ? image.corrupt : 0));
    }
    return bytes;
}

Bytes buildInternal(const FruImage& image)
{
    Bytes bytes;
    if (!image.internal.empty())
        bytes.push_back(version);
    append(bytes, image.internal);
    return bytes;
}

/// In the order of their offsets in the common header.
std::vector<Bytes> buildAreas(const FruImage& image)
{
    std::vector<Bytes> areas{buildInternal(image)};
    for (size_t i = 0; i < image.areas.size(); ++i)
        areas.push_back(
            image.areas[i]
                ? buildArea(*image.areas[i], FruImage::Area(i), image.corrupt)
                : Bytes{});
    areas.push_back(buildRecords(image));
    return areas;
}

/// A reader that trusts nothing: what is not as expected ends it.
class Parser
{
public:
    explicit Parser(const Bytes& bytes) : bytes_{bytes} {}

    FruImage parse()
    {
        FruImage image;
        parseInternal(image);
        for (size_t i = 0; i < image.areas.size(); ++i)
            if (const size_t at = offset(chassisAt + i))
                image.areas[i] = parseArea(at, FruImage::Area(i));
        if (const size_t at = offset(recordsAt))
            parseRecords(at, image.records);
        return image;
    }

private:
    uint8_t byte(size_t at) const
    {
        return at < bytes_.size() ? bytes_[at] : uint8_t{0};
    }
    size_t offset(size_t at) const { return byte(at) * block; }
    Bytes piece(size_t from, size_t size) const
    {
        const size_t begin = std::min(from, bytes_.size());
        return slice(bytes_, begin, std::min(begin + size, bytes_.size()));
    }

    /// It reaches to the next area.
    void parseInternal(FruImage& image) const
    {
        const size_t begin = offset(internalAt);
        if (begin == 0)
            return;
        size_t end = bytes_.size();
        for (size_t at = chassisAt; at <= recordsAt; ++at)
            if (offset(at) > begin)
                end = std::min(end, offset(at));
        image.internal = piece(begin + 1, end - std::min(end, begin + 1));
    }

    FruArea parseArea(size_t begin, FruImage::Area kind) const
    {
        FruArea area;
        area.code = byte(begin + 2);
        size_t at = begin + dateAt;
        if (kind == FruImage::board)
            for (int shift : {0, 8, 16})
                area.date |= uint32_t(byte(at++)) << shift;
        const size_t end = begin + byte(begin + 1) * block;
        while (at < end && byte(at) != endOfFields) {
            const size_t size = byte(at) & 0x3F;
            const FruField field{uint8_t(byte(at) >> 6), piece(at + 1, size)};
            const bool named = area.fields.size() < FruImage::fieldCounts[kind];
            (named ? area.fields : area.custom).push_back(field);
            at += 1 + size;
        }
        return area;
    }

    void parseRecords(size_t at, std::vector<FruRecord>& records) const
    {
        while (at + recordHeaderSize <= bytes_.size()) {
            const size_t size = byte(at + 2);
            records.push_back({byte(at), piece(at + recordHeaderSize, size)});
            if (byte(at + 1) & endOfList)
                return;
            at += recordHeaderSize + size;
        }
    }

    const Bytes& bytes_;
};

} // namespace

std::optional<Bytes> buildFru(const FruImage& image)
{
    Bytes bytes{version};
    bytes.resize(headerSize);
    size_t at = internalAt;
    for (const Bytes& area : buildAreas(image)) {
        bytes.resize((bytes.size() + block - 1) / block * block);
        // Records follow each other as long as they like.
        if (bytes.size() > mostArea ||
            (at < recordsAt && area.size() > mostArea))
            return std::nullopt;
        if (!area.empty())
            bytes[at] = uint8_t(bytes.size() / block);
        append(bytes, area);
        ++at;
    }
    bytes[headerSize - 1] = checksum(slice(bytes, 0, headerSize - 1));
    if (image.corrupt & FruImage::headerChecksum)
        ++bytes[headerSize - 1];
    return bytes;
}

std::optional<FruImage> parseFru(const Bytes& bytes)
{
    FruImage image = Parser{bytes}.parse();
    const auto again = buildFru(image);
    return again && *again == bytes ? std::make_optional(std::move(image))
                                    : std::nullopt;
}

} // namespace Sim
