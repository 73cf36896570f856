/// What a view shows of an image, drawn in one go: look-up, shutter, layers, scaling, turning.
#pragma once

#include "foundation/raster/pixel_grid.h"
#include "foundation/raster/raster.h"
#include "foundation/raster/word_ramp.h"
#include "foundation/types/function_ref.h"
#include "quorvex/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <span>

namespace quorvex {

/// Red, green, blue.
using Rgb = std::array<std::uint8_t, 3>;

/// Marks in one colour over an image: a bit for each of its pixels, in overlay order, or a byte
/// that says how much of the pixel is covered. Rows run from the top; one of the two is empty.
struct MarkLayer {
    std::span<const unsigned char> bits;
    std::span<const unsigned char> coverage;
    Rgb colour{255, 255, 255};
};

/// The colour of a value that has one.
struct ValueColour {
    Rgb colour{};
    bool isThere = false;
};

/// Makes the display bytes of an image's row `y`, counted from the top, from column `first` on.
/// `next` is a row that is asked for a little later. Throws nothing.
using GreySource =
    FunctionRef<void(int y, int next, std::size_t first, std::span<unsigned char> bytes)>;

/// All blocks are the caller's, stay as they are, and hold the whole image.
struct ViewJob {
    CSize imageSize;
    const unsigned char* pixels = nullptr;  ///< rows from the top, without gaps
    int pixelBytes = 1;                     ///< 1 or 2 for grey; 3: red, green, blue
    /// Display bytes. Grey: of every value that the bits of a pixel can have, taken as an unsigned
    /// number: 256, or 65,536. Colour: 256, for all three samples.
    std::span<const unsigned char> table;
    GreySource greySource;  ///< where it is there, of a grey image; instead of pixels and tables
    std::optional<WordRamp> ramp;  ///< gives the bytes of `table` to all words of the image; faster
    /// Colours of grey values, for every value as `table` has them; or empty.
    std::span<const ValueColour> colours;
    const unsigned char* shutterMask = nullptr;  ///< a byte a pixel: how much is hidden; or null
    Rgb shutterColour{};
    std::span<const MarkLayer> layers;  ///< drawn in this order, over the shutter
    bool isColour = false;              ///< result of three bytes a pixel; always for colour pixels

    CSize scaled;             ///< of the whole image, upright
    int quarterTurns = 0;     ///< clockwise on the screen
    bool isMirrored = false;  ///< left to right on the screen, after the turn
    RasterRect window;        ///< the part of the scaled, turned image to make, from its upper left
    Interpolation enlarging = Interpolation::kLinear;
};

/// Size of the whole scaled image as it is turned.
[[nodiscard]] CSize TurnedSize(const ViewJob& job) noexcept;

/// Bytes of one pixel of the result.
[[nodiscard]] constexpr int ResultPixelBytes(const ViewJob& job) noexcept {
    return job.isColour || job.pixelBytes > 2 || !job.colours.empty() ? 3 : 1;
}

/// Runs a job whose window lies in the scaled image and is not empty.
///
/// @param output   window.width x window.height pixels, rows from the bottom, which may lie in
///                 either order; colour as blue, green, red. Untouched where it throws
///                 std::bad_alloc
/// @param scratch  what the job works with comes from there
void RunViewJob(const ViewJob& job, const PixelGrid<unsigned char>& output,
                std::pmr::memory_resource& scratch);

}  // namespace quorvex
