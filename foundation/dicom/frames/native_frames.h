/// Native Pixel Data, cut into frames and put into the byte order that a frame fetch expects.
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

/// Bytes of one word of native Pixel Data, which a change of byte order turns round: 1 for bytes.
[[nodiscard]] std::uint8_t PixelWordBytes(MC_VR vr, std::uint32_t bitsAllocated) noexcept;

/// How stored bytes become the bytes that are handed out.
struct NativeOrder {
    std::uint8_t wordBytes = 1;       ///< 2, 4 or 8 where that many bytes are stored highest first
    bool isHandedOutSwapped = false;  ///< in pairs, since a swap of pairs follows
    bool sharesChroma = false;        ///< Y, Y, Cb, Cr is handed out as Y, Cb, Y, Cr

    /// `isBigEndian` says how the value is stored; `swapsFollow` that the object's syntax makes a
    /// fetch swap: the bytes of each pair where a pixel has other than 3 samples, and once more
    /// where 16 bits are allocated. Two pixels of 4:2:2 lie as DICOM PS3.3 C.7.6.3.1.2 has them,
    /// both Y first, and the colour conversion takes each Y with one of the two colours.
    [[nodiscard]] static NativeOrder Of(bool isBigEndian, MC_VR vr, bool swapsFollow,
                                        const PixelShape& shape) noexcept;
};

class NativeFrames {
public:
    /// Cuts `stored` into frames of `frameBytes`, the last one possibly shorter; 0 leaves it whole.
    NativeFrames(Bytes stored, std::size_t frameBytes, NativeOrder order) noexcept;
    /// Frames of 1 bit a pixel that follow each other within a byte: each is handed out from the
    /// lowest bit of its first byte on.
    static NativeFrames OfBits(Bytes stored, std::size_t frameBits, std::size_t frameCount,
                               NativeOrder order) noexcept;

    /// Takes away what an even value has behind its last frame.
    void DropPad(std::size_t frameCount) noexcept;

    [[nodiscard]] std::size_t Count() const noexcept;
    /// Bytes of the block that `Frame` writes to; 0 when every frame can be shown where it lies.
    [[nodiscard]] std::size_t BlockBytes() const noexcept;
    /// One frame, in `block` unless it can be shown where it lies.
    [[nodiscard]] Bytes Frame(std::size_t index, std::span<unsigned char> block) const noexcept;

private:
    [[nodiscard]] bool LiesReady(std::size_t begin, std::size_t length) const noexcept;
    [[nodiscard]] unsigned char StoredByte(std::size_t index) const noexcept;
    [[nodiscard]] unsigned char StoredBits(std::size_t firstBit) const noexcept;

    Bytes stored_;
    std::size_t frameBytes_ = 0;
    std::size_t frameBits_ = 0;  ///< 0 unless frames share bytes
    std::size_t frameCount_ = 0;
    NativeOrder order_;
};

/// The cut that the shape and the amount of data ask for; `frameBytes` 0 takes the shape's own. A
/// pad byte behind the last frame is not handed out.
[[nodiscard]] NativeFrames CutNative(Bytes stored, const PixelShape& shape, std::size_t frameBytes,
                                     NativeOrder order) noexcept;

}  // namespace quorvex::dicom
