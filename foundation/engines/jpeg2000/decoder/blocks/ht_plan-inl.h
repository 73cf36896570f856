/// Exponent bounds of a row of quads and where their magnitudes lie (ISO/IEC 15444-15 clause 7),
/// for one target.
#if defined(QUORVEX_HT_PLAN_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVEX_HT_PLAN_INL
#undef QUORVEX_HT_PLAN_INL
#else
#define QUORVEX_HT_PLAN_INL
#endif

#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_tables.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using PlanWords = hn::CappedTag<std::uint32_t, 8>;
using PlanWord = hn::VFromD<PlanWords>;

/// Numbers of set bits in the lowest 4 bits of both halves of each lane, whose other bits are 0.
HWY_INLINE PlanWord SetBits(PlanWord nibbles) {
    const PlanWords words;
    const auto pairs =
        hn::Sub(nibbles, hn::And(hn::ShiftRight<1>(nibbles), hn::Set(words, 0x00050005)));
    const auto two = hn::Set(words, 0x00030003);
    return hn::Add(hn::And(pairs, two), hn::And(hn::ShiftRight<2>(pairs), two));
}

/// 1 + the place of the highest set bit, of numbers below 2^31; far below 0 for 0.
HWY_INLINE hn::VFromD<hn::RebindToSigned<PlanWords>> Exponents(PlanWord values) {
    const hn::RebindToSigned<PlanWords> numbers;
    // Without the second highest bit the conversion cannot round up to a power of two.
    const auto top = hn::BitCast(numbers, hn::AndNot(hn::ShiftRight<1>(values), values));
    const auto bits = hn::BitCast(numbers, hn::ConvertTo(hn::RebindToFloat<PlanWords>(), top));
    return hn::Sub(hn::ShiftRight<23>(bits), hn::Set(numbers, 126));
}

/// The lower samples above a quad with one to the left and one to the right, OR-ed: the highest
/// exponent of the four is that of the whole.
HWY_INLINE PlanWord Above(const std::uint32_t* lowers) {
    const PlanWords words;
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(words, lowers[-1] | lowers[0] | lowers[1] | lowers[2]);
#else
    const auto pairs = [&](const std::uint32_t* from) HWY_ATTR {
        return hn::Or(hn::LoadU(words, from - 1), hn::LoadU(words, from + 1));
    };
    const auto near = pairs(lowers);
    const auto far = pairs(lowers + hn::Lanes(words));
    return hn::Or(hn::ConcatEven(words, far, near), hn::ConcatOdd(words, far, near));
#endif
}

/// The exponent offsets u of quads from the first one on.
HWY_INLINE PlanWord Offsets(const HtRows& rows, std::size_t first) {
    const PlanWords words;
    const auto one = hn::Set(words, 1);
    const auto pairs = hn::IndicesFromVec(words, hn::ShiftRight<1>(hn::Iota(words, 0)));
    const std::size_t start = hn::Lanes(words) == 1 ? first : 0;
    const auto isSecond = hn::And(hn::Iota(words, static_cast<std::uint32_t>(start)), one);
    const auto codes = hn::TableLookupLanes(hn::LoadU(words, rows.Offsets() + first / 2), pairs);
    const auto bits = hn::TableLookupLanes(hn::LoadU(words, rows.OffsetBits() + first / 2), pairs);
    const auto fields =
        hn::Shr(codes, hn::Add(hn::Set(words, ht_offset::kFirst),
                               hn::Mul(isSecond, hn::Set(words, ht_offset::kBits))));
    const auto suffix = hn::Shr(bits, hn::And(fields, hn::Set(words, 15)));
    const auto length = hn::And(hn::ShiftRight<4>(fields), hn::Set(words, 7));
    const auto prefix = hn::And(hn::ShiftRight<7>(fields), hn::Set(words, 15));
    return hn::Add(prefix, hn::And(suffix, hn::Sub(hn::Shl(one, length), one)));
}

/// What quads from `first` on give to the contexts of the row below: bit 7 tells of the lower right
/// sample to the west and the own lower left one, bit 9 of the next two.
HWY_INLINE void StoreContexts(const HtRows& rows, std::size_t first) {
    const PlanWords words;
    const auto one = hn::Set(words, 1);
    const auto at = [&](std::size_t quad) HWY_ATTR { return rows.Quads() + quad; };
    const auto lowerLeft = [&](const std::uint32_t* quads) HWY_ATTR {
        return hn::ShiftRight<ht_quad::kSignificance + 1>(hn::LoadU(words, quads));
    };
    const auto lowerRight = [&](const std::uint32_t* quads) HWY_ATTR {
        return hn::ShiftRight<ht_quad::kSignificance + 3>(hn::LoadU(words, quads));
    };
    const auto west = hn::And(hn::Or(lowerLeft(at(first)), lowerRight(at(first) - 1)), one);
    const auto east = hn::And(hn::Or(lowerLeft(at(first) + 1), lowerRight(at(first))), one);
    hn::StoreU(hn::Or(hn::ShiftLeft<7>(west), hn::ShiftLeft<9>(east)), words,
               rows.Contexts() + first);
}

/// U of all quads (formulas (5) and (6)), how many bits each has in the stream of
/// magnitudes, and what the row gives to the contexts of the next one. Gives
/// the largest U.
inline std::uint32_t PlanRow(const HtRows& rows) {
    const PlanWords words;
    const hn::RebindToSigned<PlanWords> numbers;
    const std::size_t lanes = hn::Lanes(words);
    const auto one = hn::Set(words, 1);
    const auto field = hn::Set(words, 15);
    auto most = hn::Zero(words);
    for (std::size_t i = 0; i < rows.count; i += lanes) {
        const auto quad = hn::LoadU(words, rows.Quads() + i);
        const auto significance = hn::And(hn::ShiftRight<ht_quad::kSignificance>(quad), field);
        const auto several =
            hn::Ne(hn::And(significance, hn::Sub(significance, one)), hn::Zero(words));
        const auto exponent = hn::Sub(Exponents(Above(rows.Lowers() + 2 * i)), hn::Set(numbers, 1));
        const auto kappa = hn::IfThenElse(
            several, hn::BitCast(words, hn::Max(exponent, hn::Set(numbers, 1))), one);
        const auto bound = hn::Add(Offsets(rows, i), kappa);
        most = hn::Max(most, bound);
        hn::StoreU(hn::Or(hn::And(quad, hn::Set(words, ht_quad::kKept)),
                          hn::ShiftLeft<ht_quad::kBound>(bound)),
                   words, rows.Bounds() + i);

        static_assert(ht_quad::kHasTop == 16);
        const auto counts = SetBits(hn::Or(significance, hn::And(quad, hn::Set(words, 0xF0000))));
        const auto samples = hn::And(counts, hn::Set(words, 7));
        hn::StoreU(hn::Sub(hn::Mul(bound, samples), hn::ShiftRight<16>(counts)), words,
                   rows.Places() + i);
        StoreContexts(rows, i);
    }
    return hn::GetLane(hn::MaxOfLanes(words, most));
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
