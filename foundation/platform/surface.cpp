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

/// A bitmap as it is drawn: rows from the bottom.
struct Bitmap {
    CSize size;
    int bitCount = 0;
    std::size_t rowBytes = 0;
    std::span<const unsigned char> bits;

    [[nodiscard]] bool IsDrawable() const {
        if (size.cx < 1 || size.cy < 1) return false;
        if (bitCount != kGreyBits && bitCount != kColourBits) return false;
        return rowBytes <= bits.size() / static_cast<std::size_t>(size.cy);
    }
};

std::size_t PaddedRowBytes(const tagBITMAPINFOHEADER& header) {
    return (static_cast<std::size_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
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

int DrawBitmap(DrawingSurface& surface, CPoint place, const Bitmap& bitmap,
               const Palette& palette) {
    if (!IsUsable(surface) || !bitmap.IsDrawable()) return 0;
    const Overlap across = OverlapOf(place.x, bitmap.size.cx, surface.width);
    const Overlap down = OverlapOf(place.y, bitmap.size.cy, surface.height);
    if (across.length == 0) return 0;
    const DrawRow drawRow = RowDrawer(bitmap.bitCount, surface.bytesPerPixel);
    const auto sourceBytes = static_cast<std::size_t>(bitmap.bitCount / 8);
    for (std::int64_t line = 0; line < down.length; ++line) {
        const auto sourceRow =
            static_cast<std::size_t>(bitmap.size.cy - 1 - (down.onBitmap + line));
        const auto first = static_cast<std::size_t>(across.onBitmap) * sourceBytes;
        drawRow(bitmap.bits.subspan(sourceRow * bitmap.rowBytes + first,
                                    static_cast<std::size_t>(across.length) * sourceBytes),
                surface.pixels + (down.onSurface + line) * surface.rowBytes +
                    across.onSurface * surface.bytesPerPixel,
                palette);
    }
    return static_cast<int>(down.length);
}

Palette GreyPalette() {
    Palette palette;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const auto grey = static_cast<std::uint8_t>(i);
        palette[i] = {grey, grey, grey, 0};
    }
    return palette;
}

}  // namespace

void SetStretchBltMode(DrawingSurface&, int) noexcept {}

int SetDIBitsToDevice(DrawingSurface& surface, CPoint place, const tagBITMAPINFOHEADER& header,
                      std::span<const RGBQUAD> colours, std::span<const unsigned char> bits) {
    if (header.biWidth < 1) return 0;
    return DrawBitmap(
        surface, place,
        {{header.biWidth, header.biHeight}, header.biBitCount, PaddedRowBytes(header), bits},
        FullPalette(colours));
}

int PutPicture(DrawingSurface& surface, CPoint place, CSize size, int pixelBytes,
               std::span<const unsigned char> bits) {
    if (size.cx < 1) return 0;
    const auto rowBytes = static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(pixelBytes);
    return DrawBitmap(surface, place, {size, 8 * pixelBytes, rowBytes, bits}, GreyPalette());
}

}  // namespace quorvex
