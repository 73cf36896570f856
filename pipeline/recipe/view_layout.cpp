#include "pipeline/recipe/view_layout.h"

#include "foundation/types/saturate.h"
#include "pipeline/displayed_image.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace quorvex {
namespace {

/// A distance or an extent on the screen, in device pixels.
struct Distance {
    double x = 0.0;
    double y = 0.0;
};

Distance Turned(Distance distance, int quarterTurns) {
    for (int turn = 0; turn < quarterTurns; ++turn) distance = {-distance.y, distance.x};
    return distance;
}

int QuarterTurnsOf(const DisplayedImage& image) {
    return image.QuarterTurns() / 90;
}

/// Sets the zoom at which an area of so many columns and rows just fits into the view.
void Fit(DisplayedImage& image, double columns, double rows) {
    double width = columns;
    double height = rows * image.EffectiveAspectRatio();
    if (QuarterTurnsOf(image) % 2 != 0) std::swap(width, height);
    image.zoom = std::min(image.viewSize.cx / width, image.viewSize.cy / height);
}

/// Pans so that a place of the image, in columns and rows, lies in the middle of the view.
void Centre(DisplayedImage& image, double column, double row) {
    const Distance fromMiddle{
        (column - image.imageSize.cx / 2.0) * image.zoom,
        (row - image.imageSize.cy / 2.0) * image.zoom * image.EffectiveAspectRatio()};
    Distance onScreen = Turned(fromMiddle, QuarterTurnsOf(image));
    if (image.horizontalFlip != 0) onScreen.x = -onScreen.x;
    const auto pan = [](double distance) { return TruncateToInt(std::floor(0.5 - distance)); };
    image.panOffset = {pan(onScreen.x), pan(onScreen.y)};
}

void LayOutArea(DisplayedImage& image, const DisplayedAreaSelection& area) {
    const bool hasSize =
        area.mode == SizeMode::kTrueSize && area.columnSpacing > 0.0 && image.screenPixelSize > 0.0;
    if (area.mode == SizeMode::kMagnify) {
        image.zoom = area.magnification;
    } else if (hasSize) {
        image.zoom = area.columnSpacing / image.screenPixelSize;
    } else {
        Fit(image, area.Width(), area.Height());
    }
    Centre(image, static_cast<double>(area.left - 1) + area.Width() / 2.0,
           static_cast<double>(area.top - 1) + area.Height() / 2.0);
}

/// Lays a reduced image where the whole one has been fitted, whatever was rounded as it was halved.
void KeepPlaceOf(DisplayedImage& image, CSize whole) {
    const double height = whole.cy * image.EffectiveAspectRatio() * image.zoom;
    image.zoom *= static_cast<double>(whole.cx) / image.imageSize.cx;
    image.aspectRatio = height / (image.imageSize.cy * image.zoom);
}

double ScaledWidth(const DisplayedImage& image) {
    return image.imageSize.cx * image.zoom;
}
double ScaledHeight(const DisplayedImage& image) {
    return image.imageSize.cy * image.zoom * image.EffectiveAspectRatio();
}

int Rounded(double length) {
    return std::max(TruncateToInt(length + 0.5), 1);
}

int Centred(std::int64_t view, std::int64_t length, int pan) {
    const std::int64_t free = view - length;
    return SaturateToInt((free >= 0 ? free / 2 : (free - 1) / 2) + pan);
}

}  // namespace

void LayOutByStandard(DisplayedImage& image) noexcept {
    const StandardImage& standard = *image.standard;
    image.aspectRatio = standard.aspect;
    const auto& applied = standard.applied;
    if (applied && applied->area) {
        image.aspectRatio = applied->area->aspect.value_or(standard.aspect);
        return LayOutArea(image, *applied->area);
    }
    const CSize whole = standard.whole.value_or(image.imageSize);
    Fit(image, whole.cx, whole.cy);
    if (standard.whole) KeepPlaceOf(image, whole);
    image.panOffset = {};
}

bool CanBePlaced(const DisplayedImage& image) noexcept {
    constexpr double kLongestSide = 1 << 30;
    return image.rotation % 90 == 0 && std::isfinite(image.zoom) && image.zoom >= 0.0 &&
           std::max(ScaledWidth(image), ScaledHeight(image)) <= kLongestSide;
}

ViewPlacement PlacementOf(const DisplayedImage& image) noexcept {
    ViewPlacement placement;
    placement.scaled = {Rounded(ScaledWidth(image)), Rounded(ScaledHeight(image))};
    placement.quarterTurns = QuarterTurnsOf(image);
    placement.isMirrored = image.horizontalFlip != 0;
    placement.turned = placement.quarterTurns % 2 == 0
                           ? placement.scaled
                           : CSize{placement.scaled.cy, placement.scaled.cx};
    placement.corner = {Centred(image.viewSize.cx, placement.turned.cx, image.panOffset.x),
                        Centred(image.viewSize.cy, placement.turned.cy, image.panOffset.y)};
    return placement;
}

void TurnOnScreen(DisplayedImage& image, int quarterTurns) noexcept {
    quarterTurns = (quarterTurns % 4 + 4) % 4;
    // What is turned after a mirror was turned the other way ahead of it.
    const int degrees = 90 * (image.horizontalFlip != 0 ? 4 - quarterTurns : quarterTurns);
    image.rotation = (image.QuarterTurns() + degrees) % 360;
    const auto negative = [](int length) { return SaturateToInt(-std::int64_t{length}); };
    for (int turn = 0; turn < quarterTurns; ++turn) {
        image.panOffset = {negative(image.panOffset.y), image.panOffset.x};
    }
}

void MirrorOnScreen(DisplayedImage& image) noexcept {
    image.horizontalFlip = image.horizontalFlip == 0 ? 1 : 0;
    image.panOffset.x = SaturateToInt(-std::int64_t{image.panOffset.x});
}

}  // namespace quorvex
