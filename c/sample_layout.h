/// How the frames of an image lie in memory, and what their values are worth.
#pragma once

#include "quorvex/CxDcmParser.h"
#include "quorvex/quorvex.h"

#include <optional>
#include <span>
#include <vector>

namespace quorvex::c {

/// Nothing for what is no image.
[[nodiscard]] std::optional<quorvex_facts> FactsOf(const CxDcmParser& parser);

/// How stored values become modality units.
class ModalityOf {
public:
    /// Of one frame, from 0 on.
    ModalityOf(CxDcmParser& parser, int frame);

    [[nodiscard]] double Slope() const noexcept { return slope_; }
    [[nodiscard]] double Intercept() const noexcept { return intercept_; }
    [[nodiscard]] bool HasTable() const noexcept { return !table_.empty(); }
    [[nodiscard]] double Value(double stored) const noexcept;

private:
    double slope_ = 1.0;
    double intercept_ = 0.0;
    double first_ = 0.0;
    std::vector<std::uint16_t> table_;
};

/// Samples of a frame that has come by `facts`, as numbers in modality units.
void ToValues(const quorvex_facts& facts, const ModalityOf& modality,
              std::span<const unsigned char> samples, std::span<float> values) noexcept;

}  // namespace quorvex::c
