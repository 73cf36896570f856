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
    std::uint16_t pixelRepresentation = 0;
    std::uint16_t planarConfiguration = 0;
    CString photometric;

    /// Bytes of one frame stored without coding, cut down to whole ones; nothing for more than we
    /// would ever allocate.
    [[nodiscard]] std::optional<std::size_t> NativeFrameBytes() const;
    /// Bytes that every decoded frame of this shape has at least: one for a sample, or two above 8 bits.
    [[nodiscard]] std::size_t DecodedFrameBytes() const noexcept {
        return std::size_t{bitsAllocated > 8 ? 2U : 1U} * samplesPerPixel * columns * rows;
    }
    /// The parameters that decode a frame of this shape.
    [[nodiscard]] _IMAGE_PROCESS_PARAM DecodingParam() const;
};

/// Nothing without Rows and Columns above 0. Absent Samples per Pixel is 1, all else absent is 0.
[[nodiscard]] std::optional<FrameShape> ReadFrameShape(const CDcmObject& header,
                                                       TRANSFER_SYNTAX syntax);

}  // namespace quorvex
