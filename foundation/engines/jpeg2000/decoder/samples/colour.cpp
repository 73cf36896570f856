#include "foundation/engines/jpeg2000/decoder/samples/colour.h"

#include <hwy/base.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/samples/colour.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Ints = hn::ScalableTag<std::int32_t>;
using Floats = hn::ScalableTag<float>;

// Rows may be read and written past their end, as those of the wavelet may.
void RestoreInts(const std::int32_t* const* rows, std::size_t count, std::int32_t* const* out) {
    const Ints tag;
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        const auto u = hn::LoadU(tag, rows[1] + x);
        const auto v = hn::LoadU(tag, rows[2] + x);
        const auto green = hn::Sub(hn::LoadU(tag, rows[0] + x), hn::ShiftRight<2>(hn::Add(u, v)));
        hn::StoreU(hn::Add(v, green), tag, out[0] + x);
        hn::StoreU(green, tag, out[1] + x);
        hn::StoreU(hn::Add(u, green), tag, out[2] + x);
    }
}

template <class V>
HWY_INLINE auto Rounded(V value) {
    const Floats tag;
    const auto least = hn::Set(tag, -1073741824.0F);
    const auto greatest = hn::Set(tag, 1073741824.0F);
    // A comparison with NaN is false.
    const auto above = hn::IfThenElse(hn::Gt(value, least), value, least);
    return hn::NearestInt(hn::IfThenElse(hn::Lt(above, greatest), above, greatest));
}

void RestoreFloats(const float* const* rows, std::size_t count, std::int32_t* const* out) {
    const Floats tag;
    const Ints ints;
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        const auto y = hn::LoadU(tag, rows[0] + x);
        const auto cb = hn::LoadU(tag, rows[1] + x);
        const auto cr = hn::LoadU(tag, rows[2] + x);
        const auto red = hn::MulAdd(cr, hn::Set(tag, 1.402F), y);
        const auto blue = hn::MulAdd(cb, hn::Set(tag, 1.772F), y);
        const auto green = hn::NegMulAdd(cb, hn::Set(tag, 0.344136286F),
                                         hn::NegMulAdd(cr, hn::Set(tag, 0.714136286F), y));
        hn::StoreU(Rounded(red), ints, out[0] + x);
        hn::StoreU(Rounded(green), ints, out[1] + x);
        hn::StoreU(Rounded(blue), ints, out[2] + x);
    }
}

void RoundFloats(const float* row, std::size_t count, std::int32_t* out) {
    const Floats tag;
    const Ints ints;
    for (std::size_t x = 0; x < count; x += hn::Lanes(tag)) {
        hn::StoreU(Rounded(hn::LoadU(tag, row + x)), ints, out + x);
    }
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(RestoreInts);
HWY_EXPORT(RestoreFloats);
HWY_EXPORT(RoundFloats);

void RestoreReversible(const std::int32_t* const* rows, std::size_t count,
                       std::int32_t* const* out) noexcept {
    HWY_DYNAMIC_DISPATCH(RestoreInts)(rows, count, out);
}

void RestoreIrreversible(const float* const* rows, std::size_t count,
                         std::int32_t* const* out) noexcept {
    HWY_DYNAMIC_DISPATCH(RestoreFloats)(rows, count, out);
}

void RoundRow(const float* row, std::size_t count, std::int32_t* out) noexcept {
    HWY_DYNAMIC_DISPATCH(RoundFloats)(row, count, out);
}

}  // namespace quorvex::j2k
#endif  // HWY_ONCE
