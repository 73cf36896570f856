// New objects by the standard rules, of images that keep settings in functional groups.
#include "tests/maker/maker_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/checkers.h"
#include "tests/support/corpus.h"

#include <gtest/gtest.h>
#include <sstream>

namespace quorvex {
namespace {

using namespace test;

CDcmItem Groups(const std::string& rescale) {
    CDcmItem groups;
    if (rescale.empty()) return groups;
    return With(groups, tag::kPixelValueTransformationSequence,
                {With<CDcmItem>(rescale + "; RescaleType=HU")});
}

CDcmObject Enhanced(const std::string& shared, const std::vector<std::string>& frames) {
    CDcmObject object = With(
        "00080005=ISO_IR 100; 00080016=1.2.840.10008.5.1.4.1.1.2.1; 00080018=1.2.3.9; Modality=CT; "
        "0020000D=1.2.3; Rows=2; Columns=2; BitsAllocated=16; BitsStored=16; SamplesPerPixel=1; "
        "PixelRepresentation=0; PhotometricInterpretation=MONOCHROME2; BodyPartExamined=CHEST");
    object.SetValue(tag::kNumberOfFrames, static_cast<int>(frames.size()));
    PutItems(object, tag::kSharedFunctionalGroupsSequence, {Groups(shared)});
    std::vector<CDcmItem> items;
    for (const auto& frame : frames) items.push_back(Groups(frame));
    PutItems(object, tag::kPerFrameFunctionalGroupsSequence, items);
    return object;
}

_FRAME_INFO WordsOf(unsigned rows, unsigned columns) {
    _FRAME_INFO info;
    info.samplesPerPixel = 1;
    info.photometricInterpretation = "MONOCHROME2";
    info.rows = static_cast<std::uint16_t>(rows);
    info.columns = static_cast<std::uint16_t>(columns);
    info.bitsAllocated = 16;
    info.bitsStored = 16;
    return info;
}

std::unique_ptr<CDcmObject> Make(CDcmObject& source, _FRAME_INFO& info,
                                 const std::vector<Frame>& frames) {
    CxDcmMaker maker;
    maker.SetRules(Rules::kStandard);
    EXPECT_EQ(maker.DcmMakerInit(&source, nullptr, &info), QVM_SUCCESS);
    for (const Frame& frame : frames) EXPECT_EQ(maker.AddFrame(NewCopy(frame)), QVM_SUCCESS);
    CDcmObject* made = nullptr;
    EXPECT_EQ(maker.MakeDcmObject(made), QVM_SUCCESS);
    return std::unique_ptr<CDcmObject>(made);
}

// A picture is of no frame in particular: it means what all of them mean.
TEST(EnhancedSource, GivesCapturesTheRescaleOfAllFrames) {
    const std::string one = "RescaleIntercept=-1024; RescaleSlope=1.5";
    const std::string other = "RescaleIntercept=-1000; RescaleSlope=1.5";
    const std::string none = "RescaleIntercept; RescaleSlope; WindowWidth=65536";
    const struct {
        std::string shared;
        std::vector<std::string> frames;
        std::string capture;
    } kCases[] = {
        {one, {"", ""}, one},     {"", {one, one}, one},    {other, {one, one}, one},
        {"", {one, other}, none}, {other, {one, ""}, none}, {"", {"", ""}, none},
        {"", {one, ""}, none},    {"", {one}, one},
    };
    for (const auto& c : kCases) {
        CDcmObject source = Enhanced(c.shared, c.frames);
        _FRAME_INFO info = WordsOf(1, 2);
        const auto made = Make(source, info, {Frame{1, 0, 2, 0}});
        ASSERT_NE(made, nullptr);
        ExpectAttributes(*made, c.capture);
        const TemporaryFile file(Written(*made));
        EXPECT_EQ(ErrorsIn(file.Path()), "") << c.shared;
    }
}

std::string WindowsOf(const CDcmObject& object, std::uint32_t sequence) {
    std::string windows;
    ForEachItem(object, sequence, [&](const CDcmItem& groups) {
        CDcmItem group;
        if (groups.GetValue(tag::kFrameVOILUTSequence, group) == kDcmSuccess)
            windows +=
                TextOf(group, tag::kWindowCenter) + "/" + TextOf(group, tag::kVOILUTFunction) + " ";
    });
    return windows;
}

TEST(EnhancedSource, HasTheWindowOfTheHostInItsGroups) {
    const auto window =
        With(CDcmItem(), tag::kFrameVOILUTSequence,
             {With<CDcmItem>("WindowCenter=1; WindowWidth=2; VOILUTFunction=SIGMOID")});
    for (const bool isOfFrames : {false, true}) {
        CDcmObject source = Enhanced("", {"", ""});
        if (isOfFrames) PutItems(source, tag::kPerFrameFunctionalGroupsSequence, {window, window});
        _FRAME_INFO info = WordsOf(2, 2);
        info.windowCenter = "40.5";
        info.windowWidth = "80";
        info.pixelSpacing[0] = "0.25";
        const auto made = Make(source, info, {Frame(8), Frame(8)});
        ASSERT_NE(made, nullptr);
        const std::string mine = std::string("40.5/") + kAbsent + " ";
        EXPECT_EQ(WindowsOf(*made, tag::kPerFrameFunctionalGroupsSequence),
                  isOfFrames ? mine + mine : "");
        EXPECT_EQ(WindowsOf(*made, tag::kSharedFunctionalGroupsSequence), isOfFrames ? "" : mine);
        ExpectAttributes(*made, "WindowCenter; PixelSpacing");
    }
}

TEST(EnhancedSource, OfARealFileStaysValid) {
    const auto path = CorpusFolder() / "files" / "CT0012.fragmented_no_bot_jpeg_lossless.70.dcm";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "QUORVEX_CORPUS does not have it";
    CDcmApp app;
    CxDcmParser parser;
    ASSERT_EQ(parser.Initialize(&app, CString(path.string()), 0), QVM_SUCCESS);
    CDcmObject& header = *parser.GetHeader();
    _FRAME_INFO info = WordsOf(512, 512);
    header.GetValue(tag::kBitsStored, info.bitsStored);
    header.GetValue(tag::kPixelRepresentation, info.pixelRepresentation);
    info.windowCenter = "40.5";
    info.windowWidth = "80";
    info.pixelSpacing[0] = "0.25";
    const auto frames = FramesOf(parser);
    const auto known = ErrorsIn(path.string());
    for (const std::size_t count : {frames.size(), std::size_t{1}}) {
        const auto made = Make(
            header, info, {frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(count)});
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(TextOf(*made, tag::kRescaleIntercept), count == 1 ? "-1024.00" : kAbsent);
        const TemporaryFile file(Written(*made));
        std::istringstream errors(ErrorsIn(file.Path()));
        for (std::string error; std::getline(errors, error);)
            EXPECT_NE(known.find(error), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace quorvex
