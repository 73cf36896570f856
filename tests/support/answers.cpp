#include "tests/support/answers.h"

#include "quorvex/Attributes.h"
#include "quorvex/Tags.h"

#include <memory>

namespace quorvex::test {

Answered Answered::Take(int code, unsigned char* block, unsigned long size) {
    const std::unique_ptr<unsigned char[]> owner(block);
    return {code, block == nullptr ? Bytes() : Bytes(block, block + size)};
}

Answered FrameOf(CxDcmParser& parser, int index, unsigned long sourceLength) {
    unsigned char* frame = nullptr;
    unsigned long size = 0;
    const auto code = parser.GetAFrame(index, frame, size, sourceLength);
    return Answered::Take(code, frame, size);
}

Answered StoredFrameOf(CxDcmParser& parser, int index) {
    unsigned long offset = 0;
    unsigned long size = 0;
    const auto found = parser.GetAFrameOffsetSize(index, offset, size);
    if (found != QVM_SUCCESS) return {found, {}};
    unsigned char* stored = nullptr;
    const auto code = parser.GetAFrame(offset, size, stored);
    return Answered::Take(code, stored, size);
}

Answered ThumbnailOf(CxDcmParser& parser, const ThumbnailForm& form) {
    unsigned char* image = nullptr;
    unsigned long size = 0;
    tagBITMAPINFOHEADER* bitmap = nullptr;
    unsigned long bitmapSize = 0;
    const auto code = parser.MakeThumbNail(0, form.size, form.format, form.usesDataRange ? 1 : 0,
                                           image, size, bitmap, bitmapSize, form.quality);
    delete[] static_cast<unsigned char*>(static_cast<void*>(bitmap));
    return Answered::Take(code, image, code == QVM_SUCCESS ? size : 0);
}

Answered ColouredOf(CxDcmParser& parser, unsigned char* indices, unsigned short columns,
                    unsigned short rows, unsigned short bits) {
    unsigned short samples = 1;
    CString photometric;
    unsigned char* rgb = nullptr;
    const auto code = parser.GetRGBBufferFromPaletteImage(indices, columns, rows, bits, samples,
                                                          photometric, rgb, 0);
    return Answered::Take(code, rgb, code == QVM_SUCCESS ? 3UL * columns * rows : 0);
}

RenderedResult ResultOf(const CXDIPP& image) {
    RenderedResult result;
    result.code = image.GetResultImageInfo(result.size, result.pixelSize);
    if (result.code != QVM_SUCCESS) return result;
    result.bytes.resize(static_cast<std::size_t>(result.size.cx) *
                        static_cast<std::size_t>(result.size.cy * result.pixelSize));
    unsigned char* destination = result.bytes.data();
    result.code = image.GetResultImage(destination, static_cast<int>(result.bytes.size()));
    return result;
}

Answered DrawnOf(CXDIPP& image, CSize size, int bytesPerPixel) {
    const int rowBytes = size.cx * bytesPerPixel;
    Bytes pixels(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(size.cy));
    DrawingSurface surface{pixels.data(), size.cx, size.cy, rowBytes, bytesPerPixel};
    CDC context(&surface);
    const auto code = image.Draw(&context);
    return {code, std::move(pixels)};
}

_IMAGE_PROCESS_PARAM ParamOf(const CDcmObject& object) {
    const auto word = [&](std::uint32_t tag) {
        return static_cast<std::uint16_t>(Read<int>(object, tag).value_or(0));
    };
    TRANSFER_SYNTAX syntax = kSyntaxNone;
    object.GetTransferSyntax(syntax);
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = syntax;
    param.samplesPerPixel = word(tag::kSamplesPerPixel);
    param.photometric = Read<CString>(object, tag::kPhotometricInterpretation).value_or("");
    param.planarConfiguration = word(tag::kPlanarConfiguration);
    param.rows = word(tag::kRows);
    param.columns = word(tag::kColumns);
    param.bitsAllocated = word(tag::kBitsAllocated);
    param.pixelRepresentation = word(tag::kPixelRepresentation);
    return param;
}

Answered DecodedOf(_IMAGE_PROCESS_PARAM param, std::span<unsigned char> stream,
                   bool isUnsignedOnly) {
    unsigned char* frame = nullptr;
    unsigned long size = 0;
    const auto code = CxImageProcessor().DecompressFrameData(&param, stream.data(), stream.size(),
                                                             frame, size, isUnsignedOnly ? 1 : 0);
    return Answered::Take(code, frame, size);
}

Answered CodedOf(_IMAGE_PROCESS_PARAM param, std::span<unsigned char> pixels, bool keepsRgb) {
    unsigned char* coded = nullptr;
    unsigned long size = 0;
    CxImageProcessor processor;
    processor.SetKeepsRgb(keepsRgb);
    const auto code =
        processor.CompressFrameData(&param, pixels.data(), pixels.size(), coded, size);
    return Answered::Take(code, coded, size);
}

BlindAnswer BlindlyDecoded(BlindDecoder decoder, std::span<unsigned char> stream) {
    unsigned char* frame = nullptr;
    unsigned long size = 0;
    BlindAnswer answer;
    CxImageProcessor processor;
    const auto code =
        (processor.*decoder)(stream.data(), stream.size(), frame, size, answer.width, answer.height,
                             answer.samples, answer.bits, answer.pixelBytes);
    static_cast<Answered&>(answer) = Answered::Take(code, frame, size);
    return answer;
}

Conversion ConvertTo(std::int32_t form, CDcmObject& object, std::uint16_t quality, Rules rules) {
    CDcmApp app;
    _USER_SETTING_INFO settings;
    settings.compressionType = form;
    CxDcmMaker maker;
    maker.SetRules(rules);
    maker.SetQuality(quality);
    const auto code = maker.MakeDcmObject(&app, &object, &settings);
    return {code, maker.GetOutcome()};
}

}  // namespace quorvex::test
