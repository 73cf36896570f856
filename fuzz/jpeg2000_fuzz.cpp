// One JPEG 2000 codestream under a header drawn from the last bytes, and with nothing else known.
#include "fuzz/codec.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    constexpr std::uint32_t kSyntaxes[] = {kJpeg2000, kJpeg2000Lossless, kHtj2k, kJpeg2000Part2};
    return fuzz::Run(data, size, {.options = fuzz::kHeaderBytes}, [&](fuzz::Options& options) {
        fuzz::DecodeFrame(options, kSyntaxes, &CxImageProcessor::DecompressBlindJP2KData);
    });
}
