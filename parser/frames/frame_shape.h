/// What a header says about the pixels of a frame.
#pragma once

#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex {

struct FrameShape {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    std::uint16_t samplesPerPixel = 1;
    std::uint16_t bitsAllocated = 0;
    std::uint16_t bitsStored = 0;
    std::uint16_t pixelRepresentation = 0;
    std::uint16_t planarConfiguration = 0;
    CString photometric;
    SampleType sampleType = SampleType::kInteger;

    /// Bytes of one frame stored without coding, cut down to whole ones; nothing for more than we
    /// would ever allocate.
    [[nodiscard]] std::optional<std::size_t> NativeFrameBytes() const;
    /// Bytes of one frame of samples as they lie in memory: 1 for a sample of up to 8 bits, 4 for
    /// 32 bits, else 2; floats as they are stored.
    [[nodiscard]] std::optional<std::size_t> PlainFrameBytes() const noexcept;
    /// Bytes that every decoded frame has at least: 1 for a sample, or 2 above 8 bits.
    [[nodiscard]] std::size_t DecodedFrameBytes() const noexcept {
        return std::size_t{BytesPerSample()} * samplesPerPixel * columns * rows;
    }
    /// Bits Stored, or Bits Allocated where that is no number of bits of a sample.
    [[nodiscard]] int StoredBits() const noexcept {
        return bitsStored >= 1 && bitsStored <= bitsAllocated ? bitsStored : bitsAllocated;
    }
    /// Whether the header describes floats as they can be.
    [[nodiscard]] bool AreFloats() const noexcept;
    /// The element that holds them.
    [[nodiscard]] std::uint32_t FloatTag() const noexcept;
    /// The parameters that decode a frame; native pixels come in this machine's byte order.
    [[nodiscard]] _IMAGE_PROCESS_PARAM DecodingParam() const;

private:
    [[nodiscard]] unsigned BytesPerSample() const noexcept { return bitsAllocated > 8 ? 2 : 1; }
};

/// Nothing without Rows and Columns above 0. Absent Samples per Pixel is 1, all else absent is 0.
[[nodiscard]] std::optional<FrameShape> ReadFrameShape(const CDcmObject& header,
                                                       TRANSFER_SYNTAX syntax);

}  // namespace quorvex
