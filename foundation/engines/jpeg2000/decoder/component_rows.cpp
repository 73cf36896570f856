#include "foundation/engines/jpeg2000/decoder/component_rows.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace quorvex::j2k {
namespace {

// What must be made of a resolution so that `region` comes out right.
template <class T>
Rect Widened(const Rect& region, const Rect& area) noexcept {
    constexpr std::uint32_t kMargin = Synthesis<T>::kMargin;
    const auto before = [](std::uint32_t place, std::uint32_t least) {
        return std::max(least, place > kMargin ? place - kMargin : 0);
    };
    return {before(region.x0, area.x0), before(region.y0, area.y0),
            std::min(region.x1 + kMargin, area.x1), std::min(region.y1 + kMargin, area.y1)};
}

// The part of a level's window that one of its bands holds.
Rect BandWindow(const Rect& window, Orientation orientation) noexcept {
    const std::uint32_t right = 1 - (static_cast<std::uint32_t>(orientation) & 1);
    const std::uint32_t lower = 1 - (static_cast<std::uint32_t>(orientation) >> 1);
    return {(window.x0 + right) / 2, (window.y0 + lower) / 2, (window.x1 + right) / 2,
            (window.y1 + lower) / 2};
}

// Half a step, since coefficients have a fraction bit, with the scaling of all levels from the
// band's own to the top one.
float ScaleOf(const BandLayout& band, unsigned resolution, unsigned top) noexcept {
    constexpr auto kScale = static_cast<double>(kLowScale);
    constexpr double kSquare = kScale * kScale;
    double scale = 0.5 * static_cast<double>(band.step) * std::pow(kSquare, top - resolution);
    if (band.orientation == Orientation::HH) scale /= kSquare;
    return static_cast<float>(scale);
}

}  // namespace

template <class T>
ComponentRows<T>::ComponentRows(const BlockContext& context, unsigned component,
                                unsigned resolution, const Rect& region)
    : levels_(resolution + 1) {
    const auto& resolutions = context.tile->layout.components[component].resolutions;
    std::vector<Rect> windows(resolution + 1);  // of each level's output
    Rect wanted = region;
    for (unsigned r = resolution; r > 0; --r) {
        windows[r] = Widened<T>(wanted, resolutions[r].area);
        wanted = BandWindow(windows[r], Orientation::LL);
    }
    windows[0] = wanted;
    AddBand(levels_[0], context, {component, 0, 0}, windows[0], resolution);
    top_ = levels_[0].bands[0].get();
    for (unsigned r = 1; r <= resolution; ++r) {
        for (unsigned band = 0; band < 3; ++band) {
            const Rect window = BandWindow(windows[r], resolutions[r].bands[band].orientation);
            AddBand(levels_[r], context, {component, r, band}, window, resolution);
        }
        const auto& bands = levels_[r].bands;
        const std::uint32_t low = BandWindow(windows[r], Orientation::LL).x0;
        const BandSources<T> sources{top_, bands[0].get(), bands[1].get(), bands[2].get(),
                                     low - windows[r - 1].x0};
        levels_[r].synthesis = std::make_unique<Synthesis<T>>(windows[r], sources);
        top_ = levels_[r].synthesis.get();
    }
    skip_ = region.x0 - windows[resolution].x0;
}

template <class T>
void ComponentRows<T>::AddBand(Level& level, const BlockContext& context, const BandPlace& place,
                               const Rect& window, unsigned top) {
    const BandLayout& band = context.tile->layout.components[place.component]
                                 .resolutions[place.resolution]
                                 .bands[place.band];
    level.bands.push_back(std::make_unique<BandRows<T>>(context, place, window,
                                                        ScaleOf(band, place.resolution, top)));
}

template <class T>
void ComponentRows<T>::Plan(std::uint32_t yEnd, std::vector<std::unique_ptr<BlockJob>>& jobs) {
    for (std::size_t r = levels_.size(); r-- > 0;) {
        // A level's row is done when the one kMargin + 1 below has come.
        if (r > 0) yEnd = (yEnd + Synthesis<T>::kMargin + 2) / 2 + 1;
        for (const auto& band : levels_[r].bands) band->Plan(yEnd, jobs);
    }
}

template class ComponentRows<std::int32_t>;
template class ComponentRows<float>;

}  // namespace quorvex::j2k
