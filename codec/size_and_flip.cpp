#include "foundation/raster/raster.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace quorvex {
namespace {

constexpr std::int32_t kWidthUnit = 4;

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

bool IsKnown(unsigned samples) noexcept {
    return samples == 1 || samples == 3 || samples == 4;
}

/// Pixels with no whole byte for each sample, and wide grey ones, have no resize: they stay zero.
void RunResize(const ResizeJob& job, unsigned samples) {
    if (job.bytesPerPixel < static_cast<int>(samples)) return;
    if (samples == 3) return Run<unsigned char>(job, ippiResize_8u_C3R);
    if (samples == 4) return Run<unsigned char>(job, ippiResize_8u_C4R);
    if (job.bytesPerPixel == 2) return Run<std::uint16_t>(job, ippiResize_16u_C1R);
    if (job.bytesPerPixel == 1) return Run<unsigned char>(job, ippiResize_8u_C1R);
}

void SwapRedAndBlue(unsigned char* image, CSize size) noexcept {
    const auto pixels = static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
    for (std::size_t p = 0; p < pixels; ++p) std::swap(image[3 * p], image[3 * p + 2]);
}

}  // namespace

QUORVEX_MESSAGE CxImageProcessor::ResizeImage(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                              unsigned char*& result, unsigned long& resultSize,
                                              CSize size) {
    return Answer(QVM_ERROR_INVALID_OUTPUT_SIZE, [&] {
        if (param == nullptr || source == nullptr) return QVM_ERROR_NULL_SOURCE;
        InitializeMembers(param);
        if (size.cx < 1 || size.cy < 1 || size.cx % kWidthUnit != 0 || rows == 0 || columns == 0) {
            return QVM_ERROR_INVALID_OUTPUT_SIZE;
        }
        const int bytesPerPixel = bitsAllocated * samplesPerPixel / 8;
        const auto bytes = CheckedProduct(bytesPerPixel, size.cx, size.cy);
        if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        HeapBlock block(*bytes);
        std::ranges::fill(block.Bytes(), static_cast<unsigned char>(0));
        const ResizeJob job{source, {columns, rows}, block.Data(), size, bytesPerPixel};
        if (IsKnown(samplesPerPixel)) RunResize(job, samplesPerPixel);
        resultSize = *bytes;
        result = block.Release();
        return IsKnown(samplesPerPixel) ? QVM_SUCCESS : QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    });
}

QUORVEX_MESSAGE CxImageProcessor::FlipColorImage(_IMAGE_PROCESS_PARAM* /*param*/,
                                                 unsigned char* /*source*/,
                                                 unsigned char*& /*result*/) {
    return QVM_SUCCESS;
}

int CxImageProcessor::HorizontalFlipImage(unsigned char* image, CSize size, unsigned short bits,
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
