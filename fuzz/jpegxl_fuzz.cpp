// One JPEG XL frame, bare or in boxes, under a header drawn from the last bytes.
#include "fuzz/codec.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    constexpr std::uint32_t kSyntaxes[] = {kJpegXlLossless, kJpegXlOfJpeg, kJpegXl};
    return fuzz::Run(data, size, {.options = fuzz::kHeaderBytes},
                     [&](fuzz::Options& options) { fuzz::DecodeFrame(options, kSyntaxes); });
}
