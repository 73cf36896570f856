// A JPEG 2000 codestream, high throughput or not: whole, by other threads, and in part.
#include "fuzz/jpeg2000_pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    return fuzz::Run(data, size, {.options = 12}, [](fuzz::Options& options) {
        const auto stream = options.Front();
        fuzz::DecodeInEveryWay(stream, options);
    });
}
