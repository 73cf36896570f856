// One JPEG stream under a header drawn from the last bytes, and with nothing else known about it.
#include "fuzz/coded_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    constexpr std::size_t kLargestInput = 1 << 16;
    constexpr std::uint32_t kSyntaxes[] = {kJpegBaseline, kJpegExtended, kJpegLossless,
                                           kJpegLosslessFirstOrder};
    if (size > kLargestInput) return 0;
    fuzz::Options options(data, size, fuzz::kFactBytes);
    const _IMAGE_PROCESS_PARAM param = fuzz::DrawFacts(options, kSyntaxes);
    fuzz::DecodeKnown(param, options.Front(), options);
    fuzz::DecodeBlind(&CxImageProcessor::DecompressBlindJPEGData, options.Front());
    return 0;
}
