/// Where the coded frames of Pixel Data lie, found once for many fetches.
#pragma once

#include "foundation/dicom/frames/item_scan.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

/// The pieces of every frame, as a walk over the value shows them.
///
/// The walk reads each item's header, which in a long object costs more than to decode one frame.
class FrameIndex {
public:
    /// What an index is made from; with any other it has to be made anew.
    struct Source {
        std::uint64_t offset = 0;  ///< of the value in the file
        std::uint64_t bytes = 0;
        dicom::FrameHints hints;
    };

    /// Nothing where the value cannot be read.
    [[nodiscard]] static std::optional<FrameIndex> Of(dicom::ValueReader& value,
                                                      const Source& source);

    [[nodiscard]] bool IsFrom(const Source& source) const noexcept;
    /// Where the frames begin is a guess.
    [[nodiscard]] bool IsGuessed() const noexcept { return isGuessed_; }
    /// Small beside the value, and worth keeping.
    [[nodiscard]] bool IsSmall() const noexcept;
    [[nodiscard]] std::size_t FrameCount() const noexcept { return firstFragments_.size(); }
    /// In the file, in order; empty behind the last frame.
    [[nodiscard]] std::span<const dicom::FragmentPlace> PiecesOf(std::size_t frame) const noexcept;

private:
    FrameIndex() = default;

    std::uint64_t offset_ = 0;
    std::uint64_t bytes_ = 0;
    std::uint32_t frameCount_ = 0;
    TRANSFER_SYNTAX syntax_ = kSyntaxNone;
    dicom::ByteBuffer extendedOffsets_;
    bool isGuessed_ = false;
    std::vector<dicom::FragmentPlace> fragments_;
    std::vector<std::size_t> firstFragments_;
};

}  // namespace quorvex
