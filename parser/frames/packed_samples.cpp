#include "parser/frames/packed_samples.h"

#include <algorithm>
#include <cstdint>

namespace quorvex {

void UnpackSamples(std::span<const unsigned char> packed, unsigned bits, unsigned sampleBytes,
                   std::span<unsigned char> samples) noexcept {
    std::uint64_t held = 0;  // bits that have been read and belong to no sample yet
    unsigned heldBits = 0;
    std::size_t read = 0;
    std::size_t written = 0;
    const std::uint64_t mask = (std::uint64_t{1} << bits) - 1;
    for (; written + sampleBytes <= samples.size(); written += sampleBytes) {
        for (; heldBits < bits && read < packed.size(); heldBits += 8)
            held |= std::uint64_t{packed[read++]} << heldBits;
        if (heldBits < bits) break;
        const std::uint64_t sample = held & mask;
        for (unsigned byte = 0; byte < sampleBytes; ++byte)
            samples[written + byte] = static_cast<unsigned char>(sample >> (8 * byte));
        held >>= bits;
        heldBits -= bits;
    }
    std::ranges::fill(samples.subspan(written), static_cast<unsigned char>(0));
}

void PackBits(std::span<unsigned char> samples) noexcept {
    constexpr std::size_t kBits = 8;
    std::size_t written = 0;
    for (std::size_t first = 0; first < samples.size(); first += kBits) {
        unsigned byte = 0;
        for (std::size_t bit = 0; bit < kBits && first + bit < samples.size(); ++bit)
            byte |= (samples[first + bit] & 1U) << bit;
        samples[written++] = static_cast<unsigned char>(byte);
    }
    std::ranges::fill(samples.subspan(written), static_cast<unsigned char>(0));
}

}  // namespace quorvex
