#include "maker/pixels/plain_frames.h"

#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "parser/palette/palette_image.h"
#include "quorvex/CxImageProcessor.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvex {
namespace {

void DropRaw(_DCM_FRAME_BUFFER& frame) noexcept {
    delete[] std::exchange(frame.rawData, nullptr);
    frame.rawLength = 0;
}

void SetProcessed(_DCM_FRAME_BUFFER& frame, unsigned char* data, unsigned long length) noexcept {
    delete[] std::exchange(frame.processedData, data);
    frame.processedLength = length;
}

/// No copy: the block changes hands.
void TakeAsPlain(_DCM_FRAME_BUFFER& frame) noexcept {
    const unsigned long length = std::exchange(frame.rawLength, 0);
    SetProcessed(frame, std::exchange(frame.rawData, nullptr), length);
}

QUORVEX_MESSAGE Decode(const PixelDraft& draft, _DCM_FRAME_BUFFER& frame) {
    _IMAGE_PROCESS_PARAM param = draft.incoming.ProcessParam();
    param.transferSyntax = static_cast<std::uint32_t>(draft.format.transferSyntax);
    param.planarConfiguration = kUnset;
    param.targetSyntax = kXferUncompressed;
    unsigned char* plain = nullptr;
    unsigned long length = 0;
    const auto result = CxImageProcessor().DecompressFrameData(&param, frame.rawData,
                                                               frame.rawLength, plain, length, 0);
    std::unique_ptr<unsigned char[]> block(plain);
    if (result != QVM_SUCCESS && result != QVM_FRAME_COPIED) return QVM_ERROR_FAILED_TO_DECOMPRESS;
    SetProcessed(frame, block.release(), length);
    DropRaw(frame);
    return QVM_SUCCESS;
}

unsigned short BitsPerPixel(const PixelLayout& layout) {
    return static_cast<unsigned short>(layout.bitsAllocated * layout.samplesPerPixel);
}

QUORVEX_MESSAGE ExpandPalette(PixelDraft& draft, _DCM_FRAME_BUFFER& frame) {
    HeapBlock rgb = GetRGBBufferFromPaletteImage({frame.rawData, frame.rawLength}, draft.incoming,
                                                 draft.palette);
    if (!rgb) return QVM_ERROR_INVALID_PHOTOMETRIC;
    const std::size_t length = rgb.Size();
    SetProcessed(frame, rgb.Release(), length);
    DropRaw(frame);
    return QVM_SUCCESS;
}

void ReverseRows(std::span<const unsigned char> rows, std::size_t rowBytes, unsigned char* to) {
    for (; !rows.empty(); to += rowBytes) {
        std::ranges::copy(rows.last(rowBytes), to);
        rows = rows.first(rows.size() - rowBytes);
    }
}

void ReverseColours(std::span<const unsigned char> pixels, std::size_t pixelBytes,
                    unsigned char* to) {
    for (; !pixels.empty(); pixels = pixels.subspan(pixelBytes), to += 3) {
        std::ranges::reverse_copy(pixels.first(3), to);
    }
}

}  // namespace

_DCM_FRAME_BUFFER::~_DCM_FRAME_BUFFER() {
    delete[] rawData;
    delete[] processedData;
}

QUORVEX_MESSAGE ProcessObjectForExportAction(PixelDraft& draft, _DCM_FRAME_BUFFER& frame) {
    if (frame.rawData == nullptr) return QVM_ERROR_NULL_SOURCE;
    const auto syntax = static_cast<TRANSFER_SYNTAX>(draft.format.transferSyntax);
    if (HasDecoder(syntax)) return Decode(draft, frame);
    if (syntax != kImplicitLittleEndian && syntax != kExplicitLittleEndian) return QVM_SUCCESS;
    if (draft.incoming.IsPalette()) return ExpandPalette(draft, frame);
    TakeAsPlain(frame);
    return QVM_SUCCESS;
}

HeapBlock GetRGBBufferFromPaletteImage(std::span<const unsigned char> indices,
                                       const PixelLayout& layout, CDcmObject& object) {
    return Answer(HeapBlock(), [&] {
        const std::size_t pixels = std::size_t{layout.columns} * layout.rows;
        const std::size_t indexBytes = PaletteIndexBytes(BitsPerPixel(layout));
        if (indices.size() / indexBytes < pixels) return HeapBlock();
        const auto palette = LoadPalette(object);
        if (!palette) return HeapBlock();
        HeapBlock colours(pixels * 3);
        ColourByPalette(*palette, indices.first(pixels * indexBytes), indexBytes, colours.Bytes());
        return colours;
    });
}

void AdjustImage(unsigned char*& buffer, unsigned short bitsPerPixel, unsigned short width,
                 unsigned short height) {
    const bool isGrey = bitsPerPixel == 8 || bitsPerPixel == 16;
    const bool isColour = bitsPerPixel == 24 || bitsPerPixel == 32;
    if (buffer == nullptr || (!isGrey && !isColour)) return;
    const std::size_t pixelBytes = bitsPerPixel / 8U;
    const std::size_t pixels = std::size_t{width} * height;
    HeapBlock adjusted(pixels * (isGrey ? pixelBytes : 3));
    if (isGrey) {
        ReverseRows({buffer, pixels * pixelBytes}, pixelBytes * width, adjusted.Data());
    } else {
        ReverseColours({buffer, pixels * pixelBytes}, pixelBytes, adjusted.Data());
    }
    delete[] std::exchange(buffer, adjusted.Release());
}

}  // namespace quorvex
