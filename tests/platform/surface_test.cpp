#include "foundation/platform/surface.h"

#include <gtest/gtest.h>
#include <vector>

namespace quorvex {
namespace {

constexpr unsigned char kUntouched = 9;
constexpr int kWidth = 6;
constexpr int kHeight = 5;

/// A surface inside a larger block, so that a write past it shows.
struct Canvas {
    explicit Canvas(int bytesPerPixel)
        : block(static_cast<std::size_t>((kWidth + 2) * (kHeight + 2) * bytesPerPixel),
                kUntouched) {
        const int rowBytes = (kWidth + 2) * bytesPerPixel;
        surface = {block.data() + rowBytes + bytesPerPixel, kWidth, kHeight, rowBytes,
                   bytesPerPixel};
    }
    /// First byte of the pixel at x, y, which may lie one outside.
    [[nodiscard]] int Blue(int x, int y) const {
        return block[static_cast<std::size_t>((y + 1) * surface.rowBytes +
                                              (x + 1) * surface.bytesPerPixel)];
    }
    std::vector<unsigned char> block;
    DrawingSurface surface;
};

tagBITMAPINFOHEADER HeaderOf(int width, int height, std::uint16_t bits) {
    tagBITMAPINFOHEADER header;
    header.biWidth = width;
    header.biHeight = height;
    header.biBitCount = bits;
    return header;
}

TEST(Surface, ClipsAtEverySide) {
    const std::vector<RGBQUAD> colours{{10, 10, 10, 0}, {1, 2, 3, 0}};
    const std::vector<unsigned char> bits(4 * 3, 1);
    for (const int bytesPerPixel : {3, 4}) {
        for (int y = -4; y <= kHeight + 1; ++y) {
            for (int x = -5; x <= kWidth + 1; ++x) {
                Canvas canvas(bytesPerPixel);
                SetDIBitsToDevice(canvas.surface, {x, y}, HeaderOf(4, 3, 8), colours, bits);
                for (int i = 0; i < (kWidth + 2) * (kHeight + 2); ++i) {
                    const int column = i % (kWidth + 2) - 1;
                    const int row = i / (kWidth + 2) - 1;
                    const auto isIn = [&](CRect r) {
                        return column >= r.left && column < r.right && row >= r.top &&
                               row < r.bottom;
                    };
                    const bool isDrawn =
                        isIn({0, 0, kWidth, kHeight}) && isIn({x, y, x + 4, y + 3});
                    ASSERT_EQ(canvas.Blue(column, row), isDrawn ? 1 : kUntouched)
                        << x << "," << y << " at " << column << "," << row;
                }
            }
        }
    }
}

TEST(Surface, DrawsFromTheBottomRowUpAndLeavesTheFourthByteAlone) {
    // 24 bits, 2 x 2, rows padded to 8 bytes: the first row is the lower one.
    const std::vector<unsigned char> bits{1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0};
    Canvas canvas(4);
    EXPECT_EQ(SetDIBitsToDevice(canvas.surface, {0, 0}, HeaderOf(2, 2, 24), {}, bits), 2);
    const unsigned char* top = canvas.surface.pixels;
    EXPECT_EQ(std::vector<int>(top, top + 8), (std::vector<int>{7, 8, 9, 9, 10, 11, 12, 9}));
    EXPECT_EQ(canvas.Blue(0, 1), 1);
    EXPECT_EQ(canvas.Blue(1, 1), 4);
}

TEST(Surface, RefusesWhatItCannotDraw) {
    const std::vector<unsigned char> bits(64, 1);
    Canvas canvas(4);
    const auto draw = [&](tagBITMAPINFOHEADER header, CPoint place = {}) {
        return SetDIBitsToDevice(canvas.surface, place, header, {}, bits);
    };
    EXPECT_EQ(draw(HeaderOf(9, 8, 8)), 0) << "fewer bits than rows";
    EXPECT_EQ(draw(HeaderOf(8, 8, 16)), 0) << "16 bits a pixel";
    EXPECT_EQ(draw(HeaderOf(0, 8, 8)), 0) << "no width";
    EXPECT_EQ(draw(HeaderOf(8, 8, 8), {2147483647, -2147483647}), 0) << "far outside";
    EXPECT_EQ(canvas.Blue(0, 0), kUntouched);
    DrawingSurface empty;
    EXPECT_EQ(SetDIBitsToDevice(empty, {}, HeaderOf(8, 8, 8), {}, bits), 0);
}

}  // namespace
}  // namespace quorvex
