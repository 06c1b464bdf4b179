/// The one reader of bytes that came from the controller.
#ifndef VEK_IPMI_PRIVATE_RECORDVIEW_H
#define VEK_IPMI_PRIVATE_RECORDVIEW_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Ipmi
{

/// A borrowed view of packed little-endian bytes. A field outside of them
/// reads as 0; ask has() where 0 and "absent" must differ.
class RecordView
{
public:
    RecordView(const uint8_t* data, size_t size) : data_{data}, size_{size} {}

    bool has(size_t at, size_t count = 1) const
    {
        return at <= size_ && count <= size_ - at; // never adds: cannot wrap
    }
    size_t size() const { return size_; }
    uint8_t u8(size_t at) const { return has(at) ? data_[at] : uint8_t{0}; }
    /// LS byte first; 0 unless both bytes are there.
    uint16_t u16(size_t at) const
    {
        return has(at, 2) ? uint16_t(data_[at] | data_[at + 1] << 8)
                          : uint16_t{0};
    }
    /// Bytes that are not there are copied as 0.
    void copyTo(uint8_t* out, size_t at, size_t count) const
    {
        for (size_t i = 0; i < count; ++i)
            out[i] = u8(at + i);
    }
    /// At most `count` bytes from `at` on, as far as there are any.
    RecordView part(size_t at, size_t count) const
    {
        return has(at) ? RecordView{data_ + at, std::min(count, size_ - at)}
                       : RecordView{data_, 0};
    }

    /// Up to `most` characters from `at` on, as far as there are any.
    std::string_view text(size_t at, size_t most) const
    {
        if (!has(at))
            return {};
        return {reinterpret_cast<const char*>(data_) + at,
                std::min(most, size_ - at)};
    }

private:
    const uint8_t* data_;
    size_t size_;
};

} // namespace Ipmi

#endif
