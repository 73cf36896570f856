#include "tests/raster/raster_calls.h"

#include <cmath>

namespace quorvex {
namespace {

constexpr CSize kSizes[] = {{1, 1},   {16, 16},  {15, 40},   {40, 15},   {17, 33}, {64, 64},
                            {3, 700}, {129, 65}, {641, 480}, {33, 1100}, {2, 3},   {31, 3},
                            {32, 3},  {33, 3},   {100, 3},   {127, 3},   {200, 3}, {1000, 3}};

void ExpectEveryPixelInItsPlace(const Image8& image) {
    const auto left = Turned(image, 90);
    const auto half = Turned(image, 180);
    const auto right = Turned(image, 270);
    const auto across = Mirrored(image, kVerticalAxis);
    const auto upright = Mirrored(image, kHorizontalAxis);
    const auto [width, height] = image.size;
    for (int i = 0; i < width * height * image.channels; ++i) {
        const int channel = i % image.channels;
        const int x = i / image.channels % width;
        const int y = i / image.channels / width;
        const auto pixel = image.At(x, y, channel);
        ASSERT_EQ(left.At(y, width - 1 - x, channel), pixel);
        ASSERT_EQ(half.At(width - 1 - x, height - 1 - y, channel), pixel);
        ASSERT_EQ(right.At(height - 1 - y, x, channel), pixel);
        ASSERT_EQ(across.At(width - 1 - x, y, channel), pixel);
        ASSERT_EQ(upright.At(x, height - 1 - y, channel), pixel);
    }
}

TEST(QuarterTurnsAndMirrors, MoveEveryPixelToItsPlaceWithEveryInstructionSet) {
    ForEachInstructionSet([] {
        for (const CSize size : kSizes) {
            for (const int channels : {1, 3})
                ExpectEveryPixelInItsPlace(NoiseImage(size, channels, 21));
        }
    });
    for (const int width : {1, 2, 15, 31, 32, 33, 64, 100, 127, 200, 1000}) {
        auto wide = NoiseImage<std::uint16_t>({width, 1}, 1, 25);
        const auto before = wide;
        ippiMirror_16u_C1IR(wide.samples.data(), wide.Step(), wide.size, kVerticalAxis);
        for (int x = 0; x < width; ++x) ASSERT_EQ(wide.At(width - 1 - x, 0), before.At(x, 0));
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

TEST(QuarterTurn, RefusesOtherAnglesAndShiftsOfNaN) {
    unsigned char data[16] = {};
    const auto refused = [&data](double angle, double shift) {
        return !ippiRotate_8u_C1R(data, {4, 4}, 4, {0, 0, 4, 4}, data, 4, {0, 0, 4, 4}, angle,
                                  shift, 0, kLinearInterpolation);
    };
    for (const double angle : {45.0, std::nan(""), HUGE_VAL}) EXPECT_TRUE(refused(angle, 0));
    EXPECT_TRUE(refused(90, std::nan("")));
    EXPECT_FALSE(ippiMirror_8u_C1IR(data, 1, {1, 1}, 2)) << "another axis";
}

}  // namespace
}  // namespace quorvex
