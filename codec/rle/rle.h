/// RLE frames (DICOM PS3.5 Annex G): the segments, and where the bytes of each belong.
#pragma once

#include "codec/colour.h"

#include <cstddef>
#include <span>

namespace quorvex {

/// How the bytes of the segments lie in the frame.
struct RleLayout {
    std::size_t pixels = 0;
    std::size_t samplesPerPixel = 1;
    std::size_t bytesPerSample = 1;
    bool isPlanar = false;  ///< one plane a sample; otherwise the segments of a pixel lie together
};

struct RleOutcome {
    bool isSound = false;  ///< nothing is damaged
    bool isWhole = false;  ///< and the segments gave every byte
};

/// Decodes a whole frame; every byte of `frame` is written, with 0 where no segment reaches.
///
/// Interleaved, segment i of n gives byte n - 1 - i of each pixel, so that the high byte, which
/// comes first, ends at the higher address. Planar, with one segment for each byte of a pixel, the
/// segments of one sample give one plane in the same order; with another count each segment gives a
/// plane.
///
/// Damaged is a frame without a 64-byte header, with more than 15 segments, with a segment that
/// begins or ends outside the source or belongs outside the frame, or with a run that passes the
/// plane's end. Segments behind the first damaged one are not decoded.
RleOutcome DecodeRle(std::span<const unsigned char> source, const RleLayout& layout,
                     std::span<unsigned char> frame);

/// The same for a frame of three samples, brought to R, G, B as `colour` says.
RleOutcome DecodeRleColour(std::span<const unsigned char> source, const RleLayout& layout,
                           const ColourFrame& colour, std::span<unsigned char> rgb);

}  // namespace quorvex
