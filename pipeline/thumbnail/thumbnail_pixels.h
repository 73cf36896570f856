/// A frame of any kind as bytes at its full size, for thumbnails.
#pragma once

#include "parser/frames/frame_shape.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace quorvex {

/// A frame as 8-bit pixels, samples interleaved.
struct SmallPixels {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::vector<unsigned char> bytes;
    std::uint16_t samples = 1;
    /// In place of `bytes` where only some rows count; what the others hold means nothing.
    std::unique_ptr<unsigned char[]> someRows{};

    [[nodiscard]] unsigned char* Data() noexcept {
        return someRows ? someRows.get() : bytes.data();
    }
};

/// 16-bit grey goes through a window, of the data's range or of the header; 32-bit grey through its
/// range. Of colour with more than 8 bits a sample the high bytes stay, single bits become 0 and
/// 255, and a palette becomes R, G, B. What a frame does not hold of its pixels counts as 0.
/// Results: QVM_SUCCESS, QVM_ERROR_INVALID_PHOTOMETRIC without a palette, or
/// QVM_ERROR_INVALID_BITS_ALLOCATED for other depths.
///
/// @param height  of the image that the frame will be resized to: rows that it does not read may be
///                left out
[[nodiscard]] SmallPixels ReduceToBytes(CDcmObject& header, const FrameShape& shape,
                                        std::span<const unsigned char> frame, bool useDataRange,
                                        int height);

}  // namespace quorvex
