#include "codec/wide_ybr.h"

#include <algorithm>
#include <cstdint>

namespace quorvex {
namespace {

std::int64_t WordAt(const unsigned char* words, std::size_t index) noexcept {
    return words[2 * index] | words[2 * index + 1] << 8;
}

void SetWordAt(unsigned char* words, std::size_t index, std::int64_t word) noexcept {
    words[2 * index] = static_cast<unsigned char>(word & 0xFF);
    words[2 * index + 1] = static_cast<unsigned char>(word >> 8);
}

/// The inverse of Y = 0.299 R + 0.587 G + 0.114 B with its colour differences, in fractions.
class WideConversion {
public:
    explicit WideConversion(int bitsStored) noexcept
        : highest_((std::int64_t{1} << bitsStored) - 1),
          half_(std::int64_t{1} << (bitsStored - 1)) {}

    void Store(std::int64_t y, std::int64_t cb, std::int64_t cr,
               unsigned char* rgb) const noexcept {
        y &= highest_;
        cb = (cb & highest_) - half_;
        cr = (cr & highest_) - half_;
        SetWordAt(rgb, 0, Rounded(1000 * y + 1402 * cr, 1000));
        SetWordAt(rgb, 1, Rounded(587'000 * y - 202'008 * cb - 419'198 * cr, 587'000));
        SetWordAt(rgb, 2, Rounded(1000 * y + 1772 * cb, 1000));
    }

private:
    [[nodiscard]] std::int64_t Rounded(std::int64_t numerator,
                                       std::int64_t denominator) const noexcept {
        if (numerator < 0) return 0;
        return std::min((2 * numerator + denominator) / (2 * denominator), highest_);
    }

    std::int64_t highest_;
    std::int64_t half_;
};

/// Pixel p has its samples at the places that `placesOf` gives for it.
struct Places {
    std::size_t y;
    std::size_t cb;
    std::size_t cr;
};
template <class PlacesOf>
void Convert(const WideYbr& ybr, std::span<unsigned char> rgb, PlacesOf placesOf) noexcept {
    const WideConversion conversion(ybr.bitsStored);
    const unsigned char* words = ybr.source.data();
    for (std::size_t p = 0; p < ybr.pixels; ++p) {
        const Places at = placesOf(p);
        conversion.Store(WordAt(words, at.y), WordAt(words, at.cb), WordAt(words, at.cr),
                         rgb.data() + 6 * p);
    }
}

}  // namespace

void ConvertWidePlanes(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept {
    const std::size_t plane = ybr.pixels;
    Convert(ybr, rgb, [plane](std::size_t p) { return Places{p, plane + p, 2 * plane + p}; });
}

void ConvertWidePixels(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept {
    Convert(ybr, rgb, [](std::size_t p) { return Places{3 * p, 3 * p + 1, 3 * p + 2}; });
}

void ConvertWide422(const WideYbr& ybr, std::span<unsigned char> rgb) noexcept {
    Convert(ybr, rgb, [](std::size_t p) {
        const std::size_t group = p / 2 * 4;
        return Places{group + p % 2, group + 2, group + 3};
    });
}

}  // namespace quorvex
