// The header of one image over the codestream of another: the input is a codestream, its end says
// what the object claims, and what is changed in the codestream's own header.
#include "fuzz/codec.h"
#include "fuzz/drawing.h"
#include "fuzz/reading.h"
#include "quorvex/Tags.h"

namespace {

using namespace quorvex;

/// Where a frame's own header lies: behind the start-of-frame marker of JPEG, the SIZ marker of
/// JPEG 2000, or at the start of an RLE frame.
std::size_t HeaderPlace(const test::Bytes& stream) {
    for (std::size_t i = 0; i + 1 < stream.size(); ++i) {
        if (stream[i] != 0xFF) continue;
        const unsigned marker = stream[i + 1];
        const bool isFrame = marker >= 0xC0 && marker <= 0xC3;
        if (isFrame || marker == 0x51) return i + 2;
    }
    return 0;
}

/// Small numbers and the ends of the range are what headers go wrong with.
void ChangeHeader(test::Bytes& stream, fuzz::Options& options) {
    constexpr unsigned char kNumbers[] = {0, 1, 2, 3, 4, 7, 8, 11, 12, 15, 16, 17, 64, 128, 255};
    constexpr unsigned kHeaderLength = 48;
    const std::size_t place = HeaderPlace(stream);
    for (unsigned i = options.Below(5); i > 0; --i) {
        const std::size_t at = place + options.Below(kHeaderLength);
        const unsigned char number = options.OneOf(kNumbers);
        if (at < stream.size()) stream[at] = number;
    }
}

void FillCodedImage(CDcmObject& object, const _IMAGE_PROCESS_PARAM& param, test::Bytes stream) {
    object.SetTransferSyntax(static_cast<TRANSFER_SYNTAX>(param.transferSyntax));
    object.SetValue(tag::kSamplesPerPixel, param.samplesPerPixel);
    object.SetValue(tag::kPhotometricInterpretation, param.photometric);
    object.SetValue(tag::kPlanarConfiguration, param.planarConfiguration);
    object.SetValue(tag::kRows, param.rows);
    object.SetValue(tag::kColumns, param.columns);
    object.SetValue(tag::kBitsAllocated, param.bitsAllocated);
    object.SetValue(tag::kBitsStored, param.bitsAllocated);
    object.SetValue(tag::kPixelRepresentation, param.pixelRepresentation);
    const unsigned long lengths[] = {stream.size()};
    unsigned char* const buffers[] = {stream.data()};
    object.SetValueEx(tag::kPixelData, 1, lengths, buffers);
}

void Show(CDcmObject& object, fuzz::Options& options) {
    CDcmApp app;
    CxDcmParser parser;
    if (parser.Initialize(&app, &object, nullptr, 0, 0) != QVM_SUCCESS) return;
    fuzz::FetchFrames(parser, options);
    fuzz::MakeThumbnail(parser, options);
    CXDIPP image;
    if (image.Initialize(&app, &object, fuzz::DrawViewSize(options), 0) != QVM_SUCCESS) return;
    fuzz::RenderAndDraw(image, options);
}

void SwapHeaders(fuzz::Options& options) {
    constexpr std::uint32_t kSyntaxes[] = {kRle,
                                           kJpegBaseline,
                                           kJpegExtended,
                                           kJpegLosslessFirstOrder,
                                           kJpeg2000,
                                           kJpeg2000Lossless,
                                           kExplicitLittleEndian,
                                           kExplicitBigEndian,
                                           kJpegLossless,
                                           kHtj2k,
                                           kJpegLsLossless,
                                           kDeflatedImageFrames,
                                           kJpegXl};
    const _IMAGE_PROCESS_PARAM param = fuzz::DrawHeader(options, kSyntaxes);
    test::Bytes stream = options.Front();
    ChangeHeader(stream, options);
    fuzz::DecodeKnown(param, stream, options);
    CDcmObject object;
    FillCodedImage(object, param, std::move(stream));
    Show(object, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.options = fuzz::kHeaderBytes + 24}, SwapHeaders);
}
