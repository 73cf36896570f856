/// The displayed area that a presentation state selects, and what shape pixels have.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <optional>

namespace quorvex {

enum class SizeMode { kScaleToFit, kTrueSize, kMagnify };

/// A part of the image, its corners counted from 1 and inclusive; it may reach beyond the image.
struct DisplayedAreaSelection {
    std::int64_t left = 1;
    std::int64_t top = 1;
    std::int64_t right = 1;
    std::int64_t bottom = 1;
    SizeMode mode = SizeMode::kScaleToFit;
    double magnification = 1.0;    ///< display pixels for one image pixel; MAGNIFY
    std::optional<double> aspect;  ///< height of a pixel over its width
    double columnSpacing = 0.0;    ///< width of a pixel in mm; 0 where it is not stated

    [[nodiscard]] double Width() const noexcept { return static_cast<double>(right - left + 1); }
    [[nodiscard]] double Height() const noexcept { return static_cast<double>(bottom - top + 1); }
};

/// The area for a frame (counted from 1) of an image; nothing where the state selects none for it.
/// Corners come in either order: they name the corners as they lie after a turn.
[[nodiscard]] std::optional<DisplayedAreaSelection> ReadDisplayedArea(const CDcmObject& state,
                                                                      const CString& imageUID,
                                                                      std::int32_t frameNumber);

/// The height of an image's pixels over their width, by the first of these that is there: Pixel
/// Aspect Ratio, Pixel Spacing, Imager Pixel Spacing, Nominal Scanned Pixel Spacing. 1 without any.
[[nodiscard]] double ReadPixelAspect(const CDcmObject& header);

}  // namespace quorvex
