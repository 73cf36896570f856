/// Native samples that share their bytes, brought to bytes and words of their own.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

/// Samples of this depth lie in bytes or words of their own as they are stored.
[[nodiscard]] constexpr bool IsWholeWord(unsigned bitsAllocated) noexcept {
    return bitsAllocated == 8 || bitsAllocated == 16 || bitsAllocated == 32 || bitsAllocated == 64;
}

/// Bytes that hold one such sample, 1, 2 or 4; nothing for a deeper one.
[[nodiscard]] constexpr std::optional<unsigned> UnpackedBytes(unsigned bitsAllocated) noexcept {
    if (bitsAllocated > 32) return std::nullopt;
    if (bitsAllocated > 16) return 4U;
    return bitsAllocated > 8 ? 2U : 1U;
}

/// Takes samples of `bits` bits, at most 32, from the lowest bit of the first byte on (DICOM PS3.5
/// 8.1.1), each to `sampleBytes` bytes, the least significant first. Samples that `packed` does not
/// have whole are 0.
void UnpackSamples(std::span<const unsigned char> packed, unsigned bits, unsigned sampleBytes,
                   std::span<unsigned char> samples) noexcept;

/// Brings samples of 1 bit, in a byte each, to the form that native ones are stored in, in place:
/// from the lowest bit of the first byte on, with zeros behind the last one.
void PackBits(std::span<unsigned char> samples) noexcept;

}  // namespace quorvex
