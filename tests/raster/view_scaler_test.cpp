#include "foundation/raster/scaling/view_scaler.h"

#include "tests/raster/raster_calls.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace quorvex {
namespace {

using Bytes = std::vector<unsigned char>;

struct TestImage {
    CSize size;
    int channels = 1;
    Bytes bytes;

    TestImage(CSize imageSize, int channelCount, unsigned seed)
        : size(imageSize),
          channels(channelCount),
          bytes(static_cast<std::size_t>(size.cx * size.cy * channels)) {
        std::mt19937 random(seed);
        for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
    }
    [[nodiscard]] double At(int x, int y, int channel) const {
        x = std::clamp(x, 0, size.cx - 1);
        y = std::clamp(y, 0, size.cy - 1);
        return bytes[static_cast<std::size_t>((y * size.cx + x) * channels + channel)];
    }
};

Bytes Scaled(const TestImage& image, CSize scaled, const RasterRect& window,
             Interpolation enlarging) {
    ViewScaler scaler({image.size, scaled, window, image.channels, enlarging});
    Bytes result(static_cast<std::size_t>(window.width * window.height * image.channels));
    const auto step = std::ptrdiff_t{window.width} * image.channels;
    const auto rowAt = [&](int y, int) {
        return image.bytes.data() + std::ptrdiff_t{y} * image.size.cx * image.channels;
    };
    scaler.Run(rowAt, {result.data(), step, {window.width, window.height}, image.channels});
    return result;
}

double Cubic(double distance) {
    const double d = std::abs(distance);
    if (d < 1.0) return (1.5 * d - 2.5) * d * d + 1.0;
    return d < 2.0 ? ((-0.5 * d + 2.5) * d - 4.0) * d + 2.0 : 0.0;
}

/// What source pixel `s` counts in destination pixel `d`, straight from the definition.
double WeightOf(int s, int d, int source, int scaled, Interpolation enlarging) {
    const double factor = static_cast<double>(scaled) / source;
    if (scaled <= source) {
        const double begin = std::max<double>(s, d / factor);
        const double end = std::min<double>(s + 1, (d + 1) / factor);
        return std::max(end - begin, 0.0) * factor;
    }
    const double place = (d + 0.5) / factor - 0.5;
    if (enlarging == Interpolation::kNearest) return s == std::floor(place + 0.5) ? 1.0 : 0.0;
    if (enlarging == Interpolation::kCubic) return Cubic(place - s);
    return std::max(1.0 - std::abs(place - s), 0.0);
}

double Expected(const TestImage& image, CSize scaled, int x, int y, int channel,
                Interpolation enlarging) {
    double sum = 0.0;
    for (int row = -3; row < image.size.cy + 3; ++row) {
        const double weight = WeightOf(row, y, image.size.cy, scaled.cy, enlarging);
        if (weight == 0.0) continue;
        for (int column = -3; column < image.size.cx + 3; ++column) {
            sum += weight * WeightOf(column, x, image.size.cx, scaled.cx, enlarging) *
                   image.At(column, row, channel);
        }
    }
    return std::clamp(sum, 0.0, 255.0);
}

constexpr Interpolation kAll[] = {Interpolation::kLinear, Interpolation::kNearest,
                                  Interpolation::kCubic};

TEST(ViewScaler, FollowsTheDefinitionInEveryPartOfTheImage) {
    constexpr CSize kSizes[] = {{1, 1},   {2, 3},  {13, 17}, {26, 34}, {7, 40},
                                {60, 11}, {13, 9}, {5, 17},  {40, 51}};
    for (const int channels : {1, 3}) {
        const TestImage image({13, 17}, channels, 5);
        for (const CSize scaled : kSizes) {
            for (const Interpolation enlarging : kAll) {
                const RasterRect all{0, 0, scaled.cx, scaled.cy};
                const RasterRect part{scaled.cx / 3, scaled.cy / 4, (scaled.cx + 1) / 2,
                                      (scaled.cy + 2) / 3};
                for (const RasterRect& window : {all, part}) {
                    const Bytes made = Scaled(image, scaled, window, enlarging);
                    std::size_t i = 0;
                    for (int y = window.y; y < window.y + window.height; ++y) {
                        for (int x = window.x; x < window.x + window.width; ++x) {
                            for (int channel = 0; channel < channels; ++channel) {
                                const double exact =
                                    Expected(image, scaled, x, y, channel, enlarging);
                                ASSERT_NEAR(made[i++], exact, 0.8)
                                    << scaled.cx << "x" << scaled.cy << " at " << x << "," << y;
                            }
                        }
                    }
                }
            }
        }
    }
}

TEST(ViewScaler, ShrinksAMeshToEvenGrey) {
    TestImage mesh({256, 256}, 1, 0);
    for (std::size_t i = 0; i < mesh.bytes.size(); ++i) {
        mesh.bytes[i] = (i + i / 256) % 2 != 0 ? 255 : 0;
    }
    for (const int side : {2, 32, 64, 128}) {
        const Bytes grey = Scaled(mesh, {side, side}, {0, 0, side, side}, Interpolation::kLinear);
        EXPECT_TRUE(std::ranges::all_of(grey, [](int byte) { return byte == 127 || byte == 128; }))
            << side;
    }
}

}  // namespace
}  // namespace quorvex
