#include "foundation/raster/scaling/scale_kernels.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/scaling/scale_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Up to four rows in one go: their sum stays in registers, so that the sums are written once.
template <std::size_t kRows, class Value>
void WeighRowsBy(const Value* const* rows, const float* weights, bool adds, float* sums,
                 std::size_t count) {
    const hn::ScalableTag<float> floats;
    const hn::Rebind<std::int32_t, decltype(floats)> integers;
    const hn::Rebind<Value, decltype(floats)> stored;
    const auto numbersAt = [&](std::size_t row, std::size_t i) HWY_ATTR {
        return hn::ConvertTo(floats, hn::PromoteTo(integers, hn::LoadU(stored, rows[row] + i)));
    };
    const auto weightOf = [&](std::size_t row) HWY_ATTR {
        return hn::Set(floats, weights[std::min(row, kRows - 1)]);
    };
    const auto first = weightOf(0);
    const auto second = weightOf(1);
    const auto third = weightOf(2);
    const auto fourth = weightOf(3);
    const std::size_t lanes = hn::Lanes(floats);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        auto sum = hn::Mul(numbersAt(0, i), first);
        if constexpr (kRows > 1) sum = hn::MulAdd(numbersAt(1, i), second, sum);
        if constexpr (kRows > 2) sum = hn::MulAdd(numbersAt(2, i), third, sum);
        if constexpr (kRows > 3) sum = hn::MulAdd(numbersAt(3, i), fourth, sum);
        if (adds) sum = hn::Add(sum, hn::LoadU(floats, sums + i));
        hn::StoreU(sum, floats, sums + i);
    }
    for (; i < count; ++i) {
        float sum = adds ? sums[i] : 0.0F;
        for (std::size_t row = 0; row < kRows; ++row) {
            sum += static_cast<float>(rows[row][i]) * weights[row];
        }
        sums[i] = sum;
    }
}

template <class Value>
void WeighValues(const unsigned char* const* bytes, const float* weights, std::size_t rowCount,
                 bool adds, float* sums, std::size_t count) {
    // Frames lie where words may lie.
    const Value* rows[kMostRowsAtOnce] = {};
    for (std::size_t i = 0; i < rowCount; ++i) {
        rows[i] = static_cast<const Value*>(static_cast<const void*>(bytes[i]));
    }
    switch (rowCount) {
        case 1:
            return WeighRowsBy<1>(rows, weights, adds, sums, count);
        case 2:
            return WeighRowsBy<2>(rows, weights, adds, sums, count);
        case 3:
            return WeighRowsBy<3>(rows, weights, adds, sums, count);
        default:
            return WeighRowsBy<4>(rows, weights, adds, sums, count);
    }
}

void Weigh(const unsigned char* const* rows, ValueKind kind, const float* weights,
           std::size_t rowCount, bool adds, float* sums, std::size_t count) {
    switch (kind) {
        case ValueKind::kUnsignedByte:
            return WeighValues<std::uint8_t>(rows, weights, rowCount, adds, sums, count);
        case ValueKind::kSignedByte:
            return WeighValues<std::int8_t>(rows, weights, rowCount, adds, sums, count);
        case ValueKind::kUnsignedWord:
            return WeighValues<std::uint16_t>(rows, weights, rowCount, adds, sums, count);
        case ValueKind::kSignedWord:
            return WeighValues<std::int16_t>(rows, weights, rowCount, adds, sums, count);
    }
}

template <bool kAdds>
void WeighFloatsBy(const float* row, float weight, float* sums, std::size_t count) {
    const hn::ScalableTag<float> floats;
    const auto weights = hn::Set(floats, weight);
    const std::size_t lanes = hn::Lanes(floats);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto values = hn::LoadU(floats, row + i);
        if constexpr (kAdds) {
            hn::StoreU(hn::MulAdd(values, weights, hn::LoadU(floats, sums + i)), floats, sums + i);
        } else {
            hn::StoreU(hn::Mul(values, weights), floats, sums + i);
        }
    }
    for (; i < count; ++i) sums[i] = kAdds ? sums[i] + row[i] * weight : row[i] * weight;
}

void WeighFloats(const float* row, float weight, bool adds, float* sums, std::size_t count) {
    adds ? WeighFloatsBy<true>(row, weight, sums, count)
         : WeighFloatsBy<false>(row, weight, sums, count);
}

void Round(const float* row, unsigned char* bytes, std::size_t count) {
    const hn::ScalableTag<float> floats;
    const hn::Rebind<std::int32_t, decltype(floats)> integers;
    const hn::Rebind<std::uint8_t, decltype(floats)> octets;
    const auto half = hn::Set(floats, 0.5F);
    const auto zero = hn::Zero(floats);
    const auto most = hn::Set(floats, 255.0F);
    const std::size_t lanes = hn::Lanes(floats);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto value = hn::Add(hn::Min(hn::Max(hn::LoadU(floats, row + i), zero), most), half);
        hn::StoreU(hn::DemoteTo(octets, hn::ConvertTo(integers, value)), octets, bytes + i);
    }
    for (; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(std::lround(std::clamp(row[i], 0.0F, 255.0F)));
    }
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Weigh);
HWY_EXPORT(WeighFloats);
HWY_EXPORT(Round);

void WeighRows(std::span<const unsigned char* const> rows, ValueKind kind,
               std::span<const float> weights, bool adds, std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(Weigh)
    (rows.data(), kind, weights.data(), rows.size(), adds, sums.data(), sums.size());
}

void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(WeighFloats)(row.data(), weight, adds, sums.data(), row.size());
}

void RoundRow(std::span<const float> row, std::span<unsigned char> bytes) {
    HWY_DYNAMIC_DISPATCH(Round)(row.data(), bytes.data(), row.size());
}

}  // namespace quorvex
#endif
