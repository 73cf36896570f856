/// From stored values to modality values.
#pragma once

#include "pipeline/intake/stored_elements.h"

#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

class CXGSPSInfo;

/// The modality stage of one presentation record: a look-up table, a rescale, or nothing.
class ModalityTransform {
public:
    /// Leaves values as they are.
    ModalityTransform() = default;
    /// Goes by the record, which must outlive this object.
    explicit ModalityTransform(const CXGSPSInfo& record) noexcept;

    [[nodiscard]] bool IsTable() const noexcept { return !entries_.empty(); }
    [[nodiscard]] bool IsIdentity() const noexcept {
        return !IsTable() && slope_ == 1.0 && intercept_ == 0.0;
    }

    /// A whole number that is all there is to add, where that is so.
    [[nodiscard]] std::optional<std::int64_t> Offset() const noexcept;

    /// The modality value of a stored one: cut towards zero; past a table's ends, its end entries.
    [[nodiscard]] std::int64_t operator()(std::int64_t stored) const noexcept;
    /// Lowest and highest modality value of stored ones that fill `stored`. Not for tables.
    [[nodiscard]] ValueSpan SpanOfRescaled(ValueSpan stored) const noexcept;
    /// Whether hardly anything of an image is left when its values are cut to whole numbers, as
    /// with slopes like 0.00001.
    [[nodiscard]] bool LosesDetail(ValueSpan stored) const noexcept;

    [[nodiscard]] double Slope() const noexcept { return slope_; }
    [[nodiscard]] double Intercept() const noexcept { return intercept_; }

private:
    std::span<const std::uint16_t> entries_;
    std::int64_t first_ = 0;  ///< the stored value of the first entry
    double slope_ = 1.0;
    double intercept_ = 0.0;
};

}  // namespace quorvex
