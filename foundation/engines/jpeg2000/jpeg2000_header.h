/// What a JPEG 2000 codestream says about itself, and where it ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

/// The facts of a codestream's main header. All components have the first one's depth and sign.
struct Jpeg2000Header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int components = 0;
    int precision = 0;
    bool isSigned = false;
    bool isSubsampled = false;
    bool hasColourTransform = false;  ///< the decoder turns the components into R, G, B
    bool isReversible = false;        ///< by its wavelet; it may have been cut short all the same
    std::uint64_t tiles = 0;
    std::uint64_t packets = 0;  ///< at most so many by its coding styles; each costs a byte
};

/// The codestream inside `stream`: `stream` itself, or the content of its `jp2c` box.
/// Nothing where there is none.
[[nodiscard]] std::optional<std::span<const unsigned char>> FindCodestream(
    std::span<const unsigned char> stream) noexcept;

/// Nothing for a header that is damaged or has components of unequal depth or sign.
[[nodiscard]] std::optional<Jpeg2000Header> ReadJpeg2000Header(
    std::span<const unsigned char> codestream) noexcept;

}  // namespace quorvex
