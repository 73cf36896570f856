/// The JPEG engine: one face for every kind of JPEG stream, decoded and coded in stripes.
///
/// Which library does the work is chosen from the stream's own frame header, never from what a file
/// says about it. Nothing is shared between handles: any number of threads may work at once, each
/// on its own. No operation throws.
#pragma once

#include "foundation/engines/jpeg/jpeg_header.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace quorvex {

/// Blocks of coded bytes travel in buffers of this size.
inline constexpr std::uint16_t kJpegBufferBytes = 32768;

// ---- decoding ----

enum JpegReadEvent : int {
    kJpegReadFirst = 2,  ///< name a buffer and fill it
    kJpegReadMore = 6,   ///< fill the buffer again
    kJpegReadEnd = 7,    ///< no more is asked for
};

/// Hands out the stream: sets `buffer` and how many bytes of it are filled, up to kJpegBufferBytes;
/// 0 is the end. Returns 0 to go on. Must not throw.
using JpegReadCallback = int (*)(int event, void* context, unsigned char** buffer,
                                 std::uint16_t* length);

struct JpegFrameDescription {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t horizontalSampling = 0;  ///< the greatest of the components
    std::uint8_t verticalSampling = 0;
};

struct JpegDescription {
    JpegFrameDescription frame;
    JpegProcess process = JpegProcess::kBaseline;
    std::uint8_t precision = 0;
    std::uint8_t componentCount = 0;
    bool colourIsMarked = false;  ///< the stream itself says what its components are
    bool marksRgb = false;        ///< and says that they are R, G, B
    bool canBeWhole = false;      ///< it is long enough for the picture that it claims
    bool isUnsupported = false;   ///< not decodable for its process, precision or components
};

/// What init_decompression() answers beside -1 and 0.
enum JpegStreamKind : int {
    kJpegGrey = 1,
    kJpegRgb = 2,
    kJpegYcc = 3,
    kJpegSubsampledYcc = 4,
    kJpegInks = 5,
    kJpegYccInks = 6,
};

/// The form in which decompress() delivers pixels.
enum class JpegColour : std::uint8_t {
    kByStream = 0,  ///< R, G, B or grey as the stream's kind asks for
    kStored = 1,    ///< samples as they are in the stream
    kRgbFromYcc = 6,
    kRgbFromSubsampledYcc = 7,
    kInks = 8,  ///< C, M, Y, K, the greatest value for full ink
    kInksFromYcc = 9,
    kRgbFromInks = 10,
};

/// The rows of decompress(): interleaved samples, no padding.
struct JpegPixelLayout {
    std::uint8_t samples = 0;         ///< per pixel
    std::uint8_t bytesPerSample = 0;  ///< 1 or 2, the less significant first
    std::size_t rowBytes = 0;
};

class JpegDecompression;
struct EndJpegDecompression {
    void operator()(JpegDecompression* decompression) const noexcept;
};
using JpegDecompressionHandle = std::unique_ptr<JpegDecompression, EndJpegDecompression>;

/// Opens a stream and reads its header.
///
/// @param streamLength  bytes that `read` will deliver: bounds what is allocated for the stream
/// @return a JpegStreamKind, 0 for a stream that is not usable (damaged header, a process,
///         precision or component count that is not decoded), -1 where there is no JPEG or no
///         memory
int init_decompression(JpegDecompressionHandle& handle, JpegDescription& description,
                       std::uint64_t streamLength, void* readContext,
                       JpegReadCallback read) noexcept;

/// Fixes the form of the pixels.
///
/// @param bytesPerSample  1 or 2; samples of more than 8 bits need 2
/// @param interleave      1 or 3; pixels come out interleaved for either
/// @param subsampled      interpolate chroma between its sampling points
/// @return 0, or -1 where the stream does not have that form, or cannot be opened
int pix_layout(const JpegDecompressionHandle& handle, JpegPixelLayout& layout, int bytesPerSample,
               int interleave, JpegColour colour, bool subsampled) noexcept;

/// Decodes the next `lines` lines to `rows`.
///
/// @return 0 more to come, 1 the picture is whole, -1 the stream is damaged or breaks off (then
///         decompressed_lines() tells how far it went; what follows in `rows` is undefined)
int decompress(const JpegDecompressionHandle& handle, unsigned char*& rows, int lines) noexcept;

/// Lines delivered since the stream was opened.
[[nodiscard]] int decompressed_lines(const JpegDecompressionHandle& handle) noexcept;
/// Warnings of the decoder: damage that it went on behind.
[[nodiscard]] long decompression_warnings(const JpegDecompressionHandle& handle) noexcept;

/// Ends the stream; a handle that was never opened is ignored.
void close_decompression(JpegDecompressionHandle& handle) noexcept;

// ---- coding ----

enum JpegWriteEvent : int {
    kJpegWriteFirst = 1,  ///< name a buffer of kJpegBufferBytes
    kJpegWriteBlock = 5,  ///< takes `length` bytes of the buffer
    kJpegWriteEnd = 7,
};

/// Takes the coded bytes. Returns 0 to go on, anything else to give up. Must not throw.
using JpegWriteCallback = int (*)(int event, void* context, unsigned char** buffer,
                                  std::uint16_t* length);

/// What is to be coded, and how. Rows are interleaved samples without padding.
struct JpegCodingBlock {
    std::uint16_t columns = 0;
    std::uint16_t rows = 0;
    std::uint8_t samples = 1;                      ///< 1, or 3 for R, G, B
    std::uint8_t bytesPerSample = 1;               ///< 1 or 2, the less significant first
    JpegProcess process = JpegProcess::kBaseline;  ///< baseline, extended (12 bits) or lossless
    /// Of a sample: 8, 12, or 2 to 16 when lossless. A picture with a sample beyond it is refused.
    std::uint8_t precision = 8;
    std::uint8_t predictor = 1;  ///< lossless: selection value
    std::uint8_t quality = 75;   ///< lossy without a table: 1 to 100
    bool keepsRgb = false;       ///< lossy: R, G, B as they are, instead of YCbCr
    bool halvesChroma = false;   ///< lossy YCbCr: one Cb and one Cr for two pixels of a row
    /// Lossy: 64 steps in zigzag order, or null for the usual table at `quality`.
    const std::array<std::uint16_t, 64>* quantizationTable = nullptr;
    JpegWriteCallback write = nullptr;
    void* writeContext = nullptr;
};

class JpegCompression;
struct EndJpegCompression {
    void operator()(JpegCompression* compression) const noexcept;
};
using JpegCompressionHandle = std::unique_ptr<JpegCompression, EndJpegCompression>;

/// Codes a whole picture in one call and closes. R, G, B is coded as YCbCr at full resolution when
/// lossy, as it is when lossless. @return 0, or another number for failure
int comp_im_buf(JpegCompressionHandle& handle, const JpegCodingBlock& coding,
                const unsigned char* source, int rows) noexcept;

/// Opens a coder. @return 0, or another number for failure
int init_compression(JpegCompressionHandle& handle, const JpegCodingBlock& coding,
                     void* writeContext, JpegWriteCallback write) noexcept;
/// Codes `rows` rows. A lossless picture takes two passes over the same rows: one to measure, one
/// to write. @return 0, or another number for failure
int icompress(const JpegCompressionHandle& handle, const unsigned char* source, int rows) noexcept;
/// Ends a coder; one that was never opened is ignored. @return 0
int close_compression(JpegCompressionHandle& handle) noexcept;

}  // namespace quorvex
