#include "render/job_rules.h"

#include <array>

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

/// Between 0 and `most`; no number is 0.
int HeldEdge(double edge, int most) {
    return edge > 0.0 ? Rounded(std::min<double>(edge, most)) : 0;
}

/// Where the axes of the view lie in the image: x = xx pan.x + xy pan.y, y = yx pan.x + yy pan.y.
struct PanAxes {
    int rotation;
    bool isFlipped;
    int xx, xy, yx, yy;
};
constexpr std::array<PanAxes, 8> kPanAxes = {{
    {0, false, 1, 0, 0, 1},
    {0, true, 1, 0, 0, -1},
    {90, false, 0, 1, -1, 0},
    {90, true, 0, 1, 1, 0},
    {180, false, -1, 0, 0, -1},
    {180, true, -1, 0, 0, 1},
    {270, false, 0, -1, 1, 0},
    {270, true, 0, -1, -1, 0},
}};

/// The one number without an opposite stops at the largest.
int Signed(int sign, int value) {
    if (sign >= 0) return sign * value;
    return value == std::numeric_limits<int>::min() ? std::numeric_limits<int>::max() : -value;
}

}  // namespace

int CXImageCreator::GetOutputSize(_OUTSIZE_INFO& info, CSize& size) {
    const double aspectRatio = UsableAspectRatio(info.aspectRatio);
    if (IsHalfTurn(info.rotation)) {
        size.cx = Rounded(Width(info.roi) * info.zoom);
        size.cy = Rounded(Height(info.roi) * aspectRatio * info.zoom);
    } else {
        size.cx = Rounded(Height(info.roi) * info.zoom);
        size.cy = MultipleOfFour(Rounded(Width(info.roi) * aspectRatio * info.zoom));
    }
    size.cx = MultipleOfFour(size.cx);
    return kJobDone;
}

int CXImageCreator::GetRenderingROI(_ROI_INFO& info, CRect& rect) {
    const bool upright = IsHalfTurn(info.rotation);
    const double viewWidth = upright ? Width(info.viewRect) : Height(info.viewRect);
    const double viewHeight = upright ? Height(info.viewRect) : Width(info.viewRect);
    const double width = info.imageWidth;
    const double height = info.imageHeight;
    const CPoint pan = CalcImagePanOffset(info.rotation, info.horizontalFlip, info.panOffset);

    const double pixel = 1.0 / info.zoom;
    const double acrossMargin = (viewWidth * pixel - width) * 0.5;
    const double upMargin = (viewHeight * pixel - height * info.aspectRatio) * 0.5;
    rect.left = HeldEdge(-acrossMargin - pan.x * pixel, info.imageWidth);
    rect.top = HeldEdge(pan.y * pixel - upMargin, info.imageHeight);
    rect.right = HeldEdge(width + acrossMargin - pan.x * pixel, info.imageWidth);
    rect.bottom = HeldEdge(height + upMargin + pan.y * pixel, info.imageHeight);
    return kJobDone;
}

CPoint CXImageCreator::CalcImagePanOffset(int rotation, int flip, CPoint pan) {
    for (const PanAxes& axes : kPanAxes) {
        if (axes.rotation != rotation || axes.isFlipped != (flip != 0)) continue;
        return {Signed(axes.xx, pan.x) + Signed(axes.xy, pan.y),
                Signed(axes.yx, pan.x) + Signed(axes.yy, pan.y)};
    }
    return pan;
}

}  // namespace quorvex
