/// Signs and magnitudes of a row of quads (ISO/IEC 15444-15 clause 7), for one target.
#if defined(QUORVEX_HT_MAGNITUDES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVEX_HT_MAGNITUDES_INL
#undef QUORVEX_HT_MAGNITUDES_INL
#else
#define QUORVEX_HT_MAGNITUDES_INL
#endif

#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_tables.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// One sample after the other: quads `first` to `end`. The rows begin at `first`.
inline void ReadQuads(const HtCleanup& pass, const HtRows& rows, std::size_t first, std::size_t end,
                      std::int32_t* upper, std::int32_t* lower) {
    for (std::size_t i = first; i < end; ++i) {
        const std::uint32_t quad = rows.Bounds()[i];
        const std::uint32_t bound = quad >> ht_quad::kBound;
        std::uint32_t place = rows.Places()[i];
        std::uint32_t coded[4] = {};
        std::int32_t values[4] = {};
        for (unsigned n = 0; n < 4; ++n) {
            if ((quad >> (ht_quad::kSignificance + n) & 1) == 0) continue;
            const std::uint32_t bits = bound - (quad >> (ht_quad::kHasTop + n) & 1);
            const auto word = static_cast<std::uint32_t>(
                LoadWord(pass.magnitudes.bytes + place / 8) >> (place % 8));
            place += bits;
            coded[n] = (word & ((1U << bits) - 1)) | (quad >> (ht_quad::kTop + n) & 1) << bits | 1;
            const std::uint32_t magnitude = (coded[n] + 2) << pass.shift & 0x7FFFFFFF;
            const std::uint32_t sign = 0U - (word & 1);
            values[n] = static_cast<std::int32_t>((magnitude ^ sign) - sign);
        }
        *upper++ = values[0];
        *upper++ = values[2];
        *lower++ = values[1];
        *lower++ = values[3];
        rows.Lowers()[2 * i] = coded[1];
        rows.Lowers()[2 * i + 1] = coded[3];
    }
}

#if HWY_TARGET <= HWY_AVX2

/// Pairs of quads, eight samples at a time.
class PairReader {
    using Words = hn::FixedTag<std::uint32_t, 8>;
    using Numbers = hn::RebindToSigned<Words>;
    using Bytes = hn::Repartition<std::uint8_t, Words>;

public:
    PairReader(const HtCleanup& pass, const HtRows& rows, std::int32_t* upper, std::int32_t* lower)
        : stream_(pass.magnitudes.bytes),
          rows_(rows),
          upper_(upper),
          lower_(lower),
          shift_(static_cast<int>(pass.shift)) {}

    /// Four samples of 25 bits lie within 16 bytes, whatever bit they begin at, and each within 4.
    /// A magnitude that damage made one bit longer still leaves the sign alone.
    static std::uint32_t MostBits(const HtCleanup& pass) {
        return pass.shift < 5 ? 25 : 30 - pass.shift;
    }

    HWY_INLINE void Read(std::size_t pair) const {
        const Words words;
        const Numbers numbers;
        alignas(32) static constexpr std::uint32_t kSamples[8] = {0, 1, 2, 3, 0, 1, 2, 3};
        const auto sample = hn::Load(words, kSamples);
        const auto one = hn::Set(words, 1);
        const auto seven = hn::Set(words, 7);

        const std::uint32_t* bounds = rows_.Bounds() + 2 * pair;
        if (((bounds[0] | bounds[1]) & (15U << ht_quad::kSignificance)) == 0) {
            Store(pair, hn::Zero(words), hn::Zero(words));
            return;
        }
        const auto quad = Both(bounds);
        const auto fields = hn::Shr(quad, sample);  // this sample's bits lowest in each field
        const auto isSignificant =
            hn::TestBit(fields, hn::Set(words, 1U << ht_quad::kSignificance));
        const auto hasTop = hn::And(hn::ShiftRight<ht_quad::kHasTop>(fields), one);
        const auto bits = hn::IfThenElseZero(
            isSignificant, hn::Sub(hn::ShiftRight<ht_quad::kBound>(quad), hasTop));
        auto behind = hn::Add(bits, hn::ShiftLeftLanes<1>(words, bits));
        behind = hn::Add(behind, hn::ShiftLeftLanes<2>(words, behind));
        const auto place = hn::And(Both(rows_.Places() + 2 * pair), seven);
        const auto from = hn::Add(hn::Sub(behind, bits), place);
        const auto word = hn::Shr(Gather(pair, hn::ShiftRight<3>(from)), hn::And(from, seven));

        const auto kept = hn::And(word, hn::Sub(hn::Shl(one, bits), one));
        const auto top = hn::Shl(hn::And(hn::ShiftRight<ht_quad::kTop>(fields), one), bits);
        const auto coded = hn::IfThenElseZero(isSignificant, hn::Or(hn::Or(kept, one), top));
        const auto magnitude =
            hn::BitCast(numbers, hn::ShiftLeftSame(hn::Add(coded, hn::Add(one, one)), shift_));
        const auto sign = hn::ShiftRight<31>(hn::BitCast(numbers, hn::ShiftLeft<31>(word)));
        const auto value = hn::IfThenElseZero(hn::RebindMask(numbers, isSignificant),
                                              hn::Sub(hn::Xor(magnitude, sign), sign));
        Store(pair, hn::BitCast(words, value), coded);
    }

private:
    using Values = hn::VFromD<Words>;

    /// Two values, each four times.
    static HWY_INLINE Values Both(const std::uint32_t* values) {
        const Bytes bytes;
        const hn::Repartition<std::uint64_t, Words> pairs;
        alignas(32) static constexpr std::uint8_t kWhich[32] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2,
                                                                3, 0, 1, 2, 3, 4, 5, 6, 7, 4, 5,
                                                                6, 7, 4, 5, 6, 7, 4, 5, 6, 7};
        std::uint64_t pair = 0;
        std::memcpy(&pair, values, sizeof pair);
        return hn::BitCast(Words(), hn::TableLookupBytes(hn::BitCast(bytes, hn::Set(pairs, pair)),
                                                         hn::Load(bytes, kWhich)));
    }

    /// The four bytes from `byte` on, of the 16 in which the quad's samples begin.
    HWY_INLINE Values Gather(std::size_t pair, Values byte) const {
        const Bytes bytes;
        const hn::Half<Bytes> sixteen;
        alignas(16) static constexpr std::uint8_t kLowest[16] = {0, 0, 0, 0, 4,  4,  4,  4,
                                                                 8, 8, 8, 8, 12, 12, 12, 12};
        const auto all =
            hn::Combine(bytes, hn::LoadU(sixteen, stream_ + rows_.Places()[2 * pair + 1] / 8),
                        hn::LoadU(sixteen, stream_ + rows_.Places()[2 * pair] / 8));
        const auto first =
            hn::TableLookupBytes(hn::BitCast(bytes, byte), hn::LoadDup128(bytes, kLowest));
        const auto order = hn::BitCast(bytes, hn::Set(Words(), 0x03020100));
        return hn::BitCast(Words(), hn::TableLookupBytes(all, hn::Add(first, order)));
    }

    HWY_INLINE void Store(std::size_t pair, Values values, Values coded) const {
        const Words words;
        const hn::Half<Words> four;
        const hn::Half<Numbers> numbers;
        alignas(32) static constexpr std::int32_t kRows[8] = {0, 2, 4, 6, 1, 3, 5, 7};
        const auto rows = hn::SetTableIndices(words, kRows);
        const auto ordered = hn::BitCast(Numbers(), hn::TableLookupLanes(values, rows));
        hn::StoreU(hn::LowerHalf(numbers, ordered), numbers, upper_ + 4 * pair);
        hn::StoreU(hn::UpperHalf(numbers, ordered), numbers, lower_ + 4 * pair);
        hn::StoreU(hn::UpperHalf(four, hn::TableLookupLanes(coded, rows)), four,
                   rows_.Lowers() + 4 * pair);
    }

    const unsigned char* stream_;
    HtRows rows_;
    std::int32_t* upper_;
    std::int32_t* lower_;
    int shift_;
};

#else

/// Without shifts of each lane by its own count there is no gain: never used.
class PairReader {
public:
    PairReader(const HtCleanup&, const HtRows&, std::int32_t*, std::int32_t*) {}
    static std::uint32_t MostBits(const HtCleanup&) { return 0; }
    void Read(std::size_t) const {}
};

#endif

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
