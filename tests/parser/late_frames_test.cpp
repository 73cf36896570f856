// Frames of one object fetched again and again, in any order, while it changes.
#include "tests/parser/parsed.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr int kFrames = 40;
constexpr ImageFacts kFacts{.rows = 8, .columns = 8, .bits = 8, .frames = "40"};

Bytes Native(int first) {
    Bytes pixels;
    for (int i = 0; i < kFrames; ++i) {
        pixels.insert(pixels.end(), 64, static_cast<unsigned char>(first + i));
    }
    return NativeFile(kExplicitUid, kFacts, pixels);
}

/// Every frame in two fragments, told apart by the RLE headers that the first of them begin with.
Bytes Rle(int first) {
    std::vector<Bytes> fragments;
    for (int i = 0; i < kFrames; ++i) {
        Bytes head(64);
        head[0] = 1;
        head[4] = 64;
        fragments.push_back(head);
        fragments.push_back(
            {static_cast<unsigned char>(257 - 64), static_cast<unsigned char>(first + i)});
    }
    return EncapsulatedFile(kRleUid, kFacts, fragments);
}

/// Each frame holds one value, by which it tells which frame of which file it is.
void ExpectFrames(CxDcmParser& parser, int first, const char* what) {
    for (const int index : {39, 0, 17, 39, 38, 1}) {
        const Bytes frame(64, static_cast<unsigned char>(first + index));
        EXPECT_EQ(FrameOf(parser, index), Done(frame)) << what << index;
    }
    EXPECT_EQ(FrameOf(parser, kFrames), Refused(QVM_ERROR_INVALID_FRAME_INDEX)) << what;
}

TEST(LateFrames, FollowTheFileTheHeaderAndTheCopy) {
    for (const auto make : {Native, Rle}) {
        Parsed parsed(make(1));
        ExpectFrames(parsed.parser, 1, "the file ");
        const auto distance = PlaceOf(parsed.parser, 39).offset - PlaceOf(parsed.parser, 0).offset;
        EXPECT_EQ(distance, 39 * (make == Native ? 64U : 64U + 8 + 2 + 8));
        CxDcmParser copy(parsed.parser);
        ASSERT_EQ(parsed.Read(make(101)), QVM_SUCCESS);
        ExpectFrames(parsed.parser, 101, "another file ");
        ExpectFrames(copy, 1, "a copy of the first ");
        copy = parsed.parser;
        ExpectFrames(copy, 101, "a copy of the other ");
        copy.GetHeader()->SetValue(tag::kNumberOfFrames, "39");
        EXPECT_EQ(FrameOf(copy, 38), Done(Bytes(64, 139)));
        EXPECT_EQ(FrameOf(copy, 39), Refused(QVM_ERROR_INVALID_FRAME_INDEX));
    }
}

}  // namespace
}  // namespace quorvex
