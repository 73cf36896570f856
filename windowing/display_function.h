/// All grey stages as one function, computed without rounding before the end.
#pragma once

#include "presentation/grey/grey_stages.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <variant>

namespace quorvex {

/// What the VOI stage does: a window, or a table.
using VoiChoice = std::variant<GreyWindow, std::shared_ptr<const GreyTable>>;

/// From stored values to display bytes.
struct DisplayFunction {
    ModalityStage modality;
    VoiChoice voi;
    PresentationStage presentation;
    bool isComplemented = false;  ///< black shows as white, whatever the stages say

    [[nodiscard]] unsigned char operator()(std::int64_t stored) const noexcept;
    [[nodiscard]] unsigned char OfReal(double stored) const noexcept;
    /// The straight line that the bytes follow before they are clamped and rounded; nothing where
    /// they follow none.
    struct Line {
        double gain = 0.0;  ///< bytes for one step of a stored value
        double zero = 0.0;  ///< the stored value, a fraction too, where it is 0
    };
    [[nodiscard]] std::optional<Line> AsLine() const noexcept;
    /// Fills `table` with the bytes of `low` and of those that follow it.
    void Fill(std::int64_t low, std::span<unsigned char> table) const noexcept;
    [[nodiscard]] unsigned char ByteOfValue(double modalityValue) const noexcept;
};

}  // namespace quorvex
