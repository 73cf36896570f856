#include "codec/frame_decoder.h"

#include "codec/native/fragment_pixels.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/engines/deflate/deflate_engine.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quorvex {
namespace {

/// What decodes the frames of one coding.
struct DecoderRow {
    FrameCoding coding = FrameCoding::kNone;
    int (FrameDecoder::*decode)() = nullptr;
    bool givesLongWords = false;  ///< samples of 32 bits keep their four bytes
    bool takesBits = false;       ///< samples of 1 bit, which get a byte each
};

constexpr DecoderRow kDecoders[] = {
    {FrameCoding::kRle, &FrameDecoder::DecompressRLEData, true},
    {FrameCoding::kJpeg, &FrameDecoder::DecompressJpegData},
    {FrameCoding::kJpegLs, &FrameDecoder::DecompressJpegLsData, true},
    {FrameCoding::kJpeg2000, &FrameDecoder::DecompressJ2KData, false, true},
    {FrameCoding::kJpegXl, &FrameDecoder::DecompressJpegXlData, false, true},
};

/// Null for frames that are stored as they are.
const DecoderRow* DecoderOf(TRANSFER_SYNTAX syntax) noexcept {
    const auto* row = std::ranges::find(kDecoders, CodingOf(syntax), &DecoderRow::coding);
    return row == std::end(kDecoders) ? nullptr : row;
}

/// A caller's block that says its length, and is too short for the frame.
bool IsTooShort(const unsigned char* result, unsigned long resultSize,
                std::size_t frameBytes) noexcept {
    return result != nullptr && resultSize != 0 && resultSize < frameBytes;
}

}  // namespace

bool FrameDecoder::IsDecodable(bool takesBits) const noexcept {
    const bool areSamplesKnown =
        frame_.samplesPerPixel == 1 || frame_.samplesPerPixel == 3 || frame_.samplesPerPixel == 4;
    const bool areBitsKnown = frame_.bitsAllocated >= 8 || (takesBits && frame_.bitsAllocated == 1);
    return areSamplesKnown && frame_.Pixels() != 0 && areBitsKnown;
}

ColourFrame FrameDecoder::DescribeColour(std::size_t frameBytes) const noexcept {
    const std::size_t samples = frame_.Pixels() * frame_.samplesPerPixel;
    ColourFrame colour = frame_.DescribeColour(samples == 0 ? 1 : frameBytes / samples);
    // RLE segments are whole planes; the established rules read them as groups all the same.
    const bool isRle = CodingOf(frame_.transferSyntax) == FrameCoding::kRle;
    if (isRle && colour.isExact && colour.form == ColourForm::kPartial422)
        colour.form = ColourForm::kPartialPlanes;
    return colour;
}

QUORVEX_MESSAGE FrameDecoder::Decode(unsigned char*& result, unsigned long& resultSize) {
    const auto cancellation = Cancellation::OfThisThread();
    cancellation.ThrowIfAsked();
    const FrameProgress progress;
    if (frame_.transferSyntax == kSyntaxNone) return QVM_ERROR_INVALID_SOURCE_SYNTAX;
    const DecoderRow* decoder = DecoderOf(frame_.transferSyntax);
    if (decoder == nullptr && BecomesNative(frame_)) {
        const auto code = DecodeFragment(result, resultSize);
        if (code == QVM_SUCCESS) progress.Finish();
        return code;
    }
    if (decoder == nullptr) {
        return frame_.IsColour() ? CopyColourFrame(result, resultSize)
                                 : CopyFrame(result, resultSize);
    }
    if (!IsDecodable(decoder->takesBits)) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    const bool isWide = decoder->givesLongWords && frame_.bitsAllocated == 32 &&
                        (result == nullptr || frame_.SampleBytesFor(resultSize) == 4);
    const auto frameBytes = frame_.FrameBytes(isWide ? 4 : frame_.BytesPerSample());
    if (!IsPlausiblePicture(frameBytes, source_.size()) ||
        IsTooShort(result, resultSize, *frameBytes)) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    const bool isConverted = frame_.IsColour() && decoder->coding == FrameCoding::kRle;
    if (isConverted && !IsShown(DescribeColour(*frameBytes))) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const FrameBlock block(result, *frameBytes, allocMode_);
    target_ = block.Bytes();
    resultSize = *frameBytes;
    told_ = *frameBytes;
    const bool isDone = (this->*decoder->decode)() != 0;
    if (isDone) progress.Finish();
    cancellation.ThrowIfAsked();  // what is there of the frame could pass for a damaged one
    resultSize = told_;
    block.ClearBehind(written_);
    return isDone ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS;
}

bool FrameDecoder::IsFrame(std::size_t storedBytes) const noexcept {
    const std::size_t sampleBytes = frame_.SampleBytesFor(storedBytes);
    const bool isPlain = !frame_.IsColour() ||
                         frame_.DescribeColour(sampleBytes).form == ColourForm::kRgbInterleaved;
    return isPlain && frame_.FrameBytes(sampleBytes) == storedBytes;
}

QUORVEX_MESSAGE FrameDecoder::InflateWhole(unsigned char*& result, unsigned long& resultSize,
                                           std::size_t frameBytes) {
    const FrameBlock block(result, frameBytes, allocMode_);
    if (!InflateFrame(source_, block.Bytes())) {
        GiveBackBlock(std::exchange(result, nullptr), allocMode_);
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    resultSize = frameBytes;
    isWhole_ = true;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE FrameDecoder::DecodeFragment(unsigned char*& result, unsigned long& resultSize) {
    const auto bytes = BytesOutOfFragment(frame_, source_.size());
    const bool isInflated = CodingOf(frame_.transferSyntax) == FrameCoding::kDeflated;
    if (isInflated && result == nullptr && bytes && IsFrame(*bytes))
        return InflateWhole(result, resultSize, *bytes);
    const auto pixels = TakeOutOfFragment(frame_, source_);
    if (!pixels) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    frame_.transferSyntax = kExplicitLittleEndian;
    source_ = pixels->block.Bytes();
    const auto copied =
        frame_.IsColour() ? CopyColourFrame(result, resultSize) : CopyFrame(result, resultSize);
    return copied == QVM_FRAME_COPIED ? QVM_SUCCESS : copied;
}

QUORVEX_MESSAGE FrameDecoder::CopyColourFrame(unsigned char*& result, unsigned long& resultSize) {
    const std::size_t sampleBytes =
        frame_.SampleBytesFor(result == nullptr ? source_.size() : resultSize);
    const auto frameBytes = frame_.FrameBytes(sampleBytes);
    if (!IsPlausiblePicture(frameBytes, source_.size()) ||
        IsTooShort(result, resultSize, *frameBytes)) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    const ColourFrame colour = DescribeColour(*frameBytes);
    if (!IsShown(colour)) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const FrameBlock block(result, *frameBytes, allocMode_);
    if (block.IsNew()) resultSize = *frameBytes;
    if (!ConvertToRgb(colour, source_, block.Bytes())) block.ClearBehind(0);
    isWhole_ = source_.size() >= colour.StoredBytes();
    return QVM_FRAME_COPIED;
}

QUORVEX_MESSAGE FrameDecoder::CopyFrame(unsigned char*& result, unsigned long& resultSize) {
    const auto frameBytes = frame_.FrameBytes(frame_.SampleBytesFor(source_.size()));
    if (!IsPlausiblePicture(frameBytes, source_.size()) ||
        IsTooShort(result, resultSize, std::min(*frameBytes, frame_.PackedBytes()))) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    std::size_t size = std::max(*frameBytes, source_.size());
    if (result != nullptr) size = resultSize != 0 ? resultSize : *frameBytes;
    const FrameBlock block(result, size, allocMode_);
    if (block.IsNew()) resultSize = size;
    if (IsBigEndian(frame_.transferSyntax)) SwapByte(source_.data(), source_.size());
    const std::size_t count = std::min(size, source_.size());
    if (count != 0) std::memcpy(block.Bytes().data(), source_.data(), count);
    block.ClearBehind(count);
    isWhole_ = source_.size() >= frame_.PackedBytes();
    return QVM_FRAME_COPIED;
}

}  // namespace quorvex
