#include "parser/palette/palette_image.h"

#include "foundation/dicom/model/attributes.h"
#include "parser/palette/exact_palette.h"

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

/// The pixel value that an index stands for: its stored bits, with their sign.
std::int64_t ValueOfIndex(std::size_t index, int bitsStored, bool isSigned) {
    const std::int64_t end = std::int64_t{1} << bitsStored;
    const std::int64_t stored = static_cast<std::int64_t>(index) & (end - 1);
    return isSigned && stored >= end / 2 ? stored - end : stored;
}

PaletteColours ExactColoursOfIndices(CDcmObject& object, std::size_t indexBytes) {
    const bool isSigned = Read<int>(object, tag::kPixelRepresentation).value_or(0) != 0;
    const auto palette = ReadExactPalette(object, isSigned);
    if (!palette) return {};
    const int bits = static_cast<int>(8 * indexBytes);
    const int stored = std::clamp(Read<int>(object, tag::kBitsStored).value_or(bits), 1, bits);
    PaletteColours colours(std::size_t{1} << bits);
    for (std::size_t index = 0; index < colours.size(); ++index) {
        colours[index] = palette->Of(ValueOfIndex(index, stored, isSigned));
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
    return LoadPalette(object, Rules::kEstablished,
                       Read<int>(object, tag::kPixelRepresentation).value_or(0));
}

std::optional<Palette> LoadPalette(CDcmObject& object, Rules rules, int pixelRepresentation) {
    Palette palette{CxPaletteLUT(pixelRepresentation), CxPaletteLUT(pixelRepresentation),
                    CxPaletteLUT(pixelRepresentation)};
    for (std::size_t s = 0; s < palette.size(); ++s) {
        palette[s].SetRules(rules);
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

bool ColourByObject(CDcmObject& object, Rules rules, std::span<const unsigned char> indices,
                    std::size_t indexBytes, std::span<unsigned char> rgb) {
    if (rules == Rules::kStandard) {
        const auto colours = ExactColoursOfIndices(object, indexBytes);
        if (colours.empty()) return false;
        ColourByTable(colours, indices, indexBytes, rgb);
        return true;
    }
    const auto palette = LoadPalette(object);
    if (palette) ColourByPalette(*palette, indices, indexBytes, rgb);
    return palette.has_value();
}

}  // namespace quorvex
