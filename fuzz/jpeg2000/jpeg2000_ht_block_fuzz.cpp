// One high-throughput JPEG 2000 block, its shape and segments drawn from the last bytes: every
// instruction set gives the same coefficients, and nothing beside them.
#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"
#include "fuzz/jpeg2000/jpeg2000_blocks.h"

#include <algorithm>
#include <memory>

namespace {

using namespace quorvex;

void Run(fuzz::Options& options) {
    constexpr unsigned kStyles[] = {j2k::kStyleHighThroughput,
                                    j2k::kStyleHighThroughput | j2k::kStyleVerticallyCausal};
    j2k::CodedBlock block;
    block.width = options.Flag() ? options.Between(1, 64) : options.Between(1, 1024);
    block.height = options.Between(1, std::min(1024, j2k::kLargestBlock / block.width));
    block.bitPlanes = options.Between(0, 33);
    block.totalPlanes = options.Between(0, 40);
    block.style = options.OneOf(kStyles);
    const fuzz::BlockSegments segments(options, 4, 8);
    block.segments = segments.parts;
    static const auto scratch = std::make_unique<j2k::HtScratch>();
    fuzz::DecodeByAllTargets(block,
                             [](const j2k::CodedBlock& coded, std::int32_t* out, int stride) {
                                 return j2k::DecodeHtBlock(coded, out, stride, *scratch);
                             });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 14, .options = 24}, Run);
}
