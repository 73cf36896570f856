#include "codec/jpeg/jpeg_coding.h"

#include "codec/frame_coder.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg/jpeg_engine.h"

#include <algorithm>
#include <span>
#include <vector>

namespace quorvex {
namespace {

/// What the engine's write callback works with.
struct JpegWriteContext {
    explicit JpegWriteContext(CompressOutputState& state) noexcept : output(&state) {}

    [[nodiscard]] int Tell(unsigned long length, CL_CONVERT_ACT action) noexcept {
        constexpr unsigned int kTag = 1;
        return FrameCoder::FrameDataConvertProc(output, kTag, writeBuffer, length, action) != 0 ? 0
                                                                                                : 1;
    }

    unsigned char writeBuffer[kJpegBufferBytes];
    CompressOutputState* output;
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

/// The samples in the order of the coders: interleaved, and in this machine's byte order. Null
/// where they cannot be brought to it.
const unsigned char* FrameCoder::SamplesForJpeg(std::vector<unsigned char>& swapped) {
    const bool isColour = IsRgb();
    if (frame_.samplesPerPixel != (isColour ? kColourSamples : 1)) return nullptr;
    if (isColour && frame_.planarConfiguration == 1 &&
        Interleave_RGB_Data(source_.data(), source_.size()) == 0) {
        return nullptr;
    }
    if (!IsBigEndian(frame_.transferSyntax) || frame_.BytesPerSample() == 1) return source_.data();
    const auto frame = source_.first(frame_.FrameBytes(frame_.BytesPerSample()).value_or(0));
    swapped.assign(frame.begin(), frame.end());
    SwapByte(swapped.data(), swapped.size());
    return swapped.data();
}

JpegCodingBlock FrameCoder::DescribeJpeg() const noexcept {
    const bool isLossless = frame_.targetSyntax == kXferJpegLossless;
    return {.columns = frame_.columns,
            .rows = frame_.rows,
            .samples = static_cast<std::uint8_t>(frame_.samplesPerPixel),
            .bytesPerSample = static_cast<std::uint8_t>(frame_.BytesPerSample()),
            .process = isLossless ? JpegProcess::kLossless : JpegProcess::kBaseline,
            .precision = isLossless ? LosslessPrecision(frame_.bitsAllocated) : std::uint8_t{8}};
}

int FrameCoder::CompressRawData2Jpeg_50_70() {
    constexpr std::uint8_t kLosslessQuality = 25;
    const bool isLossless = frame_.targetSyntax == kXferJpegLossless;
    std::vector<unsigned char> swapped;
    const unsigned char* samples = SamplesForJpeg(swapped);
    if (samples == nullptr) return 0;
    const std::size_t frameBytes = frame_.FrameBytes(frame_.BytesPerSample()).value_or(0);
    if (!isLossless && frame_.pixelRepresentation == 1 && HasNegativeBytes({samples, frameBytes}))
        return 0;
    CompressOutputState output{.coded = coded_};
    JpegWriteContext context(output);
    JpegCodingBlock coding = DescribeJpeg();
    coding.quality = isLossless ? kLosslessQuality : lumaQuality_;
    coding.keepsRgb = keepsRgb_;
    coding.write = WriteJpegOutput;
    coding.writeContext = &context;
    JpegCompressionHandle handle;
    return comp_im_buf(handle, coding, samples, frame_.rows) == 0 ? 1 : 0;
}

int FrameCoder::CompressRawData2Jpeg_51_70() {
    constexpr std::uint8_t kExtendedPrecision = 12;
    const bool isExtended = frame_.targetSyntax == kXferJpegExtended;
    if (isExtended && frame_.bitsAllocated < kExtendedPrecision) return 0;
    std::vector<unsigned char> swapped;
    const unsigned char* samples = SamplesForJpeg(swapped);
    if (samples == nullptr) return 0;
    CompressOutputState output{.coded = coded_};
    JpegWriteContext context(output);
    JpegCodingBlock coding = DescribeJpeg();
    if (isExtended) {
        coding.process = JpegProcess::kExtended;
        coding.precision = kExtendedPrecision;
        coding.quantizationTable = &quantizationTable_;
    }
    return CodeInPasses(coding, context, samples) ? 1 : 0;
}

}  // namespace quorvex
