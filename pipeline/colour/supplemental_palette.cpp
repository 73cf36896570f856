#include "pipeline/colour/supplemental_palette.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex {

namespace {

constexpr std::array<unsigned char, 3> kBlack{0, 0, 0};
constexpr std::array<unsigned char, 3> kDarkestGrey{1, 1, 1};

int ValueOf(std::size_t index, std::size_t indexBytes, const SupplementalRules& rules) {
    const bool isSigned = rules.hasSignedWords && indexBytes == 2;
    return isSigned ? static_cast<std::int16_t>(index) : static_cast<int>(index);
}

bool HasEntry(const CxPaletteLUT& lut, int value, const SupplementalRules& rules) {
    if (value < lut.GetFirstValue()) return false;
    const std::int64_t end =
        std::int64_t{lut.GetFirstValue()} + static_cast<std::int64_t>(lut.GetEntries().size());
    if (!rules.hasUnsignedEnd) return value < end;
    return static_cast<std::uint32_t>(value) < static_cast<std::uint32_t>(end);
}

unsigned char ByteOf(const CxPaletteLUT& lut, int value, const SupplementalRules& rules) {
    if (!rules.readsStraight) {
        return static_cast<unsigned char>(static_cast<int>(lut.Lookup(value) * rules.factor));
    }
    const auto entries = lut.GetEntries();
    const std::int64_t last = static_cast<std::int64_t>(entries.size()) - 1;
    const auto place = std::min(std::int64_t{value} - lut.GetFirstValue(), last);
    return static_cast<unsigned char>(entries[static_cast<std::size_t>(place)]);
}

}  // namespace

PaletteColours SupplementalColours(const Palette& palette, std::size_t indexBytes,
                                   const SupplementalRules& rules) {
    PaletteColours colours(std::size_t{1} << (8 * indexBytes));
    for (std::size_t index = 0; index < colours.size(); ++index) {
        const int value = ValueOf(index, indexBytes, rules);
        const bool isCovered = std::ranges::all_of(
            palette, [&](const CxPaletteLUT& lut) { return HasEntry(lut, value, rules); });
        if (!isCovered) continue;
        for (std::size_t s = 0; s < palette.size(); ++s) {
            colours[index][s] = ByteOf(palette[s], value, rules);
        }
        if (rules.liftsBlack && colours[index] == kBlack) colours[index] = kDarkestGrey;
    }
    return colours;
}

SupplementalRules RulesForDisplay(const Palette& palette, bool isSigned) {
    return {.hasSignedWords = isSigned,
            .factor = PaletteFactor(palette),
            .readsStraight = false,
            .hasUnsignedEnd = false,
            .liftsBlack = true};
}

}  // namespace quorvex
