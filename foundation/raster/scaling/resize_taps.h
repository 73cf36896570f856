/// Where the pixels of a resized row or column come from.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <vector>

namespace quorvex {

/// One destination pixel: source pixel `first` and, by `weight`, the one behind it.
struct ResizeTap {
    std::int32_t first = 0;
    std::uint32_t weight = 0;  ///< of the pixel behind, in units of 2^-bits; 0 at the last pixel

    [[nodiscard]] std::int32_t Second() const noexcept { return first + (weight != 0 ? 1 : 0); }
};

/// The taps of one axis. Destination pixel i reads (i + 0.5) / factor - 0.5, clamped to 0 and
/// sourceLength - 1.
///
/// Where the destination is the source times the factor, the positions are computed in whole
/// numbers, and the taps of i and of destinationLength - 1 - i mirror each other exactly.
/// @param bits    of the weights, at most 30
/// @param memory  which they live in
/// @return nothing for a length below 1 and a factor that is NaN, infinite or not positive
[[nodiscard]] std::pmr::vector<ResizeTap> ResizeTaps(
    int sourceLength, int destinationLength, double factor, int bits,
    std::pmr::memory_resource* memory = std::pmr::get_default_resource());

/// The taps of `length` pixels from `start` on, of an axis scaled from `sourceLength` pixels to
/// `scaledLength`: those that the whole axis would have there. All lengths are above 0, and the
/// pixels asked for lie within the scaled axis.
[[nodiscard]] std::pmr::vector<ResizeTap> ResizeTapsOfPart(
    int sourceLength, int scaledLength, int start, int length, int bits,
    std::pmr::memory_resource* memory = std::pmr::get_default_resource());

}  // namespace quorvex
