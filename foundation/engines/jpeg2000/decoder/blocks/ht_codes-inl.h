/// The codes of a row of quads (ISO/IEC 15444-15 clause 7), for one target.
#if defined(QUORVEX_HT_CODES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVEX_HT_CODES_INL
#undef QUORVEX_HT_CODES_INL
#else
#define QUORVEX_HT_CODES_INL
#endif

#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_tables.h"

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace quorvex::j2k::HWY_NAMESPACE {

/// Reads the codes of one row of quads after the other. Each code's place depends on the one before
/// it: what counts is how few steps lie between two look-ups.
class CodeReader {
public:
    CodeReader(const HtCleanup& pass, const HtRows& rows)
        : mel_(pass.mel), bits_(pass.codes), rows_(rows) {
        bits_.Refill();
    }

    /// Fills a row of entries. While the codes of a pair are looked up there is time for other
    /// work: `beside(pair)` is called for each of the first `pairsBeside` pairs.
    template <bool kIsFirstRow, class Beside>
    HWY_INLINE void ReadRow(std::size_t pairsBeside, Beside beside) {
        Row<kIsFirstRow> row{bits_, events_, 0, rows_, &mel_};
        std::size_t i = 0;
        for (; i < pairsBeside; ++i) {
            row.ReadPair(i);
            beside(i);
        }
        for (; i < rows_.count / 2; ++i) row.ReadPair(i);
        if (rows_.count % 2 != 0) row.ReadSingle(i);
        bits_ = row.bits;
        events_ = row.events;
    }

    [[nodiscard]] bool IsOverrun() const { return bits_.IsOverrun(); }

private:
    /// The state in registers.
    template <bool kIsFirstRow>
    struct Row {
        HtBitReader bits;
        HtEvents events;
        std::uint32_t context;  ///< what the quad before gives
        HtRows rows;
        HtMelReader* mel;

        HWY_INLINE void ReadPair(std::size_t pair);
        HWY_INLINE void ReadSingle(std::size_t pair);
        HWY_INLINE std::uint32_t Context(std::size_t quad) const {
            return kIsFirstRow ? context : context + rows.Contexts()[quad];
        }
        HWY_INLINE std::uint32_t LookUp(std::uint32_t at) const {
            const std::uint32_t* entries = kHtTables.quads[kIsFirstRow ? 0 : 1].data() + at;
            return entries[bits.Peek() & 127];
        }
        HWY_INLINE std::uint32_t Accept(std::uint32_t entry, std::uint32_t at);
        HWY_INLINE void ReadOffsets(std::uint32_t first, std::uint32_t second, std::size_t pair);
        HWY_INLINE void MakeReady() {
            if (events < 8) events = mel->Extended(events);  // a pair needs three
        }
    };

    HtMelReader mel_;
    HtBitReader bits_;
    HtEvents events_ = 1;
    HtRows rows_;
};

/// The entry that was looked up; none, 0, where a MEL event of a quad without significant
/// neighbours tells so.
template <bool kIsFirstRow>
HWY_INLINE std::uint32_t CodeReader::Row<kIsFirstRow>::Accept(std::uint32_t entry,
                                                              std::uint32_t at) {
    const unsigned isAlone = at == 0 ? 1 : 0;
    entry &= (isAlone & ~static_cast<unsigned>(events)) - 1;
    events >>= isAlone;
    bits.Skip(entry);
    context = entry >> ht_quad::kContext;
    return entry;
}

template <bool kIsFirstRow>
HWY_INLINE void CodeReader::Row<kIsFirstRow>::ReadPair(std::size_t pair) {
    MakeReady();
    const std::uint32_t firstContext = Context(2 * pair);
    const std::uint32_t contexts =
        kIsFirstRow ? firstContext : firstContext | rows.Contexts()[2 * pair + 1];
    if (contexts == 0 && (events & 3) == 0) {
        events >>= 2;
        rows.Quads()[2 * pair] = 0;
        rows.Quads()[2 * pair + 1] = 0;
        rows.Offsets()[pair] = 0;
        return;
    }
    const std::uint32_t firstEntry = LookUp(firstContext);
    bits.Refill();  // more than 7 bits were left: the first look-up does not wait for this
    const std::uint32_t first = Accept(firstEntry, firstContext);
    const std::uint32_t secondContext = Context(2 * pair + 1);
    const std::uint32_t second = Accept(LookUp(secondContext), secondContext);
    ReadOffsets(first, second, pair);
}

template <bool kIsFirstRow>
HWY_INLINE void CodeReader::Row<kIsFirstRow>::ReadSingle(std::size_t pair) {
    MakeReady();
    bits.Refill();
    const std::uint32_t at = Context(2 * pair);
    ReadOffsets(Accept(LookUp(at), at), 0, pair);
}

/// The exponent offsets of a pair of quads, which PlanRow() takes from there. A pair has 30 bits at
/// most.
template <bool kIsFirstRow>
HWY_INLINE void CodeReader::Row<kIsFirstRow>::ReadOffsets(std::uint32_t first, std::uint32_t second,
                                                          std::size_t pair) {
    unsigned which = (first & ht_quad::kHasOffset) | (second & ht_quad::kHasOffsetToo);
    if constexpr (kIsFirstRow) {
        const unsigned isBoth = which == 3 * 64 ? 1 : 0;
        which += (isBoth & static_cast<unsigned>(events)) * 64;
        events >>= isBoth;
    }
    const std::uint64_t word = bits.Peek();
    const HtOffset* offsets = kHtTables.offsets[kIsFirstRow ? 0 : 1].data() + which;
    const HtOffset offset = offsets[word & 63];
    bits.Skip(offset);
    rows.Quads()[2 * pair] = first;
    rows.Quads()[2 * pair + 1] = second;
    rows.Offsets()[pair] = offset;
    rows.OffsetBits()[pair] = static_cast<std::uint32_t>(word);
}

}  // namespace quorvex::j2k::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
