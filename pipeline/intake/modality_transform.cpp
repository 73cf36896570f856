#include "pipeline/intake/modality_transform.h"

#include "foundation/types/saturate.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvex {

namespace {

constexpr int kEntriesForCountZero = 65536;

std::size_t EntryCount(const CXGSPSInfo& record) {
    const int count = record.modalityLUTCount;
    return static_cast<std::size_t>(count > 0 ? count : kEntriesForCountZero);
}

}  // namespace

ModalityTransform::ModalityTransform(const CXGSPSInfo& record) noexcept {
    if (record.modalityLUTData != nullptr) {
        entries_ = {record.modalityLUTData, EntryCount(record)};
        first_ = record.pixelRepresentation != 0
                     ? std::int64_t{static_cast<std::int16_t>(record.modalityLUTFirst)}
                     : std::int64_t{record.modalityLUTFirst};
        return;
    }
    const bool isRescale = record.rescaleSlope != 0.0 && std::isfinite(record.rescaleSlope) &&
                           std::isfinite(record.rescaleIntercept);
    if (!isRescale) return;
    slope_ = record.rescaleSlope;
    intercept_ = record.rescaleIntercept;
}

std::optional<std::int64_t> ModalityTransform::Offset() const noexcept {
    const std::int64_t whole = TruncateToInt64(intercept_);
    if (IsTable() || slope_ != 1.0 || static_cast<double>(whole) != intercept_) return std::nullopt;
    return whole;
}

std::int64_t ModalityTransform::operator()(std::int64_t stored) const noexcept {
    if (IsTable()) {
        const auto last = static_cast<std::int64_t>(entries_.size()) - 1;
        return entries_[static_cast<std::size_t>(
            std::clamp<std::int64_t>(stored - first_, 0, last))];
    }
    return TruncateToInt64(Exact(stored));
}

ValueSpan ModalityTransform::SpanOfRescaled(ValueSpan stored) const noexcept {
    const std::int64_t one = (*this)(stored.low);
    const std::int64_t other = (*this)(stored.high);
    return {std::min(one, other), std::max(one, other)};
}

bool ModalityTransform::LosesDetail() const noexcept {
    constexpr double kMostForOne = 8.0;
    return !IsTable() && std::abs(slope_) * kMostForOne < 1.0;
}

}  // namespace quorvex
