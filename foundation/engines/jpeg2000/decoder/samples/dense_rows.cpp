#include "foundation/engines/jpeg2000/decoder/samples/dense_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/samples/dense_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Adds and clamps a vector at a time, then keeps the sample's bytes alone, which fit as they are.
template <class Sample, class Values>
HWY_INLINE std::uint32_t StoreVectors(Values numbers, const SampleRange& range,
                                      const std::int32_t* values, std::uint32_t first,
                                      std::uint32_t count, Sample* out) {
    constexpr std::uint32_t kBits = sizeof(Sample) == 1 ? 0xFF : 0xFFFF;
    const hn::Rebind<Sample, Values> samples;
    const auto lanes = static_cast<std::uint32_t>(hn::Lanes(numbers));
    const auto shift = hn::Set(numbers, range.shift);
    const auto least = hn::Set(numbers, range.least);
    const auto greatest = hn::Set(numbers, range.greatest);
    const auto mask = hn::Set(numbers, static_cast<std::int32_t>(range.mask & kBits));
    for (; first + lanes <= count; first += lanes) {
        const auto value = hn::Add(hn::LoadU(numbers, values + first), shift);
        const auto clamped = hn::Min(hn::Max(value, least), greatest);
        hn::StoreU(hn::DemoteTo(samples, hn::And(clamped, mask)), samples, out + first);
    }
    return first;
}

template <class Sample>
void StoreSamples(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                  Sample* out) {
    const std::uint32_t done =
        StoreVectors(hn::ScalableTag<std::int32_t>(), range, values, 0, count, out);
    StoreVectors(hn::CappedTag<std::int32_t, 1>(), range, values, done, count, out);
}

void StoreBytes(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                std::uint8_t* out) {
    StoreSamples(range, values, count, out);
}
void StoreWords(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                std::uint16_t* out) {
    StoreSamples(range, values, count, out);
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(StoreBytes);
HWY_EXPORT(StoreWords);

void StoreDenseRow(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                   std::uint8_t* out) noexcept {
    HWY_DYNAMIC_DISPATCH(StoreBytes)(range, values, count, out);
}
void StoreDenseRow(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                   std::uint16_t* out) noexcept {
    HWY_DYNAMIC_DISPATCH(StoreWords)(range, values, count, out);
}

}  // namespace quorvex::j2k
#endif
