#include "foundation/raster/raster.h"
#include "tests/raster/noise_image.h"

#include <cmath>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using Image8 = TestImage<unsigned char>;

constexpr CSize kSizes[] = {{1, 1},   {16, 16}, {15, 40},  {40, 15},   {17, 33},
                            {64, 64}, {3, 700}, {129, 65}, {641, 480}, {33, 1100}};

/// By the rule for a point: counter-clockwise as rows run down, brought back into the image.
Image8 Turned(const Image8& image, int angle) {
    const auto [width, height] = image.size;
    const CSize size = angle == 180 ? CSize{width, height} : CSize{height, width};
    const double xShift = angle == 90 ? 0 : size.cx;
    const double yShift = angle == 270 ? 0 : size.cy;
    Image8 turned(size, image.channels);
    const auto operation = image.channels == 3 ? ippiRotate_8u_C3R : ippiRotate_8u_C1R;
    EXPECT_TRUE(operation(image.samples.data(), image.size, image.Step(), {0, 0, width, height},
                          turned.samples.data(), turned.Step(), {0, 0, size.cx, size.cy}, angle,
                          xShift, yShift, kLinearInterpolation));
    return turned;
}

TEST(QuarterTurn, MovesEveryPixelToItsPlace) {
    for (const CSize size : kSizes) {
        for (const int channels : {1, 3}) {
            const auto image = NoiseImage(size, channels, 21);
            const auto left = Turned(image, 90);
            const auto half = Turned(image, 180);
            const auto right = Turned(image, 270);
            for (int y = 0; y < size.cy; ++y) {
                for (int x = 0; x < size.cx; ++x) {
                    const auto pixel = image.At(x, y, channels - 1);
                    ASSERT_EQ(left.At(y, size.cx - 1 - x, channels - 1), pixel);
                    ASSERT_EQ(half.At(size.cx - 1 - x, size.cy - 1 - y, channels - 1), pixel);
                    ASSERT_EQ(right.At(size.cy - 1 - y, x, channels - 1), pixel);
                }
            }
        }
    }
}

TEST(QuarterTurn, FourTurnsGiveTheImageBack) {
    for (const CSize size : kSizes) {
        for (const int channels : {1, 3}) {
            const auto image = NoiseImage(size, channels, 22);
            for (const int angle : {90, 270}) {
                Image8 turned = image;
                for (int turn = 0; turn < 4; ++turn) turned = Turned(turned, angle);
                EXPECT_EQ(turned, image) << size.cx << " x " << size.cy << " by " << angle;
            }
            EXPECT_EQ(Turned(Turned(image, 90), 90), Turned(image, 180));
        }
    }
}

TEST(QuarterTurn, DropsWhatFallsOutside) {
    const auto image = NoiseImage({6, 4}, 1, 23);
    const auto rotate = [&image](double angle, double xShift, double yShift, RasterRect room) {
        Image8 to({5, 5}, 1, 9);
        EXPECT_TRUE(ippiRotate_8u_C1R(image.samples.data(), image.size, image.Step(), {1, 1, 50, 2},
                                      to.samples.data(), to.Step(), room, angle, xShift, yShift,
                                      kLinearInterpolation));
        return to;
    };
    Image8 expected({5, 5}, 1, 9);
    EXPECT_EQ(rotate(180, 1e6, 0, {0, 0, 5, 5}), expected);
    EXPECT_EQ(rotate(90, -40, 3, {0, 0, 5, 5}), expected);
    // Columns 1 and 2 of source rows 1 and 2 land in the lower left corner.
    expected.At(1, 4) = image.At(1, 1);
    expected.At(2, 4) = image.At(1, 2);
    expected.At(1, 3) = image.At(2, 1);
    expected.At(2, 3) = image.At(2, 2);
    EXPECT_EQ(rotate(90, 0, 6, {0, 3, 5, 2}), expected);
    EXPECT_EQ(rotate(-270, 0, 6, {0, 3, 5, 2}), expected);
}

TEST(QuarterTurn, RefusesOtherAnglesAndShiftsThatAreNoNumbers) {
    unsigned char data[16] = {};
    const auto refused = [&data](double angle, double shift) {
        return !ippiRotate_8u_C1R(data, {4, 4}, 4, {0, 0, 4, 4}, data, 4, {0, 0, 4, 4}, angle,
                                  shift, 0, kLinearInterpolation);
    };
    EXPECT_TRUE(refused(45, 0));
    EXPECT_TRUE(refused(std::nan(""), 0));
    EXPECT_TRUE(refused(HUGE_VAL, 0));
    EXPECT_TRUE(refused(90, std::nan("")));
}

TEST(Mirror, ReversesRowsOrColumns) {
    for (const int width : {1, 2, 15, 31, 32, 33, 64, 100, 127, 200, 1000}) {
        for (const int channels : {1, 3}) {
            const auto image = NoiseImage({width, 3}, channels, 24);
            const auto operation = channels == 3 ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR;
            Image8 across = image;
            Image8 upright = image;
            operation(across.samples.data(), across.Step(), across.size, kVerticalAxis);
            operation(upright.samples.data(), upright.Step(), upright.size, kHorizontalAxis);
            for (int x = 0; x < width; ++x) {
                for (int channel = 0; channel < channels; ++channel) {
                    ASSERT_EQ(across.At(width - 1 - x, 1, channel), image.At(x, 1, channel));
                    ASSERT_EQ(upright.At(x, 2, channel), image.At(x, 0, channel));
                    ASSERT_EQ(upright.At(x, 1, channel), image.At(x, 1, channel));
                }
            }
        }
        auto wide = NoiseImage<std::uint16_t>({width, 1}, 1, 25);
        const auto before = wide;
        ippiMirror_16u_C1IR(wide.samples.data(), wide.Step(), wide.size, kVerticalAxis);
        for (int x = 0; x < width; ++x) ASSERT_EQ(wide.At(width - 1 - x, 0), before.At(x, 0));
    }
    unsigned char byte = 0;
    EXPECT_FALSE(ippiMirror_8u_C1IR(&byte, 1, {1, 1}, 2));
}

}  // namespace
}  // namespace quorvex
