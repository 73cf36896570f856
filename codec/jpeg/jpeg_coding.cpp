#include "codec/frame_coder.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/jpeg/jpeg_engine.h"
#include "foundation/types/answer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quorvex {
namespace {

/// Where the coded bytes of one frame go.
struct CompressOutputState {
    std::vector<unsigned char>& coded;  ///< grows where coded data outgrow the frame
    std::size_t written = 0;
    std::size_t startPosition = 0;
    std::size_t codedSize = 0;
};

/// Luminance steps in zigzag order (ITU-T T.81 Table K.1).
constexpr std::array<std::uint16_t, 64> kDefaultQuantization = {
    16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};

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
    coding.halvesChroma = halvesChroma_;
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

// A coder learns from a 0 that there is no memory for its output.
int FrameCoder::FrameDataConvertProc(void* state, unsigned int /*tag*/, unsigned char* data,
                                     unsigned long length, CL_CONVERT_ACT action) noexcept {
    auto& output = *static_cast<CompressOutputState*>(state);
    return Contain(0, [&] {
        if (action == kConvertStart) output.startPosition = output.written;
        if (action == kConvertBlock) {
            output.coded.insert(output.coded.end(), data, data + length);
            output.written += length;
        }
        if (action == kConvertEnd) output.codedSize = output.written;
        return 1;
    });
}

void FrameCoder::SetQuantizationMatrix(const unsigned short (&matrix)[64]) noexcept {
    std::ranges::copy(matrix, quantizationTable_.begin());
}

void FrameCoder::SetQuantizationFactor(float factor) noexcept {
    constexpr float kLargestStep = 32767;  // what coders take
    const float used = factor > 0 ? factor : 1;
    for (std::size_t i = 0; i < quantizationTable_.size(); ++i) {
        const float step = static_cast<float>(kDefaultQuantization[i]) * used;
        quantizationTable_[i] = static_cast<std::uint16_t>(std::min(step, kLargestStep));
    }
}

void FrameCoder::SetQualityFactor(float factor) noexcept {
    chromaQuality_ = static_cast<std::uint32_t>(factor);
    lumaQuality_ = static_cast<std::uint8_t>(chromaQuality_ & 0xFF);
}

}  // namespace quorvex
