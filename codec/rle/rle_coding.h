/// RLE frames (DICOM PS3.5 Annex G), written.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

/// A frame of whole-byte samples in this machine's byte order, interleaved by pixel.
struct RleSource {
    std::span<const unsigned char> frame;  ///< rows x columns x samples x bytes
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::size_t samplesPerPixel = 1;
    std::size_t bytesPerSample = 1;
};

/// The coded frame: one segment for each byte of a pixel, the highest byte of the first sample
/// first; no run passes the end of a row. Nothing for a pixel of more than 15 bytes, or a source
/// that is too short.
[[nodiscard]] std::optional<std::vector<unsigned char>> CodeRle(const RleSource& source);

}  // namespace quorvex
