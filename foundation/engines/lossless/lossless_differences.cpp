#include "foundation/engines/lossless/lossless_differences.h"

#include "foundation/engines/jpeg/jpeg_samples.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

/// Eight samples at once, on any machine.
using Lanes = std::uint16_t __attribute__((vector_size(16)));
constexpr std::size_t kLanes = sizeof(Lanes) / sizeof(std::uint16_t);

Lanes Load(const std::uint16_t* from) noexcept {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

void Store(const Lanes& lanes, std::uint16_t* to) noexcept {
    std::memcpy(to, &lanes, sizeof lanes);
}

void Widen(std::span<const unsigned char> row, std::uint16_t* samples) noexcept {
    using Narrow = std::uint8_t __attribute__((vector_size(kLanes)));
    for (; row.size() >= kLanes; row = row.subspan(kLanes), samples += kLanes) {
        Narrow narrow;
        std::memcpy(&narrow, row.data(), sizeof narrow);
        Store(__builtin_convertvector(narrow, Lanes), samples);
    }
    std::ranges::copy(row, samples);
}

/// Every bit at and below the highest one that is set.
Lanes Smear(Lanes value) noexcept {
    value |= value >> 1;
    value |= value >> 2;
    value |= value >> 4;
    return value | value >> 8;
}

Lanes CountOnes(Lanes value) noexcept {
    value -= (value >> 1) & 0x5555;
    value = (value & 0x3333) + ((value >> 2) & 0x3333);
    value = (value + (value >> 4)) & 0x0F0F;
    return (value + (value >> 8)) & 0x1F;
}

}  // namespace

LosslessDifferences::LosslessDifferences(std::size_t pixels, std::size_t components,
                                         int bytesPerSample, unsigned precision)
    : components_(components),
      samples_(pixels * components),
      bytesPerSample_(bytesPerSample),
      precision_(precision),
      line_(components + samples_ + LosslessDigest::kSamples) {}

void LosslessDifferences::Rewind() noexcept {
    const auto middle = static_cast<std::uint16_t>(1U << (precision_ - 1));
    std::fill_n(line_.begin(), 2 * components_, middle);
}

bool LosslessDifferences::Take(const unsigned char* row) noexcept {
    const auto samples = Samples();
    std::copy_n(samples.begin(), components_, line_.begin());
    if (bytesPerSample_ == 2) {
        std::memcpy(samples.data(), row, samples.size_bytes());
    } else {
        Widen({row, samples.size()}, samples.data());
    }
    return FitPrecision<std::uint16_t>(samples, static_cast<int>(precision_));
}

void LosslessDifferences::Digest(std::size_t from) noexcept {
    const std::uint16_t* left = line_.data() + from;
    for (std::size_t i = 0; i < LosslessDigest::kSamples; i += kLanes) {
        const Lanes difference = Load(left + components_ + i) - Load(left + i);
        const Lanes minus = -(difference >> 15);
        const Lanes size = (difference ^ minus) - minus;
        const Lanes mask = Smear(size);
        Store(CountOnes(mask), digest_.categories.data() + i);
        // The greatest difference, 32768, has a category of its own and no bits.
        const Lanes isTold = (size >> 15) - 1;
        Store((difference + minus) & mask & isTold, digest_.bits.data() + i);
    }
}

void LosslessTally::Add(const LosslessDigest& digest, std::size_t samples) noexcept {
    std::size_t i = 0;
    for (; i + kLanes <= samples; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            ++lanes_[lane][digest.categories[i + lane]];
        }
    }
    for (; i < samples; ++i) ++lanes_[0][digest.categories[i]];
}

LosslessCounts LosslessTally::Counts() const noexcept {
    LosslessCounts counts{};
    for (const LosslessCounts& lane : lanes_) {
        for (std::size_t i = 0; i < counts.size(); ++i) counts[i] += lane[i];
    }
    return counts;
}

}  // namespace quorvex
