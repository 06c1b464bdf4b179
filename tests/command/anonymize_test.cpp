// What a capture no longer tells when it is anonymous.
#include <gtest/gtest.h>
#include <numeric>

#include "tools/collect/anonymize.h"

namespace Tool
{
namespace
{

// A device with one area behind its common header, of which `more` is wrong
// with its checksum.
Bytes device(size_t headerAt, const Bytes& begin, const std::string& fields,
             uint8_t length, uint8_t more = 0)
{
    Bytes bytes(40);
    bytes[0] = bytes[headerAt] = 1;
    std::copy(begin.begin(), begin.end(), bytes.begin() + 8);
    std::copy(fields.begin(), fields.end(),
              bytes.begin() + 8 + ptrdiff_t(begin.size()));
    bytes[9] = length;
    bytes.back() =
        uint8_t(more - std::accumulate(bytes.begin() + 8, bytes.end() - 1, 0u));
    return bytes;
}

uint8_t sumOf(const Bytes& bytes, size_t from)
{
    return uint8_t(
        std::accumulate(bytes.begin() + ptrdiff_t(from), bytes.end(), 0u));
}

Bytes masked(Bytes bytes)
{
    Capture capture;
    CapturedFru fru;
    fru.bytes = std::move(bytes);
    capture.controller.frus.push_back(fru);
    anonymize(capture);
    return capture.controller.frus[0].bytes;
}

bool holds(const Bytes& bytes, const std::string& text)
{
    return std::string(bytes.begin(), bytes.end()).find(text) !=
           std::string::npos;
}

TEST(Anonymize, fruDevicesInPlace)
{
    const Bytes product = {1, 0, 25}, board = {1, 0, 25, 0, 0, 0};
    const std::string serial = "\xC4SN42", names = "\xC2Ma\xC2Na\xC2Pa";
    const struct
    {
        const char* what;
        Bytes bytes;
        const char* kept;
    } rows[] = {
        {"product", device(4, product, names + "\xC2Va" + serial, 4), "Na"},
        {"board", device(3, board, "\xC2Ma\xC2Na" + serial + "\xC1", 4), "Na"},
        {"custom field",
         device(3, board, "\xC2Ma\xC2Na\xC0\xC0\xC0" + serial + "\xC1", 4),
         "Na"},
        {"wrong checksum",
         device(3, board, "\xC2Ma\xC2Na" + serial + "\xC1", 4, 7), "Na"},
        {"field past the area", device(3, board, "\xC2Ma\xC2Na\xDFSN42", 4),
         "Na"},
        {"area past the device",
         device(3, board, "\xC2Ma\xC2Na" + serial + "\xC1", 255), "Na"},
        {"area without length",
         device(3, board, "\xC2Ma\xC2Na" + serial + "\xC1", 0), "Na"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Bytes after = masked(row.bytes);
        ASSERT_EQ(after.size(), row.bytes.size());
        EXPECT_TRUE(holds(row.bytes, "SN42"));
        EXPECT_FALSE(holds(after, "SN42"));
        EXPECT_TRUE(holds(after, row.kept));
        if (row.bytes[9] == 4) {
            EXPECT_EQ(sumOf(after, 8), sumOf(row.bytes, 8));
        }
    }
}

} // namespace
} // namespace Tool
