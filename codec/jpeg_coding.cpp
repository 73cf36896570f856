#include "codec/jpeg_coding.h"

#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg/jpeg_engine.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <span>
#include <vector>

namespace quorvex {
namespace {

using ConvertProcedure = int (*)(void*, unsigned int, unsigned char*, unsigned long,
                                 CL_CONVERT_ACT);

/// What the engine's write callback works with.
struct JpegWriteContext {
    JpegWriteContext(CompressOutputState& state, ConvertProcedure procedure,
                     CxImageProcessor& owner) noexcept
        : output(&state), convert(procedure), processor(&owner) {}

    [[nodiscard]] int Tell(unsigned long length, CL_CONVERT_ACT action) {
        return convert(output, tag, writeBuffer, length, action) != 0 ? 0 : 1;
    }

    unsigned char writeBuffer[kJpegBufferBytes];
    CompressOutputState* output;
    unsigned int tag = 1;
    ConvertProcedure convert;
    CxImageProcessor* processor;
};

int WriteJpegOutput(int event, void* user, unsigned char** buffer, std::uint16_t* length) {
    auto& context = *static_cast<JpegWriteContext*>(user);
    switch (event) {
        case kJpegWriteFirst:
            *buffer = context.writeBuffer;
            *length = kJpegBufferBytes;
            return context.Tell(0, kConvertStart);
        case kJpegWriteBlock:
            return context.Tell(*length, kConvertBlock);
        case kJpegWriteEnd:
            *buffer = nullptr;
            return context.Tell(0, kConvertEnd);
        default:
            return 0;
    }
}

/// A whole picture through a coder: lossless ones pass over their rows twice.
bool CodeInPasses(const JpegCodingBlock& coding, JpegWriteContext& context,
                  const unsigned char* source) noexcept {
    JpegCompressionHandle handle;
    bool isCoded = init_compression(handle, coding, &context, WriteJpegOutput) == 0;
    isCoded = isCoded && icompress(handle, source, coding.rows) == 0;
    if (coding.process == JpegProcess::kLossless) {
        isCoded = isCoded && icompress(handle, source, coding.rows) == 0;
    }
    close_compression(handle);
    return isCoded;
}

/// Lossy coders take 0 for the least: a negative sample would come back as a bright one.
bool HasNegativeBytes(std::span<const unsigned char> samples) noexcept {
    return std::ranges::any_of(samples, [](unsigned char byte) { return byte > 127; });
}

std::uint8_t LosslessPrecision(unsigned bitsAllocated) noexcept {
    return static_cast<std::uint8_t>(std::clamp(bitsAllocated, 8U, 255U));
}

}  // namespace

/// The samples in the order of the coders: interleaved, and in this machine's byte order. Null where
/// they cannot be brought to it.
const unsigned char* CxImageProcessor::SamplesForJpeg(unsigned char* source,
                                                      unsigned long sourceLength,
                                                      std::vector<unsigned char>& swapped) const {
    const bool isColour = IsRgbPhotometric();
    if (samplesPerPixel != (isColour ? 3 : 1)) return nullptr;
    if (isColour && planarConfiguration == 1 && Interleave_RGB_Data(source, sourceLength) == 0) {
        return nullptr;
    }
    if (!IsBigEndian(SourceSyntax()) || BytesPerSample() == 1) return source;
    swapped.assign(source, source + FrameBytes(BytesPerSample()).value_or(0));
    SwapByte(swapped.data(), swapped.size());
    return swapped.data();
}

JpegCodingBlock CxImageProcessor::DescribeJpeg() const noexcept {
    return {.columns = columns,
            .rows = rows,
            .samples = static_cast<std::uint8_t>(samplesPerPixel),
            .bytesPerSample = static_cast<std::uint8_t>(BytesPerSample())};
}

int CxImageProcessor::CompressRawData2Jpeg_50_70(unsigned char* source, unsigned long sourceLength,
                                                 std::vector<unsigned char>& coded,
                                                 ConvertProcedure convert) {
    constexpr std::uint8_t kLosslessQuality = 25;
    const bool isLossless = targetSyntax == kXferJpegLossless;
    if (!isLossless && targetSyntax != kXferJpegBaseline) return 0;
    std::vector<unsigned char> swapped;
    const unsigned char* samples = SamplesForJpeg(source, sourceLength, swapped);
    if (samples == nullptr) return 0;
    const std::size_t frameBytes = FrameBytes(BytesPerSample()).value_or(0);
    if (!isLossless && pixelRepresentation == 1 && HasNegativeBytes({samples, frameBytes}))
        return 0;
    CompressOutputState output{.coded = coded};
    JpegWriteContext context(output, convert, *this);
    JpegCodingBlock coding = DescribeJpeg();
    coding.process = isLossless ? JpegProcess::kLossless : JpegProcess::kBaseline;
    coding.precision = isLossless ? LosslessPrecision(bitsAllocated) : std::uint8_t{8};
    coding.quality = isLossless ? kLosslessQuality : lumaQuality;
    coding.keepsRgb = keepsRgb;
    coding.write = WriteJpegOutput;
    coding.writeContext = &context;
    JpegCompressionHandle handle;
    return comp_im_buf(handle, coding, samples, rows) == 0 ? 1 : 0;
}

int CxImageProcessor::CompressRawData2Jpeg_51_70(unsigned char* source, unsigned long sourceLength,
                                                 std::vector<unsigned char>& coded,
                                                 ConvertProcedure convert) {
    constexpr std::uint8_t kExtendedPrecision = 12;
    const bool isLossless = targetSyntax == kXferJpegLossless;
    if (!isLossless && targetSyntax != kXferJpegExtended) return 0;
    if (!isLossless && bitsAllocated < kExtendedPrecision) return 0;
    std::vector<unsigned char> swapped;
    const unsigned char* samples = SamplesForJpeg(source, sourceLength, swapped);
    if (samples == nullptr) return 0;
    CompressOutputState output{.coded = coded};
    JpegWriteContext context(output, convert, *this);
    JpegCodingBlock coding = DescribeJpeg();
    coding.process = isLossless ? JpegProcess::kLossless : JpegProcess::kExtended;
    coding.precision = isLossless ? LosslessPrecision(bitsAllocated) : kExtendedPrecision;
    if (!isLossless) coding.quantizationTable = &quantizationTable;
    return CodeInPasses(coding, context, samples) ? 1 : 0;
}

}  // namespace quorvex
