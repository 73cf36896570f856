#include "codec/blind_decoding.h"
#include "codec/frame_block.h"
#include "codec/frame_coder.h"
#include "codec/frame_decoder.h"
#include "codec/size_and_flip.h"
#include "foundation/engines/jpeg2000/jpeg2000_engine.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/undo.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <span>
#include <utility>

namespace quorvex {
namespace {

constexpr std::int32_t kWidthUnit = 4;

/// Hands the caller a copy of the coded data, which has their length and no more.
void HandOver(std::span<const unsigned char> coded, unsigned char*& result,
              unsigned long& resultSize) {
    HeapBlock block(coded.size());
    std::ranges::copy(coded, block.Data());
    result = block.Release();
    resultSize = coded.size();
}

QUORVEX_MESSAGE AnswerBlindly(DecodeBlindly decode, const unsigned char* source,
                              unsigned long sourceLength, const BlindPicture& picture) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        picture.resultSize = 0;
        if (source == nullptr) return QVM_ERROR_CANNOT_OPEN_STREAM;
        return decode({source, sourceLength}, picture);
    });
}

bool IsResizable(const FrameDescription& frame, CSize size) noexcept {
    return size.cx >= 1 && size.cy >= 1 && size.cx % kWidthUnit == 0 && frame.Pixels() != 0;
}

}  // namespace

CxImageProcessor::CxImageProcessor() noexcept {
    PegasusLibInit(0);
}

CxImageProcessor::CxImageProcessor(const CxImageProcessor& other) noexcept
    : allocMode_(other.allocMode_), keepsRgb_(other.keepsRgb_), reserved_(other.reserved_) {
    PegasusLibInit(0);
}

CxImageProcessor& CxImageProcessor::operator=(const CxImageProcessor&) noexcept = default;

CxImageProcessor::~CxImageProcessor() {
    PegasusLibTerm();
}

void CxImageProcessor::SetAllocMode(int mode) noexcept {
    allocMode_ = mode;
}

int CxImageProcessor::GetAllocMode() const noexcept {
    return allocMode_;
}

void CxImageProcessor::SetKeepsRgb(bool keeps) noexcept {
    keepsRgb_ = keeps ? 1 : 0;
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
            if (former == nullptr) GiveBackBlock(std::exchange(result, nullptr), allocMode_);
        });
        FrameDecoder decoder(*param, {source, sourceLength}, allocMode_, unsignedOnly != 0);
        const QUORVEX_MESSAGE answer = decoder.Decode(result, resultSize);
        block.Keep();
        return answer;
    });
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJPEGData(
    unsigned char* source, unsigned long sourceLength, unsigned char*& result,
    unsigned long& resultSize, unsigned short& columns, unsigned short& rows,
    unsigned short& samples, unsigned short& bits, unsigned short& bytesPerPixel) {
    return AnswerBlindly(DecodeBlindJpeg, source, sourceLength,
                         {result, resultSize, columns, rows, samples, bits, bytesPerPixel});
}

QUORVEX_MESSAGE CxImageProcessor::DecompressBlindJP2KData(
    unsigned char* source, unsigned long sourceLength, unsigned char*& result,
    unsigned long& resultSize, unsigned short& width, unsigned short& height,
    unsigned short& samples, unsigned short& bits, unsigned short& bytesPerPixel) {
    return AnswerBlindly(DecodeBlindJpeg2000, source, sourceLength,
                         {result, resultSize, width, height, samples, bits, bytesPerPixel});
}

QUORVEX_MESSAGE CxImageProcessor::CompressFrameData(_IMAGE_PROCESS_PARAM* param,
                                                    unsigned char* source,
                                                    unsigned long sourceLength,
                                                    unsigned char*& result,
                                                    unsigned long& resultSize) {
    result = nullptr;
    resultSize = 0;
    return Answer(QVM_ERROR_FAILED_TO_COMPRESS, [&] {
        if (param == nullptr) return QVM_ERROR_NULL_SOURCE;
        FrameCoder coder(*param, {source, sourceLength}, keepsRgb_ != 0);
        const QUORVEX_MESSAGE answer = coder.Code();
        if (answer == QVM_SUCCESS) HandOver(coder.Coded(), result, resultSize);
        return answer;
    });
}

QUORVEX_MESSAGE CxImageProcessor::CompressRawImage2Jp2File(_IMAGE_PROCESS_PARAM* param,
                                                           unsigned char* source,
                                                           unsigned long sourceLength,
                                                           unsigned char*& result,
                                                           unsigned long& resultSize) {
    result = nullptr;
    resultSize = 0;
    return Answer(QVM_SUCCESS, [&] {
        if (param == nullptr || source == nullptr) return QVM_SUCCESS;
        FrameCoder coder(*param, {source, sourceLength}, keepsRgb_ != 0);
        const bool isCoded = coder.CompressRawData2J2K() == 1 && !coder.Coded().empty();
        if (isCoded) HandOver(coder.Coded(), result, resultSize);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxImageProcessor::ConvertYBRToRGB(_IMAGE_PROCESS_PARAM* param,
                                                  unsigned char* source, unsigned char*& result) {
    return Answer(QVM_ERROR_FAILED_TO_DECOMPRESS, [&] {
        if (param == nullptr) return QVM_ERROR_NULL_SOURCE;
        const FrameDescription frame(*param);
        if (!frame.IsColour()) return QVM_ERROR_NOT_COLOR_IMAGE;
        if (source == nullptr || result == nullptr) return QVM_ERROR_NULL_SOURCE;
        const ColourFrame colour = frame.DescribeColour(frame.BytesPerSample());
        ConvertToRgb(colour, {source, colour.StoredBytes()}, {result, colour.RgbBytes()});
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxImageProcessor::ResizeImage(_IMAGE_PROCESS_PARAM* param, unsigned char* source,
                                              unsigned char*& result, unsigned long& resultSize,
                                              CSize size) {
    return Answer(QVM_ERROR_INVALID_OUTPUT_SIZE, [&] {
        if (param == nullptr || source == nullptr) return QVM_ERROR_NULL_SOURCE;
        const FrameDescription frame(*param);
        if (!IsResizable(frame, size)) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        const int bytesPerPixel = frame.bitsAllocated * frame.samplesPerPixel / 8;
        const auto bytes = CheckedProduct(bytesPerPixel, size.cx, size.cy);
        if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        HeapBlock block(*bytes);
        std::ranges::fill(block.Bytes(), static_cast<unsigned char>(0));
        const unsigned samples = frame.samplesPerPixel;
        const bool areSamplesKnown = samples == 1 || samples == 3 || samples == 4;
        if (areSamplesKnown) ResizeFrame(frame, source, block.Bytes(), size, bytesPerPixel);
        resultSize = *bytes;
        result = block.Release();
        return areSamplesKnown ? QVM_SUCCESS : QVM_ERROR_INVALID_SAMPLES_PER_PIXEL;
    });
}

QUORVEX_MESSAGE CxImageProcessor::FlipColorImage(_IMAGE_PROCESS_PARAM* /*param*/,
                                                 unsigned char* /*source*/,
                                                 unsigned char*& /*result*/) {
    return QVM_SUCCESS;
}

}  // namespace quorvex
