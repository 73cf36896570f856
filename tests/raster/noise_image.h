/// Small images with known content for the raster and render tests.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace quorvex {

template <class Sample>
struct TestImage {
    CSize size;
    int channels = 1;
    std::vector<Sample> samples;

    TestImage(CSize imageSize, int channelCount, Sample value = 0)
        : size(imageSize),
          channels(channelCount),
          samples(static_cast<std::size_t>(imageSize.cx) * static_cast<std::size_t>(imageSize.cy) *
                      static_cast<std::size_t>(channelCount),
                  value) {}

    Sample& At(int x, int y, int channel = 0) {
        return samples[(static_cast<std::size_t>(y) * static_cast<std::size_t>(size.cx) +
                        static_cast<std::size_t>(x)) *
                           static_cast<std::size_t>(channels) +
                       static_cast<std::size_t>(channel)];
    }
    const Sample& At(int x, int y, int channel = 0) const {
        return const_cast<TestImage*>(this)->At(x, y, channel);
    }
    [[nodiscard]] std::ptrdiff_t Step() const {
        return std::ptrdiff_t{size.cx} * channels * static_cast<std::ptrdiff_t>(sizeof(Sample));
    }
    friend bool operator==(const TestImage& a, const TestImage& b) {
        return a.size == b.size && a.channels == b.channels && a.samples == b.samples;
    }
};

template <class Sample = unsigned char>
TestImage<Sample> NoiseImage(CSize size, int channels, unsigned seed) {
    TestImage<Sample> image(size, channels);
    std::mt19937 engine(seed);
    for (Sample& sample : image.samples) sample = static_cast<Sample>(engine());
    return image;
}

}  // namespace quorvex
