/// Frames in raw deflate (RFC 1951), each a stream of its own without a zlib header.
#pragma once

#include <span>
#include <vector>

namespace quorvex {

/// Inflates a stream that gives exactly `frame`, and ends there; what follows its end is padding.
/// @return false for a damaged stream, and for one that gives less or more. Throws std::bad_alloc
[[nodiscard]] bool InflateFrame(std::span<const unsigned char> stream,
                                std::span<unsigned char> frame);

/// Throws std::bad_alloc.
[[nodiscard]] std::vector<unsigned char> DeflateFrame(std::span<const unsigned char> frame);

}  // namespace quorvex
