#include <vek-ipmi/IpmiFruOptional.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <new>
#include <syslog.h>

#include "ipmi/IpmiFruRecord.h"

namespace Ipmi
{

namespace
{

constexpr unsigned fieldSize(uint8_t typeLength)
{
    return typeLength & 0x3f;
}

// 13.2: four characters in three bytes. One more is reserved, which stays 0:
// callers know it as a blank.
std::string sixBitText(RecordView data)
{
    const size_t length = data.size() * 4 / 3;
    std::unique_ptr<char[]> text{new (std::nothrow) char[length + 1]()};
    if (!text) {
        syslog(LOG_ERR,
               "IpmiFruOptional::getFruAreaString could not allocate buffer of "
               "length %d",
               int(length + 1));
        return "";
    }
    for (size_t i = 0; i < length; ++i) {
        const size_t at = i / 4 * 3;
        const uint32_t word = data.u8(at) | uint32_t{data.u8(at + 1)} << 8 |
                              uint32_t{data.u8(at + 2)} << 16;
        text[i] = char((word >> (i % 4 * 6) & 0x3f) + ' ');
    }
    return {text.get(), length + 1};
}

} // namespace

IpmiFruOptional::IpmiFruOptional(unsigned size, const unsigned char* bytes)
{
    set(size, bytes);
}

IpmiFruOptional::IpmiFruOptional(const IpmiFruOptional& other)
{
    set(unsigned(other.size_), other.bytes());
}

IpmiFruOptional& IpmiFruOptional::operator=(const IpmiFruOptional& other)
{
    set(unsigned(other.size_), other.bytes());
    return *this;
}

void IpmiFruOptional::set(unsigned size, const unsigned char* bytes)
{
    // First: the bytes may be its own.
    auto copy = std::make_unique<unsigned char[]>(size);
    std::copy_n(bytes, size, copy.get());
    data_ = std::move(copy);
    size_ = int32_t(size);
}

std::string IpmiFruOptional::getFruAreaString(unsigned offset) const
{
    enum Type
    {
        sixBit = 2,
        eightBit = 3
    };
    const RecordView area = viewOf(*this);
    const uint8_t typeLength = area.u8(offset);
    const unsigned length = fieldSize(typeLength);
    if (!area.has(offset) || !area.has(offset + 1, length))
        return "";
    switch (typeLength >> 6) {
    case sixBit:
        return sixBitText(area.part(offset + 1, length));
    case eightBit:
        return std::string{area.text(offset + 1, length)};
    default:
        return "";
    }
}

bool IpmiFruOptional::isKnown() const
{
    return (viewOf(*this).u8(0) & 0x0f) == 1;
}

unsigned IpmiFruOptional::fieldAt(unsigned first, unsigned number) const
{
    const RecordView area = viewOf(*this);
    unsigned at = first;
    for (unsigned i = 0; i < number; ++i) {
        if (!area.has(at) || area.u8(at) == fruEndMark)
            return 0;
        at += 1 + fieldSize(area.u8(at));
    }
    return area.has(at) ? at : 0;
}

std::string IpmiFruOptional::field(unsigned first, unsigned number) const
{
    const unsigned at = isKnown() ? fieldAt(first, number) : 0;
    if (at == 0)
        return "";
    std::string text = getFruAreaString(at);
    return toAsciiAndTrim(text);
}

void IpmiFruOptional::print(const char* title) const
{
    constexpr int bytesInLine = 16;
    if (size_ >= 1)
        printf("%s : 0x%02x", title, unsigned(size_));
    for (int i = 0; i < size_; ++i) {
        if (i % bytesInLine == 0)
            printf("\nData 0x%02x:", unsigned(i));
        printf(" 0x%02x", data_[size_t(i)]);
    }
    printf("\n");
}

void IpmiFruOptional::testDump() const
{
    printf("IpmiFruOptional: Dump Entering.\n");
    print("Info Area");
    printf("IpmiFruOptional: Dump Exiting.\n");
}

std::string& toAsciiAndTrim(std::string& text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return !isprint(c); },
        ' ');
    const size_t last = text.find_last_not_of(" \t");
    if (last != text.npos)
        text.resize(last + 1);
    return text;
}

} // namespace Ipmi
