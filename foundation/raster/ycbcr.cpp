#include "foundation/raster/pixel_grid.h"

#include <algorithm>

namespace quorvex {
namespace {

// ITU-R BT.601: 8-bit luma spans 219 levels from 16, chroma 224 around 128. Each weight times 2^16.
constexpr int kFractionBits = 16;
constexpr int kHalf = 1 << (kFractionBits - 1);
constexpr int kLuma = 76'309;          // 255 / 219
constexpr int kRedFromCr = 104'597;    // 255 / 224 x 1.402
constexpr int kGreenFromCb = -25'675;  // 255 / 224 x -0.344136
constexpr int kGreenFromCr = -53'279;  // 255 / 224 x -0.714136
constexpr int kBlueFromCb = 132'201;   // 255 / 224 x 1.772

unsigned char Level(int scaled) {
    return static_cast<unsigned char>(std::clamp((scaled + kHalf) >> kFractionBits, 0, 255));
}

void WritePixel(unsigned char* rgb, int y, int cb, int cr) {
    const int luma = (y - 16) * kLuma;
    rgb[0] = Level(luma + (cr - 128) * kRedFromCr);
    rgb[1] = Level(luma + (cb - 128) * kGreenFromCb + (cr - 128) * kGreenFromCr);
    rgb[2] = Level(luma + (cb - 128) * kBlueFromCb);
}

void ConvertRow(std::span<const unsigned char> pairs, std::span<unsigned char> rgb) {
    int cr = 128;
    std::size_t from = 0;
    std::size_t to = 0;
    for (; from + 4 <= pairs.size(); from += 4, to += 6) {
        const int cb = pairs[from + 1];
        cr = pairs[from + 3];
        WritePixel(&rgb[to], pairs[from], cb, cr);
        WritePixel(&rgb[to + 3], pairs[from + 2], cb, cr);
    }
    if (from < pairs.size()) WritePixel(&rgb[to], pairs[from], pairs[from + 1], cr);
}

}  // namespace

bool ippiYCbCr422ToRGB_8u_C2C3R(const unsigned char* source, std::ptrdiff_t sourceStep,
                                unsigned char* destination, std::ptrdiff_t destinationStep,
                                CSize size) {
    const PixelGrid<const unsigned char> from{source, sourceStep, size, 2};
    const PixelGrid<unsigned char> to{destination, destinationStep, size, 3};
    if (!from.IsUsable() || !to.IsUsable()) return false;
    for (int y = 0; y < size.cy; ++y) ConvertRow(from.Row(y), to.Row(y));
    return true;
}

}  // namespace quorvex
