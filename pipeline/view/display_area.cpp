#include "foundation/types/saturate.h"
#include "pipeline/displayed_image.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quorvex {

namespace {

enum PresentationSizeMode { kScaleToFit = 0, kTrueSize = 1, kMagnify = 2 };

double AspectRatioOf(const CXGSPSInfo& record) noexcept {
    if (record.pixelAspectHorizontal != 0.0) {
        return record.pixelAspectVertical / record.pixelAspectHorizontal;
    }
    if (record.pixelSpacingX != 0.0) return record.pixelSpacingY / record.pixelSpacingX;
    return record.pixelAspectVertical;
}

bool HasArea(const CXGSPSInfo& record) noexcept {
    return record.displayedAreaRight != 0 || record.displayedAreaBottom != 0;
}

bool IsEmpty(const CRect& area) noexcept {
    return area.right <= area.left || area.bottom <= area.top;
}

std::int64_t Middle(std::int32_t low, std::int32_t high) noexcept {
    return (std::int64_t{low} + high) / 2;
}

double Extent(std::int32_t low, std::int32_t high) noexcept {
    return static_cast<double>(std::int64_t{high} - low);
}

}  // namespace

void DisplayedImage::PrepareDisplayAreaTransform() noexcept {
    // A state that mirrors or turns names the corners as they lie afterwards: any of them may be
    // the upper left one.
    const auto [left, right] =
        std::minmax(presentation->displayedAreaLeft, presentation->displayedAreaRight);
    const auto [top, bottom] =
        std::minmax(presentation->displayedAreaTop, presentation->displayedAreaBottom);
    roi = {SaturateToInt(std::int64_t{left} - 1), SaturateToInt(std::int64_t{top} - 1), right,
           bottom};
    aspectRatio = AspectRatioOf(*presentation);
    switch (presentation->presentationSizeMode) {
        case kScaleToFit:
        case kTrueSize:
            PrepareScaleToFit();
            break;
        case kMagnify:
            zoom = presentation->presentationMagnification;
            PrepareMagnify();
            break;
        default:
            break;
    }
    UpdateDisplayArea();
}

// An area without extent cannot be fitted: the whole image is.
void DisplayedImage::PrepareScaleToFit() noexcept {
    if (!HasArea(*presentation) || IsEmpty(roi)) return DoFit();
    zoom = std::min(viewSize.cx / Extent(roi.left, roi.right),
                    viewSize.cy / (Extent(roi.top, roi.bottom) * EffectiveAspectRatio()));
    const auto fromMiddle = [this](std::int32_t length, std::int64_t middle) {
        const std::int64_t half = length / 2;
        return TruncateToInt(static_cast<double>(half - middle) * zoom);
    };
    panOffset = {fromMiddle(imageSize.cx, Middle(roi.left, roi.right)),
                 fromMiddle(imageSize.cy, Middle(roi.top, roi.bottom))};
}

void DisplayedImage::PrepareMagnify() noexcept {
    panOffset = {SaturateToInt(imageSize.cx - Middle(roi.left, roi.right)),
                 SaturateToInt(imageSize.cy - Middle(roi.top, roi.bottom))};
}

void DisplayedImage::DoFit() noexcept {
    zoom = std::min(viewSize.cx / static_cast<double>(imageSize.cx),
                    viewSize.cy / (imageSize.cy * EffectiveAspectRatio()));
    panOffset = {};
}

void DisplayedImage::UpdateDisplayArea() noexcept {
    roi = {0, 0, imageSize.cx, imageSize.cy};
}

double DisplayedImage::EffectiveAspectRatio() const noexcept {
    return std::isfinite(aspectRatio) && aspectRatio > 0.0 ? aspectRatio : 1.0;
}

int DisplayedImage::QuarterTurns() const noexcept {
    return (rotation % 360 + 360) % 360;
}

CPoint DisplayedImage::CalcImagePanOffset() const noexcept {
    const auto [x, y] = panOffset;
    const bool flipped = horizontalFlip != 0;
    switch (QuarterTurns()) {
        case 90:
            return flipped ? CPoint{y, x} : CPoint{y, -x};
        case 180:
            return flipped ? CPoint{x, -y} : CPoint{-x, -y};
        case 270:
            return flipped ? CPoint{-y, -x} : CPoint{-y, x};
        default:
            return flipped ? CPoint{-x, y} : CPoint{x, y};
    }
}

}  // namespace quorvex
