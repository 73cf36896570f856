/// Real files, brought into each lossless form and read back.
#include "maker_objects.h"
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

void ConvertAndCompare(CDcmApp& app, const CDcmObject& original, std::int32_t form,
                       const std::string& name, Tally& tally) {
    const auto frames = FramesOf(original);
    CDcmObject object = original;
    _USER_SETTING_INFO settings;
    settings.compressionType = form;
    CxDcmMaker maker;
    ASSERT_EQ(maker.MakeDcmObject(&app, &object, &settings), QVM_SUCCESS) << name;
    if (maker.GetOutcome() != QVM_SUCCESS && maker.GetOutcome() != QVM_FRAME_COPIED) {
        ++tally.refused;
        EXPECT_EQ(Written(object), Written(original)) << name << " form " << form;
        return;
    }
    ++tally.made;
    const TemporaryFile file;
    ASSERT_EQ(object.WriteFile(CString(file.Path())), kDcmSuccess) << name << " form " << form;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString(file.Path()), 0), QVM_SUCCESS) << name;
    const bool isPalette = TextOf(original, 0x00280004).Find("PALETTE") >= 0;
    const bool isExpanded = isPalette && maker.GetOutcome() == QVM_SUCCESS;
    if (!isExpanded) {
        EXPECT_EQ(FramesOf(parser), frames) << name << " form " << form;
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
            ConvertAndCompare(app, *parser.GetHeader(), form, path.filename().string(), tally);
    }
    RecordProperty("made", tally.made);
    RecordProperty("refused", tally.refused);
    EXPECT_LE(tally.refused * 5, tally.made);
}

}  // namespace
}  // namespace quorvex
