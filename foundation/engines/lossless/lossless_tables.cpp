#include "foundation/engines/lossless/lossless_tables.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr unsigned kLongestCode = 16;
constexpr unsigned kLargestCategory = 16;  // one difference alone, 32768, of no bits

constexpr std::uint32_t CodeEntry(unsigned length, unsigned category) noexcept {
    const bool isLargest = category == kLargestCategory;
    const unsigned extra = isLargest ? 0 : category;
    return (length + extra) | (length << 8) | (extra << 16) | (isLargest ? 1U << 31 : 0U);
}

}  // namespace

bool LosslessTable::Build(const LosslessTableSegment& segment, unsigned pointTransform) noexcept {
    pointTransform_ = pointTransform;
    categories_ = segment.categories;
    wholes_.fill(kMiss);
    codes_.fill(kMiss);
    limits_.fill(0);
    std::uint32_t code = 0;
    std::uint32_t place = 0;
    for (unsigned length = 1; length <= kLongestCode; ++length, code <<= 1) {
        firstCodes_[length] = code;
        firstPlaces_[length] = place;
        for (unsigned i = 0; i < segment.counts[length]; ++i, ++code, ++place) {
            if (code + 1 >= 1U << length) return false;
            if (length <= kBits) Enter(code, length, categories_[place]);
        }
        limits_[length] = code << (kLongestCode - length);
    }
    EnterPairs();
    return place > 0;
}

void LosslessTable::EnterPairs() noexcept {
    constexpr std::uint32_t kAll = (1U << kBits) - 1;
    constexpr std::uint32_t kOne = 1U << 6;
    constexpr std::uint32_t kTwo = 2U << 6;
    for (std::uint32_t i = 0; i <= kAll; ++i) {
        pairs_[i] = 0;
        if ((wholes_[i] & kMiss) != 0) continue;
        const unsigned length = wholes_[i] & kLengthMask;
        const std::uint32_t first = wholes_[i] >> 16 << 20 >> 10;
        if (FirstOf(first) << 16 != wholes_[i] >> 16 << 16) continue;
        pairs_[i] = first | kOne | length;
        const std::uint32_t next = wholes_[(i << length) & kAll];
        const unsigned both = length + (next & kLengthMask);
        const std::uint32_t second = next >> 16 << 22;
        const bool isNarrow = SecondOf(second) << 16 == next >> 16 << 16;
        if ((next & kMiss) != 0 || both > kBits || !isNarrow) continue;
        pairs_[i] = second | first | kTwo | both;
    }
}

void LosslessTable::Enter(std::uint32_t code, unsigned length, unsigned category) noexcept {
    const unsigned free = kBits - length;
    const std::uint32_t entry = CodeEntry(length, category);
    const std::uint32_t first = code << free;
    const bool isWhole = (entry & kLengthMask) <= kBits;
    for (std::uint32_t i = first; i < first + (1U << free); ++i) {
        codes_[i] = entry;
        if (!isWhole) continue;
        const std::uint32_t difference = Difference(std::uint64_t{i} << (64 - kBits), entry);
        wholes_[i] = (difference << 16) | (entry & kLengthMask);
    }
}

std::optional<std::uint32_t> LosslessTable::ReadLong(LosslessBits& reader) const noexcept {
    const std::uint64_t bits = reader.bits;
    const auto top = static_cast<std::uint32_t>(bits >> (64 - kLongestCode));
    for (unsigned length = kBits + 1; length <= kLongestCode; ++length) {
        if (top >= limits_[length]) continue;
        const std::uint32_t code = top >> (kLongestCode - length);
        const auto place = firstPlaces_[length] + code - firstCodes_[length];
        const std::uint32_t entry = CodeEntry(length, categories_[place]);
        reader.Drop(entry & kLengthMask);
        return Difference(bits, entry);
    }
    return std::nullopt;
}

}  // namespace quorvex
