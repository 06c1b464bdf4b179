/// A minimal perfect hash by hash and displace: two hashes and two reads find
/// the row of a code, and nothing is searched or allocated.
#ifndef VEK_IPMI_PRIVATE_IPMIPERFECTHASH_H
#define VEK_IPMI_PRIVATE_IPMIPERFECTHASH_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace Ipmi
{

/// FNV-1 over the code's bytes, most significant first, with the FNV prime as
/// its starting value unless another is given.
constexpr uint32_t hashOfCode(uint32_t start, uint32_t code)
{
    constexpr uint32_t prime = 0x01000193;
    uint32_t hash = start ? start : prime;
    for (int shift = 24; shift >= 0; shift -= 8)
        hash = (hash * prime) ^ (code >> shift & 0xff);
    return hash;
}

/// The row of a code, or some row, by the arrays of a PerfectHash.
template <size_t count>
constexpr size_t rowOfCode(const std::array<int32_t, count>& g,
                           const std::array<int32_t, count>& v, uint32_t code)
{
    const int32_t start = g[hashOfCode(0, code) % count];
    const size_t place = start < 0 ? size_t(-start - 1)
                                   : hashOfCode(uint32_t(start), code) % count;
    return size_t(v[place] - 1);
}

template <size_t count>
struct PerfectHash
{
    /// By the first hash: what the second one starts with; below 0 the place
    /// itself, counted from -1 down.
    std::array<int32_t, count> g{};
    /// By place: row + 1.
    std::array<int32_t, count> v{};
};

/// Places the codes of a PerfectHash, at compile time.
template <size_t count>
class HashMaker
{
public:
    constexpr explicit HashMaker(const std::array<uint32_t, count>& codes)
        : codes_{codes}
    {
        for (size_t row = 0; row < count; ++row) {
            const size_t bucket = hashOfCode(0, codes_[row]) % count;
            following_[row] = first_[bucket];
            first_[bucket] = row + 1;
            ++size_[bucket];
        }
    }

    /// Every bucket, the largest first: while many places are free.
    constexpr PerfectHash<count> make()
    {
        for (size_t size = count; size > 1; --size)
            for (size_t bucket = 0; bucket < count; ++bucket)
                if (size_[bucket] == size)
                    displace(bucket);
        for (size_t bucket = 0, place = 0; bucket < count; ++bucket)
            if (size_[bucket] == 1) {
                while (hash_.v[place] != 0)
                    ++place;
                hash_.g[bucket] = -int32_t(place) - 1;
                hash_.v[place] = int32_t(first_[bucket]);
            }
        return hash_;
    }

private:
    constexpr void displace(size_t bucket)
    {
        for (int32_t start = 1; hash_.g[bucket] == 0; ++start)
            if (placeAll(bucket, start))
                hash_.g[bucket] = start;
    }

    // All rows of a bucket, or none.
    constexpr bool placeAll(size_t bucket, int32_t start)
    {
        for (size_t row = first_[bucket]; row; row = following_[row - 1]) {
            int32_t& place = hash_.v[placeOf(row, start)];
            if (place != 0) {
                takeBack(bucket, row, start);
                return false;
            }
            place = int32_t(row);
        }
        return true;
    }

    constexpr void takeBack(size_t bucket, size_t end, int32_t start)
    {
        for (size_t row = first_[bucket]; row != end; row = following_[row - 1])
            hash_.v[placeOf(row, start)] = 0;
    }

    constexpr size_t placeOf(size_t row, int32_t start) const
    {
        return hashOfCode(uint32_t(start), codes_[row - 1]) % count;
    }

    const std::array<uint32_t, count>& codes_;
    // Rows are counted from 1 in the chains; 0 ends one.
    std::array<size_t, count> first_{}, following_{}, size_{};
    PerfectHash<count> hash_{};
};

} // namespace Ipmi

#endif
