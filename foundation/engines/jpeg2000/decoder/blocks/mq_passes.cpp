#include "foundation/engines/jpeg2000/decoder/blocks/mq_passes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/engines/jpeg2000/decoder/blocks/mq_passes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Nothing here is a vector, but newer processors count zeros and shift in fewer steps.
HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {

#undef QUORVEX_PASS
// What a pass does at a place goes into its loop, so that the decoder stays in registers.
#define QUORVEX_PASS HWY_ATTR __attribute__((always_inline))

constexpr std::uint64_t kTopRow = 0x1111111111111111;
constexpr std::uint32_t kAround = 0x1EF;  // the eight neighbours of row 0
constexpr unsigned kSelf = 4;
constexpr unsigned kSignAbove = 18;
constexpr unsigned kSign = 19;
constexpr unsigned kSignBelow = 23;

/// A place of the scan, and what is at it.
struct Cursor {
    Tract* tract;
    std::uint32_t* column;  ///< of the tract's first one
    std::uint32_t* values;
};

// Calls `visit(cursor)` for all tracts.
template <class Visit>
HWY_INLINE void ForTracts(BlockInWork& block, const Visit& visit) {
    std::uint32_t* values = block.values;
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        Tract* tract = block.tracts + stripe * block.tractStride;
        std::uint32_t* column = block.columns + stripe * block.columnStride;
        for (int i = 0; i < block.tractsAcross; ++i) {
            visit(Cursor{tract, column, values});
            ++tract;
            column += kTractColumns;
            values += kTractValues;
        }
    }
}

// Marks `pattern`, four bits for each of three columns, around column `x` of a tract.
HWY_INLINE void MarkNear(Tract* tract, unsigned x, std::uint64_t pattern) {
    tract->near |= x == 0 ? pattern >> 4 : pattern << (4 * x - 4);
    if (x == 0) tract[-1].near |= pattern << 60;
    if (x == kTractColumns - 1) tract[1].near |= pattern >> 8;
}

// Tells the neighbours that a place has become significant. Causal blocks hide it from the stripe
// above.
template <bool isCausal>
HWY_INLINE void Spread(const BlockInWork& block, const Cursor& cursor, unsigned x, unsigned row,
                       std::uint32_t sign) {
    constexpr std::uint64_t kRows[] = {0x323, 0x757, 0xEAE, 0xC4C};
    std::uint32_t* const at = cursor.column + x;
    at[-1] |= 1U << (3 * row + 5);
    at[0] |= (1U << (3 * row + kSelf)) | (sign << (row + kSign));
    at[1] |= 1U << (3 * row + 3);
    MarkNear(cursor.tract, x, kRows[row]);
    if (row == 0 && !isCausal) {
        std::uint32_t* const above = at - block.columnStride;
        above[-1] |= 1U << 17;
        above[0] |= (1U << 16) | (sign << kSignBelow);
        above[1] |= 1U << 15;
        MarkNear(cursor.tract - block.tractStride, x, 0x888);
    }
    if (row == 3) {
        std::uint32_t* const below = at + block.columnStride;
        below[-1] |= 1U << 2;
        below[0] |= (1U << 1) | (sign << kSignAbove);
        below[1] |= 1U;
        MarkNear(cursor.tract + block.tractStride, x, 0x111);
    }
}

// Where to look in kSignCoding for row `row` of the column at `at`.
HWY_INLINE unsigned SignPlace(const std::uint32_t* at, unsigned row) {
    const std::uint32_t vertical = at[0] >> (kSignAbove + row);
    const unsigned own = kSign + row;
    return ((at[0] >> (3 * row)) & 0xAA) | (vertical & 1) | (((at[-1] >> own) & 1) << 2) |
           (((at[1] >> own) & 1) << 4) | ((vertical & 4) << 4);
}

HWY_INLINE std::uint32_t DecodeSign(BlockInWork& block, MqDecoder& decoder, const std::uint32_t* at,
                                    unsigned row) {
    const std::uint8_t coding = kSignCoding[SignPlace(at, row)];
    return decoder.Decode(block.contexts[coding & 0x7F]) ^ (coding >> 7);
}

// Place `place` of a tract becomes significant in `plane`.
template <bool isCausal>
HWY_INLINE void Become(const BlockInWork& block, const Cursor& cursor, unsigned place,
                       std::uint32_t sign, int plane) {
    cursor.values[place] = (sign << 31) | (3U << (plane - 1));
    cursor.tract->significant |= std::uint64_t{1} << place;
    Spread<isCausal>(block, cursor, place / 4, place % 4, sign);
}

template <bool isCausal>
HWY_INLINE void DecodeNewlySignificant(BlockInWork& block, MqDecoder& decoder, const Cursor& cursor,
                                       unsigned place, int plane) {
    const std::uint32_t sign = DecodeSign(block, decoder, cursor.column + place / 4, place % 4);
    Become<isCausal>(block, cursor, place, sign, plane);
}

HWY_INLINE std::uint64_t Candidates(const Tract& tract) {
    return tract.near & ~tract.significant & tract.valid;
}

// The bits of `members` behind `place`.
HWY_INLINE std::uint64_t Behind(std::uint64_t members, unsigned place) {
    return members & (~std::uint64_t{1} << place);
}

HWY_INLINE MqState& ZeroContext(BlockInWork& block, const Cursor& cursor, unsigned place) {
    const std::uint32_t around = cursor.column[place / 4] >> (3 * (place % 4));
    return block.contexts[(*block.zeroCoding)[around & kAround]];
}

template <bool isCausal>
void Significance(BlockInWork& block, MqDecoder& shared, int plane) {
    MqDecoder decoder = shared;
    ForTracts(block, [&](const Cursor& cursor) QUORVEX_PASS {
        Tract& tract = *cursor.tract;
        std::uint64_t coded = 0;
        for (std::uint64_t left = Candidates(tract); left != 0;) {
            const auto place = static_cast<unsigned>(std::countr_zero(left));
            coded |= left & (~left + 1);
            left &= left - 1;
            if (decoder.Decode(ZeroContext(block, cursor, place)) == 0) continue;
            DecodeNewlySignificant<isCausal>(block, decoder, cursor, place, plane);
            left = Behind(Candidates(tract), place);
        }
        tract.coded = coded;
    });
    shared = decoder;
}

template <bool isCausal>
void RawSignificance(BlockInWork& block, RawBits& bits, int plane) {
    ForTracts(block, [&](const Cursor& cursor) QUORVEX_PASS {
        Tract& tract = *cursor.tract;
        std::uint64_t coded = 0;
        for (std::uint64_t left = Candidates(tract); left != 0;) {
            const auto place = static_cast<unsigned>(std::countr_zero(left));
            coded |= left & (~left + 1);
            left &= left - 1;
            if (bits.Decode() == 0) continue;
            Become<isCausal>(block, cursor, place, bits.Decode(), plane);
            left = Behind(Candidates(tract), place);
        }
        tract.coded = coded;
    });
}

// A value has its midpoint bit set above `plane`'s: sets or clears it, and sets the one below.
HWY_INLINE void Refine(std::uint32_t& value, std::uint32_t bit, int plane) {
    value ^= (1U << (plane - 1)) | ((bit ^ 1) << plane);
}

// The top places of the whole columns that have nothing significant in or around them.
HWY_INLINE std::uint64_t EmptyColumns(const Tract& tract) {
    std::uint64_t any = tract.near | tract.significant | ~tract.valid;
    any |= any >> 1;
    any |= any >> 2;
    return ~any & kTopRow;
}

// Where a clean-up pass decodes: of an empty column the top place only.
HWY_INLINE std::uint64_t CleanUpPlaces(const Tract& tract, std::uint64_t empty) {
    return (~(tract.significant | tract.coded) & tract.valid & ~(empty * 15)) | empty;
}

template <bool isCausal>
void CleanUp(BlockInWork& block, MqDecoder& shared, int plane) {
    MqDecoder decoder = shared;
    ForTracts(block, [&](const Cursor& cursor) QUORVEX_PASS {
        Tract& tract = *cursor.tract;
        std::uint64_t empty = EmptyColumns(tract);
        std::uint64_t left = CleanUpPlaces(tract, empty);
        while (left != 0) {
            auto place = static_cast<unsigned>(std::countr_zero(left));
            left &= left - 1;
            if (((empty >> place) & 1) != 0) {
                if (decoder.DecodeSkewed(block.contexts[kRunContext]) == 0) continue;
                const unsigned high = decoder.Decode(block.contexts[kUniformContext]) << 1;
                place += high | decoder.Decode(block.contexts[kUniformContext]);
            } else if (decoder.Decode(ZeroContext(block, cursor, place)) == 0) {
                continue;
            }
            DecodeNewlySignificant<isCausal>(block, decoder, cursor, place, plane);
            empty = EmptyColumns(tract);
            left = Behind(CleanUpPlaces(tract, empty), place);
        }
        tract.coded = 0;
    });
    shared = decoder;
}

// Calls `refine(value, context)` for each member of the pass, with the context's number among the
// three.
template <class Refined>
HWY_INLINE void ForRefined(BlockInWork& block, const Refined& refine) {
    ForTracts(block, [&](const Cursor& cursor) QUORVEX_PASS {
        Tract& tract = *cursor.tract;
        const std::uint64_t members = tract.significant & ~tract.coded;
        for (std::uint64_t left = members; left != 0; left &= left - 1) {
            const auto place = static_cast<unsigned>(std::countr_zero(left));
            const auto first = static_cast<unsigned>((tract.near >> place) & 1);
            const bool isFirst = ((tract.refined >> place) & 1) == 0;
            refine(cursor.values[place], isFirst ? first : 2);
        }
        tract.refined |= members;
    });
}

void RunSignificance(BlockInWork& block, MqDecoder& decoder, int plane) {
    block.isCausal ? Significance<true>(block, decoder, plane)
                   : Significance<false>(block, decoder, plane);
}

void RunRefinement(BlockInWork& block, MqDecoder& shared, int plane) {
    MqDecoder decoder = shared;
    MqState* const contexts = block.contexts.data() + kFirstRefinementContext;
    MqState last = contexts[2];  // in a register: most places are refined again and again
    ForRefined(block, [&](std::uint32_t& value, unsigned context) QUORVEX_PASS {
        const unsigned bit =
            context == 2 ? decoder.Decode(last) : decoder.Decode(contexts[context]);
        Refine(value, bit, plane);
    });
    contexts[2] = last;
    shared = decoder;
}

void RunCleanUp(BlockInWork& block, MqDecoder& decoder, int plane) {
    block.isCausal ? CleanUp<true>(block, decoder, plane) : CleanUp<false>(block, decoder, plane);
}

void RunRawSignificance(BlockInWork& block, RawBits& bits, int plane) {
    block.isCausal ? RawSignificance<true>(block, bits, plane)
                   : RawSignificance<false>(block, bits, plane);
}

void RunRawRefinement(BlockInWork& block, RawBits& bits, int plane) {
    ForRefined(block, [&](std::uint32_t& value, unsigned)
                          QUORVEX_PASS { Refine(value, bits.Decode(), plane); });
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quorvex::j2k {

HWY_EXPORT(RunSignificance);
HWY_EXPORT(RunRefinement);
HWY_EXPORT(RunCleanUp);
HWY_EXPORT(RunRawSignificance);
HWY_EXPORT(RunRawRefinement);

void SignificancePass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept {
    HWY_DYNAMIC_DISPATCH(RunSignificance)(block, decoder, plane);
}

void RefinementPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept {
    HWY_DYNAMIC_DISPATCH(RunRefinement)(block, decoder, plane);
}

void CleanUpPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept {
    HWY_DYNAMIC_DISPATCH(RunCleanUp)(block, decoder, plane);
}

void RawSignificancePass(BlockInWork& block, RawBits& bits, int plane) noexcept {
    HWY_DYNAMIC_DISPATCH(RunRawSignificance)(block, bits, plane);
}

void RawRefinementPass(BlockInWork& block, RawBits& bits, int plane) noexcept {
    HWY_DYNAMIC_DISPATCH(RunRawRefinement)(block, bits, plane);
}

}  // namespace quorvex::j2k
#endif  // HWY_ONCE
