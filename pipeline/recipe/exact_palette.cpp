#include "pipeline/recipe/exact_palette.h"

#include "foundation/dicom/model/attributes.h"
#include "parser/palette/palette_image.h"
#include "pipeline/pixel_elements.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace quorvex {

namespace {

using Entries = std::array<std::uint16_t, 3>;

/// The entries of all values that the palette has; its tables have one size and one first value.
std::vector<Entries> EntriesOf(const Palette& palette) {
    std::vector<Entries> all(palette.front().GetEntries().size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t channel = 0; channel < palette.size(); ++channel) {
            const CxPaletteLUT& table = palette[channel];
            all[i][channel] = table.Lookup(table.GetFirstValue() + static_cast<int>(i));
        }
    }
    return all;
}

/// What an entry can be at most: a byte where no entry has more, whatever the tables state.
double HighestEntry(const std::vector<Entries>& all) {
    const bool areBytes = std::ranges::all_of(
        all, [](const Entries& entries) { return std::ranges::max(entries) <= UINT8_MAX; });
    return areBytes ? UINT8_MAX : UINT16_MAX;
}

}  // namespace

const Rgb& ExactPalette::Of(std::int64_t value) const noexcept {
    const auto last = static_cast<std::int64_t>(colours.size()) - 1;
    return colours[static_cast<std::size_t>(std::clamp<std::int64_t>(value - first, 0, last))];
}

std::optional<ExactPalette> ReadExactPalette(CDcmObject& object, const StoredForm& form) {
    const auto palette = LoadPalette(object);
    if (!palette) return std::nullopt;
    const auto all = EntriesOf(*palette);
    const double highest = HighestEntry(all);
    ExactPalette exact;
    const auto first = static_cast<std::uint16_t>(palette->front().GetFirstValue());
    exact.first = form.isSigned ? std::int64_t{static_cast<std::int16_t>(first)} : first;
    exact.colours.resize(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::ranges::transform(all[i], exact.colours[i].begin(), [&](std::uint16_t entry) {
            return static_cast<std::uint8_t>(std::lround(entry * 255.0 / highest));
        });
    }
    return exact;
}

PixelBlock ColouredBy(const ExactPalette& palette, const PixelBlock& elements, int elementBytes,
                      bool isSigned) {
    StoredLayout layout;
    layout.bitsAllocated = 8 * elementBytes;
    layout.isSigned = isSigned;
    const std::size_t count = elements.size / static_cast<std::size_t>(elementBytes);
    PixelBlock colours = NewPixelBlock(3 * count);
    WithElementType(layout, [&](auto element) {
        using Element = decltype(element);
        for (std::size_t i = 0; i < count; ++i) {
            const Rgb& colour = palette.Of(ElementAt<Element>(elements.data.get(), i));
            std::ranges::copy(colour, colours.data.get() + 3 * i);
        }
    });
    return colours;
}

std::vector<ValueColour> SupplementalColoursOf(CDcmObject& object, const StoredForm& form,
                                               int elementBytes) {
    if (!Read<int>(object, tag::kRedPaletteColorLookupTableDescriptor)) return {};
    const auto palette = ReadExactPalette(object, form);
    if (!palette) return {};
    const std::size_t count = std::size_t{1} << (8 * elementBytes);
    std::vector<ValueColour> colours(count);
    for (std::size_t i = 0; i < palette->colours.size(); ++i) {
        const std::int64_t value = palette->first + static_cast<std::int64_t>(i);
        if (value < form.Lowest() || value > form.Highest()) continue;
        colours[static_cast<std::size_t>(value) & (count - 1)] = {palette->colours[i], true};
    }
    return colours;
}

}  // namespace quorvex
