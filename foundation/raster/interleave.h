/// Planes of samples woven together, for whatever instructions the machine has.
#pragma once

#include <cstddef>
#include <span>

namespace quorvex {

/// Sample i of each place comes from plane i; there are `places` of them.
///
/// @param planes       any number, each of `places` samples
/// @param sampleBytes  1, 2 or 4; nothing need be aligned
/// @param out          places x planes x sampleBytes; does not overlap the planes
void InterleavePlanes(std::span<const unsigned char* const> planes, std::size_t places,
                      std::size_t sampleBytes, unsigned char* out);

}  // namespace quorvex
