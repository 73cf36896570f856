/// The output of the JPEG coders, and the table that extended JPEG starts from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvex {

/// Where the coded bytes of one frame go.
struct CompressOutputState {
    std::vector<unsigned char>& coded;  ///< grows where coded data outgrow the frame
    std::size_t written = 0;
    std::size_t startPosition = 0;
    std::size_t codedSize = 0;
};

/// Luminance steps in zigzag order (ITU-T T.81 Table K.1).
inline constexpr std::array<std::uint16_t, 64> kDefaultQuantization = {
    16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};

}  // namespace quorvex
