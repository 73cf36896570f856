/// One frame as a caller's record describes it, and the sizes that follow.
#pragma once

#include "codec/colour.h"
#include "quorvex/CxImageProcessor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quorvex {

inline constexpr unsigned kColourSamples = 3;

/// What one call of CxImageProcessor works on. It refers to the record's text, so it must not
/// outlive the record.
struct FrameDescription {
    explicit FrameDescription(const _IMAGE_PROCESS_PARAM& param) noexcept {
        InitializeMembers(&param);
    }

    /// Takes over what the record says, `quality` widened. @return always 1
    int InitializeMembers(const _IMAGE_PROCESS_PARAM* param) noexcept;

    [[nodiscard]] std::size_t Pixels() const noexcept { return std::size_t{rows} * columns; }
    [[nodiscard]] std::size_t BytesPerSample() const noexcept { return bitsAllocated > 8 ? 2 : 1; }
    /// Bytes of the frame; nothing for more than we would ever allocate.
    [[nodiscard]] std::optional<std::size_t> FrameBytes(std::size_t bytesPerSample) const noexcept;
    /// The width of a sample where `available` bytes are a frame: 4 for samples of 32 bits that
    /// have the room, which count as 2 bytes otherwise.
    [[nodiscard]] std::size_t SampleBytesFor(std::size_t available) const noexcept;

    /// Bytes of the samples bit by bit, a started byte counted whole.
    [[nodiscard]] std::size_t PackedBytes() const noexcept {
        return (Pixels() * samplesPerPixel * bitsAllocated + 7) / 8;
    }

    [[nodiscard]] bool IsColour() const noexcept { return samplesPerPixel == kColourSamples; }
    /// Grey, or indices of a palette: one sample a pixel.
    [[nodiscard]] bool IsGrey() const noexcept {
        return Mentions(u"MONOCHROME") || Mentions(u"PALETTE");
    }
    [[nodiscard]] bool IsFullRangeYbr() const noexcept {
        return photometric == u"YBR_FULL" || photometric == u"YBR_FULL_422";
    }
    [[nodiscard]] bool Mentions(std::u16string_view part) const noexcept {
        return photometric.find(part) != std::u16string_view::npos;
    }
    /// How coded Y, Cb, Cr become R, G, B: never wrapped, since nothing else decodes them so.
    [[nodiscard]] YbrArithmetic CodedArithmetic() const noexcept {
        return hasExactColour ? YbrArithmetic::kExact : YbrArithmetic::kClamped;
    }
    /// What ConvertToRgb() makes of a frame of three samples.
    [[nodiscard]] ColourFrame DescribeColour(std::size_t bytesPerSample) const noexcept;

    std::uint16_t samplesPerPixel = 0;
    std::u16string_view photometric;
    std::uint16_t planarConfiguration = 0;
    std::uint16_t rows = 0;
    std::uint16_t columns = 0;
    std::uint16_t bitsAllocated = 0;
    std::uint16_t pixelRepresentation = 0;
    TRANSFER_SYNTAX transferSyntax = kSyntaxNone;
    QUORVEX_XFERSYNTAX targetSyntax{};
    std::uint32_t quality = 0;
    int bitsStored = 16;          ///< of samples of exact colours that have 2 bytes
    bool hasExactColour = false;  ///< Y, Cb, Cr become rounded and clamped R, G, B
};

/// Exchanges the two bytes of each whole pair, in place.
void SwapByte(unsigned char* data, unsigned long length) noexcept;

}  // namespace quorvex
