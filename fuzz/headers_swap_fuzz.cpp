// The header of one image over the codestream of another: the input is a codestream, its end says what
// the object claims, and what is changed in the codestream's own header.
#include "fuzz/coded_frame.h"
#include "fuzz/drawing.h"
#include "fuzz/elements.h"
#include "fuzz/frames.h"

namespace {

using namespace quorvex;

/// Where the facts of a frame lie: behind the start-of-frame marker of JPEG, the SIZ marker of JPEG 2000,
/// or at the start of an RLE frame.
std::size_t FactsPlace(const std::vector<unsigned char>& stream) {
    for (std::size_t i = 0; i + 1 < stream.size(); ++i) {
        if (stream[i] != 0xFF) continue;
        const unsigned marker = stream[i + 1];
        const bool isFrame = marker >= 0xC0 && marker <= 0xC3;
        if (isFrame || marker == 0x51) return i + 2;
    }
    return 0;
}

/// Small numbers and the ends of the range are what headers go wrong with.
void SwapFacts(std::vector<unsigned char>& stream, fuzz::Options& options) {
    constexpr unsigned char kNumbers[] = {0, 1, 2, 3, 4, 7, 8, 11, 12, 15, 16, 17, 64, 128, 255};
    constexpr unsigned kFactsLength = 48;
    const std::size_t place = FactsPlace(stream);
    for (unsigned i = options.Below(5); i > 0; --i) {
        const std::size_t at = place + options.Below(kFactsLength);
        const unsigned char number = options.OneOf(kNumbers);
        if (at < stream.size()) stream[at] = number;
    }
}

void FillCodedImage(CDcmObject& object, const _IMAGE_PROCESS_PARAM& param,
                    std::vector<unsigned char> stream) {
    object.SetTransferSyntax(static_cast<TRANSFER_SYNTAX>(param.transferSyntax));
    object.SetValue(0x00280002, param.samplesPerPixel);
    object.SetValue(0x00280004, param.photometric);
    object.SetValue(0x00280006, param.planarConfiguration);
    object.SetValue(0x00280010, param.rows);
    object.SetValue(0x00280011, param.columns);
    object.SetValue(0x00280100, param.bitsAllocated);
    object.SetValue(0x00280101, param.bitsAllocated);
    object.SetValue(0x00280103, param.pixelRepresentation);
    const unsigned long lengths[] = {stream.size()};
    unsigned char* const buffers[] = {stream.data()};
    object.SetValueEx(0x7FE00010, 1, lengths, buffers);
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::uint32_t kSyntaxes[] = {
        kRle,         kJpegBaseline,     kJpegExtended,         kJpegLosslessFirstOrder,
        kJpeg2000,    kJpeg2000Lossless, kExplicitLittleEndian, kExplicitBigEndian,
        kJpegLossless};
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, fuzz::kFactBytes + 24);
    const _IMAGE_PROCESS_PARAM param = fuzz::DrawFacts(options, kSyntaxes);
    std::vector<unsigned char> stream = options.Front();
    SwapFacts(stream, options);
    fuzz::DecodeKnown(param, stream, options);
    CDcmObject object;
    FillCodedImage(object, param, std::move(stream));
    Show(object, options);
    return 0;
}
