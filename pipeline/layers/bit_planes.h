/// Packed bit planes.
///
/// Two orders, never to be mixed up: in *overlay order* bit i is bit i mod 8 of byte i / 8, counted
/// from the least significant, as DICOM has it; in *mask order* it is bit 7 - (i mod 8).
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace quorvex {

/// Rows and columns of a bit plane, without gaps between its rows.
struct PlaneSize {
    unsigned short rows = 0;
    unsigned short columns = 0;

    [[nodiscard]] std::size_t BitCount() const noexcept { return std::size_t{rows} * columns; }
    [[nodiscard]] std::size_t ByteCount() const noexcept { return (BitCount() + 7) / 8; }
    friend bool operator==(const PlaneSize&, const PlaneSize&) = default;
};

/// Sets, clears and reads a bit in mask order, in which hosts keep masks of their own; `index` must
/// lie in the mask. `GetMask` gives 0 or 1.
void SetMask(std::span<unsigned char> mask, std::size_t index) noexcept;
void ClearMask(std::span<unsigned char> mask, std::size_t index) noexcept;
[[nodiscard]] unsigned char GetMask(std::span<const unsigned char> mask,
                                    std::size_t index) noexcept;

/// Merges a plane into the top left corner of a target of at least as many pixels; a larger plane
/// is skipped.
///
/// Planes of one size are merged byte by byte, so that both may be in overlay order; bits at the
/// end that fill no whole byte are left out. Other planes are read in mask order. Bits past the end
/// of either block are skipped.
void MergeOverlay(std::span<unsigned char> target, std::span<const unsigned char> plane,
                  PlaneSize targetSize, PlaneSize planeSize) noexcept;

/// Calls `mark(k)` for every set bit `first` + k, k below `count`, of a plane in overlay order.
/// Bits past its end are not set.
template <class Mark>
void ForEachSetBit(std::span<const unsigned char> plane, std::size_t first, std::size_t count,
                   Mark mark) {
    const std::size_t end = std::min(first + count, plane.size() * 8);
    for (std::size_t bit = first; bit < end;) {
        std::uint64_t word = 0;
        const std::size_t byte = bit / 8;
        std::memcpy(&word, plane.data() + byte, std::min(sizeof word, plane.size() - byte));
        word >>= bit % 8;
        const std::size_t taken = std::min(64 - bit % 8, end - bit);
        if (taken < 64) word &= (std::uint64_t{1} << taken) - 1;
        for (; word != 0; word &= word - 1) {
            mark(bit - first + static_cast<std::size_t>(std::countr_zero(word)));
        }
        bit += taken;
    }
}

}  // namespace quorvex
