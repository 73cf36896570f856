/// Real files, brought into each lossless form and read back.
#include "tests/maker/maker_objects.h"
#include "tests/support/answers.h"
#include "tests/support/corpus.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr std::int32_t kLosslessForms[] = {kXferUncompressedImplicit, kXferUncompressedExplicit,
                                           kXferJpegLossless, kXferJpeg2000Lossless};

/// Slow with every form: larger files are left to the command's own check.
constexpr std::uintmax_t kLargestFile = 300'000;

struct Tally {
    int made = 0;
    int refused = 0;
};

void ConvertAndCompare(const CDcmObject& original, std::int32_t form, const std::string& name,
                       Tally& tally) {
    const std::string what = name + " form " + std::to_string(form);
    CDcmObject object = original;
    const auto outcome = ConvertTo(form, object).Code();
    if (outcome != QVM_SUCCESS && outcome != QVM_FRAME_COPIED) {
        ++tally.refused;
        EXPECT_EQ(Written(object), Written(original)) << what;
        return;
    }
    ++tally.made;
    const bool isPalette = TextOf(original, 0x00280004).find("PALETTE") != std::string::npos;
    const auto read = FramesOfFile(object);
    if (isPalette && outcome == QVM_SUCCESS) {
        EXPECT_FALSE(read.empty()) << what << ": frames of colours now";
    } else {
        EXPECT_EQ(read, FramesOf(original)) << what;
    }
}

TEST(CorpusConversion, EveryLosslessFormGivesTheSameFrames) {
    CDcmApp app;
    Tally tally;
    for (const auto& path : RealFiles()) {
        if (std::filesystem::file_size(path) > kLargestFile) continue;
        CxDcmParser parser;
        if (parser.Initialize(&app, CString(path.string()), 1) != QVM_SUCCESS) continue;
        TRANSFER_SYNTAX syntax = kSyntaxNone;
        if (parser.GetHeader()->GetTransferSyntax(syntax) != kDcmSuccess) continue;
        if (FramesOf(parser).size() != static_cast<std::size_t>(parser.GetFrameCount())) continue;
        for (const std::int32_t form : kLosslessForms)
            ConvertAndCompare(*parser.GetHeader(), form, path.filename().string(), tally);
    }
    RecordProperty("made", tally.made);
    RecordProperty("refused", tally.refused);
    EXPECT_LE(tally.refused * 5, tally.made);
}

}  // namespace
}  // namespace quorvex
