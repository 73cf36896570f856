/// Rows as differences from the left neighbour, in the form that coding wants them.
#pragma once

#include "foundation/engines/lossless/lossless_codes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {

/// The differences of some samples: how many bits each takes, and those bits.
struct LosslessDigest {
    static constexpr std::size_t kSamples = 256;
    std::array<std::uint16_t, kSamples> categories;
    std::array<std::uint16_t, kSamples> bits;
};

/// Goes through the rows of a picture, of interleaved samples of 1 or 2 bytes at any address.
class LosslessDifferences {
public:
    /// Throws std::bad_alloc.
    LosslessDifferences(std::size_t pixels, std::size_t components, int bytesPerSample,
                        unsigned precision);

    /// Begins a picture.
    void Rewind() noexcept;
    /// Takes the next row. False when a sample needs more bits than the precision.
    [[nodiscard]] bool Take(const unsigned char* row) noexcept;
    /// Calls `use` with the digests of the row and the number of samples in each.
    template <class Use>
    void ForEach(const Use& use) noexcept {
        for (std::size_t i = 0; i < samples_; i += LosslessDigest::kSamples) {
            Digest(i);
            use(digest_, std::min(LosslessDigest::kSamples, samples_ - i));
        }
    }

private:
    void Digest(std::size_t from) noexcept;
    [[nodiscard]] std::span<std::uint16_t> Samples() noexcept {
        return std::span(line_).subspan(components_, samples_);
    }

    std::size_t components_;
    std::size_t samples_;
    int bytesPerSample_;
    unsigned precision_;
    std::vector<std::uint16_t> line_;  // what predicts the first pixel, the row, a rest
    LosslessDigest digest_{};
};

/// How often the categories of a picture occur.
class LosslessTally {
public:
    void Add(const LosslessDigest& digest, std::size_t samples) noexcept;
    [[nodiscard]] LosslessCounts Counts() const noexcept;

private:
    // Equal neighbours count in different places, and so do not wait for each other.
    static constexpr std::size_t kLanes = 4;
    std::array<LosslessCounts, kLanes> lanes_{};
};

}  // namespace quorvex
