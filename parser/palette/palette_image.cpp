#include "parser/palette/palette_image.h"

#include "foundation/dicom/model/attributes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace quorvex {
namespace {

struct ColourTags {
    std::uint32_t descriptor;
    std::uint32_t plain;
    std::uint32_t segmented;
};

constexpr ColourTags kColours[] = {
    {tag::kRedPaletteColorLookupTableDescriptor, tag::kRedPaletteColorLookupTableData,
     tag::kSegmentedRedPaletteColorLookupTableData},
    {tag::kGreenPaletteColorLookupTableDescriptor, tag::kGreenPaletteColorLookupTableData,
     tag::kSegmentedGreenPaletteColorLookupTableData},
    {tag::kBluePaletteColorLookupTableDescriptor, tag::kBluePaletteColorLookupTableData,
     tag::kSegmentedBluePaletteColorLookupTableData},
};

bool LoadColour(CxPaletteLUT& lut, CDcmObject& object, const ColourTags& tags) {
    return lut.LoadLUT(&object, tags.descriptor, tags.plain, 0) != 0 ||
           lut.LoadLUT(&object, tags.descriptor, tags.segmented, 1) != 0;
}

PaletteColours ColoursOfIndices(const Palette& palette, std::size_t indexBytes) {
    const double factor = PaletteFactor(palette);
    PaletteColours colours(std::size_t{1} << (8 * indexBytes));
    for (std::size_t index = 0; index < colours.size(); ++index) {
        for (std::size_t s = 0; s < 3; ++s) {
            const double value = palette[s].Lookup(static_cast<int>(index)) * factor;
            colours[index][s] = static_cast<unsigned char>(static_cast<int>(value));
        }
    }
    return colours;
}

template <class Index>
void Colour(const PaletteColours& colours, std::span<const unsigned char> indices,
            std::span<unsigned char> rgb) {
    const std::size_t pixels = std::min(indices.size() / sizeof(Index), rgb.size() / 3);
    for (std::size_t p = 0; p < pixels; ++p) {
        Index index;
        std::memcpy(&index, indices.data() + p * sizeof index, sizeof index);
        std::memcpy(rgb.data() + 3 * p, colours[index].data(), 3);
    }
}

}  // namespace

std::optional<Palette> LoadPalette(CDcmObject& object) {
    const int representation = Read<int>(object, tag::kPixelRepresentation).value_or(0);
    Palette palette{CxPaletteLUT(representation), CxPaletteLUT(representation),
                    CxPaletteLUT(representation)};
    for (std::size_t s = 0; s < palette.size(); ++s) {
        if (!LoadColour(palette[s], object, kColours[s])) return std::nullopt;
    }
    return palette;
}

// The deepest table decides, so that no entry overflows its byte: a red table that is dark all over
// may look like 12 bits beside a bright one of 16.
double PaletteFactor(const Palette& palette) {
    const auto bits = std::ranges::max(palette, {}, &CxPaletteLUT::GetEntryBits).GetEntryBits();
    if (bits == 16) return 255.0 / 65536.0;
    const bool isWide = bits > 8 && !std::ranges::all_of(palette, &CxPaletteLUT::HoldsOnlyBytes);
    return 255.0 / (isWide ? 4096.0 : 256.0);
}

void ColourByTable(const PaletteColours& colours, std::span<const unsigned char> indices,
                   std::size_t indexBytes, std::span<unsigned char> rgb) {
    if (indexBytes == 2) {
        Colour<std::uint16_t>(colours, indices, rgb);
    } else {
        Colour<std::uint8_t>(colours, indices, rgb);
    }
}

void ColourByPalette(const Palette& palette, std::span<const unsigned char> indices,
                     std::size_t indexBytes, std::span<unsigned char> rgb) {
    ColourByTable(ColoursOfIndices(palette, indexBytes), indices, indexBytes, rgb);
}

}  // namespace quorvex
