// High-throughput code blocks: what is damaged does no harm.
#include "tests/engines/jpeg2000/ht_test_blocks.h"
#include "tests/support/instruction_sets.h"

#include <algorithm>
#include <random>

namespace quorvex::j2k {
namespace {

using namespace testing;
using test::GuardPlace;

struct Impossible {
    const char* what;
    void (*change)(Block& block);
    bool keepsCleanup;
};
constexpr Impossible kImpossible[] = {
    {"no byte",
     [](Block& b) {
         b.parts[0] = {{}, 1}, b.parts.push_back({{1}, 3});
     },
     false},
    {"one byte", [](Block& b) { b.parts[0].bytes.resize(1); }, false},
    {"suffix of 1",
     [](Block& b) {
         b.parts[0].bytes = {0, 0, 1, 0};
     },
     false},
    {"suffix longer than all",
     [](Block& b) {
         b.parts[0].bytes = {0, 0, 5, 0};
     },
     false},
    {"suffix of 4080",
     [](Block& b) {
         b.parts[0].bytes.assign(5000, 0);
         b.parts[0].bytes.back() = 0xFF;
     },
     false},
    {"no plane", [](Block& b) { b.bitPlanes = 0; }, false},
    {"fewer than no planes", [](Block& b) { b.bitPlanes = -7; }, false},
    {"31 planes", [](Block& b) { b.bitPlanes = b.totalPlanes = 31; }, false},
    {"more planes than there are", [](Block& b) { b.bitPlanes = b.totalPlanes + 1; }, false},
    {"magnitudes above the planes", [](Block& b) { b.totalPlanes = 3; }, false},
    {"a set below the lowest plane", [](Block& b) { b.parts[0].passes = 4; }, false},
    {"two passes in the clean-up segment", [](Block& b) { b.parts[0].passes = 2; }, false},
    {"no pass", [](Block& b) { b.parts[0].passes = 0; }, false},
    {"passes without end", [](Block& b) { b.parts[0].passes = 0xFFFFFFFE; }, false},
    {"nothing below to refine",
     [](Block& b) {
         b.parts.push_back({{1, 2, 3}, 2});
     },
     true},
    {"a refinement of three passes",
     [](Block& b) {
         b.parts.push_back({{1, 2, 3}, 3});
     },
     true},
};

TEST(HtBlock, RefusesWhatCannotBe) {
    for (const Impossible& impossible : kImpossible) {
        SCOPED_TRACE(impossible.what);
        Block block = kGrey8.AsBlock();
        impossible.change(block);
        const Result result = Decode(block);
        EXPECT_FALSE(result.isSound);
        EXPECT_EQ(result.values, impossible.keepsCleanup ? kGrey8.Expected() : Coefficients(15));
    }
    Block empty = kGrey8.AsBlock();
    empty.parts.clear();
    empty.bitPlanes = 0;
    EXPECT_EQ(Decode(empty), (Result{true, Coefficients(15)})) << "nothing was coded";
}

/// The same result, and no access outside, with each instruction set and from either end of memory.
void ExpectOneResult(const Block& block) {
    std::vector<Result> results;
    ForEachInstructionSet([&] {
        results.push_back(Decode(block, GuardPlace::kBehind));
        results.push_back(Decode(block, GuardPlace::kAhead));
    });
    for (const Result& result : results) ASSERT_EQ(result, results.front());
}

TEST(HtBlock, ChangedBytesDoNoHarm) {
    for (const Picture* picture : {&kGrey8, &kGrey12, &kGrey16}) {
        const Block block = picture->AsBlock();
        const std::size_t size = block.parts[0].bytes.size();
        for (std::size_t i = 0; i < size; ++i) {
            for (const int mask : {0xFF, 0x80, 0x01}) {
                Block changed = block;
                changed.parts[0].bytes[i] =
                    static_cast<unsigned char>(changed.parts[0].bytes[i] ^ mask);
                ExpectOneResult(changed);
            }
        }
    }
    for (std::size_t i = 0; i < 16; ++i) {
        Block changed = RefinedBlock(2, kStyleHighThroughput);
        changed.parts[1].bytes[i] = 0xFF;
        EXPECT_TRUE(Decode(changed).isSound) << "any refinement bits mean something";
    }
}

TEST(HtBlock, CutBytesDoNoHarm) {
    for (const Picture* picture : {&kGrey12, &kGrey16}) {
        const Block block = picture->AsBlock();
        for (std::size_t size = 0; size < block.parts[0].bytes.size(); ++size) {
            Block cut = block;
            cut.parts[0].bytes.resize(size);
            EXPECT_EQ(Decode(cut).values.size(), picture->Expected().size());
            if (size < 4) continue;
            cut.parts[0].bytes[size - 1] = 0;  // a suffix that fits: the rest is damaged alone
            cut.parts[0].bytes[size - 2] =
                static_cast<unsigned char>(std::min<std::size_t>(size, 15));
            ExpectOneResult(cut);
        }
    }
    for (std::size_t size = 1; size < 16; ++size) {
        Block cut = RefinedBlock(2, kStyleHighThroughput);
        cut.parts[1].bytes.resize(size);
        EXPECT_TRUE(Decode(cut).isSound);
    }
}

// Two bytes FF at the start of the MEL stream, which no coder writes, ended OpenJPEG's process.
TEST(HtBlock, HostileEventsAreRead) {
    Block block = kGrey12.AsBlock();
    CodedBytes& bytes = block.parts[0].bytes;
    const std::size_t suffix = bytes.back() * 16U + (bytes[bytes.size() - 2] & 15U);
    bytes[bytes.size() - suffix] = 0xFF;
    bytes[bytes.size() - suffix + 1] = 0xFF;
    ExpectOneResult(block);
}

TEST(HtBlock, RandomBytesDoNoHarm) {
    std::minstd_rand random(15);
    const auto below = [&](unsigned end) { return static_cast<int>(random() % end); };
    int sound = 0;
    for (int i = 0; i < 1500; ++i) {
        Block block;
        block.width = 2 + 2 * below(12);
        block.height = 2 + 2 * below(8);
        block.bitPlanes = 1 + below(4);
        block.totalPlanes = 20 + below(14);
        CodedBytes bytes(static_cast<std::size_t>(200 + below(700)));
        for (unsigned char& byte : bytes) {
            byte = below(12) == 0 ? 0xFF : static_cast<unsigned char>(random());
        }
        const int suffix = 2 + below(static_cast<unsigned>(bytes.size() - 1));
        bytes[bytes.size() - 1] = static_cast<unsigned char>(suffix >> 4);
        bytes[bytes.size() - 2] = static_cast<unsigned char>((below(16) << 4) | (suffix & 15));
        block.parts = {{bytes}};
        if (below(2) == 0) block.parts.push_back({bytes, 1U + static_cast<unsigned>(below(2))});
        ExpectOneResult(block);
        sound += Decode(block).isSound ? 1 : 0;
    }
    EXPECT_GT(sound, 30) << "the bytes must not all be refused at once";
}

}  // namespace
}  // namespace quorvex::j2k
