/// What a header says about the pixels of its frames.
#pragma once

#include "pipeline/pixel_elements.h"
#include "quorvex/Types.h"

#include <cstddef>
#include <optional>

namespace quorvex {

class CDcmObject;

/// Absent attributes have their defaults: one sample, unsigned, all bits stored.
struct PixelHeader {
    CSize size;
    unsigned short samplesPerPixel = 1;
    unsigned short bitsAllocated = 0;
    unsigned short pixelRepresentation = 0;
    unsigned short bitsStored = 0;
    unsigned short highBit = 0;
    SampleType sampleType = SampleType::kInteger;

    [[nodiscard]] bool IsReal() const noexcept { return sampleType != SampleType::kInteger; }
    [[nodiscard]] bool IsGrey() const noexcept { return samplesPerPixel == 1; }
    [[nodiscard]] std::size_t PixelCount() const noexcept;
    /// Of a grey frame.
    [[nodiscard]] StoredLayout Layout() const noexcept;
};

/// Whether an image has pixels, at most `kLargestBlock` bytes of them, and samples of up to 32
/// bits, or real ones of 32 or 64.
[[nodiscard]] bool IsUsable(const PixelHeader& pixels);

/// Nothing where the header's image is not usable.
[[nodiscard]] std::optional<PixelHeader> ReadPixelHeader(
    const CDcmObject& header, SampleType sampleType = SampleType::kInteger);

}  // namespace quorvex
