/// Small images with known content, and the raster operations on them.
#pragma once

#include "foundation/raster/raster.h"
#include "tests/support/instruction_sets.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace quorvex {

/// An image with known content.
template <class Sample>
struct TestImage {
    CSize size;
    int channels = 1;
    std::vector<Sample> samples;

    TestImage(CSize imageSize, int channelCount, Sample value = 0)
        : size(imageSize),
          channels(channelCount),
          samples(static_cast<std::size_t>(imageSize.cx * imageSize.cy * channelCount), value) {}

    Sample& At(int x, int y, int channel = 0) {
        return samples[static_cast<std::size_t>((y * size.cx + x) * channels + channel)];
    }
    const Sample& At(int x, int y, int channel = 0) const {
        return const_cast<TestImage*>(this)->At(x, y, channel);
    }
    [[nodiscard]] std::ptrdiff_t Step() const {
        return std::ptrdiff_t{size.cx} * channels * static_cast<std::ptrdiff_t>(sizeof(Sample));
    }
    friend bool operator==(const TestImage&, const TestImage&) = default;
};

template <class Sample = unsigned char>
TestImage<Sample> NoiseImage(CSize size, int channels, unsigned seed) {
    TestImage<Sample> image(size, channels);
    std::mt19937 engine(seed);
    for (Sample& sample : image.samples) sample = static_cast<Sample>(engine());
    return image;
}

using Image8 = TestImage<unsigned char>;
using Image16 = TestImage<std::uint16_t>;

inline RasterRect Whole(CSize size) {
    return {0, 0, size.cx, size.cy};
}

inline bool Resize(const Image8& from, RasterRect rect, Image8& to, double xFactor,
                   double yFactor) {
    const auto operation = from.channels == 1   ? ippiResize_8u_C1R
                           : from.channels == 3 ? ippiResize_8u_C3R
                                                : ippiResize_8u_C4R;
    return operation(from.samples.data(), from.size, from.Step(), rect, to.samples.data(),
                     to.Step(), to.size, xFactor, yFactor, kLinearInterpolation);
}

inline bool Resize(const Image16& from, RasterRect rect, Image16& to, double xFactor,
                   double yFactor) {
    return ippiResize_16u_C1R(from.samples.data(), from.size, from.Step(), rect, to.samples.data(),
                              to.Step(), to.size, xFactor, yFactor, kLinearInterpolation);
}

template <class Image>
Image Resized(const Image& from, CSize size) {
    Image to(size, from.channels);
    EXPECT_TRUE(Resize(from, Whole(from.size), to, double(size.cx) / from.size.cx,
                       double(size.cy) / from.size.cy));
    return to;
}

/// By 90, 180 or 270 degrees: counter-clockwise as rows run down, brought back into the image.
inline Image8 Turned(const Image8& image, int angle) {
    const auto [width, height] = image.size;
    const CSize size = angle == 180 ? image.size : CSize{height, width};
    Image8 turned(size, image.channels);
    const auto operation = image.channels == 3 ? ippiRotate_8u_C3R : ippiRotate_8u_C1R;
    EXPECT_TRUE(operation(image.samples.data(), image.size, image.Step(), Whole(image.size),
                          turned.samples.data(), turned.Step(), Whole(size), angle,
                          angle == 90 ? 0 : size.cx, angle == 270 ? 0 : size.cy,
                          kLinearInterpolation));
    return turned;
}

inline Image8 Mirrored(Image8 image, int axis) {
    const auto operation = image.channels == 3 ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR;
    EXPECT_TRUE(operation(image.samples.data(), image.Step(), image.size, axis));
    return image;
}

}  // namespace quorvex
