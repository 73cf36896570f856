#include "pipeline/thumbnail/thumbnail_window.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/saturate.h"

#include <cmath>
#include <limits>
#include <utility>

namespace quorvex {
namespace {

constexpr int kWidestRange = 3000;

struct Range {
    int smallest = std::numeric_limits<int>::max();
    int largest = std::numeric_limits<int>::min();
};

Range RangeOf(std::span<const std::uint16_t> pixels, bool isSigned, int padding) {
    Range range;
    for (const std::uint16_t pixel : pixels) {
        const int value = isSigned ? static_cast<std::int16_t>(pixel) : pixel;
        if (padding != 0 && value == padding) continue;
        range.smallest = std::min(range.smallest, value);
        range.largest = std::max(range.largest, value);
    }
    return range;
}

/// Keeps the part of a wide range that most likely shows something.
Range Narrowed(Range range) {
    if (range.largest < range.smallest || range.largest - range.smallest <= kWidestRange) {
        return range;
    }
    if (range.smallest > 0) return {range.smallest, range.smallest + kWidestRange};
    if (range.largest <= kWidestRange) return {range.largest - kWidestRange, range.largest};
    if (range.smallest >= -kWidestRange) return {range.smallest, range.smallest + kWidestRange};
    return {-kWidestRange, kWidestRange};
}

double ReadSlope(const CDcmObject& header) {
    const double slope = ReadFinite(header, tag::kRescaleSlope).value_or(1.0);
    return slope != 0.0 ? slope : 1.0;
}

struct Window {
    int center;
    int width;
};

Window ReadWindow(const CDcmObject& header) {
    const bool isByte = Read<int>(header, tag::kBitsStored) == 8;
    const int center = Read<int>(header, tag::kWindowCenter).value_or(isByte ? 255 : 1200);
    const int width = Read<int>(header, tag::kWindowWidth).value_or(isByte ? 511 : 2400);
    const double scale = 1.0 / ReadSlope(header);
    return {TruncateToInt(center * scale), TruncateToInt(width * scale)};
}

unsigned char Low8(std::int64_t value) {
    return static_cast<unsigned char>(value & 0xFF);
}

}  // namespace

std::optional<double> ReadFinite(const CDcmObject& header, std::uint32_t tag) {
    const auto number = Read<double>(header, tag);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

ThumbnailWindow MakeWindowTable(std::span<const std::uint16_t> pixels, bool isSigned, int padding) {
    ThumbnailWindow window(0);
    const Range range = Narrowed(RangeOf(pixels, isSigned, padding));
    if (range.smallest < range.largest) {
        const int width = range.largest - range.smallest;
        for (int i = range.smallest; i < range.largest; ++i) {
            window.Set(i, static_cast<unsigned char>((i - range.smallest) * 255 / width));
        }
        window.SetFrom(range.largest, 255);
    }
    if (padding != 0) window.Set(padding, 0);
    return window;
}

ThumbnailWindow MakeWindowTableFromHeader(const CDcmObject& header) {
    const Window given = ReadWindow(header);
    const bool isInverse = TextIs(header, tag::kPhotometricInterpretation, "MONOCHROME1");
    const std::int64_t center = given.center;
    const std::int64_t width = given.width;
    const std::int64_t half = width / 2;
    const std::int64_t low = std::max<std::int64_t>(center - half, ThumbnailWindow::kLowest);
    const std::int64_t high = std::min<std::int64_t>(center + half, ThumbnailWindow::kHighest + 1);
    ThumbnailWindow window(isInverse ? 255 : 0);
    for (std::int64_t i = low; i < high; ++i) {
        const auto byte = isInverse ? Low8((center - half - i) * 255 / width - 1)
                                    : Low8((half - center + i) * 255 / width);
        window.Set(static_cast<int>(i), byte);
    }
    window.SetFrom(high, isInverse ? 0 : 255);
    const int padding = Read<int>(header, tag::kPixelPaddingValue).value_or(0);
    if (padding != 0) window.Set(padding, 0);
    return window;
}

}  // namespace quorvex
