/// The stored bytes of one coded frame: its pieces as a walk over Pixel Data shows them, joined.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
#include <span>
#include <vector>

namespace quorvex {

class FrameIndex;

/// Collects the wanted frame's pieces from a walk, by their frame events or by their item number.
class StoredFrame {
public:
    explicit StoredFrame(int frameIndex) noexcept : frameIndex_(frameIndex) {}

    /// Callback of a walk over a foreign buffer, whose `user` is the StoredFrame. Pieces are kept
    /// where they lie. Ends the walk when the frame is whole.
    static MC_STATUS CollectFromBuffer(int item, unsigned long length, unsigned char* data,
                                       int skip, int event, void* user);
    /// Callback of a walk over an object; pieces are copied, since they do not outlive the call.
    static MC_STATUS CollectFromObject(int messageId, std::uint32_t tag, void* user, int item,
                                       unsigned long length, unsigned char* data, int first,
                                       int last);

    /// Takes the pieces from an index, as the walk that it was made by would have shown them.
    void TakeFrom(const FrameIndex& index);

    /// The frame's end has been seen, so that the walk was ended before its own end.
    [[nodiscard]] bool IsWhole() const noexcept { return isWhole_; }
    /// A walk over an object has met the offset table, which only encapsulated data has.
    [[nodiscard]] bool HasOffsetTable() const noexcept { return hasOffsetTable_; }
    /// Bytes of all pieces.
    [[nodiscard]] std::size_t Length() const noexcept { return length_; }
    /// Where the first piece lies; null without pieces.
    [[nodiscard]] const unsigned char* FirstPiece() const noexcept;
    /// All pieces as one block: a lone piece where it lies.
    [[nodiscard]] std::span<unsigned char> Join();

private:
    MC_STATUS CountEvent(int event) noexcept;
    void Take(std::span<unsigned char> piece);

    int frameIndex_;
    int events_ = 0;  ///< frame boundaries that this fetch has passed
    std::vector<std::span<unsigned char>> pieces_;
    std::vector<unsigned char> joined_;
    std::size_t length_ = 0;
    bool isWhole_ = false;
    bool hasOffsetTable_ = false;
};

}  // namespace quorvex
