#include "foundation/types/saturate.h"
#include "pipeline/displayed_image.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cstdint>

namespace quorvex {

namespace {

constexpr double kSmallestSteppedZoom = 0.1;
constexpr double kLargestSteppedZoom = 10.0;

int Remainder360(std::int64_t degrees) noexcept {
    return static_cast<int>(degrees % 360);
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_Offset(int levelDelta, int widthDelta) {
    image_->windowing->ChangeWLByOffset(levelDelta);
    image_->windowing->ChangeWWByOffset(widthDelta);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_ABS(int level, int width) {
    int window[] = {width, level};
    image_->windowing->SetValue(CXWindowing::kWindow, window, nullptr);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdatePresentationLUT_Toggle() {
    image_->windowing->SetValue(CXWindowing::kInversion, nullptr, nullptr);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateZoom_Offset(int percent) {
    const double stepped = (image_->zoom * 100.0 + percent) * 0.01;
    image_->zoom = stepped >= kSmallestSteppedZoom ? std::min(stepped, kLargestSteppedZoom)
                                                   : kSmallestSteppedZoom;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateZoom_ABS(double zoomFactor) {
    image_->zoom = zoomFactor;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdatePan_Offset(CPoint delta) {
    return UpdatePan_ABS({SaturateToInt(std::int64_t{image_->panOffset.x} + delta.x),
                          SaturateToInt(std::int64_t{image_->panOffset.y} + delta.y)});
}

QUORVEX_MESSAGE CXDIPP::UpdatePan_ABS(CPoint pan) {
    image_->panOffset = pan;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateRotate_Offset(int degrees) {
    image_->rotation = Remainder360(std::int64_t{image_->rotation} + degrees);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateRotate_ABS(int degrees) {
    image_->rotation = Remainder360(degrees);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateHFlip_Toggle() {
    image_->horizontalFlip = image_->horizontalFlip == 0 ? 1 : 0;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateViewSize(CSize newViewSize) {
    if (newViewSize == image_->viewSize) return QVM_SUCCESS;
    image_->viewSize = newViewSize;
    if (image_->presentation) image_->PrepareDisplayAreaTransform();
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::Inverse() {
    image_->inverse = 1;
    return QVM_SUCCESS;
}

double CXDIPP::GetZoomFactor() const noexcept {
    return image_->zoom;
}

CPoint CXDIPP::GetPanOffset() const noexcept {
    return image_->panOffset;
}

void CXDIPP::GetWindowingFactor(int& width, int& level) const {
    image_->windowing->GetWindowingFactor(width, level);
}

void CXDIPP::GetPixelSpace(double& x, double& y) const noexcept {
    x = image_->presentation ? image_->presentation->pixelSpacingX : 0.0;
    y = image_->presentation ? image_->presentation->pixelSpacingY : 0.0;
}

}  // namespace quorvex
