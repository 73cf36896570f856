/// Y, Cb, Cr words to R, G, B words, the least significant byte of each first.
#pragma once

#include <cstddef>
#include <span>

namespace quorvex {

/// Some pixels of 16 bits a sample. Y of black is 0, Cb and Cr of grey half of what the stored bits
/// can hold (DICOM PS3.3 C.7.6.3.1.2); other bits do not count.
struct WideYbr {
    std::span<const unsigned char> source;
    std::size_t pixels = 0;
    int bitsStored = 16;
};

// Results are exact, rounded with halves up and clamped; `rgb` has room for 6 bytes a pixel.

void ConvertWidePlanes(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept;
void ConvertWidePixels(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept;
/// Groups of Y, Y, Cb, Cr as they are stored, counted on across the ends of rows.
void ConvertWide422(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept;

}  // namespace quorvex
