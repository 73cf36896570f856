#include "foundation/raster/scaling/column_kernels.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/scaling/column_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, kColumnGroup>;
using Places = hn::RebindToSigned<Floats>;

/// The most vectors that hold what a vector of pixels reads by one tap.
std::size_t MostVectors(const GroupedTaps& taps) {
    const std::size_t lanes = hn::Lanes(Floats());
    std::int32_t span = 0;
    for (std::size_t i = 0; i < taps.groups * kColumnGroup; i += lanes) {
        span = std::max(span, taps.firsts[i + lanes - 1] - taps.firsts[i]);
    }
    return static_cast<std::size_t>(span) / lanes + 1;
}

/// The lanes whose places lie in vector `vector`, or behind it.
template <class Vector>
auto IsFrom(Vector place, std::size_t vector) {
    const auto last = static_cast<std::int32_t>(vector * hn::Lanes(Places())) - 1;
    return hn::RebindMask(Floats(), hn::Gt(place, hn::Set(Places(), last)));
}

/// What a tap reads of the row lies in a few vectors from the first pixel's place on: they are
/// loaded whole, and each lane picks its number. A gather is slower.
template <std::size_t kVectors>
void SumVectors(const GroupedTaps& taps, const float* row, std::size_t vectors, float* sums) {
    const Floats floats;
    const Places places;
    const std::size_t lanes = hn::Lanes(floats);
    const auto lastLane = hn::Set(places, static_cast<std::int32_t>(lanes - 1));
    for (std::size_t i = 0; i < taps.groups * kColumnGroup; i += lanes) {
        const std::int32_t first = taps.firsts[i];
        const auto place = hn::Sub(hn::LoadU(places, taps.firsts + i), hn::Set(places, first));
        const auto picked = hn::IndicesFromVec(floats, hn::And(place, lastLane));
        const auto fromSecond = IsFrom(place, 1);
        const auto fromThird = IsFrom(place, 2);
        const float* from = row + first;
        const float* weights =
            taps.weights + i / kColumnGroup * kColumnGroup * taps.count + i % kColumnGroup;
        auto sum = hn::Zero(floats);
        for (std::size_t tap = 0; tap < taps.count; ++tap, ++from, weights += kColumnGroup) {
            const auto pick = [&](std::size_t vector) HWY_ATTR {
                return hn::TableLookupLanes(hn::LoadU(floats, from + vector * lanes), picked);
            };
            auto numbers = pick(0);
            if constexpr (kVectors > 1) numbers = hn::IfThenElse(fromSecond, pick(1), numbers);
            if constexpr (kVectors > 2) numbers = hn::IfThenElse(fromThird, pick(2), numbers);
            if constexpr (kVectors > 3) {
                for (std::size_t vector = 3; vector < vectors; ++vector) {
                    numbers = hn::IfThenElse(IsFrom(place, vector), pick(vector), numbers);
                }
            }
            sum = hn::MulAdd(numbers, hn::LoadU(floats, weights), sum);
        }
        hn::StoreU(sum, floats, sums + i);
    }
}

void Sum(const GroupedTaps& taps, const float* row, float* sums) {
    const std::size_t vectors = MostVectors(taps);
    const auto sumVectors = vectors == 1   ? SumVectors<1>
                            : vectors == 2 ? SumVectors<2>
                            : vectors == 3 ? SumVectors<3>
                                           : SumVectors<4>;
    sumVectors(taps, row, vectors, sums);
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Sum);

void SumColumns(const GroupedTaps& taps, const float* row, float* sums) {
    HWY_DYNAMIC_DISPATCH(Sum)(taps, row, sums);
}

}  // namespace quorvex
#endif
