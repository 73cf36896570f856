/// From stored values to modality values.
#pragma once

#include "pipeline/value_range.h"

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

    /// The whole number to add, where the stage does nothing else.
    [[nodiscard]] std::optional<std::int64_t> Offset() const noexcept;

    /// The modality value of a stored one, truncated towards zero; outside a table its nearest
    /// entry.
    [[nodiscard]] std::int64_t operator()(std::int64_t stored) const noexcept;
    /// Lowest and highest modality value of stored ones that fill `stored`. Not for tables.
    [[nodiscard]] ValueSpan SpanOfRescaled(ValueSpan stored) const noexcept;
    /// The same with its fraction. Not for tables.
    [[nodiscard]] double Exact(std::int64_t stored) const noexcept {
        return static_cast<double>(stored) * slope_ + intercept_;
    }
    /// Whether values that are truncated to whole numbers lose detail that can be seen: more than
    /// eight stored values become one.
    [[nodiscard]] bool LosesDetail() const noexcept;

    [[nodiscard]] double Slope() const noexcept { return slope_; }
    [[nodiscard]] double Intercept() const noexcept { return intercept_; }

private:
    std::span<const std::uint16_t> entries_;
    std::int64_t first_ = 0;  ///< the stored value of the first entry
    double slope_ = 1.0;
    double intercept_ = 0.0;
};

}  // namespace quorvex
