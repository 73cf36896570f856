/// From stored frame bytes to plain pixels: every decoder, colour and size behind one class.
#pragma once

#include "quorvex/Export.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/TransferSyntaxes.h"
#include "quorvex/Types.h"

#include <array>
#include <cstdint>

namespace quorvex {

/// What a frame's header says about its pixels. Callers overwrite what they use.
struct _IMAGE_PROCESS_PARAM {                   // NOLINT(bugprone-reserved-identifier): given name
    std::uint32_t transferSyntax = 0;           ///< of the source: a TRANSFER_SYNTAX number
    std::uint16_t samplesPerPixel = 65535;      ///< (0028,0002)
    CString photometric;                        ///< (0028,0004)
    std::uint16_t planarConfiguration = 65535;  ///< (0028,0006); 1: colour by planes
    std::uint16_t rows = 65535;                 ///< (0028,0010)
    std::uint16_t columns = 65535;              ///< (0028,0011)
    std::uint16_t bitsAllocated = 65535;        ///< (0028,0100)
    std::uint16_t quality = 0;                  ///< compression only
    std::uint16_t pixelRepresentation = 65535;  ///< (0028,0103); 1: signed
    std::uint32_t targetSyntax = 0;  ///< compression only: a QUORVEX_XFERSYNTAX; decompressing: 1
};

/// The one gate between stored frames and pixels. Cheap: made on the stack for each frame.
///
/// An object serves one thread at a time; different objects may work at once. Nothing is kept
/// between calls but the two settings. In the sizes below a sample takes 2 bytes when
/// `bitsAllocated` is above 8, otherwise 1.
class QUORVEX_API CxImageProcessor {
public:
    CxImageProcessor() noexcept;
    CxImageProcessor(const CxImageProcessor& other) noexcept;
    CxImageProcessor& operator=(const CxImageProcessor& other) noexcept;
    virtual ~CxImageProcessor();

    /// Decodes or copies one frame.
    ///
    /// Three-sample frames come out as interleaved R, G, B; with a `photometric` that
    /// ConvertYBRToRGB() does not know they come out as zeros. What a short or damaged source does
    /// not give is zero. A damaged RLE frame of three samples is no failure.
    ///
    /// Frames of any syntax that has no decoder here are copied. A source longer than the header
    /// says (32 bits allocated) grows a block made here, and `resultSize` with it; 32-bit RLE does
    /// the same. More than 64 MiB are made only for a source of at least 1/4096 of that.
    ///
    /// @param source       the frame's bytes, fragments joined. Big-endian ones (102, 103) of other
    ///                     than three samples are byte-swapped in place
    /// @param result       null: receives a new block from the allocator that the allocation mode
    ///                     names, yours also on failure (null without memory). Otherwise your
    ///                     block, of the frame's size; it is never written past `resultSize`,
    ///                     unless that is 0
    /// @param resultSize   in: the length of your block, or 0 for just the frame's size; out: bytes
    ///                     of the frame (of a plain copy, only when the block was made here)
    /// @param unsignedOnly not 0: signed JPEG 2000 grey frames are decoded as unsigned
    /// @return QVM_SUCCESS for a decoded frame, QVM_FRAME_COPIED for a plain one, or
    ///         QVM_ERROR_NULL_SOURCE            no `param` or no `source`
    ///         QVM_ERROR_INVALID_SOURCE_SYNTAX  `transferSyntax` 0
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT   coded frame with samples other than 1, 3, 4,
    ///                                          without rows or columns, or below 8 bits
    ///         QVM_ERROR_FAILED_TO_DECOMPRESS   the decoder failed, no memory, or a block too small
    QUORVEX_MESSAGE DecompressFrameData(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                        unsigned long sourceLength, unsigned char*& result,
                                        unsigned long& resultSize, int unsignedOnly);

    /// Decodes a JPEG stream about which nothing else is known.
    ///
    /// @param result         receives columns x rows x bytesPerPixel bytes, yours, from the general
    ///                       allocator; may be set on QVM_ERROR_FAILED_TO_DECOMPRESS too
    /// @param resultSize     receives the bytes that the stream gave; the rest of the block is zero
    /// @param bits           receives the sample precision, 8 or 16
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_CANNOT_OPEN_STREAM      no JPEG stream at all
    ///         QVM_ERROR_INVALID_JPEG_STREAM     a process that we do not decode
    ///         QVM_ERROR_INVALID_JPEG_LAYOUT     components that we cannot lay out
    ///         QVM_ERROR_INVALID_JPEG_PRECISION  other than 8 and 16 bits
    ///         QVM_ERROR_FAILED_TO_DECOMPRESS    broken off or damaged
    QUORVEX_MESSAGE DecompressBlindJPEGData(unsigned char* source, unsigned long sourceLength,
                                            unsigned char*& result, unsigned long& resultSize,
                                            unsigned short& columns, unsigned short& rows,
                                            unsigned short& samples, unsigned short& bits,
                                            unsigned short& bytesPerPixel);

    /// Decodes a JPEG 2000 codestream about which nothing else is known: 8 or 16-bit grey, three or
    /// four samples of 8 bits.
    ///
    /// @param result  receives width x height x bytesPerPixel bytes, yours, from the general
    ///                allocator; null on QVM_ERROR_FAILED_TO_DECOMPRESS
    /// @return QVM_SUCCESS, QVM_ERROR_CANNOT_OPEN_STREAM or QVM_ERROR_FAILED_TO_DECOMPRESS
    QUORVEX_MESSAGE DecompressBlindJP2KData(unsigned char* source, unsigned long sourceLength,
                                            unsigned char*& result, unsigned long& resultSize,
                                            unsigned short& width, unsigned short& height,
                                            unsigned short& samples, unsigned short& bits,
                                            unsigned short& bytesPerPixel);

    /// Codes one uncompressed frame.
    ///
    /// `targetSyntax` names the form, and with it what `quality` (clamped to 1 to 1000) means:
    ///     5  JPEG baseline       the usual JPEG quality, 1 to 100; R, G, B is coded as YCbCr with
    ///                            full resolution and marked so in the stream, unless SetKeepsRgb()
    ///     6  JPEG extended       a factor on the usual luminance steps, for samples of 12 bits
    ///     7  JPEG lossless       ignored; selection value 1
    ///     8  JPEG 2000           the ratio of source to coded bytes; with 1 nearly lossless
    ///     9  JPEG 2000 lossless  ignored
    ///
    /// Lossy JPEG knows no negative samples, extended JPEG none above 4095: such frames are refused
    /// rather than clipped. "RGB" may be written in any letter case. Coded data may be longer than
    /// the frame.
    ///
    /// @param source      the frame; "RGB" in planes is interleaved in place for JPEG. With
    ///                    `transferSyntax` 102 the higher byte of a sample comes first
    /// @param result      receives `resultSize` bytes, yours, from the general allocator; null on
    ///                    failure
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_NULL_SOURCE            no `param` or no `source`
    ///         QVM_ERROR_INVALID_SOURCE_SYNTAX  `transferSyntax` other than 100, 101, 102
    ///         QVM_ERROR_INVALID_TARGET_SYNTAX  `targetSyntax` other than 5 to 9
    ///         QVM_ERROR_INVALID_PHOTOMETRIC    neither grey, palette nor "RGB"
    ///         QVM_ERROR_INVALID_IMAGE_FORMAT   5 with more than 8 bits allocated, 6 with less
    ///         QVM_ERROR_FAILED_TO_COMPRESS     refused by the coder, a source shorter than its
    ///                                          frame, no memory
    QUORVEX_MESSAGE CompressFrameData(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                      unsigned long sourceLength, unsigned char*& result,
                                      unsigned long& resultSize);

    /// Codes a frame as JPEG 2000, lossless with `targetSyntax` 9, else to `quality` as a ratio,
    /// without any check of the record.
    ///
    /// @param result  receives `resultSize` bytes, yours, from the general allocator; null on
    ///                failure
    /// @return always QVM_SUCCESS
    QUORVEX_MESSAGE CompressRawImage2Jp2File(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                             unsigned long sourceLength, unsigned char*& result,
                                             unsigned long& resultSize);

    /// Brings a three-sample frame to interleaved R, G, B.
    ///
    /// "YBR_FULL" (planes or interleaved), "YBR_FULL_422", "YBR_PARTIAL_422" and "RGB", compared
    /// exactly, are converted; any other text, or "YBR_FULL" with another planar configuration,
    /// writes nothing. YBR samples are bytes: with more than 8 bits allocated nothing is written.
    /// Full-range results are not clamped: their low 8 bits are stored.
    ///
    /// @param source  a whole frame as `param` describes it
    /// @param result  a block of rows x columns x 3 bytes, twice that for 16-bit "RGB"
    /// @return QVM_SUCCESS, QVM_ERROR_NOT_COLOR_IMAGE for other than 3 samples, or
    ///         QVM_ERROR_NULL_SOURCE without `param`, `source` or `result`
    QUORVEX_MESSAGE ConvertYBRToRGB(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                    unsigned char*& result);

    /// Scales a frame to `size`: linear, the pixel at (1, 1) in the result's corner.
    ///
    /// 16-bit grey, and 8-bit pixels of 1, 3 or 4 samples; other widths give zeros.
    ///
    /// @param result  receives a new zeroed block of `resultSize` bytes from the general allocator,
    ///                yours, also with QVM_ERROR_INVALID_SAMPLES_PER_PIXEL
    /// @return QVM_SUCCESS, or
    ///         QVM_ERROR_INVALID_OUTPUT_SIZE        below 1, too large, a width that is not a
    ///                                              multiple of 4, a source without rows or columns
    ///         QVM_ERROR_INVALID_SAMPLES_PER_PIXEL  other than 1, 3, 4
    ///         QVM_ERROR_NULL_SOURCE                no `param` or no `source`
    QUORVEX_MESSAGE ResizeImage(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                unsigned char*& result, unsigned long& resultSize, CSize size);

    /// Does nothing, and succeeds.
    QUORVEX_MESSAGE FlipColorImage(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                   unsigned char*& result);

    /// 1, the default: DecompressFrameData() takes result blocks from the general allocator
    /// (release with delete[]); any other value: from the page allocator (release with
    /// ReleasePages()).
    void SetAllocMode(int mode) noexcept;
    [[nodiscard]] int GetAllocMode() const noexcept;

    /// true: JPEG baseline codes R, G, B as they are, and marks the stream so. That takes more
    /// bytes than YCbCr, and is what an object needs whose Photometric Interpretation says "RGB":
    /// many readers go by that, and not by the stream.
    void SetKeepsRgb(bool keeps) noexcept;

private:
    // No pointer: an object is made for each frame, and must not allocate.
    std::int32_t allocMode_ = 1;
    std::int32_t keepsRgb_ = 0;
    std::array<std::int32_t, 6> reserved_{};  ///< for later settings: the size of an object stays
};

}  // namespace quorvex
