// CXImageCreator: sizes of finished images, and what a view shows.
#include "foundation/types/saturate.h"
#include "render/job_rules.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr int MultipleOfFour(int value) {
    return value & ~(kRowAlignment - 1);
}

double Width(const CRect& rect) {
    return static_cast<double>(rect.right) - rect.left;
}
double Height(const CRect& rect) {
    return static_cast<double>(rect.bottom) - rect.top;
}

/// Half up, then cut towards zero; clamped to int, NaN gives 0.
int Rounded(double value) {
    return TruncateToInt(value + 0.5);
}

/// Clamped between 0 and `most`; NaN gives 0.
int ClampedEdge(double edge, int most) {
    return edge > 0.0 ? Rounded(std::min<double>(edge, most)) : 0;
}

/// A pan of the view's axes in those of the image, which has its rows from the bottom.
CPoint CalcImagePanOffset(int rotation, int flip, CPoint pan) {
    const CPoint back{SaturateToInt(-std::int64_t{pan.x}), SaturateToInt(-std::int64_t{pan.y})};
    const bool isFlipped = flip != 0;
    switch (rotation) {
        case 0:
            return {pan.x, isFlipped ? back.y : pan.y};
        case 90:
            return {pan.y, isFlipped ? pan.x : back.x};
        case 180:
            return {back.x, isFlipped ? pan.y : back.y};
        case 270:
            return {back.y, isFlipped ? back.x : pan.x};
        default:
            return pan;
    }
}

}  // namespace

int CXImageCreator::GetOutputSize(_OUTSIZE_INFO& info, CSize& size) {
    const double aspectRatio = UsableAspectRatio(info.aspectRatio);
    if (SwapsSides(info.rotation)) {
        size.cx = Rounded(Height(info.roi) * info.zoom);
        size.cy = MultipleOfFour(Rounded(Width(info.roi) * aspectRatio * info.zoom));
    } else {
        size.cx = Rounded(Width(info.roi) * info.zoom);
        size.cy = Rounded(Height(info.roi) * aspectRatio * info.zoom);
    }
    size.cx = MultipleOfFour(size.cx);
    return kJobDone;
}

int CXImageCreator::GetRenderingROI(_ROI_INFO& info, CRect& rect) {
    const bool swaps = SwapsSides(info.rotation);
    const double viewWidth = swaps ? Height(info.viewRect) : Width(info.viewRect);
    const double viewHeight = swaps ? Width(info.viewRect) : Height(info.viewRect);
    const double width = info.imageWidth;
    const double height = info.imageHeight;
    const double shownHeight = height * UsableAspectRatio(info.aspectRatio);
    const CPoint pan = CalcImagePanOffset(info.rotation, info.horizontalFlip, info.panOffset);

    const double pixel = 1.0 / info.zoom;
    const double acrossMargin = (viewWidth * pixel - width) * 0.5;
    const double upMargin = (viewHeight * pixel - shownHeight) * 0.5;
    rect.left = ClampedEdge(-acrossMargin - pan.x * pixel, info.imageWidth);
    rect.top = ClampedEdge(pan.y * pixel - upMargin, info.imageHeight);
    rect.right = ClampedEdge(width + acrossMargin - pan.x * pixel, info.imageWidth);
    rect.bottom = ClampedEdge(height + upMargin + pan.y * pixel, info.imageHeight);
    return kJobDone;
}

}  // namespace quorvex
