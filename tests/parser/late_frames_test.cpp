// Frames of one object fetched again and again, in any order, while it changes.
#include "quorvex/CxDcmParser.h"
#include "tests/support/dicom_builder.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <memory>

namespace quorvex {
namespace {

using test::Bytes;
using test::ImageFacts;
using test::TemporaryFile;

constexpr int kFrames = 40;
constexpr ImageFacts kFacts{.rows = 8, .columns = 8, .bits = 8, .frames = "40"};

/// A byte of a frame that tells which frame of which file it is; -1 where the fetch fails.
int Mark(CxDcmParser& parser, int index) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = parser.GetAFrame(index, data, size, 0);
    const std::unique_ptr<unsigned char[]> owner(data);
    return result == QVM_SUCCESS && size == 64 ? data[63] : -1;
}

Bytes Native(int first) {
    Bytes pixels;
    for (int i = 0; i < kFrames; ++i) {
        pixels.insert(pixels.end(), 64, static_cast<unsigned char>(first + i));
    }
    return test::NativeFile(test::kExplicitUid, kFacts, pixels);
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
    return test::EncapsulatedFile(test::kRleUid, kFacts, fragments);
}

void ExpectMarks(CxDcmParser& parser, int first, const char* what) {
    for (const int index : {39, 0, 17, 39, 38, 1}) {
        EXPECT_EQ(Mark(parser, index), first + index) << what << index;
    }
    EXPECT_EQ(Mark(parser, kFrames), -1) << what;
}

TEST(LateFrames, FollowTheFileTheHeaderAndTheCopy) {
    CDcmApp app;
    for (const auto make : {Native, Rle}) {
        const TemporaryFile one(make(1));
        const TemporaryFile other(make(101));
        CxDcmParser parser;
        ASSERT_EQ(parser.Initialize(&app, CString(one.Path()), 0), QVM_SUCCESS);
        ExpectMarks(parser, 1, "the file ");
        unsigned long offset = 0;
        unsigned long size = 0;
        unsigned long firstOffset = 0;
        ASSERT_EQ(parser.GetAFrameOffsetSize(0, firstOffset, size), QVM_SUCCESS);
        ASSERT_EQ(parser.GetAFrameOffsetSize(39, offset, size), QVM_SUCCESS);
        EXPECT_EQ(offset - firstOffset, 39 * (make == Native ? 64U : 64U + 8 + 2 + 8));
        CxDcmParser copy(parser);
        ASSERT_EQ(parser.Initialize(&app, CString(other.Path()), 0), QVM_SUCCESS);
        ExpectMarks(parser, 101, "another file ");
        ExpectMarks(copy, 1, "a copy of the first ");
        copy = parser;
        ExpectMarks(copy, 101, "a copy of the other ");
        copy.GetHeader()->SetValue(0x00280008, "39");
        EXPECT_EQ(Mark(copy, 38), 139);
        EXPECT_EQ(Mark(copy, 39), -1);
    }
}

}  // namespace
}  // namespace quorvex
