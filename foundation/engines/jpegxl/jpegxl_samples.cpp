#include "foundation/engines/jpegxl/jpegxl_samples.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

namespace quorvex {
namespace {

/// Rounded to the nearest; divides by 255 or 65535 without a division.
template <class Sample>
Sample Narrowed(Sample sample, std::uint32_t highest) noexcept {
    constexpr unsigned kBits = 8 * sizeof(Sample);
    constexpr std::uint32_t kHalf = std::numeric_limits<Sample>::max() / 2U;
    const std::uint32_t scaled = sample * highest + kHalf;
    return static_cast<Sample>((scaled + 1 + (scaled >> kBits)) >> kBits);
}

template <class Sample, std::size_t count>
void NarrowSome(unsigned char* bytes, std::uint32_t highest) noexcept {
    std::array<Sample, count> samples;
    std::memcpy(samples.data(), bytes, sizeof samples);
    for (auto& sample : samples) sample = Narrowed(sample, highest);
    std::memcpy(bytes, samples.data(), sizeof samples);
}

template <class Sample>
void Narrow(std::span<unsigned char> bytes, unsigned precision) noexcept {
    constexpr std::size_t kTogether = 32;  // a known number becomes vectors
    const std::uint32_t highest = (1U << precision) - 1;
    std::size_t at = 0;
    for (; at + kTogether * sizeof(Sample) <= bytes.size(); at += kTogether * sizeof(Sample))
        NarrowSome<Sample, kTogether>(bytes.data() + at, highest);
    for (; at + sizeof(Sample) <= bytes.size(); at += sizeof(Sample))
        NarrowSome<Sample, 1>(bytes.data() + at, highest);
}

template <class Sample>
bool Spread(std::span<const unsigned char> samples, unsigned precision,
            std::vector<unsigned char>& spread) {
    constexpr std::uint64_t kHighest = std::numeric_limits<Sample>::max();
    const std::uint64_t highest = (1U << precision) - 1;
    std::vector<Sample> table(highest + 1);
    for (std::uint64_t value = 0; value <= highest; ++value)
        table[value] = static_cast<Sample>((value * kHighest + highest / 2) / highest);
    spread.resize(samples.size());
    for (std::size_t at = 0; at + sizeof(Sample) <= samples.size(); at += sizeof(Sample)) {
        Sample sample;
        std::memcpy(&sample, samples.data() + at, sizeof sample);
        if (sample > highest) return false;
        std::memcpy(spread.data() + at, &table[sample], sizeof sample);
    }
    return true;
}

}  // namespace

void NarrowSamples(std::span<unsigned char> samples, std::size_t sampleBytes,
                   unsigned precision) noexcept {
    if (precision >= 8 * sampleBytes) return;
    if (sampleBytes == 1) return Narrow<std::uint8_t>(samples, precision);
    Narrow<std::uint16_t>(samples, precision);
}

bool SpreadSamples(std::span<const unsigned char> samples, std::size_t sampleBytes,
                   unsigned precision, std::vector<unsigned char>& spread) {
    return sampleBytes == 1 ? Spread<std::uint8_t>(samples, precision, spread)
                            : Spread<std::uint16_t>(samples, precision, spread);
}

}  // namespace quorvex
