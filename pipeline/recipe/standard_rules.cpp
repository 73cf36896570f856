#include "pipeline/recipe/standard_rules.h"

#include "pipeline/recipe/standard_view.h"

#include <algorithm>
#include <cstdint>

namespace quorvex {

namespace {

constexpr int kQuarter = 90;

/// Steps of a window change: for up to 16 bits as `CXWindowing` has them, else by the values.
double StepFactor(const DisplayedImage& image) {
    const int bitsAllocated = image.standard->bitsAllocated;
    constexpr int kWords = 16;
    constexpr double kSteps = 1024.0;  // over all values, which may be in any unit
    if (bitsAllocated > kWords) return WindowOverValues(image).width / kSteps;
    if (bitsAllocated == kWords) return 3.0;
    return bitsAllocated == 12 ? 2.0 : 1.0;
}

/// What a window that is set without a function keeps: that of the window chosen last, or the one
/// that the image states; real values are told apart exactly.
VoiFunction FunctionOf(const DisplayedImage& image) {
    const StandardImage& standard = *image.standard;
    if (standard.userWindow) return standard.userWindow->function;
    if (standard.IsReal()) return VoiFunction::kLinearExact;
    const auto& windows = standard.Stages().voi.windows;
    const bool isStated = standard.isGrey && !windows.empty();
    return isStated ? windows.front().window.function : VoiFunction::kLinear;
}

bool IsTurn(std::int64_t degrees) {
    return degrees % kQuarter == 0;
}

}  // namespace

void StandardRules::LayOut(DisplayedImage& image) const noexcept {
    LayOutByStandard(image);
}

void StandardRules::TurnBy(DisplayedImage& image, int degrees) const noexcept {
    if (IsTurn(degrees)) return TurnOnScreen(image, degrees / kQuarter);
    image.rotation = static_cast<int>((std::int64_t{image.rotation} + degrees) % 360);
}

void StandardRules::TurnTo(DisplayedImage& image, int degrees) const noexcept {
    if (!IsTurn(degrees) || !IsTurn(image.rotation)) {
        image.rotation = degrees % 360;
        return;
    }
    const int further = degrees % 360 - image.rotation;
    TurnOnScreen(image, (image.horizontalFlip != 0 ? -further : further) / kQuarter);
}

void StandardRules::Mirror(DisplayedImage& image) const noexcept {
    MirrorOnScreen(image);
}

void StandardRules::SetWindow(DisplayedImage& image, double level, double width,
                              std::optional<VoiFunction> function) const {
    const auto window = MakeWindow(level, width, function.value_or(FunctionOf(image)));
    if (window) image.standard->userWindow = window;
}

void StandardRules::StepWindow(DisplayedImage& image, int levelDelta, int widthDelta) const {
    GreyWindow window = PresentWindow(image);
    const double factor = StepFactor(image);
    const double narrowest =
        window.function == VoiFunction::kLinear ? 1.0 : std::min(window.width, 1.0);
    window.centre -= factor * levelDelta;
    if (widthDelta != 0) {
        window.width = std::max(window.width - factor * widthDelta, narrowest);
    }
    image.standard->userWindow = window;
}

void StandardRules::ToggleInversion(DisplayedImage& image) const {
    image.standard->isToggled = !image.standard->isToggled;
}

void StandardRules::ReadWindow(DisplayedImage& image, double& width, double& level) const {
    const GreyWindow window = PresentWindow(image);
    width = window.width;
    level = window.centre;
}

QUORVEX_MESSAGE StandardRules::Render(DisplayedImage& image) const {
    return RenderStandardView(image);
}

QUORVEX_MESSAGE StandardRules::RenderInto(DisplayedImage& image, const PixelTarget& target) const {
    return RenderStandardViewInto(image, target);
}

QUORVEX_MESSAGE StandardRules::DescribePicture(const DisplayedImage& image,
                                               PictureInfo& picture) const {
    return DescribeStandardView(image, picture);
}

// A pan or another view size may uncover what the last render left out.
void StandardRules::DrawOnto(DrawingSurface& surface, DisplayedImage& image) const {
    if (IsResultStale(image)) static_cast<void>(RenderStandardView(image));
    DrawStandardView(surface, image);
}

}  // namespace quorvex
