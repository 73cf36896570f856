/// What a frame fetch does to the bytes of a native big-endian frame that a walk handed out.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace quorvex::test {

/// The bytes of each pair change places unless a pixel has 3 samples, and once more in the result
/// where 16 bits are allocated.
inline std::string AfterTheSwapsOfAFetch(std::string frame, std::uint32_t samplesPerPixel,
                                         std::uint32_t bitsAllocated) {
    const int swaps = (samplesPerPixel != 3 ? 1 : 0) + (bitsAllocated == 16 ? 1 : 0);
    for (int swap = 0; swap < swaps; ++swap) {
        for (std::size_t i = 0; i + 1 < frame.size(); i += 2) std::swap(frame[i], frame[i + 1]);
    }
    return frame;
}

}  // namespace quorvex::test
