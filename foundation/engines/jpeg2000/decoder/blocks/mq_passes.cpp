#include "foundation/engines/jpeg2000/decoder/blocks/mq_passes.h"

namespace quorvex::j2k {
namespace {

// Tells the neighbours that row `row` of the column at `at` has become significant. Causal blocks
// hide it from the stripe above.
template <bool isCausal>
[[gnu::always_inline]] inline void Spread(std::uint32_t* at, std::ptrdiff_t stride, unsigned row,
                                          std::uint32_t sign) noexcept {
    at[-1] |= 1U << (3 * row + 5);
    at[1] |= 1U << (3 * row + 3);
    if (row == 0 && !isCausal) {
        std::uint32_t* above = at - stride;
        above[-1] |= 1U << 17;
        above[0] |= (1U << 16) | (sign << kSignBelow);
        above[1] |= 1U << 15;
    }
    if (row == 3) {
        std::uint32_t* below = at + stride;
        below[-1] |= 1U << 2;
        below[0] |= (1U << 1) | (sign << kSignAbove);
        below[1] |= 1U;
    }
}

// Where to look in kSignCoding for row `row`.
[[gnu::always_inline]] inline unsigned SignPlace(std::uint32_t word, std::uint32_t left,
                                                 std::uint32_t right, unsigned row) noexcept {
    const std::uint32_t above =
        row == 0 ? word >> kSignAbove : word >> (kSign + 3 * row - 3);
    const std::uint32_t below =
        row == 3 ? word >> kSignBelow : word >> (kSign + 3 * row + 3);
    const unsigned own = kSign + 3 * row;
    return ((word >> (3 * row)) & 0xAA) | (above & 1) | (((left >> own) & 1) << 2) |
           (((right >> own) & 1) << 4) | ((below & 1) << 6);
}

[[gnu::always_inline]] inline std::uint32_t DecodeSign(BlockInWork& block, MqDecoder& decoder,
                                                       std::uint32_t word, const std::uint32_t* at,
                                                       unsigned row) noexcept {
    const std::uint8_t coding = kSignCoding[SignPlace(word, at[-1], at[1], row)];
    return decoder.Decode(block.contexts[coding & 0x7F]) ^ (coding >> 7);
}

// Row `row` of the column at `at` becomes significant in `plane`.
template <bool isCausal>
[[gnu::always_inline]] inline void Become(const BlockInWork& block, std::uint32_t* at,
                                          std::uint32_t* values, std::uint32_t& word, unsigned row,
                                          std::uint32_t sign, int plane) noexcept {
    values[row] = (sign << 31) | (3U << (plane - 1));
    word |= (1U << (3 * row + kSelf)) | (sign << (3 * row + kSign));
    Spread<isCausal>(at, block.flagStride, row, sign);
}

// The rows, each as bit 3i, that have a significant neighbour and are not significant.
[[gnu::always_inline]] inline std::uint32_t Candidates(std::uint32_t word) noexcept {
    const std::uint32_t across = word | (word >> 1) | (word >> 2);
    const std::uint32_t any = across | (across >> 3) | (across >> 6);
    return any & ~(word >> kSelf) & kEachRow;
}

template <bool isCausal>
void Significance(BlockInWork& block, MqDecoder& shared, int plane) noexcept {
    MqDecoder decoder = shared;
    const ZeroCodingTable& zeroCoding = *block.zeroCoding;
    std::uint32_t* values = block.values;
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        std::uint32_t* at = block.flags + stripe * block.flagStride;
        const std::uint32_t rows = block.RowsOf(stripe);
        for (int x = 0; x < block.width; ++x, ++at, values += 4) {
            std::uint32_t word = *at;
            if ((word & kAnySignificant) == 0) continue;
            std::uint32_t left = Candidates(word) & rows;
            if (left == 0) continue;
            while (left != 0) {
                const auto shift = static_cast<unsigned>(std::countr_zero(left));
                left &= left - 1;
                MqState& context = block.contexts[zeroCoding[(word >> shift) & kAround]];
                word |= 1U << (shift + kCoded);
                if (decoder.Decode(context) == 0) continue;
                const unsigned row = shift / 3;
                const std::uint32_t sign = DecodeSign(block, decoder, word, at, row);
                Become<isCausal>(block, at, values, word, row, sign, plane);
                left |= (8U << shift) & ~(word >> kSelf) & rows;
            }
            *at = word;
        }
    }
    shared = decoder;
}

template <bool isCausal>
void RawSignificance(BlockInWork& block, RawBits& bits, int plane) noexcept {
    std::uint32_t* values = block.values;
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        std::uint32_t* at = block.flags + stripe * block.flagStride;
        const std::uint32_t rows = block.RowsOf(stripe);
        for (int x = 0; x < block.width; ++x, ++at, values += 4) {
            std::uint32_t word = *at;
            std::uint32_t left = Candidates(word) & rows;
            while (left != 0) {
                const auto shift = static_cast<unsigned>(std::countr_zero(left));
                left &= left - 1;
                word |= 1U << (shift + kCoded);
                if (bits.Decode() == 0) continue;
                const unsigned row = shift / 3;
                Become<isCausal>(block, at, values, word, row, bits.Decode(), plane);
                left |= (8U << shift) & ~(word >> kSelf) & rows;
            }
            *at = word;
        }
    }
}

// Calls `refine(word, shift, value)` for each row that the pass covers.
template <class Refine>
[[gnu::always_inline]] inline void ForRefined(BlockInWork& block, const Refine& refine) noexcept {
    std::uint32_t* values = block.values;
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        std::uint32_t* at = block.flags + stripe * block.flagStride;
        for (int x = 0; x < block.width; ++x, ++at, values += 4) {
            const std::uint32_t word = *at;
            const std::uint32_t members = (word >> kSelf) & ~(word >> kCoded) & kEachRow;
            if (members == 0) continue;
            if (members == kEachRow) {
                for (unsigned row = 0; row < 4; ++row) refine(word >> (3 * row), values[row]);
            } else {
                for (std::uint32_t left = members; left != 0; left &= left - 1) {
                    const auto shift = static_cast<unsigned>(std::countr_zero(left));
                    refine(word >> shift, values[shift / 3]);
                }
            }
            *at = word | (members << kRefined);
        }
    }
}

// A value has its midpoint bit set above `plane`'s: sets or clears it, and sets the one below.
[[gnu::always_inline]] inline void Refine(std::uint32_t& value, std::uint32_t bit,
                                          int plane) noexcept {
    value ^= (1U << (plane - 1)) | ((bit ^ 1) << plane);
}

template <bool isCausal>
[[gnu::always_inline]] inline void CleanUpRows(BlockInWork& block, MqDecoder& decoder,
                                               std::uint32_t* at, std::uint32_t* values,
                                               std::uint32_t& word, std::uint32_t rows,
                                               int plane) noexcept {
    const ZeroCodingTable& zeroCoding = *block.zeroCoding;
    for (std::uint32_t left = rows; left != 0; left &= left - 1) {
        const auto shift = static_cast<unsigned>(std::countr_zero(left));
        MqState& context = block.contexts[zeroCoding[(word >> shift) & kAround]];
        if (decoder.Decode(context) == 0) continue;
        const unsigned row = shift / 3;
        const std::uint32_t sign = DecodeSign(block, decoder, word, at, row);
        Become<isCausal>(block, at, values, word, row, sign, plane);
    }
}

// A column of four rows with nothing significant around it: gives the rows that are left behind
// the first significant one, which it decodes; nothing where all are zero.
template <bool isCausal>
[[gnu::always_inline]] inline std::uint32_t RunOfZeros(BlockInWork& block, MqDecoder& decoder,
                                                       std::uint32_t* at, std::uint32_t* values,
                                                       std::uint32_t& word, int plane) noexcept {
    if (decoder.Decode(block.contexts[kRunContext]) == 0) return 0;
    unsigned row = decoder.Decode(block.contexts[kUniformContext]) << 1;
    row |= decoder.Decode(block.contexts[kUniformContext]);
    const std::uint32_t sign = DecodeSign(block, decoder, word, at, row);
    Become<isCausal>(block, at, values, word, row, sign, plane);
    return kEachRow & ~((8U << (3 * row)) - 1);
}

template <bool isCausal>
void CleanUp(BlockInWork& block, MqDecoder& shared, int plane) noexcept {
    constexpr std::uint32_t kAllCoded = kEachRow << kCoded;
    MqDecoder decoder = shared;
    std::uint32_t* values = block.values;
    for (int stripe = 0; stripe < block.Stripes(); ++stripe) {
        std::uint32_t* at = block.flags + stripe * block.flagStride;
        const std::uint32_t rows = block.RowsOf(stripe);
        for (int x = 0; x < block.width; ++x, ++at, values += 4) {
            std::uint32_t word = *at;
            std::uint32_t left = 0;
            if (word == 0 && rows == kEachRow) {
                left = RunOfZeros<isCausal>(block, decoder, at, values, word, plane);
            } else {
                left = ~(word >> kSelf) & ~(word >> kCoded) & rows;
            }
            CleanUpRows<isCausal>(block, decoder, at, values, word, left, plane);
            *at = word & ~kAllCoded;
        }
    }
    shared = decoder;
}

}  // namespace

void SignificancePass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept {
    block.isCausal ? Significance<true>(block, decoder, plane)
                   : Significance<false>(block, decoder, plane);
}

void RawSignificancePass(BlockInWork& block, RawBits& bits, int plane) noexcept {
    block.isCausal ? RawSignificance<true>(block, bits, plane)
                   : RawSignificance<false>(block, bits, plane);
}

void RefinementPass(BlockInWork& block, MqDecoder& shared, int plane) noexcept {
    MqDecoder decoder = shared;
    MqState* const contexts = block.contexts.data() + kFirstRefinementContext;
    ForRefined(block, [&](std::uint32_t word, std::uint32_t& value) {
        const unsigned first = (word & kAround) != 0 ? 1 : 0;
        const unsigned context = ((word >> kRefined) & 1) != 0 ? 2 : first;
        Refine(value, decoder.Decode(contexts[context]), plane);
    });
    shared = decoder;
}

void RawRefinementPass(BlockInWork& block, RawBits& bits, int plane) noexcept {
    ForRefined(block, [&](std::uint32_t, std::uint32_t& value) {
        Refine(value, bits.Decode(), plane);
    });
}

void CleanUpPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept {
    block.isCausal ? CleanUp<true>(block, decoder, plane) : CleanUp<false>(block, decoder, plane);
}

}  // namespace quorvex::j2k
