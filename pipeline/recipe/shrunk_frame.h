/// A grey frame at the size at which it is seen, shown by many windows.
#pragma once

#include "foundation/raster/scaling/area_averager.h"
#include "quorvex/Types.h"
#include "windowing/display_function.h"

#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

struct DisplayedImage;

/// Averages display values over the area of each new pixel.
///
/// Where they follow a straight line, that is the line's value at the average of the stored values,
/// each clamped to black and white first. Averages that no clamp has changed are kept, and how low
/// and high the values under each group of pixels are: a further window takes the groups that it
/// does not clamp from there, and reads the frame only for those that it clamps in part. Every
/// window gives the same bytes, whatever was shown before.
///
/// What lies over a frame is shrunk alike: how much of each pixel the shutter and the marks of a
/// layer cover, 0 to 255.
class ShrunkFrame {
public:
    ShrunkFrame(const DisplayedImage& image, CSize size);

    [[nodiscard]] CSize Size() const noexcept { return averager_.Size(); }
    /// The size of the frame that it is made of.
    [[nodiscard]] CSize SourceSize() const noexcept { return source_; }
    /// Begins to keep the averages of what is shown, where that is worth its memory: which was
    /// reserved when this was made.
    void KeepAverages();
    /// Another frame of the same size is shown from now on.
    void Forget() noexcept { isKept_.clear(); }
    /// The display bytes of row `y`, counted from the top, from column `first` on.
    /// @param next  a row that will be shown a little later
    void ShowRow(const DisplayedImage& image, const DisplayFunction::Line& line, int y, int next,
                 std::size_t first, std::span<unsigned char> bytes);

private:
    struct Rows;
    void KeepRow(const Rows& rows);
    void ShowAverages(const Rows& rows, std::size_t begin, std::size_t end);
    void ShowKept(const Rows& rows, std::size_t begin, std::size_t end);
    void Compute(const Rows& rows, std::size_t begin, std::size_t end);

    CSize source_;
    std::size_t width_;
    std::size_t groups_;  ///< of a row
    AreaAverager averager_;
    bool isWorthKeeping_;
    std::vector<float> computed_;
    std::vector<unsigned char> bytes_;
    // Empty until something is to be kept; a row is there when it has been shown since then.
    std::vector<float> averages_;
    std::vector<ValueLimits> limits_;  ///< of each group
    std::vector<unsigned char> isKept_;
};

/// The size that a frame is shrunk to where it is scaled to `scaled`: an axis that is enlarged
/// stays.
[[nodiscard]] CSize ShrunkSize(CSize image, CSize scaled) noexcept;

/// Whether a frame can be shrunk ahead of its display values: grey of up to 16 bits, shown by a
/// straight line that is not too steep for averages of single precision.
[[nodiscard]] bool CanShrink(const DisplayedImage& image, const DisplayFunction& function) noexcept;

/// How much of each pixel of a shrunk image a layer covers. `bits` is in overlay order, a bit a
/// pixel of the image.
[[nodiscard]] std::vector<unsigned char> CoverageOfBits(const std::vector<unsigned char>& bits,
                                                        CSize image, CSize size);
/// The same for a mask of bytes: what is not 0 covers.
[[nodiscard]] std::vector<unsigned char> CoverageOfMask(const std::vector<unsigned char>& mask,
                                                        CSize image, CSize size);

}  // namespace quorvex
