/// The stored bytes of one frame: its pieces as a walk over Pixel Data shows them, joined.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace quorvex {

class FrameIndex;

/// Collects the wanted frame's pieces from a walk, by their frame events or by their item number.
class StoredFrame {
public:
    explicit StoredFrame(int frameIndex) noexcept : frameIndex_(frameIndex) {}

    /// Callback of a walk over a foreign buffer; word 5 of the user record is the StoredFrame. Pieces
    /// are kept where they lie. Ends the walk when the frame is whole.
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
    /// Bytes of all pieces.
    [[nodiscard]] std::size_t Length() const noexcept { return length_; }
    /// Where the first piece lies; null without pieces.
    [[nodiscard]] const unsigned char* FirstPiece() const noexcept;
    /// Bytes of the frames ahead of this one.
    [[nodiscard]] std::size_t LengthAhead() const noexcept { return lengthAhead_; }
    /// All pieces as one block; `mayChange` when it will be written to. A lone piece is given where it
    /// lies unless it may change and does not lie in the walk's own block.
    [[nodiscard]] std::span<unsigned char> Join(bool mayChange);

    /// Where the walk may put a block of its own, which goes when this object goes.
    struct Scratch {
        unsigned char* block = nullptr;
        Scratch() = default;
        Scratch(const Scratch&) = delete;
        Scratch& operator=(const Scratch&) = delete;
        ~Scratch() { delete[] block; }
    } scratch;
    bool isEncoded = false;  ///< the bytes are coded, so must not pass for pixels

private:
    MC_STATUS CountEvent(int event) noexcept;
    MC_STATUS Take(std::span<unsigned char> piece);

    int frameIndex_;
    int events_ = 0;  ///< frame boundaries that this fetch has passed
    std::vector<std::span<unsigned char>> pieces_;
    std::vector<unsigned char> joined_;
    std::size_t length_ = 0;
    std::size_t lengthAhead_ = 0;
    bool isWhole_ = false;
};

}  // namespace quorvex
