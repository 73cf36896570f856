#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/limits.h"
#include "parser/frames/frame_events.h"
#include "parser/frames/frame_shape.h"
#include "parser/frames/stored_frame.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace quorvex {
namespace {

struct Pixels {
    QUORVEX_MESSAGE result = QVM_ERROR_FAILED_TO_DECOMPRESS;
    std::unique_ptr<unsigned char[]> block;
    unsigned long size = 0;
};

Pixels Decode(const FrameShape& shape, std::span<unsigned char> source) {
    Pixels pixels;
    _IMAGE_PROCESS_PARAM param = shape.DecodingParam();
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    pixels.result =
        processor.DecompressFrameData(&param, source.data(), source.size(), block, pixels.size, 0);
    pixels.block.reset(block);
    // A broken stream tells how far it came; the block behind that is zero, and as much the frame.
    pixels.size = std::max<unsigned long>(pixels.size, shape.DecodedFrameBytes());
    if (pixels.result == QVM_FRAME_COPIED) pixels.result = QVM_SUCCESS;
    return pixels;
}

void SwapWords(std::span<unsigned char> bytes) noexcept {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
}

/// Coded bytes must never pass for pixels, and uncoded ones have no decoder.
bool IsDecodable(TRANSFER_SYNTAX syntax, bool isEncoded) noexcept {
    return IsEncapsulated(syntax) ? HasDecoder(syntax) : !isEncoded;
}

}  // namespace

int CxDcmParser::GetFrameCount() const {
    if (header == nullptr) return 0;
    int count = 0;
    return header->GetValue(tag::kNumberOfFrames, count) == kDcmSuccess ? count : 1;
}

QUORVEX_MESSAGE CxDcmParser::CheckFrame(int frameIndex, TRANSFER_SYNTAX& syntax) const {
    ShowFrameEvents(0);
    if (header == nullptr) return QVM_ERROR_FAILED_TO_PARSE_DICOM;
    if (frameIndex < 0 || frameIndex >= GetFrameCount()) return QVM_ERROR_INVALID_FRAME_INDEX;
    if (frameIndex >= kMostFrames && !RefuseBy(Limit::kMostFrames))
        return QVM_ERROR_INVALID_FRAME_INDEX;
    const bool isKnown = header->GetTransferSyntax(syntax) == kDcmSuccess;
    return isKnown ? QVM_SUCCESS : QVM_ERROR_FAILED_TO_PARSE_DICOM;
}

QUORVEX_MESSAGE CxDcmParser::GetAFrame(int frameIndex, unsigned char*& data, unsigned long& size,
                                       unsigned long sourceLength) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                  [&] { return FetchFrame(frameIndex, data, size, sourceLength); });
}

QUORVEX_MESSAGE CxDcmParser::FetchFrame(int frameIndex, unsigned char*& data, unsigned long& size,
                                        unsigned long sourceLength) const {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    const QUORVEX_MESSAGE checked = CheckFrame(frameIndex, syntax);
    if (checked != QVM_SUCCESS) return checked;
    const auto shape = ReadFrameShape(*header, syntax);
    if (!shape || shape->bitsAllocated == 0) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;

    StoredFrame frame(frameIndex);
    const QUORVEX_MESSAGE collected =
        FramesLieInFile(syntax) ? CollectFromFile(*shape, frame) : CollectFromObject(*shape, frame);
    size = frame.isEncoded ? 0 : shape->NativeFrameBytes().value_or(0);
    if (collected != QVM_SUCCESS) return collected;
    if (!IsDecodable(syntax, frame.isEncoded)) return QVM_ERROR_FAILED_TO_DECOMPRESS;

    // Big-endian sources are swapped in place, and the file buffer must stay as it is.
    auto source = frame.Join(IsBigEndian(syntax));
    if (sourceLength != 0)
        source = source.first(std::min<std::size_t>(sourceLength, source.size()));
    Pixels pixels = Decode(*shape, source);
    if (pixels.result != QVM_SUCCESS) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    if (IsBigEndian(syntax) && shape->bitsAllocated == 16) {
        SwapWords({pixels.block.get(), pixels.size});
    }
    size = pixels.size;
    data = pixels.block.release();
    return QVM_SUCCESS;
}

/// A frame of 16-bit grey that is its own decoded form; empty for any other, and for one that cannot
/// be fetched.
std::span<const unsigned char> CxDcmParser::WordsInFile(int frameIndex) const {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    if (CheckFrame(frameIndex, syntax) != QVM_SUCCESS || IsEncapsulated(syntax) ||
        IsBigEndian(syntax) || !FramesLieInFile(syntax)) {
        return {};
    }
    const auto shape = ReadFrameShape(*header, syntax);
    if (!shape || shape->bitsAllocated != 16 || shape->samplesPerPixel != 1) return {};
    StoredFrame frame(frameIndex);
    if (CollectFromFile(*shape, frame) != QVM_SUCCESS || frame.isEncoded) return {};
    const unsigned char* const begin = frame.FirstPiece();
    const bool liesReady = frame.scratch.block == nullptr && frame.Join(false).data() == begin;
    const bool isAligned = reinterpret_cast<std::uintptr_t>(begin) % 2 == 0;
    if (!liesReady || !isAligned || frame.Length() != shape->DecodedFrameBytes()) return {};
    return {begin, frame.Length()};
}

QUORVEX_MESSAGE CxDcmParser::ViewFrame(int frameIndex, std::unique_ptr<unsigned char[]>& owner,
                                       std::span<const unsigned char>& frame) const {
    frame = WordsInFile(frameIndex);
    if (!frame.empty()) return QVM_SUCCESS;
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const QUORVEX_MESSAGE fetched = FetchFrame(frameIndex, data, size, 0);
    owner.reset(data);
    frame = {data, size};
    return fetched;
}

QUORVEX_MESSAGE CxDcmParser::GetAFrame(unsigned long offset, unsigned long size,
                                       unsigned char*& data) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        if (!fileBuffer || offset > fileSize || size > fileSize - offset) {
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        }
        HeapBlock block(size);
        std::copy_n(fileBuffer.get() + offset, size, block.Data());
        data = block.Release();
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CxDcmParser::GetAFrameOffsetSize(int frameIndex, unsigned long& offset,
                                                 unsigned long& size) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
                  [&] { return FindFrame(frameIndex, offset, size); });
}

QUORVEX_MESSAGE CxDcmParser::FindFrame(int frameIndex, unsigned long& offset,
                                       unsigned long& size) const {
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    const QUORVEX_MESSAGE checked = CheckFrame(frameIndex, syntax);
    if (checked != QVM_SUCCESS) return checked;
    const auto shape = ReadFrameShape(*header, syntax);
    if (!shape || !FramesLieInFile(syntax)) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    StoredFrame frame(frameIndex);
    const QUORVEX_MESSAGE collected = CollectFromFile(*shape, frame);
    if (collected != QVM_SUCCESS) return collected;
    const auto value = PixelDataValue(syntax);
    const std::size_t valueOffset = static_cast<std::size_t>(value.data() - fileBuffer.get());
    // Native frames follow each other, and may be shown from a block of the walk's own.
    offset = frame.isEncoded ? static_cast<std::size_t>(frame.FirstPiece() - fileBuffer.get())
                             : valueOffset + frame.LengthAhead();
    size = frame.Length();
    return QVM_SUCCESS;
}

}  // namespace quorvex
