/// JPEG XL streams (ISO/IEC 18181), bare or in boxes: to samples and back, and JPEG streams that
/// are kept in them.
///
/// The library behind falls over allocations that fail: it is asked only where there is memory for
/// what it needs, see jpegxl_memory.h. It takes what a stream says about pictures that are never
/// shown: it gets no stream whose frames were not measured before, see jpegxl_frames.h. It writes
/// a line on standard error where a stream is damaged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

/// Whether the library is there; without it no stream is read or written.
[[nodiscard]] bool HasJpegXl() noexcept;

enum class JpegXlResult : std::uint8_t { kDone, kDamaged, kUnsupported, kNoMemory };

/// What a stream says about its samples, which have no sign.
struct JpegXlHeader {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    unsigned components = 0;  ///< 1 or 3
    unsigned precision = 0;   ///< bits of a sample, 1 to 16
    bool isXyb = false;  ///< three samples were coded in another colour space, and come as R, G, B
    bool hasJpeg = false;   ///< RestoreJpeg() gives the JPEG stream that it was made of
    bool isTurned = false;  ///< the samples are to be shown turned or mirrored

    [[nodiscard]] std::uint64_t Pixels() const noexcept { return std::uint64_t{columns} * rows; }
};

/// One stream. Its header is read when it is opened; nothing of the picture's size is allocated
/// before Decode() and RestoreJpeg().
class JpegXlDecoder {
public:
    /// @param stream  stays as it is as long as the decoder lives. Throws std::bad_alloc
    explicit JpegXlDecoder(std::span<const unsigned char> stream);

    /// kDone for a sound header of a picture that can be decoded: one frame of grey or colour.
    [[nodiscard]] JpegXlResult State() const noexcept { return state_; }
    /// Valid where State() is kDone.
    [[nodiscard]] const JpegXlHeader& Header() const noexcept { return header_; }

    /// Decodes the whole picture by pixel, with values from 0 to 2 to the power of the precision.
    /// Pictures that are to be turned are not supported.
    /// @param samples      exactly as many bytes as that takes; 2-byte samples aligned and in this
    ///                     machine's byte order
    /// @param sampleBytes  1 or 2; 2 where the precision is above 8
    [[nodiscard]] JpegXlResult Decode(std::span<unsigned char> samples, std::size_t sampleBytes);

    /// The JPEG stream, to the byte; where the header says that it is there.
    [[nodiscard]] JpegXlResult RestoreJpeg(std::vector<unsigned char>& jpeg);

private:
    [[nodiscard]] JpegXlResult Open(std::span<const unsigned char> stream);

    std::vector<unsigned char> joined_;          ///< a codestream that was in parts
    std::span<const unsigned char> codestream_;  ///< bare
    std::span<const unsigned char> jpegBox_;     ///< what else the JPEG stream is made of
    JpegXlHeader header_;
    JpegXlResult state_;
};

/// What is coded: samples by pixel, of 1 byte, or of 2 in this machine's byte order above 8 bits.
struct JpegXlSource {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    unsigned components = 1;  ///< 1 or 3
    unsigned precision = 8;
    std::size_t sampleBytes = 1;
    float distance = 0;  ///< 0 is lossless; 1 is where a person begins to see differences
    std::span<const unsigned char> samples;
};

/// A bare codestream; nothing for samples beyond the precision, or where the library refuses.
/// Throws std::bad_alloc.
[[nodiscard]] std::optional<std::vector<unsigned char>> CodeJpegXl(const JpegXlSource& source);

/// A JPEG stream of 8 bits in boxes, from which it comes back to the byte: that is tried. Nothing
/// for one that the library cannot keep so. Throws std::bad_alloc.
[[nodiscard]] std::optional<std::vector<unsigned char>> RecompressJpeg(
    std::span<const unsigned char> jpeg);

}  // namespace quorvex
