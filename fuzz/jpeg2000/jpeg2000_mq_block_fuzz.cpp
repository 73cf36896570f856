// One arithmetic-coded JPEG 2000 block, its shape, style and segments drawn from the last bytes:
// every instruction set gives the same coefficients, and nothing beside them.
#include "foundation/engines/jpeg2000/decoder/blocks/mq_block.h"
#include "fuzz/target.h"

#include <algorithm>
#include <hwy/targets.h>

namespace {

using namespace quorvex;

constexpr std::int32_t kUntouched = 0x5A5A5A5A;
constexpr int kGap = 2;
constexpr int kLargestArea = 4096;

std::vector<std::int32_t> Decode(const j2k::CodedBlock& block, std::int64_t targets) {
    static j2k::MqScratch scratch;
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    const int stride = block.width + kGap;
    std::vector<std::int32_t> rows(static_cast<std::size_t>(stride * block.height), kUntouched);
    const bool isSound = j2k::DecodeMqBlock(block, rows.data(), stride, scratch);
    for (int i = 0; i < stride * block.height; ++i) {
        if (i % stride >= block.width) {
            fuzz::Require(rows[static_cast<std::size_t>(i)] == kUntouched);
        }
    }
    rows.push_back(isSound ? 1 : 0);
    return rows;
}

// Each segment in a block of its own, so that a read past its end is seen.
void Run(fuzz::Options& options) {
    j2k::CodedBlock block;
    block.width = options.Flag() ? options.Between(1, 64) : options.Between(1, 1024);
    block.height = options.Between(1, std::min(1024, kLargestArea / block.width));
    block.bitPlanes = options.Between(0, 33);
    block.totalPlanes = options.Between(0, 40);
    block.style = options.Byte() & 63;
    block.band = static_cast<j2k::Orientation>(options.Byte() % 4);
    const int count = options.Between(1, 6);
    std::vector<unsigned char> rest = options.Front();
    std::vector<std::vector<unsigned char>> blocks;
    std::vector<j2k::BlockSegment> segments;
    for (int i = 0; i < count; ++i) {
        const std::size_t size =
            i + 1 == count ? rest.size() : std::min<std::size_t>(rest.size(), options.Word());
        const auto end = rest.begin() + static_cast<std::ptrdiff_t>(size);
        blocks.emplace_back(rest.begin(), end);
        rest.erase(rest.begin(), end);
        const std::uint32_t passes = options.Byte() % 100;
        segments.push_back({blocks.back().data(), static_cast<std::uint32_t>(size), passes});
    }
    block.segments = segments;
    const auto first = Decode(block, 0);
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        fuzz::Require(Decode(block, target) == first);
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 13, .options = 32}, Run);
}
