#include "pipeline/recipe/palette_colours.h"

#include "foundation/dicom/model/attributes.h"
#include "pipeline/pixel_elements.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvex {

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
    const auto palette = ReadExactPalette(object, form.isSigned);
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
