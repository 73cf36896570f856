/// The block that a frame is decoded into: the caller's own, or one made here for the caller.
#pragma once

#include "foundation/platform/pages.h"
#include "foundation/types/block.h"
#include "foundation/types/limits.h"

#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

/// The allocation mode whose blocks are released with delete[].
inline constexpr int kGeneralAllocator = 1;

/// Whether a source of `sourceBytes` may ask for a picture of `pictureBytes`, a checked product.
[[nodiscard]] inline bool IsPlausiblePicture(std::optional<std::size_t> pictureBytes,
                                             std::size_t sourceBytes) noexcept {
    if (!pictureBytes) return RefuseBy(Limit::kLargestBlock);
    return *pictureBytes <= kPictureAllowance ||
           sourceBytes >= *pictureBytes / kMostPicturePerByte || RefuseBy(Limit::kLargestPicture);
}

/// Releases a block that a FrameBlock made; null is ignored.
void GiveBackBlock(unsigned char* block, int allocMode) noexcept;

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
