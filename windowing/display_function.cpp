#include "windowing/display_function.h"

#include <algorithm>
#include <cmath>

namespace quorvex {
namespace {

constexpr double kWhite = 255.0;
constexpr double kHalf = 0.5 + 1e-9;

double ThroughVoi(const VoiChoice& voi, double modalityValue) noexcept {
    if (const auto* const window = std::get_if<GreyWindow>(&voi)) return (*window)(modalityValue);
    const GreyTable& table = *std::get<std::shared_ptr<const GreyTable>>(voi);
    constexpr double kFar = 1e9;  // past both ends of every table
    const double place = std::floor(std::clamp(modalityValue, -kFar, kFar) + 0.5);
    return table.At(static_cast<std::int64_t>(place)) / table.Highest();
}

/// A presentation table has its entries for the whole range of its input.
double ThroughPresentation(const PresentationStage& stage, double input) noexcept {
    if (!stage.table) return stage.isInverse ? 1.0 - input : input;
    const auto last = static_cast<double>(stage.table->entries.size() - 1);
    const auto place = static_cast<std::size_t>(std::floor(input * last + 0.5));
    return stage.table->entries[place] / stage.table->Highest();
}

/// Halves go up, those too that a sum of fractions has missed by a hair.
unsigned char ByteOf(double output) noexcept {
    return static_cast<unsigned char>(output * kWhite + kHalf);
}

}  // namespace

unsigned char DisplayFunction::ByteOfValue(double modalityValue) const noexcept {
    const double output = ThroughPresentation(presentation, ThroughVoi(voi, modalityValue));
    return ByteOf(isComplemented ? 1.0 - output : output);
}

unsigned char DisplayFunction::operator()(std::int64_t stored) const noexcept {
    return ByteOfValue(modality(stored));
}

unsigned char DisplayFunction::OfReal(double stored) const noexcept {
    return ByteOfValue(modality.OfReal(stored));
}

std::optional<DisplayFunction::Line> DisplayFunction::AsLine() const noexcept {
    const auto* const window = std::get_if<GreyWindow>(&voi);
    const bool isLine = window != nullptr && window->function != VoiFunction::kSigmoid &&
                        !modality.table && !presentation.table && modality.slope != 0.0;
    if (!isLine) return std::nullopt;
    const bool isExact = window->function == VoiFunction::kLinearExact;
    const double middle = isExact ? window->centre : window->centre - 0.5;
    const double extent = isExact ? window->width : window->width - 1.0;
    if (!(extent > 0.0)) return std::nullopt;
    const bool isFalling = presentation.isInverse != isComplemented;
    const double gain = kWhite * modality.slope / extent;
    const double black = isFalling ? middle + extent / 2.0 : middle - extent / 2.0;
    return Line{isFalling ? -gain : gain, (black - modality.intercept) / modality.slope};
}

void DisplayFunction::Fill(std::int64_t low, std::span<unsigned char> table) const noexcept {
    if (const auto line = AsLine()) {
        const double first = line->gain * (static_cast<double>(low) - line->zero);
        for (std::size_t i = 0; i < table.size(); ++i) {
            const double byte = first + line->gain * static_cast<double>(static_cast<int>(i));
            table[i] = static_cast<unsigned char>(std::clamp(byte, 0.0, kWhite) + kHalf);
        }
        return;
    }
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = (*this)(low + static_cast<std::int64_t>(i));
    }
}

}  // namespace quorvex
