#include "pipeline/recipe/established_rules.h"

#include "foundation/types/saturate.h"
#include "pipeline/intake/scaled_windowing.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "windowing/window_arithmetic.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace quorvex {

namespace {

int Remainder360(std::int64_t degrees) noexcept {
    return static_cast<int>(degrees % 360);
}

// A window has whole numbers, unless the values are finer.
double Kept(double number, bool hasFractions) noexcept {
    if (!std::isfinite(number)) return TruncateToInt(number);
    return hasFractions ? number : std::trunc(number);
}

void ShowValueWindow(DisplayedImage& image, const ValueWindow& window) {
    if (PutWindow(*image.windowing, window, image.valueScale)) image.valueWindow = window;
}

void StepValueWindow(DisplayedImage& image, int levelDelta, int widthDelta) {
    constexpr double kNarrowest = 2.0;
    const auto factor = static_cast<double>(StepFactor(image.presentation->pixelBitDepth));
    ValueWindow window = *image.valueWindow;
    window.level -= factor * levelDelta;
    if (widthDelta != 0) {
        window.width =
            std::max(window.width - factor * widthDelta, std::min(window.width, kNarrowest));
    }
    ShowValueWindow(image, window);
}

}  // namespace

void EstablishedRules::LayOut(DisplayedImage& image) const noexcept {
    image.PrepareDisplayAreaTransform();
}

void EstablishedRules::TurnBy(DisplayedImage& image, int degrees) const noexcept {
    image.rotation = Remainder360(std::int64_t{image.rotation} + degrees);
}

void EstablishedRules::TurnTo(DisplayedImage& image, int degrees) const noexcept {
    image.rotation = Remainder360(degrees);
}

void EstablishedRules::Mirror(DisplayedImage& image) const noexcept {
    image.horizontalFlip = image.horizontalFlip == 0 ? 1 : 0;
}

void EstablishedRules::SetWindow(DisplayedImage& image, double level, double width,
                                 std::optional<VoiFunction> /*function*/) const {
    if (image.valueWindow) {
        const bool hasFractions = image.valueScale.IsFractional();
        return ShowValueWindow(image, {Kept(level, hasFractions), Kept(width, hasFractions)});
    }
    int window[] = {TruncateToInt(width), TruncateToInt(level)};
    image.windowing->SetValue(CXWindowing::kWindow, window, nullptr);
}

void EstablishedRules::StepWindow(DisplayedImage& image, int levelDelta, int widthDelta) const {
    if (image.valueWindow) return StepValueWindow(image, levelDelta, widthDelta);
    image.windowing->ChangeWLByOffset(levelDelta);
    image.windowing->ChangeWWByOffset(widthDelta);
}

void EstablishedRules::ToggleInversion(DisplayedImage& image) const {
    image.windowing->SetValue(CXWindowing::kInversion, nullptr, nullptr);
}

void EstablishedRules::ReadWindow(DisplayedImage& image, double& width, double& level) const {
    if (image.valueWindow) {
        width = image.valueWindow->width;
        level = image.valueWindow->level;
        return;
    }
    int wholeWidth = 0;
    int wholeLevel = 0;
    image.windowing->GetWindowingFactor(wholeWidth, wholeLevel);
    width = wholeWidth;
    level = wholeLevel;
}

}  // namespace quorvex
