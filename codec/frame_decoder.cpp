#include "codec/colour.h"
#include "codec/frame_block.h"
#include "codec/rle.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/undo.h"
#include "quorvex/CxImageProcessor.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

namespace quorvex {
namespace {

constexpr std::size_t kColourSamples = 3;

/// A caller's block that says its length, and is too short for the frame.
bool IsTooShort(const unsigned char* result, unsigned long resultSize,
                std::size_t frameBytes) noexcept {
    return result != nullptr && resultSize != 0 && resultSize < frameBytes;
}

}  // namespace

int CxImageProcessor::InitializeMembers(const _IMAGE_PROCESS_PARAM* param) {
    samplesPerPixel = param->samplesPerPixel;
    photometric = param->photometric;
    planarConfiguration = param->planarConfiguration;
    rows = param->rows;
    columns = param->columns;
    bitsAllocated = param->bitsAllocated;
    pixelRepresentation = param->pixelRepresentation;
    transferSyntax = param->transferSyntax;
    targetSyntax = param->targetSyntax;
    quality = param->quality;
    return 1;
}

bool CxImageProcessor::IsDecodable() const noexcept {
    const bool areSamplesKnown =
        samplesPerPixel == 1 || samplesPerPixel == 3 || samplesPerPixel == 4;
    return areSamplesKnown && rows != 0 && columns != 0 && bitsAllocated >= 8;
}

std::optional<std::size_t> CxImageProcessor::FrameBytes(std::size_t bytesPerSample) const noexcept {
    return CheckedProduct(bytesPerSample, rows, columns, samplesPerPixel);
}

QUORVEX_MESSAGE CxImageProcessor::DecompressFrameData(_IMAGE_PROCESS_PARAM* param,
                                                      unsigned char* source,
                                                      unsigned long sourceLength,
                                                      unsigned char*& result,
                                                      unsigned long& resultSize, int unsignedOnly) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        if (param == nullptr || (source == nullptr && sourceLength != 0)) {
            return QVM_ERROR_NULL_SOURCE;
        }
        // Where memory runs out, an operation that calls this one never sees the block.
        UndoUnlessKept block([&, former = result] {
            if (former == nullptr) GiveBackBlock(std::exchange(result, nullptr), allocMode);
        });
        const auto answer =
            Decompress(*param, source, sourceLength, result, resultSize, unsignedOnly);
        block.Keep();
        return answer;
    });
}

QUORVEX_MESSAGE CxImageProcessor::Decompress(const _IMAGE_PROCESS_PARAM& param,
                                             unsigned char* source, unsigned long sourceLength,
                                             unsigned char*& result, unsigned long& resultSize,
                                             int unsignedOnly) {
    InitializeMembers(&param);
    if (transferSyntax == kSyntaxNone) return QVM_ERROR_INVALID_SOURCE_SYNTAX;
    if (!HasDecoder(SourceSyntax())) {
        return samplesPerPixel == kColourSamples
                   ? CopyColourFrame(source, sourceLength, result, resultSize)
                   : CopyFrame(source, sourceLength, result, resultSize);
    }
    if (!IsDecodable()) return QVM_ERROR_INVALID_IMAGE_FORMAT;
    return DecodeFrame(source, sourceLength, result, resultSize, unsignedOnly);
}

/// Samples of 32 bits count as two bytes wherever a caller's block or a source of that size says
/// so.
std::size_t CxImageProcessor::SampleBytesFor(std::size_t available) const noexcept {
    if (bitsAllocated != 32) return BytesPerSample();
    const auto narrowFrame = FrameBytes(BytesPerSample());
    return narrowFrame && available > *narrowFrame ? 4 : BytesPerSample();
}

QUORVEX_MESSAGE CxImageProcessor::CopyColourFrame(const unsigned char* source,
                                                  unsigned long sourceLength,
                                                  unsigned char*& result,
                                                  unsigned long& resultSize) {
    const std::size_t sampleBytes =
        result == nullptr ? SampleBytesFor(sourceLength) : SampleBytesFor(resultSize);
    const auto frameBytes = FrameBytes(sampleBytes);
    if (!IsPlausiblePicture(frameBytes, sourceLength) ||
        IsTooShort(result, resultSize, *frameBytes)) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    const FrameBlock block(result, *frameBytes, allocMode);
    if (block.IsNew()) resultSize = *frameBytes;
    const ColourFrame frame = DescribeColour(sampleBytes);
    if (!ConvertToRgb(frame, {source, sourceLength}, block.Bytes())) block.ClearBehind(0);
    return QVM_FRAME_COPIED;
}

QUORVEX_MESSAGE CxImageProcessor::CopyFrame(unsigned char* source, unsigned long sourceLength,
                                            unsigned char*& result, unsigned long& resultSize) {
    const auto frameBytes = FrameBytes(SampleBytesFor(sourceLength));
    if (!IsPlausiblePicture(frameBytes, sourceLength)) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    std::size_t size = std::max<std::size_t>(*frameBytes, sourceLength);
    if (result != nullptr) size = resultSize != 0 ? resultSize : *frameBytes;
    const FrameBlock block(result, size, allocMode);
    if (block.IsNew()) resultSize = size;
    if (IsBigEndian(SourceSyntax())) SwapByte(source, sourceLength);
    const std::size_t count = std::min<std::size_t>(size, sourceLength);
    if (count != 0) std::memcpy(block.Bytes().data(), source, count);
    block.ClearBehind(count);
    return QVM_FRAME_COPIED;
}

QUORVEX_MESSAGE CxImageProcessor::DecodeFrame(unsigned char* source, unsigned long sourceLength,
                                              unsigned char*& result, unsigned long& resultSize,
                                              int unsignedOnly) {
    const bool isWide = bitsAllocated == 32 && DecoderOf(SourceSyntax()) == FrameDecoder::kRle;
    const std::size_t sampleBytes =
        isWide && (result == nullptr || SampleBytesFor(resultSize) == 4) ? 4 : BytesPerSample();
    const auto frameBytes = FrameBytes(sampleBytes);
    if (!IsPlausiblePicture(frameBytes, sourceLength) ||
        IsTooShort(result, resultSize, *frameBytes)) {
        return QVM_ERROR_FAILED_TO_DECOMPRESS;
    }
    const FrameBlock block(result, *frameBytes, allocMode);
    resultSize = *frameBytes;
    const FrameDecoder decoder = DecoderOf(SourceSyntax());
    if (decoder == FrameDecoder::kRle) return DecodeRleFrame(source, sourceLength, block);
    const bool isJpeg2000 = decoder == FrameDecoder::kJpeg2000;
    const int isDone =
        isJpeg2000 ? DecompressJ2KData(source, sourceLength, result, resultSize, unsignedOnly)
                   : DecompressJpegData(source, sourceLength, result, resultSize);
    block.ClearBehind(isDone != 0 ? resultSize : 0);
    return isDone != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS;
}

QUORVEX_MESSAGE CxImageProcessor::DecodeRleFrame(const unsigned char* source,
                                                 unsigned long sourceLength,
                                                 const FrameBlock& block) {
    if (samplesPerPixel == kColourSamples) {
        DecompressColourRle({source, sourceLength}, block);
        return QVM_SUCCESS;
    }
    const int isWhole = DecompressRLEData(source, sourceLength, block.Bytes());
    return isWhole != 0 ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_DECOMPRESS;
}

RleLayout CxImageProcessor::DescribeRle(std::size_t frameBytes) const noexcept {
    const std::size_t pixels = std::size_t{rows} * columns;
    return {.pixels = pixels,
            .samplesPerPixel = samplesPerPixel,
            .bytesPerSample = frameBytes / (pixels * samplesPerPixel),
            .isPlanar = planarConfiguration == 1};
}

int CxImageProcessor::DecompressRLEData(const unsigned char* source, unsigned long sourceLength,
                                        std::span<unsigned char> frame) const {
    return DecodeRle({source, sourceLength}, DescribeRle(frame.size()), frame) ? 1 : 0;
}

/// A damaged colour frame is shown as far as it goes.
void CxImageProcessor::DecompressColourRle(std::span<const unsigned char> source,
                                           const FrameBlock& block) const {
    const RleLayout layout = DescribeRle(block.Bytes().size());
    const ColourFrame colour = DescribeColour(layout.bytesPerSample);
    if (colour.form == ColourForm::kUnknown) return block.ClearBehind(0);
    DecodeRleColour(source, layout, colour, block.Bytes());
}

ColourFrame CxImageProcessor::DescribeColour(std::size_t bytesPerSample) const {
    return {ColourFormOf(photometric, planarConfiguration, bytesPerSample), columns, rows,
            bytesPerSample};
}

QUORVEX_MESSAGE CxImageProcessor::ConvertYBRToRGB(_IMAGE_PROCESS_PARAM* param,
                                                  unsigned char* source, unsigned char*& result) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        if (param == nullptr) return QVM_ERROR_NULL_SOURCE;
        InitializeMembers(param);
        if (samplesPerPixel != kColourSamples) return QVM_ERROR_NOT_COLOR_IMAGE;
        if (source == nullptr || result == nullptr) return QVM_ERROR_NULL_SOURCE;
        const ColourFrame frame = DescribeColour(BytesPerSample());
        ConvertToRgb(frame, {source, frame.StoredBytes()}, {result, frame.RgbBytes()});
        return QVM_SUCCESS;
    });
}

void CxImageProcessor::SwapByte(unsigned char* data, unsigned long length) noexcept {
    for (unsigned long i = 0; i + 1 < length; i += 2) std::swap(data[i], data[i + 1]);
}

}  // namespace quorvex
