/// A host's own memory, which a picture is rendered into.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>

namespace quorvex {

/// How a pixel lies in memory.
enum class PixelFormat : std::int32_t {
    kGrey8 = 0,   ///< one byte: grey pictures alone
    kBgr24 = 1,   ///< blue, green, red
    kBgra32 = 2,  ///< blue, green, red, 255
};

/// Pixels that belong to the host and are there as long as an operation runs.
///
/// Nothing is written but the pixels of the picture, which lies in the upper left corner: neither
/// the pixels beside or below it nor what lies between two rows.
struct PixelTarget {
    void* pixels = nullptr;  ///< the upper left pixel
    CSize size;              ///< columns and rows; at least those of the picture
    /// Bytes from a pixel to the one below it; negative where the last row lies first. At least the
    /// bytes of a row of `size`.
    std::ptrdiff_t stride = 0;
    PixelFormat format = PixelFormat::kBgra32;
};

/// What a render makes.
struct PictureInfo {
    CSize size;         ///< columns and rows; 0, 0 where nothing lies in the view
    int pixelSize = 0;  ///< 1 grey, 3 colour
    CPoint corner;      ///< where its upper left pixel lies in the view, in device pixels
};

}  // namespace quorvex
