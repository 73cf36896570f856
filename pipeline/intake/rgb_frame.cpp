#include "pipeline/intake/rgb_frame.h"

#include "pipeline/pixel_header.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace quorvex {

namespace {

constexpr std::size_t kChannels = 3;

/// Where the samples of a colour frame lie, and which bits of them are shown.
struct SampleLayout {
    std::size_t samples = 0;
    std::size_t sampleBytes = 0;
    int shift = 0;

    explicit SampleLayout(const PixelHeader& header)
        : samples(header.samplesPerPixel),
          sampleBytes(header.bitsAllocated <= 8    ? 1
                      : header.bitsAllocated <= 16 ? 2
                                                   : 4),
          shift(std::clamp<int>(header.bitsStored, 8, static_cast<int>(sampleBytes) * 8) - 8) {}

    [[nodiscard]] std::size_t PixelBytes() const { return samples * sampleBytes; }
};

unsigned char HighestBits(const unsigned char* sample, const SampleLayout& layout) {
    std::uint32_t value = 0;
    std::memcpy(&value, sample, layout.sampleBytes);
    return static_cast<unsigned char>(value >> layout.shift);
}

void ReduceSamples(const unsigned char* from, unsigned char* to, std::size_t pixelCount,
                   const SampleLayout& layout) {
    for (std::size_t i = 0; i < pixelCount; ++i) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            const std::size_t sample = std::min(channel, layout.samples - 1);
            to[i * kChannels + channel] =
                HighestBits(from + i * layout.PixelBytes() + sample * layout.sampleBytes, layout);
        }
    }
}

}  // namespace

PixelBlock RgbFrame(PixelBlock frame, const PixelHeader& header) {
    const SampleLayout layout(header);
    const std::size_t size = header.PixelCount() * kChannels;
    if (layout.PixelBytes() == kChannels && frame.size >= size) {
        frame.size = size;
        return frame;
    }
    PixelBlock colours = NewPixelBlock(size);
    const std::size_t there = std::min(frame.size / layout.PixelBytes(), header.PixelCount());
    ReduceSamples(frame.data.get(), colours.data.get(), there, layout);
    std::fill(colours.data.get() + there * kChannels, colours.data.get() + size, 0);
    return colours;
}

}  // namespace quorvex
