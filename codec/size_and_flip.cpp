#include "codec/size_and_flip.h"

#include "foundation/raster/raster.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace quorvex {
namespace {

/// One frame to scale into another.
struct ResizeJob {
    const unsigned char* source;
    CSize sourceSize;
    unsigned char* result;
    CSize resultSize;
    int bytesPerPixel;

    [[nodiscard]] std::ptrdiff_t SourceStep() const noexcept {
        return std::ptrdiff_t{sourceSize.cx} * bytesPerPixel;
    }
    [[nodiscard]] std::ptrdiff_t ResultStep() const noexcept {
        return std::ptrdiff_t{resultSize.cx} * bytesPerPixel;
    }
    [[nodiscard]] double XFactor() const noexcept {
        return static_cast<double>(resultSize.cx) / sourceSize.cx;
    }
    [[nodiscard]] double YFactor() const noexcept {
        return static_cast<double>(resultSize.cy) / sourceSize.cy;
    }
    /// The rectangle that is scaled begins at (1, 1).
    [[nodiscard]] RasterRect SourceRect() const noexcept {
        return {1, 1, sourceSize.cx, sourceSize.cy};
    }
};

template <class Sample>
Sample* As(unsigned char* bytes) noexcept {
    return static_cast<Sample*>(static_cast<void*>(bytes));
}
template <class Sample>
const Sample* As(const unsigned char* bytes) noexcept {
    return static_cast<const Sample*>(static_cast<const void*>(bytes));
}

template <class Sample, class Resize>
void Run(const ResizeJob& job, Resize resize) {
    resize(As<Sample>(job.source), job.sourceSize, job.SourceStep(), job.SourceRect(),
           As<Sample>(job.result), job.ResultStep(), job.resultSize, job.XFactor(), job.YFactor(),
           kLinearInterpolation);
}

void SwapRedAndBlue(unsigned char* image, CSize size) noexcept {
    const auto pixels = static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
    for (std::size_t p = 0; p < pixels; ++p) std::swap(image[3 * p], image[3 * p + 2]);
}

}  // namespace

void ResizeFrame(const FrameDescription& frame, const unsigned char* source,
                 std::span<unsigned char> result, CSize size, int bytesPerPixel) {
    const ResizeJob job{source, {frame.columns, frame.rows}, result.data(), size, bytesPerPixel};
    const unsigned samples = frame.samplesPerPixel;
    if (bytesPerPixel < static_cast<int>(samples)) return;
    if (samples == 3) return Run<unsigned char>(job, ippiResize_8u_C3R);
    if (samples == 4) return Run<unsigned char>(job, ippiResize_8u_C4R);
    if (bytesPerPixel == 2) return Run<std::uint16_t>(job, ippiResize_16u_C1R);
    if (bytesPerPixel == 1) return Run<unsigned char>(job, ippiResize_8u_C1R);
}

int HorizontalFlipImage(unsigned char* image, CSize size, unsigned short bits,
                        unsigned short samples) {
    const std::ptrdiff_t width = size.cx;
    if (bits == 8 && samples == 3) {
        if (!ippiMirror_8u_C3IR(image, 3 * width, size, kHorizontalAxis)) return 0;
        SwapRedAndBlue(image, size);
        return 1;
    }
    if (bits == 8 && samples == 1) {
        return ippiMirror_8u_C1IR(image, width, size, kHorizontalAxis) ? 1 : 0;
    }
    if (bits == 16 && samples == 1) {
        auto* words = As<std::uint16_t>(image);
        return ippiMirror_16u_C1IR(words, 2 * width, size, kHorizontalAxis) ? 1 : 0;
    }
    return 0;
}

}  // namespace quorvex
