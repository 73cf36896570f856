#include "foundation/raster/scaling/scale_kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/scaling/scale_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <bool kAdds, class Value>
void WeighBy(const Value* values, float weight, float* sums, std::size_t count) {
    const hn::ScalableTag<float> floats;
    const hn::Rebind<std::int32_t, decltype(floats)> integers;
    const hn::Rebind<Value, decltype(floats)> stored;
    const auto weights = hn::Set(floats, weight);
    const std::size_t lanes = hn::Lanes(floats);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto numbers =
            hn::ConvertTo(floats, hn::PromoteTo(integers, hn::LoadU(stored, values + i)));
        if constexpr (kAdds) {
            hn::StoreU(hn::MulAdd(numbers, weights, hn::LoadU(floats, sums + i)), floats, sums + i);
        } else {
            hn::StoreU(hn::Mul(numbers, weights), floats, sums + i);
        }
    }
    for (; i < count; ++i) {
        const float product = static_cast<float>(values[i]) * weight;
        sums[i] = kAdds ? sums[i] + product : product;
    }
}

template <class Value>
void WeighValues(const unsigned char* bytes, float weight, bool adds, float* sums,
                 std::size_t count) {
    // Frames lie where words may lie.
    const auto* const values = static_cast<const Value*>(static_cast<const void*>(bytes));
    adds ? WeighBy<true>(values, weight, sums, count) : WeighBy<false>(values, weight, sums, count);
}

void Weigh(const unsigned char* values, ValueKind kind, float weight, bool adds, float* sums,
           std::size_t count) {
    switch (kind) {
        case ValueKind::kUnsignedByte:
            return WeighValues<std::uint8_t>(values, weight, adds, sums, count);
        case ValueKind::kSignedByte:
            return WeighValues<std::int8_t>(values, weight, adds, sums, count);
        case ValueKind::kUnsignedWord:
            return WeighValues<std::uint16_t>(values, weight, adds, sums, count);
        case ValueKind::kSignedWord:
            return WeighValues<std::int16_t>(values, weight, adds, sums, count);
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
        bytes[i] = static_cast<unsigned char>(std::clamp(row[i], 0.0F, 255.0F) + 0.5F);
    }
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Weigh);
HWY_EXPORT(WeighFloats);
HWY_EXPORT(Round);

void WeighRow(std::span<const unsigned char> bytes, float weight, bool adds,
              std::span<float> sums) {
    WeighRow(bytes, ValueKind::kUnsignedByte, weight, adds, sums);
}

void WeighRow(std::span<const unsigned char> values, ValueKind kind, float weight, bool adds,
              std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(Weigh)
    (values.data(), kind, weight, adds, sums.data(), values.size() / BytesOf(kind));
}

void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums) {
    HWY_DYNAMIC_DISPATCH(WeighFloats)(row.data(), weight, adds, sums.data(), row.size());
}

void RoundRow(std::span<const float> row, std::span<unsigned char> bytes) {
    HWY_DYNAMIC_DISPATCH(Round)(row.data(), bytes.data(), row.size());
}

}  // namespace quorvex
#endif
