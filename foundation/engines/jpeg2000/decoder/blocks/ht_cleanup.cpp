#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"

#include "foundation/engines/jpeg2000/decoder/blocks/ht_tables.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// One pass over one block. A row of quads is decoded in three steps: its codes, one after the
/// other; then, for all of its quads at once, where their magnitudes lie; then the magnitudes.
class Decoder {
public:
    Decoder(const HtCleanup& pass, HtScratch& scratch)
        : pass_(pass),
          scratch_(scratch),
          mel_(pass.mel),
          codes_(pass.codes),
          quads_(scratch.quads.data() + HtScratch::kPad),
          bounds_(scratch.bounds.data() + HtScratch::kPad),
          places_(scratch.places.data() + HtScratch::kPad),
          contexts_(scratch.contexts.data() + HtScratch::kPad),
          lowers_(scratch.lowers.data() + HtScratch::kPad),
          count_(static_cast<std::size_t>(pass.width + 1) / 2) {}

    int Run(std::int32_t* out, std::ptrdiff_t stride);

private:
    template <bool kIsFirstRow>
    void ReadCodes();
    template <bool kIsFirstRow>
    HWY_INLINE std::uint32_t ReadQuad(std::uint32_t context);
    template <bool kIsFirstRow>
    HWY_INLINE void ReadOffsets(std::uint32_t first, std::uint32_t second, std::uint32_t* quads);

    bool Plan(bool isLowestHalf);
    void Place();
    void KeepSignificance(int row);

    void ReadMagnitudes(std::int32_t* upper, std::int32_t* lower);
    void ReadQuads(std::size_t first, std::size_t end, std::int32_t* upper, std::int32_t* lower);
    void ReadLastQuads(std::size_t first, std::int32_t* upper, std::int32_t* lower);
    std::size_t ReadPairs(std::size_t end, std::int32_t* upper, std::int32_t* lower);

    HtCleanup pass_;
    HtScratch& scratch_;
    HtMelReader mel_;
    HtBitReader codes_;
    std::uint32_t* quads_;
    std::uint32_t* bounds_;
    std::uint32_t* places_;
    std::uint32_t* contexts_;
    std::uint32_t* lowers_;
    std::size_t count_;           ///< quads in a row
    std::uint32_t place_ = 0;     ///< in the stream of magnitudes, bits
    std::uint32_t mostBits_ = 0;  ///< of the present row
};

/// The entry of the next quad; none, 0, where a MEL event of a quad without significant neighbours
/// tells so (clause 7.3.5).
template <bool kIsFirstRow>
HWY_INLINE std::uint32_t Decoder::ReadQuad(std::uint32_t context) {
    const auto& table = kHtTables.quads[kIsFirstRow ? 0 : 1];
    std::uint32_t entry = table[context | (codes_.Peek() & 127)];
    const unsigned isAlone = context == 0 ? 1 : 0;
    entry &= 0U - ((isAlone ^ 1) | mel_.Next());
    mel_.Take(isAlone);
    codes_.Skip(entry & ht_quad::kLength);
    return entry;
}

/// The exponent offsets of a pair of quads (clause 7.3.6).
template <bool kIsFirstRow>
HWY_INLINE void Decoder::ReadOffsets(std::uint32_t first, std::uint32_t second,
                                     std::uint32_t* quads) {
    unsigned which = (first & ht_quad::kHasOffset) << 3 | (second & ht_quad::kHasOffset) << 4;
    if constexpr (kIsFirstRow) {
        const unsigned isBoth = which == 3 * 64 ? 1 : 0;
        which += (isBoth & mel_.Next()) * 64;
        mel_.Take(isBoth);
    }
    const std::uint64_t bits = codes_.Peek();
    const HtOffset code = kHtTables.offsets[kIsFirstRow ? 0 : 1][which | (bits & 63)];
    const unsigned prefixes = code >> 5 & 7;
    const unsigned firstSuffix = code >> 8 & 7;
    const unsigned secondSuffix = code >> 11 & 7;
    const auto suffixes = static_cast<std::uint32_t>(bits >> prefixes);
    const std::uint32_t u1 = (code >> 16 & 15) + (suffixes & ((1U << firstSuffix) - 1));
    const std::uint32_t u2 =
        (code >> 20 & 15) + (suffixes >> firstSuffix & ((1U << secondSuffix) - 1));
    codes_.Skip(code & 31);
    quads[0] = (first & ht_quad::kKept) | u1 << 16;
    quads[1] = (second & ht_quad::kKept) | u2 << 16;
}

template <bool kIsFirstRow>
void Decoder::ReadCodes() {
    const std::size_t pairs = count_ / 2;
    std::uint32_t context = 0;
    const auto contextOf = [&](std::size_t quad) HWY_ATTR {
        return kIsFirstRow ? context : context | contexts_[quad];
    };
    const auto next = [](std::uint32_t entry)
                          HWY_ATTR { return entry >> ht_quad::kContextShift & 0x380; };
    for (std::size_t i = 0; i < pairs; ++i) {
        codes_.Refill();  // a pair has at most 2 x 7 + 16 bits
        mel_.MakeReady();
        const std::uint32_t first = ReadQuad<kIsFirstRow>(contextOf(2 * i));
        context = next(first);
        const std::uint32_t second = ReadQuad<kIsFirstRow>(contextOf(2 * i + 1));
        context = next(second);
        ReadOffsets<kIsFirstRow>(first, second, quads_ + 2 * i);
    }
    if (count_ % 2 == 0) return;
    codes_.Refill();
    mel_.MakeReady();
    const std::uint32_t last = ReadQuad<kIsFirstRow>(contextOf(count_ - 1));
    ReadOffsets<kIsFirstRow>(last, 0, quads_ + count_ - 1);
}

using Words = hn::CappedTag<std::uint32_t, 8>;
using Signed = hn::RebindToSigned<Words>;

/// Numbers of set bits in the lowest 4 bits of both halves of each lane, whose other bits are 0.
template <class V>
HWY_INLINE V SetBits(V nibbles) {
    const Words words;
    const auto pairs =
        hn::Sub(nibbles, hn::And(hn::ShiftRight<1>(nibbles), hn::Set(words, 0x00050005)));
    const auto two = hn::Set(words, 0x00030003);
    return hn::Add(hn::And(pairs, two), hn::And(hn::ShiftRight<2>(pairs), two));
}

/// 1 + the place of the highest set bit, of numbers below 2^31; far below 0 for 0.
template <class V>
HWY_INLINE hn::VFromD<Signed> Exponents(V numbers) {
    const Signed number;
    // Without the second highest bit the conversion cannot round up to a power of two.
    const auto top = hn::BitCast(number, hn::AndNot(hn::ShiftRight<1>(numbers), numbers));
    const auto bits = hn::BitCast(number, hn::ConvertTo(hn::RebindToFloat<Signed>(), top));
    return hn::Sub(hn::ShiftRight<23>(bits), hn::Set(number, 126));
}

/// U of all quads (clause 7.3.7, formulas (5) and (6)) and how many bits each has in the stream of
/// magnitudes. Gives whether all is within bounds.
bool Decoder::Plan(bool isLowestHalf) {
    const Words words;
    const Signed number;
    const std::size_t lanes = hn::Lanes(words);
    auto most = hn::Zero(words);
    auto all = hn::Zero(words);
    const auto one = hn::Set(words, 1);
    for (std::size_t i = 0; i < count_; i += lanes) {
        const auto quad = hn::LoadU(words, quads_ + i);
        all = hn::Or(all, quad);
        const auto significance = hn::And(quad, hn::Set(words, ht_quad::kSignificance));
        const auto several = hn::Ne(
            hn::And(significance, hn::Sub(significance, hn::Set(words, 0x10))), hn::Zero(words));
        // The lower samples above the quad, one to the left and one to the right of them.
        decltype(most) even, odd, left, right;
        hn::LoadInterleaved2(words, lowers_ + 2 * i, even, odd);
        {
            decltype(most) unused;
            hn::LoadInterleaved2(words, lowers_ + 2 * i - 2, unused, left);
            hn::LoadInterleaved2(words, lowers_ + 2 * i + 2, right, unused);
        }
        const auto above = hn::Or(hn::Or(even, odd), hn::Or(left, right));
        const auto exponent = hn::Sub(Exponents(above), hn::Set(number, 1));
        const auto kappa =
            hn::IfThenElse(several, hn::BitCast(words, hn::Max(exponent, hn::Set(number, 1))), one);
        const auto bound = hn::Add(hn::ShiftRight<16>(quad), kappa);
        most = hn::Max(most, bound);
        hn::StoreU(hn::Or(hn::And(quad, hn::Set(words, 0xFFFF)), hn::ShiftLeft<16>(bound)), words,
                   bounds_ + i);

        const auto numbers =
            SetBits(hn::Or(hn::ShiftRight<4>(significance),
                           hn::And(hn::ShiftLeft<4>(quad), hn::Set(words, 0xF0000))));
        const auto samples = hn::And(numbers, hn::Set(words, 7));
        const auto known = hn::ShiftRight<16>(numbers);
        hn::StoreU(hn::Sub(hn::Mul(bound, samples), known), words, places_ + i);

        const auto before = hn::LoadU(words, quads_ + i - 1);
        const auto after = hn::LoadU(words, quads_ + i + 1);
        const auto west = hn::And(hn::Or(hn::ShiftRight<5>(quad), hn::ShiftRight<7>(before)), one);
        const auto east = hn::And(hn::Or(hn::ShiftRight<5>(after), hn::ShiftRight<7>(quad)), one);
        hn::StoreU(hn::Or(hn::ShiftLeft<7>(west), hn::ShiftLeft<9>(east)), words, contexts_ + i);
    }
    mostBits_ = hn::GetLane(hn::MaxOfLanes(words, most));
    if (mostBits_ > pass_.mostBits) return false;
    // Samples outside the block are never significant.
    if (pass_.width % 2 != 0 && (quads_[count_ - 1] & 0xC0) != 0) return false;
    if (!isLowestHalf) return true;
    return hn::AllTrue(words, hn::Eq(hn::And(all, hn::Set(words, 0xA0)), hn::Zero(words)));
}

/// Adds the quads' bits up to where they begin. Behind the stream's end all bits are the same.
void Decoder::Place() {
    const std::uint32_t end = pass_.magnitudes.count;
    for (std::size_t i = 0; i < count_; ++i) {
        const std::uint32_t bits = places_[i];
        places_[i] = place_;
        place_ = std::min(place_ + bits, end);
    }
    places_[count_] = place_;
}

/// Clause 7.3.8: sign and magnitude of one sample after the other. The rows begin at quad `first`.
void Decoder::ReadQuads(std::size_t first, std::size_t end, std::int32_t* upper,
                        std::int32_t* lower) {
    for (std::size_t i = first; i < end; ++i) {
        const std::uint32_t quad = bounds_[i];
        const std::uint32_t bound = quad >> 16;
        std::uint32_t place = places_[i];
        std::uint32_t coded[4] = {};
        std::int32_t values[4] = {};
        for (unsigned n = 0; n < 4; ++n) {
            if ((quad >> (4 + n) & 1) == 0) continue;
            const std::uint32_t bits = bound - (quad >> (12 + n) & 1);
            const auto word = static_cast<std::uint32_t>(
                LoadWord(pass_.magnitudes.bytes + place / 8) >> (place % 8));
            place = std::min(place + bits, pass_.magnitudes.count);
            coded[n] = (word & ((1U << bits) - 1)) | (quad >> (8 + n) & 1) << bits | 1;
            const std::uint32_t magnitude = (coded[n] + 2) << pass_.shift & 0x7FFFFFFF;
            const std::uint32_t sign = 0U - (word & 1);
            values[n] = static_cast<std::int32_t>((magnitude ^ sign) - sign);
        }
        *upper++ = values[0];
        *upper++ = values[2];
        *lower++ = values[1];
        *lower++ = values[3];
        lowers_[2 * i] = coded[1];
        lowers_[2 * i + 1] = coded[3];
    }
}

/// The quads at the right edge, whose right samples may lie outside.
void Decoder::ReadLastQuads(std::size_t first, std::int32_t* upper, std::int32_t* lower) {
    std::int32_t tail[2][4] = {};
    if (first == count_) return;
    ReadQuads(first, count_, tail[0], tail[1]);
    const std::size_t samples = static_cast<std::size_t>(pass_.width) - 2 * first;
    std::copy_n(tail[0], samples, upper + 2 * first);
    std::copy_n(tail[1], samples, lower + 2 * first);
}

#if HWY_TARGET <= HWY_AVX2

std::size_t Decoder::ReadPairs(std::size_t end, std::int32_t* upper, std::int32_t* lower) {
    using Eight = hn::FixedTag<std::uint32_t, 8>;
    const Eight words;
    const hn::RebindToSigned<Eight> number;
    const hn::Repartition<std::uint8_t, Eight> bytes;
    const hn::Half<Eight> four;
    const hn::Half<decltype(bytes)> sixteen;
    const hn::Half<decltype(number)> fourNumbers;
    alignas(32) static constexpr std::uint32_t kSample[8] = {0, 1, 2, 3, 0, 1, 2, 3};
    alignas(32) static constexpr std::int32_t kRows[8] = {0, 2, 4, 6, 1, 3, 5, 7};
    alignas(16) static constexpr std::uint8_t kLowByte[16] = {0, 0, 0, 0, 4,  4,  4,  4,
                                                              8, 8, 8, 8, 12, 12, 12, 12};
    const auto sample = hn::Load(words, kSample);
    const auto significanceBit = hn::Shl(hn::Set(words, 0x10), sample);
    const auto rows = hn::SetTableIndices(words, kRows);
    const auto lowByte = hn::LoadDup128(bytes, kLowByte);
    const auto byteOrder = hn::BitCast(bytes, hn::Set(words, 0x03020100));
    const auto one = hn::Set(words, 1);
    const auto shift = static_cast<int>(pass_.shift);
    const auto both = [&](const std::uint32_t* values) HWY_ATTR {
        return hn::Combine(words, hn::Set(four, values[1]), hn::Set(four, values[0]));
    };
    for (std::size_t i = 0; i < end; i += 2) {
        const auto quad = both(bounds_ + i);
        const auto place = both(places_ + i);
        const auto isSignificant = hn::TestBit(quad, significanceBit);
        const auto known = hn::And(hn::Shr(hn::ShiftRight<12>(quad), sample), one);
        const auto bits =
            hn::IfThenElseZero(isSignificant, hn::Sub(hn::ShiftRight<16>(quad), known));
        auto behind = hn::Add(bits, hn::ShiftLeftLanes<1>(words, bits));
        behind = hn::Add(behind, hn::ShiftLeftLanes<2>(words, behind));
        const auto from = hn::Add(hn::Sub(behind, bits), hn::And(place, hn::Set(words, 7)));
        const auto load = [&](std::size_t quadAt) HWY_ATTR {
            return hn::LoadU(sixteen, pass_.magnitudes.bytes + places_[quadAt] / 8);
        };
        const auto stream = hn::Combine(bytes, load(i + 1), load(i));
        const auto firstByte =
            hn::TableLookupBytes(hn::BitCast(bytes, hn::ShiftRight<3>(from)), lowByte);
        const auto gathered =
            hn::BitCast(words, hn::TableLookupBytes(stream, hn::Add(firstByte, byteOrder)));
        const auto word = hn::Shr(gathered, hn::And(from, hn::Set(words, 7)));
        const auto top = hn::Shl(one, bits);
        const auto kept = hn::And(word, hn::Sub(top, one));
        const auto hasTop = hn::And(hn::Shr(hn::ShiftRight<8>(quad), sample), one);
        const auto coded =
            hn::IfThenElseZero(isSignificant, hn::Or(hn::Or(kept, one), hn::Shl(hasTop, bits)));
        const auto magnitude =
            hn::BitCast(number, hn::ShiftLeftSame(hn::Add(coded, hn::Set(words, 2)), shift));
        const auto sign = hn::ShiftRight<31>(hn::BitCast(number, hn::ShiftLeft<31>(word)));
        const auto value = hn::IfThenElseZero(hn::RebindMask(number, isSignificant),
                                              hn::Sub(hn::Xor(magnitude, sign), sign));
        const auto ordered =
            hn::TableLookupLanes(value, hn::IndicesFromVec(number, hn::Load(number, kRows)));
        hn::StoreU(hn::LowerHalf(fourNumbers, ordered), fourNumbers, upper + 2 * i);
        hn::StoreU(hn::UpperHalf(fourNumbers, ordered), fourNumbers, lower + 2 * i);
        hn::StoreU(hn::UpperHalf(four, hn::TableLookupLanes(coded, rows)), four, lowers_ + 2 * i);
    }
    return end;
}

#else

std::size_t Decoder::ReadPairs(std::size_t, std::int32_t*, std::int32_t*) {
    return 0;
}

#endif

void Decoder::ReadMagnitudes(std::int32_t* upper, std::int32_t* lower) {
    const std::size_t inside = static_cast<std::size_t>(pass_.width) / 4 * 2;
    std::size_t done = 0;
    // Four samples of 25 bits lie within 16 bytes, whatever bit they begin at.
    if (mostBits_ <= 25) done = ReadPairs(inside, upper, lower);
    ReadQuads(done, inside, upper + 2 * done, lower + 2 * done);
    ReadLastQuads(inside, upper, lower);
}

void Decoder::KeepSignificance(int row) {
    std::uint16_t* groups = scratch_.groups.data() + GroupsAt(pass_.width, row / 4);
    for (std::size_t i = 0; i < count_; i += 2) {
        const std::uint32_t left = quads_[i] >> 4 & 15;
        const std::uint32_t right = i + 1 < count_ ? quads_[i + 1] >> 4 & 15 : 0;
        const std::uint32_t columns =
            (left & 3) | (left & 12) << 2 | (right & 3) << 8 | (right & 12) << 10;
        groups[i / 2] = static_cast<std::uint16_t>(groups[i / 2] | columns << (row & 2));
    }
}

int Decoder::Run(std::int32_t* out, std::ptrdiff_t stride) {
    scratch_.quads.fill(0);
    scratch_.lowers.fill(0);
    for (int row = 0; row < pass_.height; row += 2) {
        if (row == 0) {
            ReadCodes<true>();
        } else {
            ReadCodes<false>();
        }
        const bool isLowestHalf = row + 1 == pass_.height;
        if (!Plan(isLowestHalf) || codes_.IsOverrun()) return row;
        Place();
        if (pass_.keepsSignificance) KeepSignificance(row);
        std::int32_t* upper = out + row * stride;
        ReadMagnitudes(upper, isLowestHalf ? scratch_.below.data() : upper + stride);
    }
    return pass_.height;
}

int DecodeCleanup(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride,
                  HtScratch& scratch) {
    return Decoder(pass, scratch).Run(out, stride);
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(DecodeCleanup);

int DecodeHtCleanup(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride,
                    HtScratch& scratch) {
    return HWY_DYNAMIC_DISPATCH(DecodeCleanup)(pass, out, stride, scratch);
}

}  // namespace quorvex::j2k
#endif
