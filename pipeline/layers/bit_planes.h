/// Packed bit planes.
///
/// Two orders, never to be mixed up: in *overlay order* bit i is bit i mod 8 of byte i / 8, counted
/// from the least significant, as DICOM has it; in *mask order* it is bit 7 - (i mod 8).
#pragma once

#include "foundation/raster/bit_marks.h"

#include <cstddef>
#include <cstdint>
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

}  // namespace quorvex
