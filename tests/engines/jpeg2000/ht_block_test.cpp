// High-throughput code blocks: what they hold.
#include "tests/engines/jpeg2000/ht_test_blocks.h"
#include "tests/support/instruction_sets.h"

namespace quorvex::j2k {
namespace {

using namespace testing;

TEST(HtBlock, GivesWhatWasCoded) {
    ForEachInstructionSet([] {
        for (const Picture& picture : kPictures) {
            SCOPED_TRACE(::testing::Message() << picture.width << " x " << picture.height << ", "
                                              << picture.bits << " bits");
            const Result result = Decode(picture.AsBlock());
            EXPECT_TRUE(result.isSound);
            EXPECT_EQ(result.values, picture.Expected());
        }
    });
}

// OpenJPEG's coefficients.
struct Refined {
    std::uint32_t passes;
    unsigned style;
    Coefficients values;
};
const Refined kRefined[] = {
    {1, kStyleHighThroughput, {-28, 6, 6, 0,  6,  6,   0,  -6, 0,  0,  0,   6,  -6,  6, 6,  6,   0,
                               0,   0, 0, 0,  -6, 6,   -6, 6,  -6, -6, 0,   0,  -6,  0, -6, -12, -6,
                               -6,  6, 0, -6, 0,  -20, 0,  6,  0,  0,  0,   6,  -28, 0, 6,  6,   -6,
                               0,   0, 0, 0,  0,  6,   -6, -6, -6, 0,  0,   0,  0,   0, 0,  0,   -6,
                               0,   0, 6, 0,  0,  0,   0,  -6, -6, -6, -12, -6, -6}},
    {1,
     kStyleHighThroughput | kStyleVerticallyCausal,
     {-28, 6, 6, 6, -6,  -6, -6, -6, -6, 0,  0, 6,   0, 6,  6,  0,   -6, 0,  0,   0, 0,
      -6,  6, 6, 6, 0,   0,  0,  0,  0,  -6, 6, -12, 6, -6, -6, 0,   -6, 0,  -20, 0, -6,
      0,   0, 6, 0, -28, 6,  6,  -6, 6,  0,  0, 0,   6, 0,  0,  -6,  6,  -6, 0,   0, 0,
      0,   0, 0, 0, -6,  0,  0,  0,  0,  0,  0, 0,   0, 0,  -6, -12, -6, -6}},
    {2, kStyleHighThroughput, {-30, 6, 6, 0,  6,  6,   0,  -6, 0,  0,  0,   6,  -6,  6, 6,  6,   0,
                               0,   0, 0, 0,  -6, 6,   -6, 6,  -6, -6, 0,   0,  -6,  0, -6, -14, -6,
                               -6,  6, 0, -6, 0,  -18, 0,  6,  0,  0,  0,   6,  -30, 0, 6,  6,   -6,
                               0,   0, 0, 0,  0,  6,   -6, -6, -6, 0,  0,   0,  0,   0, 0,  0,   -6,
                               0,   0, 6, 0,  0,  0,   0,  -6, -6, -6, -10, -6, -6}},
    {2,
     kStyleHighThroughput | kStyleVerticallyCausal,
     {-30, 6, 6, 6, -6,  -6, -6, -6, -6, 0,  0, 6,   0, 6,  6,  0,   -6, 0,  0,   0, 0,
      -6,  6, 6, 6, 0,   0,  0,  0,  0,  -6, 6, -14, 6, -6, -6, 0,   -6, 0,  -18, 0, -6,
      0,   0, 6, 0, -30, 6,  6,  -6, 6,  0,  0, 0,   6, 0,  0,  -6,  6,  -6, 0,   0, 0,
      0,   0, 0, 0, -6,  0,  0,  0,  0,  0,  0, 0,   0, 0,  -6, -10, -6, -6}},
};

TEST(HtBlock, RefinesOnePlaneFurther) {
    for (const Refined& refined : kRefined) {
        SCOPED_TRACE(::testing::Message() << refined.passes << " passes, style " << refined.style);
        const Result result = Decode(RefinedBlock(refined.passes, refined.style));
        EXPECT_TRUE(result.isSound);
        EXPECT_EQ(result.values, refined.values);
    }
}

// A set tells all planes anew: the first one here is another picture of the same size.
TEST(HtBlock, LastSoundSetCounts) {
    Block block = kGrey8.AsBlock();
    const Part last = block.parts[0];
    const Result expected = Decode(block);
    CodedBytes other = last.bytes;
    other[1] ^= 4;
    const Part first{other};
    const Part refinement{FromHex("5ac35e913c"), 2};
    block.bitPlanes = 2;
    block.totalPlanes = 9;

    block.parts = {first, refinement, last};
    EXPECT_EQ(Decode(block), expected);
    block.parts = {{{}, 1}, {{}, 2}, last};  // placeholders with segments of their own
    EXPECT_EQ(Decode(block), expected);
    block.parts = {{last.bytes, 4}};  // and in the count of passes
    EXPECT_EQ(Decode(block), expected);

    block.parts = {first, refinement};
    Result before = Decode(block);
    EXPECT_TRUE(before.isSound);
    EXPECT_NE(before.values, expected.values);
    Part damaged = last;
    damaged.bytes.push_back(0xFF);  // a suffix longer than the segment
    block.parts = {first, refinement, damaged};
    before.isSound = false;
    EXPECT_EQ(Decode(block), before);
}

}  // namespace
}  // namespace quorvex::j2k
