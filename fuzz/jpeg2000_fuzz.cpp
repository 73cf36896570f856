// One JPEG 2000 codestream under a header drawn from the last bytes, and with nothing else known.
#include "fuzz/coded_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::uint32_t kSyntaxes[] = {kJpeg2000, kJpeg2000Lossless};
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, fuzz::kFactBytes);
    const _IMAGE_PROCESS_PARAM param = fuzz::DrawFacts(options, kSyntaxes);
    fuzz::DecodeKnown(param, options.Front(), options);
    fuzz::DecodeBlind(&CxImageProcessor::DecompressBlindJP2KData, options.Front());
    return 0;
}
