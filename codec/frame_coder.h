/// One call of CxImageProcessor::CompressFrameData().
#pragma once

#include "codec/frame_description.h"
#include "quorvex/ResultCodes.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {

struct FrameCoderRow;
struct JpegCodingBlock;

/// What a coder's output procedure is called for.
enum CL_CONVERT_ACT : std::int32_t {
    kConvertStart = 0,  ///< output begins
    kConvertBlock = 1,  ///< a block of output
    kConvertEnd = 2,
};

/// Codes one uncompressed frame. Nothing of it outlives the call.
///
/// A form is a row of kCoders in frame_coder.cpp and an operation of this class. The operation
/// codes source_ to coded_ as frame_ describes it.
class FrameCoder {
public:
    FrameCoder(const _IMAGE_PROCESS_PARAM& param, std::span<unsigned char> source,
               bool keepsRgb) noexcept
        : frame_(param), source_(source), keepsRgb_(keepsRgb) {}

    /// The answers of CxImageProcessor::CompressFrameData(). Throws std::bad_alloc.
    QUORVEX_MESSAGE Code();
    /// Of JPEG 2000: how many bits a sample has, and whether three samples are R, G, B, which the
    /// coder may turn into luminance and differences. Without it, Bits Allocated and yes.
    void DescribeStored(unsigned bits, bool isRgb) noexcept {
        storedBits_ = bits;
        hasColourTransform_ = isRgb;
    }
    /// Of baseline JPEG with three samples: YCbCr with one Cb and one Cr for two pixels of a row,
    /// whatever was said of R, G, B.
    void HalveChroma() noexcept {
        keepsRgb_ = false;
        halvesChroma_ = true;
    }
    /// The coded frame. More bytes than the frame has, where it does not become shorter.
    [[nodiscard]] std::span<const unsigned char> Coded() const noexcept { return coded_; }
    [[nodiscard]] std::vector<unsigned char> TakeCoded() noexcept { return std::move(coded_); }

    // The coders: 1 for success, any other number for failure.

    /// JPEG baseline, and lossless colour.
    int CompressRawData2Jpeg_50_70();
    /// JPEG extended, and lossless grey.
    int CompressRawData2Jpeg_51_70();
    /// JPEG 2000 and its high-throughput forms, lossless for lossless forms, else to `quality` as a
    /// ratio. Checks nothing of the record.
    int CompressRawData2J2K();
    /// There is no RLE coder. @return always 0
    static int CompressRLEData(unsigned char* source, unsigned long sourceLength,
                               unsigned char*& result, unsigned long& resultSize) noexcept;

    /// Three planes to interleaved pixels, in place. @return 1, or 0 for less than a whole frame
    int Interleave_RGB_Data(unsigned char* data, unsigned long length) const;
    /// Takes a coder's output into the CompressOutputState at `state`. @return 1, or 0 without
    /// memory
    static int FrameDataConvertProc(void* state, unsigned int tag, unsigned char* data,
                                    unsigned long length, CL_CONVERT_ACT action) noexcept;

    /// Quantization steps of extended JPEG, in zigzag order: these ones, or the usual luminance
    /// steps times `factor`, which counts as 1 unless it is above 0.
    void SetQuantizationMatrix(const unsigned short (&matrix)[64]) noexcept;
    void SetQuantizationFactor(float factor) noexcept;
    /// The quality of baseline JPEG. Its low byte serves luminance; no coder has one for chroma.
    void SetQualityFactor(float factor) noexcept;

private:
    [[nodiscard]] QUORVEX_MESSAGE Check(const FrameCoderRow* coder) const;
    void SetQuality() noexcept;
    /// The photometric texts that CompressFrameData() takes.
    [[nodiscard]] bool IsKnownGrey() const noexcept;
    [[nodiscard]] bool IsRgb() const;
    [[nodiscard]] bool HasWholeSource() const noexcept;
    [[nodiscard]] const unsigned char* SamplesForJpeg(std::vector<unsigned char>& swapped);
    [[nodiscard]] JpegCodingBlock DescribeJpeg() const noexcept;

    FrameDescription frame_;
    std::span<unsigned char> source_;
    bool keepsRgb_;
    bool halvesChroma_ = false;
    unsigned storedBits_ = 0;  ///< 0: all that are allocated
    bool hasColourTransform_ = true;
    std::array<std::uint16_t, 64> quantizationTable_{};
    std::uint8_t lumaQuality_ = 0;
    std::uint32_t chromaQuality_ = 0;
    std::vector<unsigned char> coded_;
};

}  // namespace quorvex
