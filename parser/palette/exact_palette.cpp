#include "parser/palette/exact_palette.h"

#include "parser/palette/palette_image.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvex {

namespace {

constexpr int kByteBits = 8;
constexpr int kWordBits = 16;

int StatedHighest(const CxPaletteLUT& table) {
    return (1 << std::clamp<int>(table.GetEntryBits(), kByteBits, kWordBits)) - 1;
}

/// What an entry can be at most: a byte where no entry has more, whatever the tables state, and a
/// word where one has more than they state.
double HighestEntry(const Palette& palette) {
    if (std::ranges::all_of(palette, &CxPaletteLUT::HoldsOnlyBytes)) return UINT8_MAX;
    int stated = 0;
    int met = 0;
    for (const CxPaletteLUT& table : palette) {
        stated = std::max(stated, StatedHighest(table));
        met = std::max<int>(met, std::ranges::max(table.GetEntries()));
    }
    return met > stated ? UINT16_MAX : stated;
}

}  // namespace

const std::array<std::uint8_t, 3>& ExactPalette::Of(std::int64_t value) const noexcept {
    const auto last = static_cast<std::int64_t>(colours.size()) - 1;
    return colours[static_cast<std::size_t>(std::clamp<std::int64_t>(value - first, 0, last))];
}

std::optional<ExactPalette> ReadExactPalette(CDcmObject& object, bool isSigned) {
    const auto palette = LoadPalette(object, Rules::kStandard, isSigned ? 1 : 0);
    if (!palette) return std::nullopt;
    const double factor = UINT8_MAX / HighestEntry(*palette);
    ExactPalette exact{palette->front().GetFirstValue(), {}};
    exact.colours.resize(palette->front().GetEntries().size());
    for (std::size_t i = 0; i < exact.colours.size(); ++i) {
        const auto value = static_cast<int>(exact.first + static_cast<std::int64_t>(i));
        std::ranges::transform(*palette, exact.colours[i].begin(), [&](const CxPaletteLUT& table) {
            return static_cast<std::uint8_t>(std::lround(table.Lookup(value) * factor));
        });
    }
    return exact;
}

}  // namespace quorvex
