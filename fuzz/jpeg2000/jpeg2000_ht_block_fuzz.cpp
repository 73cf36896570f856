// One high-throughput JPEG 2000 block, its shape and segments drawn from the last bytes: every
// instruction set gives the same coefficients, and nothing beside them.
#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"
#include "fuzz/target.h"

#include <algorithm>
#include <hwy/targets.h>
#include <memory>

namespace {

using namespace quorvex;

constexpr std::int32_t kUntouched = 0x5A5A5A5A;
constexpr int kGap = 2;

/// Cuts the input into segments, each in a block of its own.
struct Segments {
    Segments(fuzz::Options& options, std::vector<unsigned char> rest) {
        const int count = options.Between(1, 4);
        for (int i = 0; i < count; ++i) {
            const std::size_t size =
                i + 1 == count ? rest.size() : std::min<std::size_t>(rest.size(), options.Word());
            const auto end = rest.begin() + static_cast<std::ptrdiff_t>(size);
            blocks.emplace_back(rest.begin(), end);
            rest.erase(rest.begin(), end);
            const std::uint32_t passes = options.Byte() % 8;
            parts.push_back({blocks.back().data(), static_cast<std::uint32_t>(size), passes});
        }
    }
    std::vector<std::vector<unsigned char>> blocks;
    std::vector<j2k::BlockSegment> parts;
};

std::vector<std::int32_t> Decode(const j2k::CodedBlock& block, std::int64_t targets) {
    static const auto scratch = std::make_unique<j2k::HtScratch>();
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    const int stride = block.width + kGap;
    std::vector<std::int32_t> rows(static_cast<std::size_t>(stride * block.height), kUntouched);
    const bool isSound = j2k::DecodeHtBlock(block, rows.data(), stride, *scratch);
    for (int i = 0; i < stride * block.height; ++i) {
        if (i % stride >= block.width) {
            fuzz::Require(rows[static_cast<std::size_t>(i)] == kUntouched);
        }
    }
    rows.push_back(isSound ? 1 : 0);
    return rows;
}

void Run(fuzz::Options& options) {
    constexpr unsigned kStyles[] = {j2k::kStyleHighThroughput,
                                    j2k::kStyleHighThroughput | j2k::kStyleVerticallyCausal};
    j2k::CodedBlock block;
    block.width = options.Flag() ? options.Between(1, 64) : options.Between(1, 1024);
    block.height = options.Between(1, std::min(1024, j2k::kLargestBlock / block.width));
    block.bitPlanes = options.Between(0, 33);
    block.totalPlanes = options.Between(0, 40);
    block.style = options.OneOf(kStyles);
    Segments segments(options, options.Front());
    block.segments = segments.parts;
    const auto first = Decode(block, 0);
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        fuzz::Require(Decode(block, target) == first);
    }
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::Run(data, size, {.largestInput = 1 << 14, .options = 24}, Run);
}
