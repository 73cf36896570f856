#include "foundation/raster/word_ramp.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/raster/word_ramp_kernel.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

std::uint8_t ByteOf(const WordRamp& ramp, const unsigned char* word) {
    const auto place = static_cast<std::uint16_t>(word[0] + word[1] * 256 - ramp.origin);
    if (place >= ramp.top && ramp.leapsAtTop) return ramp.topByte ^ ramp.inversion;
    const auto steps =
        static_cast<std::uint16_t>(std::clamp(place, ramp.floor, ramp.top) - ramp.start);
    const std::uint64_t product = (std::uint64_t{steps} << ramp.shift) * ramp.factor;
    return static_cast<std::uint8_t>(((product >> 16) + ramp.bias) >> 16) ^ ramp.inversion;
}

#if HWY_TARGET != HWY_SCALAR
/// How a ramp ends, and what is added to its quotient.
enum class RampKind { kPlain, kLeaping, kBiased };

template <class Words, RampKind kKind>
class RampVectors {
public:
    using Vector = hn::Vec<Words>;

    RampVectors(Words words, const WordRamp& ramp)
        : shift_(ramp.shift),
          origin_(hn::Set(words, ramp.origin)),
          floor_(hn::Set(words, ramp.floor)),
          top_(hn::Set(words, ramp.top)),
          start_(hn::Set(words, ramp.start)),
          topByte_(hn::Set(words, ramp.topByte)),
          bias_(hn::Set(words, ramp.bias)),
          factorHigh_(hn::Set(words, static_cast<std::uint16_t>(ramp.factor >> 16))),
          factorLow_(hn::Set(words, static_cast<std::uint16_t>(ramp.factor))) {}

    [[nodiscard]] Vector BytesOf(Vector words) const {
        const Vector place = hn::Sub(words, origin_);
        const Vector clamped = hn::Min(hn::Max(place, floor_), top_);
        const Vector byte = Quotient(hn::ShiftLeftSame(hn::Sub(clamped, start_), shift_));
        if constexpr (kKind != RampKind::kLeaping) return byte;
        return hn::IfThenElse(hn::Eq(clamped, top_), topByte_, byte);
    }

private:
    /// The mean has the carry of the halves of the product that overlap, and of one, in its top
    /// bit.
    [[nodiscard]] Vector Quotient(Vector steps) const {
        if constexpr (kKind == RampKind::kBiased) return BiasedQuotient(steps);
        const Vector mean =
            hn::AverageRound(hn::Mul(steps, factorHigh_), hn::MulHigh(steps, factorLow_));
        return hn::Add(hn::MulHigh(steps, factorHigh_), hn::ShiftRight<15>(mean));
    }

    /// Three halves are added up; a sum that saturates differs from one that wraps where it
    /// carries.
    [[nodiscard]] Vector BiasedQuotient(Vector steps) const {
        const Words words;
        const auto carries = [&](Vector a, Vector b) HWY_ATTR {
            return hn::VecFromMask(words, hn::Ne(hn::Add(a, b), hn::SaturatedAdd(a, b)));
        };
        const Vector low = hn::Mul(steps, factorHigh_);
        const Vector lower = hn::MulHigh(steps, factorLow_);
        const Vector sum = hn::Add(low, lower);
        // A mask is all ones, which is -1.
        return hn::Sub(hn::Sub(hn::MulHigh(steps, factorHigh_), carries(low, lower)),
                       carries(sum, bias_));
    }

    int shift_;
    Vector origin_, floor_, top_, start_, topByte_, bias_, factorHigh_, factorLow_;
};

/// Maps as many whole vectors as there are, and gives their number of words.
template <RampKind kKind>
std::size_t MapVectors(const WordRamp& ramp, const unsigned char* words,
                       const unsigned char* prefetch, unsigned char* to, std::size_t count) {
    const hn::ScalableTag<std::uint8_t> octets;
    using Words = hn::Repartition<std::uint16_t, decltype(octets)>;
    const RampVectors<Words, kKind> vectors(Words(), ramp);
    const auto inversion = hn::Set(octets, ramp.inversion);
    const auto bytesAt = [&](const unsigned char* from) HWY_ATTR {
        return hn::BitCast(octets, vectors.BytesOf(hn::BitCast(Words(), hn::LoadU(octets, from))));
    };
    const std::size_t step = hn::Lanes(octets);
    std::size_t i = 0;
    for (; i + step <= count; i += step) {
        hwy::Prefetch(prefetch + 2 * i);
        if (step == 64) hwy::Prefetch(prefetch + 2 * i + 64);
        const auto lower = bytesAt(words + 2 * i);
        const auto upper = bytesAt(words + 2 * i + step);
        hn::StoreU(hn::Xor(hn::ConcatEven(octets, upper, lower), inversion), octets, to + i);
    }
    return i;
}
#else
enum class RampKind { kPlain, kLeaping, kBiased };
template <RampKind>
std::size_t MapVectors(const WordRamp&, const unsigned char*, const unsigned char*, unsigned char*,
                       std::size_t) {
    return 0;
}
#endif

void Map(const WordRamp& ramp, const unsigned char* words, const unsigned char* prefetch,
         unsigned char* to, std::size_t count) {
    auto mapVectors =
        ramp.leapsAtTop ? MapVectors<RampKind::kLeaping> : MapVectors<RampKind::kPlain>;
    if (ramp.bias != 1) mapVectors = MapVectors<RampKind::kBiased>;
    for (std::size_t i = mapVectors(ramp, words, prefetch, to, count); i < count; ++i) {
        to[i] = ByteOf(ramp, words + 2 * i);
    }
}

}  // namespace quorvex::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex {

HWY_EXPORT(Map);

void MapByRamp(const WordRamp& ramp, const unsigned char* words, const unsigned char* prefetch,
               unsigned char* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(Map)(ramp, words, prefetch, to, count);
}

}  // namespace quorvex
#endif
