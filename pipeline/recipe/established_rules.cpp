#include "pipeline/recipe/established_rules.h"

#include "foundation/types/saturate.h"
#include "quorvex/CXWindowing.h"

#include <cstdint>

namespace quorvex {

namespace {

int Remainder360(std::int64_t degrees) noexcept {
    return static_cast<int>(degrees % 360);
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
    int window[] = {TruncateToInt(width), TruncateToInt(level)};
    image.windowing->SetValue(CXWindowing::kWindow, window, nullptr);
}

void EstablishedRules::StepWindow(DisplayedImage& image, int levelDelta, int widthDelta) const {
    image.windowing->ChangeWLByOffset(levelDelta);
    image.windowing->ChangeWWByOffset(widthDelta);
}

void EstablishedRules::ToggleInversion(DisplayedImage& image) const {
    image.windowing->SetValue(CXWindowing::kInversion, nullptr, nullptr);
}

void EstablishedRules::ReadWindow(DisplayedImage& image, double& width, double& level) const {
    int wholeWidth = 0;
    int wholeLevel = 0;
    image.windowing->GetWindowingFactor(wholeWidth, wholeLevel);
    width = wholeWidth;
    level = wholeLevel;
}

}  // namespace quorvex
