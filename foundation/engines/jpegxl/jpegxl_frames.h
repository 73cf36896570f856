/// What the frames of a JPEG XL codestream ask for (ISO/IEC 18181-1, frame header and table of
/// contents), told before anything decodes them.
///
/// A picture of a few pixels may have hidden frames of any size, which serve as references: their
/// memory is nowhere limited but here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// Of the picture's header.
struct JpegXlPicture {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    bool isXyb = false;  ///< the samples are coded in the format's own colour space
};

enum class JpegXlFrames : std::uint8_t {
    kPlain,        ///< some hidden frames of the picture's size or less, and one that is shown
    kDamaged,      ///< cut off, or they ask for more than the picture can need
    kUnsupported,  ///< layers, parts of a picture, hidden frames in an order of their own
};

/// @param frames  the codestream from its first frame on
[[nodiscard]] JpegXlFrames MeasureFrames(std::span<const unsigned char> frames,
                                         const JpegXlPicture& picture) noexcept;

}  // namespace quorvex
