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
    uint8_t u8(size_t at) const { return has(at) ? data_[at] : uint8_t{0}; }

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
