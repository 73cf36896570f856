/// JPEG-LS streams (ITU-T T.87), lossless and near-lossless.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

struct charls_jpegls_decoder;

namespace quorvex {

/// What a stream says about its samples. They have no sign: what is negative was cut to
/// `precision` bits.
struct JpegLsHeader {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    unsigned components = 0;
    unsigned precision = 0;   ///< bits of a sample, 2 to 16
    unsigned errorBound = 0;  ///< how far a sample may be from its source; 0 is lossless
    bool isByPlanes = false;  ///< each component has a scan of its own, and comes out as a plane

    [[nodiscard]] std::size_t SampleBytes() const noexcept { return precision > 8 ? 2 : 1; }
};

enum class JpegLsResult : std::uint8_t { kDone, kDamaged, kUnsupported, kNoMemory };

/// One stream. Its header is read when it is opened; nothing of the picture's size is allocated
/// before Decode().
class JpegLsDecoder {
public:
    /// @param stream  stays as it is as long as the decoder lives. One without an end marker gets
    ///                one in a copy. Throws std::bad_alloc
    explicit JpegLsDecoder(std::span<const unsigned char> stream);

    /// kDone for a stream whose header is sound.
    [[nodiscard]] JpegLsResult State() const noexcept { return state_; }
    /// Valid where State() is kDone.
    [[nodiscard]] const JpegLsHeader& Header() const noexcept { return header_; }
    /// Decodes the whole picture: samples of 1 byte, or of 2 in this machine's byte order above
    /// 8 bits, by pixel or by planes. Once.
    /// @param samples  exactly as many bytes as that takes, aligned to the samples
    [[nodiscard]] JpegLsResult Decode(std::span<unsigned char> samples) noexcept;

private:
    struct Destroy {
        void operator()(charls_jpegls_decoder* decoder) const noexcept;
    };
    [[nodiscard]] JpegLsResult Open(std::span<const unsigned char> stream) noexcept;

    std::vector<unsigned char> closed_;
    std::unique_ptr<charls_jpegls_decoder, Destroy> decoder_;
    JpegLsHeader header_;
    JpegLsResult state_;
};

/// What is coded: samples by pixel, of 1 byte, or of 2 in this machine's byte order above 8 bits.
struct JpegLsSource {
    std::uint32_t columns = 0;
    std::uint32_t rows = 0;
    unsigned components = 1;
    unsigned precision = 8;  ///< no sample has more bits
    unsigned errorBound = 0;
    std::span<const unsigned char> samples;
};

/// Nothing where the library refuses. Throws std::bad_alloc.
[[nodiscard]] std::optional<std::vector<unsigned char>> CodeJpegLs(const JpegLsSource& source);

}  // namespace quorvex
