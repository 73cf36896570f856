#include "foundation/engines/jpeg2000/decoder/wavelet/lifting.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/wavelet/lifting.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Ints = hn::ScalableTag<std::int32_t>;
using Floats = hn::ScalableTag<float>;
static_assert(hn::MaxLanes(Ints()) * 2 <= kRowSlack, "a vector may pass a row's end");

// ISO/IEC 15444-1 Table F.4, in the order of the steps.
constexpr float kSteps[] = {0.443506852043971F, 0.882911075530934F, -0.052980118572961F,
                            -1.586134342059924F};

template <int kStep, class V>
HWY_INLINE V Lift(Ints tag, V target, V before, V after) {
    if constexpr (kStep == 1) {
        const V sum = hn::Add(hn::Add(before, after), hn::Set(tag, 2));
        return hn::Sub(target, hn::ShiftRight<2>(sum));
    }
    return hn::Add(target, hn::ShiftRight<1>(hn::Add(before, after)));
}

template <int kStep, class V>
HWY_INLINE V Lift(Floats tag, V target, V before, V after) {
    return hn::NegMulAdd(hn::Set(tag, kSteps[kStep - 1]), hn::Add(before, after), target);
}

template <int kStep, class Tag, class T>
void LiftWhole(Tag tag, T* target, const T* above, const T* below, std::size_t count) {
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        const auto lifted = Lift<kStep>(tag, hn::LoadU(tag, target + x), hn::LoadU(tag, above + x),
                                        hn::LoadU(tag, below + x));
        hn::StoreU(lifted, tag, target + x);
    }
}

void LiftRowOfInts(int step, std::int32_t* target, const std::int32_t* above,
                   const std::int32_t* below, std::size_t count) {
    step == 1 ? LiftWhole<1>(Ints(), target, above, below, count)
              : LiftWhole<2>(Ints(), target, above, below, count);
}

void LiftRowOfFloats(int step, float* target, const float* above, const float* below,
                     std::size_t count) {
    switch (step) {
        case 1:
            return LiftWhole<1>(Floats(), target, above, below, count);
        case 2:
            return LiftWhole<2>(Floats(), target, above, below, count);
        case 3:
            return LiftWhole<3>(Floats(), target, above, below, count);
        default:
            return LiftWhole<4>(Floats(), target, above, below, count);
    }
}

void LiftRowsOfInts(std::int32_t* const* rows, std::size_t count) {
    const Ints tag;
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        const auto odd = hn::LoadU(tag, rows[1] + x);
        const auto even =
            Lift<1>(tag, hn::LoadU(tag, rows[2] + x), odd, hn::LoadU(tag, rows[3] + x));
        hn::StoreU(even, tag, rows[2] + x);
        hn::StoreU(Lift<2>(tag, odd, hn::LoadU(tag, rows[0] + x), even), tag, rows[1] + x);
    }
}

void LiftRowsOfFloats(float* const* rows, std::size_t count) {
    const Floats tag;
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        const auto row3 = hn::LoadU(tag, rows[3] + x);
        const auto row2 = hn::LoadU(tag, rows[2] + x);
        const auto row1 = hn::LoadU(tag, rows[1] + x);
        const auto first =
            Lift<1>(tag, hn::LoadU(tag, rows[4] + x), row3, hn::LoadU(tag, rows[5] + x));
        const auto second = Lift<2>(tag, row3, row2, first);
        const auto third = Lift<3>(tag, row2, row1, second);
        const auto fourth = Lift<4>(tag, row1, hn::LoadU(tag, rows[0] + x), third);
        hn::StoreU(first, tag, rows[4] + x);
        hn::StoreU(second, tag, rows[3] + x);
        hn::StoreU(third, tag, rows[2] + x);
        hn::StoreU(fourth, tag, rows[1] + x);
    }
}

// Half a row with one sample before and one behind it, mirrored.
template <class T>
void Mirror(T* half, std::size_t count) {
    half[-1] = half[0];
    half[count] = half[count - 1];
}

template <class Tag, class T>
void Interleave(Tag tag, const T* first, const T* second, std::size_t count, T* out) {
    const std::size_t lanes = hn::Lanes(tag);
    for (std::size_t n = 0; n < count; n += lanes) {
        hn::StoreInterleaved2(hn::LoadU(tag, first + n), hn::LoadU(tag, second + n), tag,
                              out + 2 * n);
    }
}

template <class Tag, class T>
void Join(Tag tag, const RowHalves<T>& halves, T* work, T* out) {
    T* const low = work + kRowSlack / 2;
    T* const high = low + halves.lowCount + kRowSlack * 3 / 2;
    std::memcpy(low, halves.low, halves.lowCount * sizeof(T));
    std::memcpy(high, halves.high, halves.highCount * sizeof(T));
    // The neighbours of low sample n are high samples n - 1 and n, or n and n + 1.
    const T* const highBefore = halves.beginsHigh ? high : high - 1;
    const T* const lowBefore = halves.beginsHigh ? low - 1 : low;
    Mirror(high, halves.highCount);
    LiftWhole<1>(tag, low, highBefore, highBefore + 1, halves.lowCount);
    Mirror(low, halves.lowCount);
    LiftWhole<2>(tag, high, lowBefore, lowBefore + 1, halves.highCount);
    if constexpr (kLiftingSteps<T> == 4) {
        Mirror(high, halves.highCount);
        LiftWhole<3>(tag, low, highBefore, highBefore + 1, halves.lowCount);
        Mirror(low, halves.lowCount);
        LiftWhole<4>(tag, high, lowBefore, lowBefore + 1, halves.highCount);
    }
    const T* const first = halves.beginsHigh ? high : low;
    const T* const second = halves.beginsHigh ? low : high;
    Interleave(tag, first, second, (halves.lowCount + halves.highCount + 1) / 2, out);
}

void JoinRowOfInts(const RowHalves<std::int32_t>& halves, std::int32_t* work, std::int32_t* out) {
    Join(Ints(), halves, work, out);
}

void JoinRowOfFloats(const RowHalves<float>& halves, float* work, float* out) {
    Join(Floats(), halves, work, out);
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(LiftRowOfInts);
HWY_EXPORT(LiftRowOfFloats);
HWY_EXPORT(LiftRowsOfInts);
HWY_EXPORT(LiftRowsOfFloats);
HWY_EXPORT(JoinRowOfInts);
HWY_EXPORT(JoinRowOfFloats);

void LiftRow(int step, std::int32_t* target, const std::int32_t* above, const std::int32_t* below,
             std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(LiftRowOfInts)(step, target, above, below, count);
}

void LiftRow(int step, float* target, const float* above, const float* below,
             std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(LiftRowOfFloats)(step, target, above, below, count);
}

void LiftRows(std::int32_t* const* rows, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(LiftRowsOfInts)(rows, count);
}

void LiftRows(float* const* rows, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(LiftRowsOfFloats)(rows, count);
}

void JoinRow(const RowHalves<std::int32_t>& halves, std::int32_t* work,
             std::int32_t* out) noexcept {
    HWY_DYNAMIC_DISPATCH(JoinRowOfInts)(halves, work, out);
}

void JoinRow(const RowHalves<float>& halves, float* work, float* out) noexcept {
    HWY_DYNAMIC_DISPATCH(JoinRowOfFloats)(halves, work, out);
}

}  // namespace quorvex::j2k
#endif  // HWY_ONCE
