// One arithmetic-coded block of any style, its bytes cut into segments by the last bytes.
#include "foundation/engines/jpeg2000/decoder/blocks/mq_block.h"
#include "fuzz/target.h"

namespace quorvex::fuzz {
namespace {

std::vector<j2k::BlockSegment> Cut(const std::vector<unsigned char>& bytes, Options& options) {
    std::vector<j2k::BlockSegment> segments;
    std::size_t place = 0;
    const unsigned count = 1 + options.Below(12);
    for (unsigned i = 0; i < count; ++i) {
        const std::size_t left = bytes.size() - place;
        const std::size_t size =
            i + 1 == count ? left : std::min<std::size_t>(left, options.Byte());
        segments.push_back({.data = bytes.data() + place,
                            .size = static_cast<std::uint32_t>(size),
                            .passes = options.Below(40)});
        place += size;
    }
    return segments;
}

}  // namespace
}  // namespace quorvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvex;
    return fuzz::Run(data, size, {.options = 40}, [](fuzz::Options& options) {
        j2k::CodedBlock block;
        block.width = options.Between(1, 64);
        block.height = options.Between(1, 64);
        block.totalPlanes = options.Between(-1, 40);
        block.bitPlanes = block.totalPlanes - options.Between(0, 8);
        block.band = static_cast<j2k::Orientation>(options.Below(4));
        block.style = options.Below(64);
        const auto bytes = options.Front();
        const auto segments = fuzz::Cut(bytes, options);
        block.segments = segments;
        const auto count = static_cast<std::size_t>(block.width * block.height);
        std::vector<std::int32_t> first(count, 1);
        std::vector<std::int32_t> again(count, 2);
        j2k::MqScratch scratch;
        const bool isSound = DecodeMqBlock(block, first.data(), block.width, scratch);
        fuzz::Require(DecodeMqBlock(block, again.data(), block.width, scratch) == isSound);
        fuzz::Require(first == again);  // nothing unwritten, nothing kept from block to block
    });
}
