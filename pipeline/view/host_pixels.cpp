#include "pipeline/view/host_pixels.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;

/// Bytes of a pixel; 0 for a format that is none.
int BytesOf(PixelFormat format) noexcept {
    switch (format) {
        case PixelFormat::kGrey8:
            return 1;
        case PixelFormat::kBgr24:
            return kColourBytes;
        case PixelFormat::kBgra32:
            return 4;
    }
    return 0;
}

/// From the last pixel to the first: a wider pixel covers none that is still to be read.
template <int kFrom, int kTo>
void SpreadRow(unsigned char* row, int width) noexcept {
    for (std::ptrdiff_t x = width; x-- > 0;) {
        const unsigned char* const from = row + x * kFrom;
        const unsigned char pixel[] = {from[0], from[kFrom / 2], from[kFrom - 1], UINT8_MAX};
        std::memcpy(row + x * kTo, pixel, kTo);
    }
}

}  // namespace

QUORVEX_MESSAGE CheckTarget(const PixelTarget& target, CSize picture, int pixelSize) noexcept {
    const int bytes = BytesOf(target.format);
    if (bytes < pixelSize) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const bool isLargeEnough =
        target.pixels != nullptr && target.size.cx >= picture.cx && target.size.cy >= picture.cy;
    const bool hasRows = std::abs(std::int64_t{target.stride}) / bytes >= target.size.cx;
    return isLargeEnough && hasRows ? QVM_SUCCESS : QVM_ERROR_INVALID_OUTPUT_SIZE;
}

PixelGrid<unsigned char> RowsOf(const PixelTarget& target, CSize picture, int pixelSize) noexcept {
    auto* const top = static_cast<unsigned char*>(target.pixels);
    return {top + (std::ptrdiff_t{picture.cy} - 1) * target.stride, -target.stride, picture,
            pixelSize};
}

void SpreadPixels(const PixelTarget& target, CSize picture, int pixelSize) noexcept {
    const int bytes = BytesOf(target.format);
    if (bytes == pixelSize) return;
    const auto spread = bytes == kColourBytes       ? SpreadRow<1, kColourBytes>
                        : pixelSize == kColourBytes ? SpreadRow<kColourBytes, 4>
                                                    : SpreadRow<1, 4>;
    auto* const top = static_cast<unsigned char*>(target.pixels);
    for (std::ptrdiff_t y = 0; y < picture.cy; ++y) spread(top + y * target.stride, picture.cx);
}

void CopyInto(const PixelTarget& target, std::span<const unsigned char> pixels, CSize picture,
              int pixelSize) noexcept {
    const PixelGrid<unsigned char> rows = RowsOf(target, picture, pixelSize);
    for (int y = 0; y < picture.cy; ++y) {
        const std::span<unsigned char> row = rows.Row(y);
        std::memcpy(row.data(), pixels.data() + static_cast<std::size_t>(y) * row.size(),
                    row.size());
    }
    SpreadPixels(target, picture, pixelSize);
}

}  // namespace quorvex
