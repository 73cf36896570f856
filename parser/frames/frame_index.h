/// Where the coded frames of Pixel Data lie, found once for many fetches.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
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
        const unsigned char* value = nullptr;
        std::size_t bytes = 0;
        int frameCount = 0;
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        friend bool operator==(const Source&, const Source&) = default;
    };

    /// @param isGuessed  where the frames begin is a guess
    FrameIndex(const Source& source, bool isGuessed) noexcept
        : source_(source), isGuessed_(isGuessed) {}

    /// Callback of a walk over a foreign buffer, whose `user` is the FrameIndex.
    static MC_STATUS Collect(int item, unsigned long length, unsigned char* data, int skip,
                             int event, void* user);
    /// Ends the walk. An index that is not small beside the value is dropped.
    void Close(bool isWalkWhole);

    [[nodiscard]] bool IsFrom(const Source& source) const noexcept { return source_ == source; }
    [[nodiscard]] bool IsGuessed() const noexcept { return isGuessed_; }
    [[nodiscard]] bool IsUsable() const noexcept { return !ends_.empty(); }
    [[nodiscard]] std::size_t FrameCount() const noexcept { return ends_.size(); }
    /// Empty behind the last frame.
    [[nodiscard]] std::span<const std::span<unsigned char>> PiecesOf(
        std::size_t frame) const noexcept;

private:
    Source source_;
    bool isGuessed_;
    std::vector<std::span<unsigned char>> pieces_;
    std::vector<std::size_t> ends_;  ///< of each frame, in pieces
};

}  // namespace quorvex
