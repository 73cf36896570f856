/// A frame of palette indices, made an 8-bit colour image.
#pragma once

#include "quorvex/CxPaletteLUT.h"
#include "quorvex/DicomObject.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

/// Red, green and blue, each from its plain or else its segmented form; nothing when one of them
/// has neither.
using Palette = std::array<CxPaletteLUT, 3>;
[[nodiscard]] std::optional<Palette> LoadPalette(CDcmObject& object, Rules rules,
                                                 int pixelRepresentation);
/// The same by the established rules, with the object's own Pixel Representation.
[[nodiscard]] std::optional<Palette> LoadPalette(CDcmObject& object);

/// Bytes of one index: 2 for 16 to 23 bits, otherwise 1.
[[nodiscard]] constexpr std::size_t PaletteIndexBytes(unsigned bits) noexcept {
    return bits / 8 == 2 ? 2 : 1;
}

/// What entries are multiplied by to become bytes:
///     255 / 65536  where a table has 16 bits
///     255 / 4096   where one has more than 8, and an entry of the three is above 255
///     255 / 256    everywhere else
[[nodiscard]] double PaletteFactor(const Palette& palette);

/// The colour of every value that an index of 1 or 2 bytes can have.
using PaletteColours = std::vector<std::array<unsigned char, 3>>;
/// Colours `indices`, of `indexBytes` each, into `rgb`, three bytes a pixel; the shorter of the two
/// decides.
void ColourByTable(const PaletteColours& colours, std::span<const unsigned char> indices,
                   std::size_t indexBytes, std::span<unsigned char> rgb);

/// The same by a palette whose entries `PaletteFactor` scales.
void ColourByPalette(const Palette& palette, std::span<const unsigned char> indices,
                     std::size_t indexBytes, std::span<unsigned char> rgb);

/// The same by the palette of an object, exact by the standard rules: its entries over all that
/// they can hold, indices of Bits Stored with their sign. False where it has no whole palette.
[[nodiscard]] bool ColourByObject(CDcmObject& object, Rules rules,
                                  std::span<const unsigned char> indices, std::size_t indexBytes,
                                  std::span<unsigned char> rgb);

}  // namespace quorvex
