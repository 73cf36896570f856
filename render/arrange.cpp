// RenderRun: rows resized, mirrored and turned into the output.
#include "foundation/raster/raster.h"
#include "foundation/raster/scaling/resize_rows.h"
#include "render/job_rules.h"
#include "render/render_run.h"

namespace quorvex {
namespace {

std::ptrdiff_t RowStep(CSize size, int pixelSize) {
    return std::ptrdiff_t{size.cx} * pixelSize;
}

/// Nothing to show is black. Cleared in one part for each byte of a pixel, so that a width stays
/// within int.
void Blacken(unsigned char* image, CSize size, int pixelSize) {
    for (int part = 0; part < pixelSize; ++part) {
        ippiSet_8u_C1R(0, image + std::ptrdiff_t{size.cx} * size.cy * part, size.cx, size);
    }
}

unsigned char* ImageBlock(CSize size, int pixelSize, std::pmr::memory_resource& scratch) {
    const auto bytes = CheckedProduct(size.cx, size.cy, pixelSize);
    if (!bytes) throw BlockTooLarge();
    return TakeArray<unsigned char>(scratch, *bytes).data();
}

}  // namespace

void RenderRun::ArrangeRender() {
    const CSize output{info_.outputWidth, info_.outputHeight};
    if (info_.rotation == 0) {
        ResizeInto(info_.output, output);
        if (info_.horizontalFlip != 0) HorizontalFlipImage(info_.output, output);
        return;
    }
    const CSize upright = IsQuarterTurn(info_.rotation) ? CSize{output.cy, output.cx} : output;
    unsigned char* const intermediate = ImageBlock(upright, outputPixelSize_, scratch_);
    ResizeInto(intermediate, upright);
    if (info_.horizontalFlip != 0) HorizontalFlipImage(intermediate, upright);
    RotateImage(intermediate, upright);
}

void RenderRun::ResizeInto(unsigned char* destination, CSize size) {
    RowResizer resizer({{workRoi_.Width(), workRoi_.Height()},
                        size,
                        scale_,
                        UsableAspectRatio(info_.aspectRatio) * scale_,
                        outputPixelSize_},
                       &scratch_);
    if (!resizer.IsUsable()) return Blacken(destination, size, outputPixelSize_);
    const auto rowAt = [this](int y, int prefetchY) {
        return Render(workRoi_.top + y, workRoi_.top + prefetchY);
    };
    resizer.Run(rowAt, {destination, RowStep(size, outputPixelSize_), size, outputPixelSize_});
}

void RenderRun::HorizontalFlipImage(unsigned char* image, CSize size) const {
    const auto operation =
        outputPixelSize_ == kColourBytes ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR;
    operation(image, RowStep(size, outputPixelSize_), size, kVerticalAxis);
}

/// Counter-clockwise in memory, which is clockwise on the screen since rows run from the bottom.
void RenderRun::RotateImage(const unsigned char* image, CSize size) const {
    const CSize output{info_.outputWidth, info_.outputHeight};
    const double xShift = info_.rotation == 90 ? 0 : output.cx;
    const double yShift = info_.rotation == 270 ? 0 : output.cy;
    const auto operation = outputPixelSize_ == kColourBytes ? ippiRotate_8u_C3R : ippiRotate_8u_C1R;
    operation(image, size, RowStep(size, outputPixelSize_), {0, 0, size.cx, size.cy}, info_.output,
              RowStep(output, outputPixelSize_), {0, 0, output.cx, output.cy}, info_.rotation,
              xShift, yShift, kLinearInterpolation);
}

}  // namespace quorvex
