#include "foundation/raster/scaling/scale_kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/scaling/scale_kernels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Up to four rows in one go: their sum stays in registers, so that the sums are written once.
template <std::size_t kRows, bool kClamps, class Value>
void WeighRowsBy(const Value* const* rows, const float* weights, const RowTask& task, float* sums,
                 std::size_t count) {
    const ValueLimits clamp = task.clamp.value_or(ValueLimits{});
    const bool adds = task.adds;
    const auto sumAt = [&](auto floats, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int32_t, decltype(floats)> integers;
        const hn::Rebind<Value, decltype(floats)> stored;
        const auto numbersOf = [&](std::size_t row) HWY_ATTR {
            const Value* const from = rows[row] + i;
            const auto numbers =
                hn::ConvertTo(floats, hn::PromoteTo(integers, hn::LoadU(stored, from)));
            if constexpr (!kClamps) return numbers;
            return hn::Min(hn::Max(numbers, hn::Set(floats, clamp.low)),
                           hn::Set(floats, clamp.high));
        };
        const auto weightOf = [&](std::size_t row)
                                  HWY_ATTR { return hn::Set(floats, weights[row]); };
        auto sum = hn::Mul(numbersOf(0), weightOf(0));
        if constexpr (kRows > 1) sum = hn::MulAdd(numbersOf(1), weightOf(1), sum);
        if constexpr (kRows > 2) sum = hn::MulAdd(numbersOf(2), weightOf(2), sum);
        if constexpr (kRows > 3) sum = hn::MulAdd(numbersOf(3), weightOf(3), sum);
        if (adds) sum = hn::Add(sum, hn::LoadU(floats, sums + i));
        hn::StoreU(sum, floats, sums + i);
    };
    const hn::ScalableTag<float> whole;
    const std::size_t lanes = hn::Lanes(whole);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        for (std::size_t row = 0; kClamps && i % (2 * lanes) == 0 && row < kRows; ++row) {
            const void* const from = rows[row] + i;
            hwy::Prefetch(static_cast<const char*>(from) + task.ahead);
        }
        sumAt(whole, i);
    }
    // By the same instructions, for the same sums.
    for (; i < count; ++i) sumAt(hn::CappedTag<float, 1>(), i);
}

template <class Value, bool kClamps>
void WeighValuesBy(const unsigned char* const* bytes, const float* weights, std::size_t rowCount,
                   const RowTask& task, float* sums, std::size_t count) {
    // Frames lie where words may lie.
    const Value* rows[kMostRowsAtOnce] = {};
    for (std::size_t i = 0; i < rowCount; ++i) {
        rows[i] = static_cast<const Value*>(static_cast<const void*>(bytes[i]));
    }
    switch (rowCount) {
        case 1:
            return WeighRowsBy<1, kClamps>(rows, weights, task, sums, count);
        case 2:
            return WeighRowsBy<2, kClamps>(rows, weights, task, sums, count);
        case 3:
            return WeighRowsBy<3, kClamps>(rows, weights, task, sums, count);
        default:
            return WeighRowsBy<4, kClamps>(rows, weights, task, sums, count);
    }
}

template <class Value>
void WeighValues(const unsigned char* const* bytes, const float* weights, std::size_t rowCount,
                 const RowTask& task, float* sums, std::size_t count) {
    task.clamp ? WeighValuesBy<Value, true>(bytes, weights, rowCount, task, sums, count)
               : WeighValuesBy<Value, false>(bytes, weights, rowCount, task, sums, count);
}

void Weigh(const unsigned char* const* rows, ValueKind kind, const float* weights,
           std::size_t rowCount, const RowTask& task, float* sums, std::size_t count) {
    switch (kind) {
        case ValueKind::kUnsignedByte:
            return WeighValues<std::uint8_t>(rows, weights, rowCount, task, sums, count);
        case ValueKind::kSignedByte:
            return WeighValues<std::int8_t>(rows, weights, rowCount, task, sums, count);
        case ValueKind::kUnsignedWord:
            return WeighValues<std::uint16_t>(rows, weights, rowCount, task, sums, count);
        case ValueKind::kSignedWord:
            return WeighValues<std::int16_t>(rows, weights, rowCount, task, sums, count);
    }
}

template <class Floats, class Value>
ValueLimits LimitsIn(Floats floats, const unsigned char* values, std::size_t rowBytes,
                     std::size_t rowCount, std::size_t count) {
    const hn::Rebind<std::int32_t, Floats> integers;
    const hn::Rebind<Value, Floats> stored;
    const std::size_t lanes = hn::Lanes(floats);
    const auto numbersAt = [&](std::size_t row, std::size_t i) HWY_ATTR {
        const void* const from = values + row * rowBytes + i * sizeof(Value);
        const auto loaded = hn::LoadU(stored, static_cast<const Value*>(from));
        return hn::ConvertTo(floats, hn::PromoteTo(integers, loaded));
    };
    auto low = numbersAt(0, 0);
    auto high = low;
    for (std::size_t row = 0; row < rowCount; ++row) {
        for (std::size_t i = 0; i < count; i += lanes) {
            const auto numbers = numbersAt(row, std::min(i, count - lanes));
            low = hn::Min(low, numbers);
            high = hn::Max(high, numbers);
        }
    }
    return {hn::GetLane(hn::MinOfLanes(floats, low)), hn::GetLane(hn::MaxOfLanes(floats, high))};
}

template <class Value>
ValueLimits LimitsOfValues(const unsigned char* values, std::size_t rowBytes, std::size_t rowCount,
                           std::size_t count) {
    const hn::ScalableTag<float> whole;
    const hn::CappedTag<float, 1> single;
    return count >= hn::Lanes(whole)
               ? LimitsIn<decltype(whole), Value>(whole, values, rowBytes, rowCount, count)
               : LimitsIn<decltype(single), Value>(single, values, rowBytes, rowCount, count);
}

ValueLimits Limits(const unsigned char* values, ValueKind kind, std::size_t rowBytes,
                   std::size_t rowCount, std::size_t count) {
    switch (kind) {
        case ValueKind::kUnsignedByte:
            return LimitsOfValues<std::uint8_t>(values, rowBytes, rowCount, count);
        case ValueKind::kSignedByte:
            return LimitsOfValues<std::int8_t>(values, rowBytes, rowCount, count);
        case ValueKind::kUnsignedWord:
            return LimitsOfValues<std::uint16_t>(values, rowBytes, rowCount, count);
        case ValueKind::kSignedWord:
            return LimitsOfValues<std::int16_t>(values, rowBytes, rowCount, count);
    }
    return {};
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

/// Bytes of numbers, which `toBytes` gives in units of bytes; `half` is added to round them.
template <class ToBytes>
void RoundBy(const float* row, float half, unsigned char* bytes, std::size_t count,
             const ToBytes& toBytes) {
    const auto roundAt = [&](auto floats, std::size_t i) HWY_ATTR {
        const hn::Rebind<std::int32_t, decltype(floats)> integers;
        const hn::Rebind<std::uint32_t, decltype(floats)> words;
        const hn::Rebind<std::uint8_t, decltype(floats)> octets;
        const auto value = toBytes(floats, i, hn::LoadU(floats, row + i));
        const auto clamped = hn::Min(hn::Max(value, hn::Zero(floats)), hn::Set(floats, 255.0F));
        const auto up = hn::ConvertTo(integers, hn::Add(clamped, hn::Set(floats, half)));
        hn::StoreU(hn::U8FromU32(hn::BitCast(words, up)), octets, bytes + i);
    };
    const hn::ScalableTag<float> whole;
    const std::size_t lanes = hn::Lanes(whole);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) roundAt(whole, i);
    for (; i < count; ++i) roundAt(hn::CappedTag<float, 1>(), i);
}

void Round(const float* row, unsigned char* bytes, std::size_t count) {
    const auto same = [](auto, std::size_t, auto number) HWY_ATTR { return number; };
    RoundBy(row, 0.5F, bytes, count, same);
}

void RoundALine(const float* row, float gain, float zero, std::ptrdiff_t ahead,
                unsigned char* bytes, std::size_t count) {
    constexpr float kHalf = 0.501F;
    const auto toBytes = [&](auto floats, std::size_t i, auto number) HWY_ATTR {
        hwy::Prefetch(row + static_cast<std::ptrdiff_t>(i) + ahead);
        return hn::Mul(hn::Sub(number, hn::Set(floats, zero)), hn::Set(floats, gain));
    };
    RoundBy(row, kHalf, bytes, count, toBytes);
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Weigh);
HWY_EXPORT(Limits);
HWY_EXPORT(WeighFloats);
HWY_EXPORT(Round);
HWY_EXPORT(RoundALine);

void WeighRows(std::span<const unsigned char* const> rows, ValueKind kind,
               std::span<const float> weights, const RowTask& task, std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(Weigh)
    (rows.data(), kind, weights.data(), rows.size(), task, sums.data(), sums.size());
}

ValueLimits LimitsOf(const unsigned char* values, ValueKind kind, std::size_t rowBytes,
                     std::size_t rowCount, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(Limits)(values, kind, rowBytes, rowCount, count);
}

void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(WeighFloats)(row.data(), weight, adds, sums.data(), row.size());
}

void RoundRow(std::span<const float> row, std::span<unsigned char> bytes) {
    HWY_DYNAMIC_DISPATCH(Round)(row.data(), bytes.data(), row.size());
}

void RoundLine(std::span<const float> row, float gain, float zero, std::ptrdiff_t ahead,
               std::span<unsigned char> bytes) {
    HWY_DYNAMIC_DISPATCH(RoundALine)(row.data(), gain, zero, ahead, bytes.data(), row.size());
}

}  // namespace quorvex
#endif
