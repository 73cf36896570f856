/// Three-sample frames in every stored form, brought to interleaved R, G, B.
#pragma once

#include "codec/ybr_to_rgb.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace quorvex {

/// What a stored three-sample frame looks like.
enum class ColourForm {
    kUnknown,
    kFullPlanes,       ///< full-range Y, Cb, Cr, by planes
    kFullInterleaved,  ///< the same, pixel by pixel
    /// Groups of Y, Cb, Y, Cr: two pixels share their colour. Words have both Y first, as stored.
    kFull422,
    kPartial422,     ///< the same groups in the video range
    kPartialPlanes,  ///< full planes in the video range, as RLE has them
    kRgbPlanes,
    kRgbInterleaved,
};

[[nodiscard]] constexpr bool IsPlanar(ColourForm form) noexcept {
    return form == ColourForm::kRgbPlanes || form == ColourForm::kFullPlanes ||
           form == ColourForm::kPartialPlanes;
}

struct ColourFrame {
    ColourForm form = ColourForm::kUnknown;
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::size_t bytesPerSample = 1;  ///< 1, 2 or 4
    bool isExact = false;            ///< colours are rounded and clamped, not as the established
    int bitsStored = 16;             ///< of a sample of 2 bytes

    [[nodiscard]] std::size_t Pixels() const noexcept { return columns * rows; }
    /// Bytes of the converted frame.
    [[nodiscard]] std::size_t RgbBytes() const noexcept { return Pixels() * 3 * bytesPerSample; }
    /// Bytes that a whole stored frame has.
    [[nodiscard]] std::size_t StoredBytes() const noexcept;
};

/// The form that a photometric interpretation (compared exactly) and a planar configuration name.
/// Y, Cb, Cr are known as bytes, and where colours are exact in the full range as words.
[[nodiscard]] ColourForm ColourFormOf(std::u16string_view photometric, unsigned planarConfiguration,
                                      std::size_t bytesPerSample, bool isExact) noexcept;

/// Converts `source` to `rgb`, which has RgbBytes(); of a source that is too short what there is,
/// and zeros behind it.
/// @return false for an unknown form: nothing is written
bool ConvertToRgb(const ColourFrame& frame, std::span<const unsigned char> source,
                  std::span<unsigned char> rgb);

/// Converts whole pixels of full-range Y, Cb, Cr bytes in place. Throws std::bad_alloc.
void ConvertYbrInPlace(std::span<unsigned char> pixels, YbrArithmetic arithmetic);

}  // namespace quorvex
