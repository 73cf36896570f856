/// The block that a frame is decoded into: the caller's own, or one made here for the caller.
#pragma once

#include "foundation/platform/pages.h"
#include "foundation/types/block.h"

#include <cstddef>
#include <span>

namespace quorvex {

/// Whether a source of `sourceBytes` may ask for a frame of `frameBytes`.
///
/// A header of a few bytes can claim gigabytes. Up to 64 MiB are given to anybody; beyond, the
/// source has to hold at least one byte for 4,096 of the frame, which every real coding does at
/// such sizes.
[[nodiscard]] constexpr bool IsPlausibleFrame(std::size_t frameBytes,
                                              std::size_t sourceBytes) noexcept {
    constexpr std::size_t kGivenToAnybody = std::size_t{64} << 20;
    return frameBytes <= kGivenToAnybody || sourceBytes >= frameBytes / 4096;
}

/// A result block. One made here is handed to the caller at once, who owns it on failure too.
class FrameBlock {
public:
    /// Takes `result` as it is or, where it is null, makes a block of `size` bytes, undefined
    /// unless they come from pages, and puts it into `result`. Throws std::bad_alloc.
    FrameBlock(unsigned char*& result, std::size_t size, int allocMode);

    [[nodiscard]] bool IsNew() const noexcept { return isNew_; }
    [[nodiscard]] std::span<unsigned char> Bytes() const noexcept { return bytes_; }
    /// Zeroes what lies behind the first `count` bytes of a block made here.
    void ClearBehind(std::size_t count) const noexcept;

private:
    std::span<unsigned char> bytes_;
    bool isNew_;
    bool isZero_;
};

}  // namespace quorvex
