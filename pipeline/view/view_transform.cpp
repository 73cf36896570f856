#include "foundation/types/saturate.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <cmath>

namespace quorvex {

namespace {

enum PresentationSizeMode { kScaleToFit = 0, kTrueSize = 1, kMagnify = 2 };

constexpr double kSmallestSteppedZoom = 0.1;
constexpr double kLargestSteppedZoom = 10.0;

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

int Remainder360(std::int64_t degrees) noexcept {
    return static_cast<int>(degrees % 360);
}

}  // namespace

// --- Where the image starts in the view ----------------------------------------------------------

void CXDIPP::PrepareDisplayAreaTransform() noexcept {
    // A state that mirrors or turns names the corners as they lie afterwards, so that they come in
    // any order here.
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
            UpdateDisplayArea();
    }
}

// An area without extent cannot be fitted: the whole image is.
void CXDIPP::PrepareScaleToFit() noexcept {
    if (!HasArea(*presentation) || IsEmpty(roi)) {
        DoFit();
        UpdateDisplayArea();
        return;
    }
    zoom = std::min(viewSize.cx / Extent(roi.left, roi.right),
                    viewSize.cy / (Extent(roi.top, roi.bottom) * EffectiveAspectRatio()));
    const auto fromMiddle = [this](std::int32_t length, std::int64_t middle) {
        return TruncateToInt(static_cast<double>(length / 2 - middle) * zoom);
    };
    panOffset = {fromMiddle(imageSize.cx, Middle(roi.left, roi.right)),
                 fromMiddle(imageSize.cy, Middle(roi.top, roi.bottom))};
    UpdateDisplayArea();
}

void CXDIPP::PrepareMagnify() noexcept {
    panOffset = {SaturateToInt(imageSize.cx - Middle(roi.left, roi.right)),
                 SaturateToInt(imageSize.cy - Middle(roi.top, roi.bottom))};
    UpdateDisplayArea();
}

void CXDIPP::DoFit() noexcept {
    zoom = std::min(viewSize.cx / static_cast<double>(imageSize.cx),
                    viewSize.cy / (imageSize.cy * EffectiveAspectRatio()));
    panOffset = {};
}

void CXDIPP::UpdateDisplayArea() noexcept {
    roi = {0, 0, imageSize.cx, imageSize.cy};
}

double CXDIPP::EffectiveAspectRatio() const noexcept {
    return std::isfinite(aspectRatio) && aspectRatio > 0.0 ? aspectRatio : 1.0;
}

// The rotation as 0, 90, 180 or 270; what is no quarter turn stays between 0 and 359.
int CXDIPP::QuarterTurns() const noexcept {
    return (rotation % 360 + 360) % 360;
}

CPoint CXDIPP::CalcImagePanOffset() const noexcept {
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

// --- What a user changes -------------------------------------------------------------------------

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_Offset(int levelDelta, int widthDelta) {
    windowing->ChangeWLByOffset(levelDelta);
    windowing->ChangeWWByOffset(widthDelta);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_ABS(int level, int width) {
    int window[] = {width, level};
    windowing->SetValue(CXWindowing::kWindow, window, nullptr);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdatePresentationLUT_Toggle() {
    windowing->SetValue(CXWindowing::kInversion, nullptr, nullptr);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateZoom_Offset(int percent) {
    const double stepped = (zoom * 100.0 + percent) * 0.01;
    zoom = stepped >= kSmallestSteppedZoom ? std::min(stepped, kLargestSteppedZoom)
                                           : kSmallestSteppedZoom;
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateZoom_ABS(double zoomFactor) {
    zoom = zoomFactor;
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdatePan_Offset(CPoint delta) {
    return UpdatePan_ABS({SaturateToInt(std::int64_t{panOffset.x} + delta.x),
                          SaturateToInt(std::int64_t{panOffset.y} + delta.y)});
}

QUORVEX_MESSAGE CXDIPP::UpdatePan_ABS(CPoint pan) {
    panOffset = pan;
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateRotate_Offset(int degrees) {
    rotation = Remainder360(std::int64_t{rotation} + degrees);
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateRotate_ABS(int degrees) {
    rotation = Remainder360(degrees);
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateHFlip_Toggle() {
    horizontalFlip = horizontalFlip == 0 ? 1 : 0;
    UpdateDisplayArea();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateViewSize(CSize newViewSize) {
    if (newViewSize == viewSize) return QVM_SUCCESS;
    viewSize = newViewSize;
    if (presentation) PrepareDisplayAreaTransform();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::Inverse() {
    inverse = 1;
    return QVM_SUCCESS;
}

double CXDIPP::GetZoomFactor() const noexcept {
    return zoom;
}

CPoint CXDIPP::GetPanOffset() const noexcept {
    return panOffset;
}

void CXDIPP::GetWindowingFactor(int& width, int& level) const {
    windowing->GetWindowingFactor(width, level);
}

void CXDIPP::GetPixelSpace(double& x, double& y) const noexcept {
    x = presentation ? presentation->pixelSpacingX : 0.0;
    y = presentation ? presentation->pixelSpacingY : 0.0;
}

}  // namespace quorvex
