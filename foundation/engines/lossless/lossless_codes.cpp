#include "foundation/engines/lossless/lossless_codes.h"

#include <cstddef>
#include <limits>

namespace quorvex {
namespace {

// One more than there are keeps the code of ones alone free.
constexpr std::size_t kLeaves = kLosslessCategories + 1;
constexpr std::size_t kLongestCode = 16;
constexpr std::size_t kNone = kLeaves;

using Lengths = std::array<std::size_t, kLeaves>;
using CountsByLength = std::array<int, kLeaves + 1>;

/// The last of the rarest.
std::size_t Rarest(const std::array<std::uint64_t, kLeaves>& counts, std::size_t except) noexcept {
    std::size_t rarest = kNone;
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    for (std::size_t i = 0; i < kLeaves; ++i) {
        if (counts[i] == 0 || counts[i] > least || i == except) continue;
        least = counts[i];
        rarest = i;
    }
    return rarest;
}

/// Of the codes of each leaf, 0 where it does not occur.
Lengths CodeLengths(const LosslessCounts& given) noexcept {
    std::array<std::uint64_t, kLeaves> counts{};
    std::array<std::size_t, kLeaves> next;
    std::copy(given.begin(), given.end(), counts.begin());
    counts.back() = 1;
    next.fill(kNone);
    Lengths lengths{};
    // A tree is a chain of its leaves, all of which sink by one when two trees become one.
    const auto sink = [&](std::size_t leaf) {
        for (++lengths[leaf]; next[leaf] != kNone; ++lengths[leaf]) leaf = next[leaf];
        return leaf;
    };
    for (;;) {
        const std::size_t one = Rarest(counts, kNone);
        const std::size_t other = Rarest(counts, one);
        if (other == kNone) return lengths;
        counts[one] += counts[other];
        counts[other] = 0;
        next[sink(one)] = other;
        sink(other);
    }
}

/// Codes beyond the longest that there may be go up, and one shorter code goes down for two of them
/// (ITU-T T.81 Figure K.3).
void Shorten(CountsByLength& counts) noexcept {
    for (std::size_t length = counts.size() - 1; length > kLongestCode; --length) {
        while (counts[length] > 0) {
            std::size_t shorter = length - 2;
            while (counts[shorter] == 0) --shorter;
            counts[length] -= 2;
            ++counts[length - 1];
            counts[shorter + 1] += 2;
            --counts[shorter];
        }
    }
}

}  // namespace

LosslessTableSegment ShortestTable(const LosslessCounts& counts) noexcept {
    const Lengths lengths = CodeLengths(counts);
    CountsByLength byLength{};
    for (const std::size_t length : lengths) byLength[length] += length > 0 ? 1 : 0;
    Shorten(byLength);
    std::size_t longest = kLongestCode;
    while (byLength[longest] == 0) --longest;
    --byLength[longest];
    LosslessTableSegment table;
    for (std::size_t length = 1; length <= kLongestCode; ++length) {
        table.counts[length] = static_cast<std::uint8_t>(byLength[length]);
    }
    std::size_t place = 0;
    for (std::size_t length = 1; length <= kLeaves; ++length) {
        for (std::size_t i = 0; i < kLosslessCategories; ++i) {
            if (lengths[i] == length) table.categories[place++] = static_cast<std::uint8_t>(i);
        }
    }
    return table;
}

LosslessCodes CodesOf(const LosslessTableSegment& table) noexcept {
    LosslessCodes codes{};
    std::uint32_t code = 0;
    std::size_t place = 0;
    for (std::uint32_t length = 1; length <= kLongestCode; ++length, code <<= 1) {
        for (int i = 0; i < table.counts[length]; ++i, ++code) {
            const std::uint32_t category = table.categories[place++];
            const std::uint32_t bits = category == kLosslessCategories - 1 ? 0 : category;
            codes[category] = {.code = code << bits, .length = length + bits};
        }
    }
    return codes;
}

}  // namespace quorvex
