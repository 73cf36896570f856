// Plain pixels through every encoder under a drawn header, and back: lossless ones give them again.
#include "fuzz/codec.h"

namespace {

using namespace quorvex;
using fuzz::Require;

struct CodedForm {
    QUORVEX_XFERSYNTAX form;
    TRANSFER_SYNTAX syntax;
    bool isLossless;
};

constexpr CodedForm kForms[] = {{kXferJpegLossless, kJpegLosslessFirstOrder, true},
                                {kXferJpeg2000Lossless, kJpeg2000Lossless, true},
                                {kXferJpegBaseline, kJpegBaseline, false},
                                {kXferJpegExtended, kJpegExtended, false},
                                {kXferJpeg2000, kJpeg2000, false},
                                {kXferHtj2kLossless, kHtj2kLossless, true},
                                {kXferHtj2k, kHtj2k, false}};

_IMAGE_PROCESS_PARAM DrawSmallHeader(fuzz::Options& options) {
    constexpr std::uint32_t kSyntaxes[] = {kImplicitLittleEndian, kExplicitLittleEndian,
                                           kExplicitBigEndian, kRle};
    constexpr unsigned kMostSide = 96;
    _IMAGE_PROCESS_PARAM param = fuzz::DrawHeader(options, kSyntaxes);
    param.rows = static_cast<std::uint16_t>(param.rows % kMostSide);
    param.columns = static_cast<std::uint16_t>(param.columns % kMostSide);
    param.quality = options.Word();
    return param;
}

/// As many pixels as the header says, from what is there; sometimes too few.
test::Bytes Pixels(const _IMAGE_PROCESS_PARAM& param, fuzz::Options& options) {
    test::Bytes pixels = options.Front();
    const std::size_t length = fuzz::FrameBytes(param);
    if (pixels.empty() || options.Below(16) == 1) return pixels;
    const std::size_t there = pixels.size();
    pixels.resize(length);
    for (std::size_t i = there; i < length; ++i) pixels[i] = pixels[i % there];
    return pixels;
}

/// Sample by sample in this machine's order, in one or two whole bytes.
bool IsPlain(const _IMAGE_PROCESS_PARAM& param) {
    const bool isWhole = param.bitsAllocated == 8 || param.bitsAllocated == 16;
    const bool isByPixel = param.samplesPerPixel == 1 || param.planarConfiguration == 0;
    return isWhole && isByPixel && param.transferSyntax != kExplicitBigEndian;
}

void Encode(fuzz::Options& options) {
    _IMAGE_PROCESS_PARAM param = DrawSmallHeader(options);
    const CodedForm& form = options.OneOf(kForms);
    param.targetSyntax = form.form;
    const test::Bytes pixels = Pixels(param, options);
    test::Bytes source = pixels;
    test::Answered coded = test::CodedOf(param, source, options.Flag());
    Require((coded.code == QVM_SUCCESS) == !coded.bytes.empty());
    if (coded.bytes.empty() || !IsPlain(param)) return;
    param.transferSyntax = form.syntax;
    const test::Answered back = test::DecodedOf(param, coded.bytes);
    const std::size_t length = fuzz::FrameBytes(param);
    Require(back.code == QVM_SUCCESS && back.bytes.size() == length);
    if (form.isLossless) Require(std::equal(back.bytes.begin(), back.bytes.end(), pixels.begin()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {1 << 14, fuzz::kHeaderBytes + 4}, Encode);
}
