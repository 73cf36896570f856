#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "maker/pixel_attributes.h"
#include "maker/pixel_draft.h"
#include "parser/palette/palette_image.h"
#include "quorvex/CxDcmMaker.h"

#include <algorithm>
#include <iterator>
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

/// No copy: the block changes its name.
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

bool HoldsAllIndices(const PixelLayout& layout, unsigned long length) {
    const std::size_t pixels = std::size_t{layout.rows} * layout.columns;
    return length / PaletteIndexBytes(BitsPerPixel(layout)) >= pixels;
}

}  // namespace

_DCM_FRAME_BUFFER::~_DCM_FRAME_BUFFER() {
    delete[] rawData;
    delete[] processedData;
}

QUORVEX_MESSAGE CxDcmMaker::ProcessObjectForExportAction(PixelDraft& draft,
                                                         _DCM_FRAME_BUFFER& frame) {
    if (frame.rawData == nullptr) return QVM_ERROR_NULL_SOURCE;
    const auto syntax = static_cast<TRANSFER_SYNTAX>(draft.format.transferSyntax);
    if (HasDecoder(syntax)) return Decode(draft, frame);
    if (syntax != kImplicitLittleEndian && syntax != kExplicitLittleEndian) return QVM_SUCCESS;
    if (draft.incoming.IsPalette()) return ExpandPaletteFrame(draft, frame);
    TakeAsPlain(frame);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CxDcmMaker::ExpandPaletteFrame(PixelDraft& draft, _DCM_FRAME_BUFFER& frame) {
    PixelLayout& in = draft.incoming;
    if (!HoldsAllIndices(in, frame.rawLength)) return QVM_ERROR_INVALID_PHOTOMETRIC;
    unsigned short bits = BitsPerPixel(in);
    unsigned char* rgb = nullptr;
    const auto result =
        GetRGBBufferFromPaletteImage(frame.rawData, in.columns, in.rows, bits, in.samplesPerPixel,
                                     in.photometric, rgb, 0, &draft.object);
    if (result != QVM_SUCCESS) return result;
    SetProcessed(frame, rgb, 3UL * in.rows * in.columns);
    DropRaw(frame);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CxDcmMaker::GetRGBBufferFromPaletteImage(
    unsigned char* pixels, unsigned short columns, unsigned short rows, unsigned short& bits,
    unsigned short& /*samples*/, CString& /*photometric*/, unsigned char*& rgb,
    unsigned long /*reserved*/, CDcmObject* object) {
    return Answer(QVM_ERROR_INVALID_PHOTOMETRIC, [&] {
        const auto palette = object == nullptr ? std::nullopt : LoadPalette(*object);
        if (!palette || pixels == nullptr) return QVM_ERROR_INVALID_PHOTOMETRIC;
        const std::size_t count = std::size_t{columns} * rows;
        const std::size_t indexBytes = PaletteIndexBytes(bits);
        HeapBlock colours(count * 3);
        ColourByPalette(*palette, {pixels, count * indexBytes}, indexBytes, colours.Bytes());
        rgb = colours.Release();
        return QVM_SUCCESS;
    });
}

void CxDcmMaker::AdjustImage(unsigned char*& buffer, unsigned short bitsPerPixel,
                             unsigned short width, unsigned short height) {
    const bool isGrey = bitsPerPixel == 8 || bitsPerPixel == 16;
    if (buffer == nullptr || (!isGrey && bitsPerPixel != 24 && bitsPerPixel != 32)) return;
    const std::size_t step = bitsPerPixel / 8U;
    const std::size_t rowBytes = step * width;
    const std::size_t pixels = std::size_t{width} * height;
    HeapBlock adjusted(isGrey ? rowBytes * height : pixels * 3);
    unsigned char* to = adjusted.Data();
    for (std::size_t row = height; isGrey && row-- > 0; to += rowBytes)
        std::copy_n(buffer + row * rowBytes, rowBytes, to);
    for (std::size_t pixel = 0; !isGrey && pixel < pixels; ++pixel, to += 3)
        std::reverse_copy(buffer + pixel * step, buffer + pixel * step + 3, to);
    delete[] std::exchange(buffer, adjusted.Release());
}

}  // namespace quorvex
