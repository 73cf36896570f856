#include "tests/raster/raster_calls.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvex {
namespace {

/// The definition, in double precision and one pixel at a time.
template <class Image>
double Exact(const Image& from, RasterRect rect, double x, double y, int channel) {
    const double column = std::clamp(x, 0.0, rect.width - 1.0);
    const double row = std::clamp(y, 0.0, rect.height - 1.0);
    const int left = std::min(static_cast<int>(column), rect.width - 1);
    const int top = std::min(static_cast<int>(row), rect.height - 1);
    const auto at = [&](int i, int j) {
        return double(from.At(rect.x + std::min(i, rect.width - 1),
                              rect.y + std::min(j, rect.height - 1), channel));
    };
    const double upper = std::lerp(at(left, top), at(left + 1, top), column - left);
    const double lower = std::lerp(at(left, top + 1), at(left + 1, top + 1), column - left);
    return std::lerp(upper, lower, row - top);
}

template <class Image>
double LargestError(const Image& from, RasterRect rect, const Image& to, double xFactor,
                    double yFactor) {
    double worst = 0;
    for (int y = 0; y < to.size.cy; ++y) {
        for (int x = 0; x < to.size.cx; ++x) {
            for (int channel = 0; channel < to.channels; ++channel) {
                const double exact = Exact(from, rect, (x + 0.5) / xFactor - 0.5,
                                           (y + 0.5) / yFactor - 0.5, channel);
                worst = std::max(worst, std::abs(exact - to.At(x, y, channel)));
            }
        }
    }
    return worst;
}

Image8 MirroredBothWays(const Image8& image) {
    return Mirrored(Mirrored(image, kVerticalAxis), kHorizontalAxis);
}

constexpr struct {
    CSize source;
    CSize destination;
} kSizes[] = {
    {{1, 1}, {7, 5}},       {{2, 3}, {64, 33}},     {{17, 16}, {5, 4}},      {{64, 20}, {63, 21}},
    {{33, 9}, {34, 10}},    {{300, 12}, {100, 4}},  {{1000, 6}, {37, 5}},    {{48, 7}, {96, 14}},
    {{5, 200}, {200, 5}},   {{129, 31}, {65, 62}},  {{640, 11}, {1237, 3}},  {{15, 15}, {16, 16}},
    {{3520, 3}, {1200, 2}}, {{7, 7}, {8, 1}},       {{202, 8}, {101, 4}},    {{6, 2}, {3, 1}},
    {{37, 37}, {37, 74}},   {{4000, 4}, {128, 2}},  {{203, 94}, {310, 120}}, {{203, 94}, {77, 31}},
    {{203, 94}, {13, 9}},   {{202, 94}, {101, 47}},
};

/// The same with every instruction set.
template <class Image>
Image ResizedByAll(const Image& from, CSize size) {
    const Image to = Resized(from, size);
    ForEachInstructionSet([&] { EXPECT_EQ(Resized(from, size), to); });
    return to;
}

TEST(Resize, StaysWithinHalfALevelAndALittleWithEveryInstructionSet) {
    for (const auto& c : kSizes) {
        const double xFactor = double(c.destination.cx) / c.source.cx;
        const double yFactor = double(c.destination.cy) / c.source.cy;
        for (const int channels : {1, 3, 4}) {
            const auto from = NoiseImage(c.source, channels, 11);
            const auto to = ResizedByAll(from, c.destination);
            EXPECT_LT(LargestError(from, Whole(c.source), to, xFactor, yFactor), 0.6)
                << c.source.cx << " to " << c.destination.cx << ", channels " << channels;
        }
        const auto wide = NoiseImage<std::uint16_t>(c.source, 1, 12);
        const auto to = ResizedByAll(wide, c.destination);
        EXPECT_LT(LargestError(wide, Whole(c.source), to, xFactor, yFactor), 0.65);
    }
}

TEST(Resize, CommutesWithMirroring) {
    for (const auto& c : kSizes) {
        for (const int channels : {1, 3}) {
            const auto from = NoiseImage(c.source, channels, 13);
            EXPECT_EQ(Resized(MirroredBothWays(from), c.destination),
                      MirroredBothWays(Resized(from, c.destination)))
                << c.source.cx << " to " << c.destination.cx << ", channels " << channels;
        }
    }
    for (int length = 1; length < 70; ++length) {  // every pair of small lengths
        for (int other = 1; other < 70; ++other) {
            const auto from = NoiseImage({length, 2}, 1, 14);
            ASSERT_EQ(Resized(MirroredBothWays(from), {other, 3}),
                      MirroredBothWays(Resized(from, {other, 3})))
                << length << " to " << other;
        }
    }
}

TEST(Resize, KeepsAConstantImageConstant) {
    for (int level = 0; level < 256; ++level) {
        const Image8 flat({19, 5}, 1, static_cast<unsigned char>(level));
        EXPECT_EQ(Resized(flat, {53, 13}), Image8({53, 13}, 1, static_cast<unsigned char>(level)));
    }
    EXPECT_EQ(Resized(Image16({9, 9}, 1, 65535), {20, 4}), Image16({20, 4}, 1, 65535));
}

TEST(Resize, ByOneCopiesTheRectangle) {
    const auto from = NoiseImage({40, 30}, 3, 15);
    Image8 to({12, 8}, 3);
    ASSERT_TRUE(Resize(from, {5, 7, 35, 23}, to, 1.0, 1.0));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(to.At(x, y, 2), from.At(x + 5, y + 7, 2));
    const auto wide = NoiseImage<std::uint16_t>({31, 9}, 1, 16);
    EXPECT_EQ(Resized(wide, wide.size), wide);
}

TEST(Resize, CutsTheRectangleToTheImage) {
    const auto from = NoiseImage({30, 20}, 1, 17);
    constexpr int kMost = std::numeric_limits<int>::max();
    const RasterRect shifted{1, 1, 30, 20};
    Image8 to({60, 40}, 1);
    ASSERT_TRUE(Resize(from, shifted, to, 2.0, 2.0));
    EXPECT_LT(LargestError(from, {1, 1, 29, 19}, to, 2.0, 2.0), 0.6);
    Image8 other({60, 40}, 1);
    ASSERT_TRUE(Resize(from, {1, 1, kMost, kMost}, other, 2.0, 2.0));
    EXPECT_EQ(to, other);
    EXPECT_FALSE(Resize(from, {30, 0, 5, 5}, other, 2.0, 2.0));
    EXPECT_FALSE(Resize(from, {-9, 0, 9, 5}, other, 2.0, 2.0));
    EXPECT_EQ(to, other);
}

TEST(Resize, TakesAnyFactor) {
    const auto from = NoiseImage({20, 20}, 3, 18);
    const Image8 untouched({16, 16}, 3, 77);
    for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        Image8 to = untouched;
        EXPECT_FALSE(Resize(from, Whole(from.size), to, bad, 1.0)) << bad;
        EXPECT_FALSE(Resize(from, Whole(from.size), to, 1.0, bad)) << bad;
        EXPECT_EQ(to, untouched);
    }
    for (const double odd : {1e-300, 1e-9, 0.01, 0.999999, 1e9, 1e300}) {
        Image8 to = untouched;
        EXPECT_TRUE(Resize(from, Whole(from.size), to, odd, odd)) << odd;
        EXPECT_LT(LargestError(from, Whole(from.size), to, odd, odd), 0.6) << odd;
    }
}

TEST(Resize, RefusesWhatHasNoPixels) {
    Image8 image({8, 8}, 1);
    unsigned char* data = image.samples.data();
    const struct {
        const char* what;
        const unsigned char* source;
        CSize size;
        std::ptrdiff_t step;
        unsigned char* destination;
        CSize destinationSize;
    } kCases[] = {{"no source", nullptr, {8, 8}, 8, data, {8, 8}},
                  {"no destination", data, {8, 8}, 8, nullptr, {8, 8}},
                  {"a negative width", data, {-8, 8}, 8, data, {8, 8}},
                  {"a step below a row", data, {8, 8}, 7, data, {8, 8}},
                  {"no height", data, {8, 8}, 8, data, {8, 0}}};
    for (const auto& c : kCases)
        EXPECT_FALSE(ippiResize_8u_C1R(c.source, c.size, c.step, {0, 0, 8, 8}, c.destination, 8,
                                       c.destinationSize, 1, 1, kLinearInterpolation))
            << c.what;
    EXPECT_FALSE(ippiResize_8u_C3R(data, {8, 8}, 23, {0, 0, 8, 8}, data, 24, {1, 1}, 1, 1,
                                   kLinearInterpolation));
}

}  // namespace
}  // namespace quorvex
