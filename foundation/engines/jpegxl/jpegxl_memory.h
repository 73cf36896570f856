/// Whether there is memory for libjxl, told before it is needed: the library loses memory or ends
/// the process where one of its own allocations fails, and takes but 4 KB of all by a memory
/// manager of its host's.
#pragma once

#include <cstdint>

namespace quorvex {

/// What the library needs at most, as measured with 0.7 on streams of its own and on pictures of
/// 8 x 8 to 2048 x 2048: an amount for every picture, and one for each pixel of it.
struct JpegXlNeed {
    std::uint64_t bytes = 0;
    std::uint64_t bytesOfPixel = 0;
};
inline constexpr JpegXlNeed kOpeningNeed = {std::uint64_t{1} << 20, 0};
/// Measured: 9 MB; 16 of grey and 12 of colour, 43 of small lossy pictures.
inline constexpr JpegXlNeed kDecodingNeed = {std::uint64_t{12} << 20, 32};
/// Measured: 8 MB; 31 of grey, 66 of colour, 62 with loss; 12 for the copy of the samples.
inline constexpr JpegXlNeed kEncodingNeed = {std::uint64_t{12} << 20, 80};

/// Takes so much as one block and gives it back. Throws std::bad_alloc where that fails.
void RequireMemory(const JpegXlNeed& need, std::uint64_t pixels);

}  // namespace quorvex
