#include "foundation/raster/resize_rows.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "render/job_rules.h"

namespace quorvex {
namespace {

std::ptrdiff_t RowStep(CSize size, int pixelSize) {
    return std::ptrdiff_t{size.cx} * pixelSize;
}

/// Nothing to show is black.
void Blacken(unsigned char* image, CSize size, int pixelSize) {
    for (int channel = 0; channel < pixelSize; ++channel) {
        ippiSet_8u_C1R(0, image + std::ptrdiff_t{size.cx} * size.cy * channel, size.cx, size);
    }
}

HeapBlock ImageBlock(CSize size, int pixelSize) {
    const auto bytes = CheckedProduct(size.cx, size.cy, pixelSize);
    if (!bytes) throw BlockTooLarge();
    return HeapBlock(*bytes);
}

}  // namespace

/// Resize, mirror, turn; the overlay has gone into the rows before.
int CXImageCreator::ArrangeRender(const _IMAGE_INFO& info) {
    const CSize output{info.outputWidth, info.outputHeight};
    if (info.rotation == 0) {
        ResizeInto(info, info.output, output);
        if (info.horizontalFlip != 0) HorizontalFlipImage(info.output, output);
        return kJobDone;
    }
    const CSize upright = IsQuarterTurn(info.rotation) ? CSize{output.cy, output.cx} : output;
    const HeapBlock intermediate = ImageBlock(upright, outputPixelSize);
    ResizeInto(info, intermediate.Data(), upright);
    if (info.horizontalFlip != 0) HorizontalFlipImage(intermediate.Data(), upright);
    RotateImage(intermediate.Data(), upright, info.rotation, info.output);
    return kJobDone;
}

void CXImageCreator::ResizeInto(const _IMAGE_INFO& info, unsigned char* destination, CSize size) {
    RowResizer resizer({{workRoi.Width(), workRoi.Height()},
                        size,
                        scale,
                        UsableAspectRatio(info.aspectRatio) * scale,
                        outputPixelSize});
    if (!resizer.IsUsable()) return Blacken(destination, size, outputPixelSize);
    const auto rowAt = [this, &info](int y, int soon) {
        return Render(info, workRoi.top + y, workRoi.top + soon);
    };
    resizer.Run(rowAt, {destination, RowStep(size, outputPixelSize), size, outputPixelSize});
}

void CXImageCreator::ApplyOverlay(const _IMAGE_INFO& info, int row) {
    if (info.overlayImage == nullptr) return;
    const auto step = std::ptrdiff_t{info.imageWidth} * workPixelSize;
    const auto column = std::ptrdiff_t{workRoi.left} * workPixelSize;
    const auto operation = workPixelSize == kColourBytes ? ippiOr_8u_C3IR : ippiOr_8u_C1IR;
    operation(info.overlayImage + row * step + column, step, WorkRow(info, row) + column, step,
              {workRoi.Width(), 1});
}

void CXImageCreator::HorizontalFlipImage(unsigned char* image, CSize size) const {
    const auto operation =
        outputPixelSize == kColourBytes ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR;
    operation(image, RowStep(size, outputPixelSize), size, kVerticalAxis);
}

/// Counter-clockwise in memory, which is clockwise on the screen since rows run from the bottom.
void CXImageCreator::RotateImage(const unsigned char* image, CSize size, int angle,
                                 unsigned char* rotated) const {
    const CSize turned = IsQuarterTurn(angle) ? CSize{size.cy, size.cx} : size;
    const double xShift = angle == 90 ? 0 : turned.cx;
    const double yShift = angle == 270 ? 0 : turned.cy;
    const auto operation = outputPixelSize == kColourBytes ? ippiRotate_8u_C3R : ippiRotate_8u_C1R;
    operation(image, size, RowStep(size, outputPixelSize), {0, 0, size.cx, size.cy}, rotated,
              RowStep(turned, outputPixelSize), {0, 0, turned.cx, turned.cy}, angle, xShift, yShift,
              kLinearInterpolation);
}

}  // namespace quorvex
