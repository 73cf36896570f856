#include "presentation/grey/grey_stages.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvex {

std::uint16_t GreyTable::At(std::int64_t value) const noexcept {
    const auto last = static_cast<std::int64_t>(entries.size()) - 1;
    return entries[static_cast<std::size_t>(std::clamp<std::int64_t>(value - first, 0, last))];
}

double ModalityStage::operator()(std::int64_t stored) const noexcept {
    if (table) return table->At(stored);
    return static_cast<double>(stored) * slope + intercept;
}

double ModalityStage::OfReal(double stored) const noexcept {
    if (std::isnan(stored)) return -std::numeric_limits<double>::infinity();
    if (!table) return stored * slope + intercept;
    constexpr double kFar = 1e9;  // past both ends of every table
    return table->At(static_cast<std::int64_t>(std::floor(std::clamp(stored, -kFar, kFar) + 0.5)));
}

double GreyWindow::operator()(double value) const noexcept {
    if (function == VoiFunction::kSigmoid)
        return 1.0 / (1.0 + std::exp(-4.0 * (value - centre) / width));
    const bool isExact = function == VoiFunction::kLinearExact;
    const double middle = isExact ? centre : centre - 0.5;
    const double extent = isExact ? width : width - 1.0;
    if (value <= middle - extent / 2.0) return 0.0;
    if (value > middle + extent / 2.0) return 1.0;
    return std::clamp((value - middle) / extent + 0.5, 0.0, 1.0);
}

GreyWindow GreyWindow::Over(double low, double high) noexcept {
    return {(low + high + 1.0) / 2.0, high - low + 1.0, VoiFunction::kLinear};
}

std::optional<GreyWindow> MakeWindow(double centre, double width, VoiFunction function) {
    if (!std::isfinite(centre) || !std::isfinite(width) || width <= 0.0) return std::nullopt;
    const bool isTooNarrow = function == VoiFunction::kLinear && width < 1.0;
    return GreyWindow{centre, width, isTooNarrow ? VoiFunction::kLinearExact : function};
}

}  // namespace quorvex
