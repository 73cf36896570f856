#include "foundation/raster/turn_kernels.h"

#include <algorithm>

namespace quorvex {
namespace {

bool Mirror(const PixelGrid<unsigned char>& image, int axis) {
    if (!image.IsUsable() || (axis != kHorizontalAxis && axis != kVerticalAxis)) return false;
    if (axis == kVerticalAxis) {
        ReverseRows(image, static_cast<std::size_t>(image.channels));
        return true;
    }
    for (int y = 0; y < image.size.cy / 2; ++y) {
        std::ranges::swap_ranges(image.Row(y), image.Row(image.size.cy - 1 - y));
    }
    return true;
}

}  // namespace

bool ippiMirror_8u_C1IR(unsigned char* image, std::ptrdiff_t step, CSize size, int axis) {
    return Mirror({image, step, size, 1}, axis);
}

bool ippiMirror_8u_C3IR(unsigned char* image, std::ptrdiff_t step, CSize size, int axis) {
    return Mirror({image, step, size, 3}, axis);
}

bool ippiMirror_16u_C1IR(std::uint16_t* image, std::ptrdiff_t step, CSize size, int axis) {
    // Two channels of one byte: nothing is computed, so the words may be moved as bytes.
    return Mirror({reinterpret_cast<unsigned char*>(image), step, size, 2}, axis);
}

}  // namespace quorvex
