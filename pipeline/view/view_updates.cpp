#include "foundation/types/answer.h"
#include "foundation/types/saturate.h"
#include "pipeline/displayed_image.h"
#include "pipeline/recipe/display_rules.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quorvex {

namespace {

constexpr double kSmallestSteppedZoom = 0.1;
constexpr double kLargestSteppedZoom = 10.0;

}  // namespace

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_Offset(int levelDelta, int widthDelta) {
    RulesOf(*image_).StepWindow(*image_, levelDelta, widthDelta);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_ABS(int level, int width) {
    return UpdateVOILUT_ABS(static_cast<double>(level), static_cast<double>(width));
}

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_ABS(double level, double width) {
    RulesOf(*image_).SetWindow(*image_, level, width, std::nullopt);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateVOILUT_ABS(double level, double width, VoiFunction function) {
    RulesOf(*image_).SetWindow(*image_, level, width, function);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdatePresentationLUT_Toggle() {
    RulesOf(*image_).ToggleInversion(*image_);
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
    RulesOf(*image_).TurnBy(*image_, degrees);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateRotate_ABS(int degrees) {
    RulesOf(*image_).TurnTo(*image_, degrees);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateHFlip_Toggle() {
    RulesOf(*image_).Mirror(*image_);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::UpdateViewSize(CSize newViewSize) {
    if (newViewSize == image_->viewSize) return QVM_SUCCESS;
    image_->viewSize = newViewSize;
    if (image_->presentation) RulesOf(*image_).LayOut(*image_);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::Inverse() {
    image_->inverse = 1;
    return QVM_SUCCESS;
}

FrameQuality CXDIPP::GetFrameQuality() const noexcept {
    return image_->parser->GetFrameQuality();
}

double CXDIPP::GetZoomFactor() const noexcept {
    return image_->zoom;
}

CPoint CXDIPP::GetPanOffset() const noexcept {
    return image_->panOffset;
}

void CXDIPP::GetWindowingFactor(int& width, int& level) const {
    double exactWidth = 0.0;
    double exactLevel = 0.0;
    GetWindowingFactor(exactWidth, exactLevel);
    width = TruncateToInt(std::floor(exactWidth + 0.5));
    level = TruncateToInt(std::floor(exactLevel + 0.5));
}

void CXDIPP::GetWindowingFactor(double& width, double& level) const {
    RulesOf(*image_).ReadWindow(*image_, width, level);
}

int CXDIPP::GetVOIChoiceCount() const noexcept {
    if (!image_->standard || !image_->standard->isGrey) return 0;
    return static_cast<int>(image_->standard->Stages().voi.ChoiceCount());
}

CString CXDIPP::GetVOIExplanation(int choice) const {
    return Answer(CString(), [&] {
        if (choice < 0 || choice >= GetVOIChoiceCount()) return CString();
        const VoiStage& voi = image_->standard->Stages().voi;
        const auto place = static_cast<std::size_t>(choice);
        if (place < voi.tables.size()) return voi.tables[place]->explanation;
        return voi.windows[place - voi.tables.size()].explanation;
    });
}

QUORVEX_MESSAGE CXDIPP::SelectVOI(int choice) {
    if (!image_->standard || choice < kOverTheValues || choice >= GetVOIChoiceCount()) {
        return QVM_SUCCESS;
    }
    // What is past all choices is none of them.
    image_->standard->voiChoice = static_cast<std::size_t>(choice);
    image_->standard->userWindow.reset();
    return QVM_SUCCESS;
}

void CXDIPP::SetInterpolation(Interpolation enlarging) noexcept {
    image_->enlarging = enlarging;
}

void CXDIPP::SetScreenPixelSize(double millimetres) noexcept {
    image_->screenPixelSize = millimetres;
}

CSize CXDIPP::GetDisplayedSize() const noexcept {
    const CSize size = image_->imageSize;
    if (size.cx < 1 || size.cy < 1) return {};
    const double height = std::max(size.cy * image_->EffectiveAspectRatio(), 1.0);
    const CSize shown{size.cx, TruncateToInt(height + 0.5)};
    return image_->QuarterTurns() % 180 == 90 ? CSize{shown.cy, shown.cx} : shown;
}

void CXDIPP::GetPixelSpace(double& x, double& y) const noexcept {
    x = image_->presentation ? image_->presentation->pixelSpacingX : 0.0;
    y = image_->presentation ? image_->presentation->pixelSpacingY : 0.0;
}

}  // namespace quorvex
