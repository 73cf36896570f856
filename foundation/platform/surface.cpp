#include "foundation/platform/surface.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quorvex {

namespace {

constexpr int kGreyBits = 8;
constexpr int kColourBits = 24;

using Palette = std::array<RGBQUAD, 256>;

/// One direction of the overlap of bitmap and surface.
struct Overlap {
    std::int64_t onBitmap = 0;
    std::int64_t onSurface = 0;
    std::int64_t length = 0;
};

Overlap OverlapOf(std::int64_t place, std::int64_t bitmapLength, std::int64_t surfaceLength) {
    const std::int64_t begin = std::max<std::int64_t>(place, 0);
    const std::int64_t end = std::min(place + bitmapLength, surfaceLength);
    return {begin - place, begin, std::max<std::int64_t>(end - begin, 0)};
}

std::size_t RowBytes(const tagBITMAPINFOHEADER& header) {
    return (static_cast<std::size_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
}

bool IsDrawable(const tagBITMAPINFOHEADER& header, std::size_t bytes) {
    if (header.biWidth < 1 || header.biHeight < 1) return false;
    if (header.biBitCount != kGreyBits && header.biBitCount != kColourBits) return false;
    return RowBytes(header) <= bytes / static_cast<std::size_t>(header.biHeight);
}

bool IsUsable(const DrawingSurface& surface) {
    return surface.pixels != nullptr && surface.width > 0 && surface.height > 0 &&
           (surface.bytesPerPixel == 3 || surface.bytesPerPixel == 4);
}

Palette FullPalette(std::span<const RGBQUAD> colours) {
    Palette palette{};
    std::copy_n(colours.begin(), std::min(colours.size(), palette.size()), palette.begin());
    return palette;
}

template <std::size_t pixelBytes>
void DrawGreyRow(std::span<const unsigned char> source, unsigned char* destination,
                 const Palette& palette) {
    for (const unsigned char index : source) {
        const RGBQUAD colour = palette[index];
        destination[0] = colour.rgbBlue;
        destination[1] = colour.rgbGreen;
        destination[2] = colour.rgbRed;
        destination += pixelBytes;
    }
}

template <std::size_t pixelBytes>
void DrawColourRow(std::span<const unsigned char> source, unsigned char* destination,
                   const Palette&) {
    for (std::size_t i = 0; i + 2 < source.size(); i += 3) {
        std::copy_n(&source[i], 3, destination);
        destination += pixelBytes;
    }
}

using DrawRow = void (*)(std::span<const unsigned char>, unsigned char*, const Palette&);

DrawRow RowDrawer(int bitCount, int surfacePixelBytes) {
    if (bitCount == kGreyBits) return surfacePixelBytes == 3 ? DrawGreyRow<3> : DrawGreyRow<4>;
    return surfacePixelBytes == 3 ? DrawColourRow<3> : DrawColourRow<4>;
}

}  // namespace

void SetStretchBltMode(DrawingSurface&, int) noexcept {}

int SetDIBitsToDevice(DrawingSurface& surface, CPoint place, const tagBITMAPINFOHEADER& header,
                      std::span<const RGBQUAD> colours, std::span<const unsigned char> bits) {
    if (!IsUsable(surface) || !IsDrawable(header, bits.size())) return 0;
    const Overlap across = OverlapOf(place.x, header.biWidth, surface.width);
    const Overlap down = OverlapOf(place.y, header.biHeight, surface.height);
    if (across.length == 0) return 0;
    const Palette palette = FullPalette(colours);
    const DrawRow drawRow = RowDrawer(header.biBitCount, surface.bytesPerPixel);
    const auto sourceBytes = static_cast<std::size_t>(header.biBitCount / 8);
    for (std::int64_t line = 0; line < down.length; ++line) {
        const auto sourceRow =
            static_cast<std::size_t>(header.biHeight - 1 - (down.onBitmap + line));
        const auto first = static_cast<std::size_t>(across.onBitmap) * sourceBytes;
        drawRow(bits.subspan(sourceRow * RowBytes(header) + first,
                             static_cast<std::size_t>(across.length) * sourceBytes),
                surface.pixels + (down.onSurface + line) * surface.rowBytes +
                    across.onSurface * surface.bytesPerPixel,
                palette);
    }
    return static_cast<int>(down.length);
}

}  // namespace quorvex
