/// Coded frames that are native ones once they are out of their fragment.
#pragma once

#include "codec/frame_description.h"
#include "foundation/types/block.h"

#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

/// Deflated and encapsulated uncompressed frames, and RLE of single bits.
[[nodiscard]] bool BecomesNative(const FrameDescription& frame) noexcept;

/// How many bytes must come out of a fragment; nothing for a frame without any, or one that is too
/// large for its fragment.
[[nodiscard]] std::optional<std::size_t> BytesOutOfFragment(const FrameDescription& frame,
                                                            std::size_t fragmentBytes) noexcept;

/// A frame as native Pixel Data has it, but that it begins with a byte of its own.
struct FragmentPixels {
    HeapBlock block;
    bool isWhole = true;
};

/// Exactly the frame's size is made of a fragment; what follows it is padding.
/// @return nothing for a damaged fragment, one that gives another size, or a frame that is too
///         large for its fragment. Throws std::bad_alloc
[[nodiscard]] std::optional<FragmentPixels> TakeOutOfFragment(
    const FrameDescription& frame, std::span<const unsigned char> fragment);

}  // namespace quorvex
