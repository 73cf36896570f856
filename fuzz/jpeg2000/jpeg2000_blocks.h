/// One JPEG 2000 block of drawn segments through every instruction set.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "fuzz/target.h"

#include <algorithm>
#include <hwy/targets.h>
#include <vector>

namespace quorvex::fuzz {

/// Cuts the input into segments, each in a block of its own, so that a read past its end is seen.
struct BlockSegments {
    BlockSegments(Options& options, int most, unsigned mostPasses) {
        const int count = options.Between(1, most);
        std::vector<unsigned char> rest = options.Front();
        for (int i = 0; i < count; ++i) {
            const std::size_t size =
                i + 1 == count ? rest.size() : std::min<std::size_t>(rest.size(), options.Word());
            const auto end = rest.begin() + static_cast<std::ptrdiff_t>(size);
            blocks.emplace_back(rest.begin(), end);
            rest.erase(rest.begin(), end);
            const std::uint32_t passes = options.Byte() % mostPasses;
            parts.push_back({blocks.back().data(), static_cast<std::uint32_t>(size), passes});
        }
    }
    std::vector<std::vector<unsigned char>> blocks;
    std::vector<j2k::BlockSegment> parts;
};

/// The coefficients, behind them whether the block was sound. Nothing else is written.
template <class Decode>
std::vector<std::int32_t> DecodeBlockFor(const j2k::CodedBlock& block, std::int64_t targets,
                                         const Decode& decode) {
    constexpr std::int32_t kUntouched = 0x5A5A5A5A;
    constexpr int kGap = 2;
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    const int stride = block.width + kGap;
    std::vector<std::int32_t> rows(static_cast<std::size_t>(stride * block.height), kUntouched);
    const bool isSound = decode(block, rows.data(), stride);
    for (int i = 0; i < stride * block.height; ++i) {
        if (i % stride >= block.width) Require(rows[static_cast<std::size_t>(i)] == kUntouched);
    }
    rows.push_back(isSound ? 1 : 0);
    return rows;
}

/// Every instruction set gives the same.
template <class Decode>
void DecodeByAllTargets(const j2k::CodedBlock& block, const Decode& decode) {
    const auto first = DecodeBlockFor(block, 0, decode);
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets())
        Require(DecodeBlockFor(block, target, decode) == first);
    hwy::SetSupportedTargetsForTest(0);
}

}  // namespace quorvex::fuzz
