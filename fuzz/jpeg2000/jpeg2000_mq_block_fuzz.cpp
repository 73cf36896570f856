// One arithmetic-coded JPEG 2000 block, its shape, style and segments drawn from the last bytes:
// every instruction set gives the same coefficients, and nothing beside them.
#include "foundation/engines/jpeg2000/decoder/blocks/mq_block.h"
#include "fuzz/jpeg2000/jpeg2000_blocks.h"

#include <algorithm>

namespace {

using namespace quorvex;

constexpr int kLargestArea = 4096;

void Run(fuzz::Options& options) {
    j2k::CodedBlock block;
    block.width = options.Flag() ? options.Between(1, 64) : options.Between(1, 1024);
    block.height = options.Between(1, std::min(1024, kLargestArea / block.width));
    block.bitPlanes = options.Between(0, 33);
    block.totalPlanes = options.Between(0, 40);
    block.style = options.Byte() & 63;
    block.band = static_cast<j2k::Orientation>(options.Byte() % 4);
    const fuzz::BlockSegments segments(options, 6, 100);
    block.segments = segments.parts;
    static j2k::MqScratch scratch;
    fuzz::DecodeByAllTargets(block,
                             [](const j2k::CodedBlock& coded, std::int32_t* out, int stride) {
                                 return j2k::DecodeMqBlock(coded, out, stride, scratch);
                             });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 13, .options = 32}, Run);
}
