/// Native Pixel Data, cut into frames and put into this machine's byte order.
#pragma once

#include "foundation/dicom/model/element.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex::dicom {

/// What the header says about Pixel Data; 0 where it says nothing.
struct PixelShape {
    std::uint32_t rows = 0;
    std::uint32_t columns = 0;
    std::uint32_t samplesPerPixel = 1;
    std::uint32_t bitsAllocated = 0;
    std::uint32_t frameCount = 1;
    bool isHalfChroma = false;  ///< YBR_FULL_422 or YBR_PARTIAL_422: two pixels share their colour
};

/// Bytes of one stored frame, a started byte counted whole; nothing for a shape without pixels.
[[nodiscard]] std::optional<std::size_t> StoredFrameBytes(const PixelShape& shape) noexcept;

/// Bytes of one word of native Pixel Data, the unit that a change of byte order swaps; 1 for bytes.
[[nodiscard]] std::uint8_t PixelWordBytes(MC_VR vr, std::uint32_t bitsAllocated) noexcept;

/// How stored bytes become the bytes of frames.
struct NativeOrder {
    std::uint8_t wordBytes = 1;  ///< 2, 4 or 8 where that many bytes are stored highest first
    bool sharesChroma = false;   ///< Y, Y, Cb, Cr becomes Y, Cb, Y, Cr

    /// Two pixels of 4:2:2 lie as DICOM PS3.3 C.7.6.3.1.2 has them, both Y first, and the colour
    /// conversion takes each Y with one of the two colours.
    [[nodiscard]] static NativeOrder Of(bool isBigEndian, MC_VR vr,
                                        const PixelShape& shape) noexcept;
};

/// The frames of one value. Each is reached by its index, without a look at those ahead of it.
class NativeFrames {
public:
    /// Cuts `stored` into frames of `frameBytes`, the last one possibly shorter; 0 leaves it whole.
    NativeFrames(Bytes stored, std::size_t frameBytes, NativeOrder order) noexcept
        : NativeFrames(stored.size(), frameBytes, order) {
        ShowStored(0, stored);
    }
    /// The same of a value of `storedBytes` that lies elsewhere: ShowStored() comes ahead of
    /// Frame().
    NativeFrames(std::size_t storedBytes, std::size_t frameBytes, NativeOrder order) noexcept;
    /// Frames that follow each other bit by bit: each is given from the lowest bit of its first
    /// byte on, with zeros behind its last bit.
    static NativeFrames OfBits(std::size_t storedBytes, std::size_t frameBits,
                               std::size_t frameCount, NativeOrder order) noexcept;

    /// The bytes of the value that are at hand, from its byte `offset` on.
    void ShowStored(std::size_t offset, Bytes bytes) noexcept {
        offset_ = offset;
        stored_ = bytes;
    }
    /// The bytes of the value that Frame() looks at.
    [[nodiscard]] ByteRange StoredRange(std::size_t index) const noexcept;

    /// Takes away what an even value has behind its last frame.
    void DropPad(std::size_t frameCount) noexcept;

    [[nodiscard]] std::size_t Count() const noexcept { return frameCount_; }
    /// Whole bytes of the frames ahead of this one.
    [[nodiscard]] std::size_t LengthAhead(std::size_t index) const noexcept {
        return frameBits_ != 0 ? index * frameBits_ / 8 : index * frameBytes_;
    }
    /// A frame's first bit is not the lowest of a byte: its bytes lie nowhere in the value.
    [[nodiscard]] bool BeginsInsideByte(std::size_t index) const noexcept {
        return index * frameBits_ % 8 != 0;
    }
    /// Bytes of a frame; `index` is below `Count()`.
    [[nodiscard]] std::size_t Length(std::size_t index) const noexcept;
    /// Whether the value has all of the frame.
    [[nodiscard]] bool IsWhole(std::size_t index) const noexcept {
        return frameBits_ == 0 ? Length(index) == frameBytes_
                               : (index + 1) * frameBits_ <= storedBytes_ * 8;
    }
    /// The stored bytes are the frames: every frame can be shown where it lies.
    [[nodiscard]] bool LieReady() const noexcept;
    /// Bytes of a block that holds any one frame; 0 when every frame lies ready.
    [[nodiscard]] std::size_t BlockBytes() const noexcept;
    /// One frame, in `block` unless it lies ready. What StoredRange() tells is at hand.
    [[nodiscard]] Bytes Frame(std::size_t index, std::span<unsigned char> block) const noexcept;

private:
    [[nodiscard]] std::size_t CopyWords(std::size_t begin, std::span<unsigned char> to) const;
    [[nodiscard]] unsigned char StoredByte(std::size_t index) const noexcept;
    [[nodiscard]] unsigned char StoredBits(std::size_t firstBit) const noexcept;
    void CopyBits(std::size_t index, std::span<unsigned char> to) const noexcept;

    Bytes stored_;
    std::size_t offset_ = 0;  ///< of `stored_` in the value
    std::size_t storedBytes_ = 0;
    std::size_t frameBytes_ = 0;
    std::size_t frameBits_ = 0;  ///< 0 unless frames share bytes
    std::size_t frameCount_ = 0;
    NativeOrder order_;
};

/// The cut that the shape and the amount of data ask for; `frameBytes` 0 takes the shape's own. A
/// pad byte behind the last frame belongs to none.
///
/// Frames that do not end with a byte follow each other bit by bit (DICOM PS3.5 8.1.1 and 8.2);
/// some writers begin each of them in a byte of its own, which is known by the longer value.
[[nodiscard]] NativeFrames CutNative(std::size_t storedBytes, const PixelShape& shape,
                                     std::size_t frameBytes, NativeOrder order) noexcept;
[[nodiscard]] NativeFrames CutNative(Bytes stored, const PixelShape& shape, std::size_t frameBytes,
                                     NativeOrder order) noexcept;

}  // namespace quorvex::dicom
