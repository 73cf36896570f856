// Plain pixels through every encoder under a drawn header, and back: lossless ones give them again.
#include "fuzz/coded_frame.h"

namespace {

using namespace quorvex;

struct CodedForm {
    QUORVEX_XFERSYNTAX form;
    TRANSFER_SYNTAX syntax;
    bool isLossless;
};

constexpr CodedForm kForms[] = {{kXferJpegLossless, kJpegLosslessFirstOrder, true},
                                {kXferJpeg2000Lossless, kJpeg2000Lossless, true},
                                {kXferJpegBaseline, kJpegBaseline, false},
                                {kXferJpegExtended, kJpegExtended, false},
                                {kXferJpeg2000, kJpeg2000, false}};

/// As many pixels as the header says, from what is there; sometimes too few.
std::vector<unsigned char> Pixels(const _IMAGE_PROCESS_PARAM& param, fuzz::Options& options) {
    std::vector<unsigned char> pixels = options.Front();
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

void RequireBack(_IMAGE_PROCESS_PARAM param, const CodedForm& form,
                 std::vector<unsigned char> coded, const std::vector<unsigned char>& pixels) {
    param.transferSyntax = form.syntax;
    CxImageProcessor processor;
    unsigned char* result = nullptr;
    unsigned long size = 0;
    const auto answer =
        processor.DecompressFrameData(&param, coded.data(), coded.size(), result, size, 0);
    const std::unique_ptr<unsigned char[]> owner(result);
    fuzz::Require(answer == QVM_SUCCESS && size == fuzz::FrameBytes(param));
    if (form.isLossless) fuzz::Require(std::equal(result, result + size, pixels.begin()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kLargestInput = 1 << 14;
    constexpr std::uint32_t kSyntaxes[] = {kImplicitLittleEndian, kExplicitLittleEndian,
                                           kExplicitBigEndian, kRle};
    constexpr unsigned kMostSide = 96;
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, fuzz::kFactBytes + 4);
    _IMAGE_PROCESS_PARAM param = fuzz::DrawFacts(options, kSyntaxes);
    param.rows = static_cast<std::uint16_t>(param.rows % kMostSide);
    param.columns = static_cast<std::uint16_t>(param.columns % kMostSide);
    param.quality = options.Word();
    const CodedForm& form = options.OneOf(kForms);
    param.targetSyntax = form.form;
    const std::vector<unsigned char> pixels = Pixels(param, options);
    std::vector<unsigned char> source = pixels;
    CxImageProcessor processor;
    processor.SetKeepsRgb(options.Flag());
    unsigned char* coded = nullptr;
    unsigned long length = 0;
    const auto answer =
        processor.CompressFrameData(&param, source.data(), source.size(), coded, length);
    const std::unique_ptr<unsigned char[]> owner(coded);
    fuzz::Require((answer == QVM_SUCCESS) == (coded != nullptr));
    if (coded != nullptr && IsPlain(param)) {
        RequireBack(param, form, {coded, coded + length}, pixels);
    }
    return 0;
}
