// Each limit is met by an input of its own, refused by a code, and named.
#include "foundation/types/limits.h"

#include "foundation/dicom/reading/element_reader.h"
#include "foundation/dicom/reading/piece_sources.h"
#include "parser/palette/palette_segments.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"
#include "tests/reliability/hostile_image.h"
#include "tests/support/answers.h"
#include "tests/support/attribute_values.h"
#include "tests/support/corpus.h"
#include "tests/support/temporary_file.h"
#include "tests/tools/run_command.h"

#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>

namespace quorvex::test {
namespace {

constexpr ImageClaim kLarge{"32768", "32768"};

int CodeOfFrame(const DicomBuilder& file, int frame) {
    const TemporaryFile image(file.Bytes());
    CDcmApp app;
    CxDcmParser parser;
    EXPECT_EQ(parser.Initialize(&app, image.Path(), 0), QVM_SUCCESS);
    return FrameOf(parser, frame).code;
}

DicomBuilder ManyFrames() {
    return HostileImage({"8192", "8192", "1", "8", "500"}, kRleUid, 500);
}

int Convert(const DicomBuilder& file) {
    auto memory = file.File();
    CDcmObject object;
    EXPECT_EQ(ReadUpTo(object, memory, kToTheEnd), kDcmSuccess);
    const auto made = ConvertTo(kXferUncompressedExplicit, object);
    EXPECT_EQ(made.answer, QVM_SUCCESS);
    return made.outcome;
}

int Read(const std::vector<unsigned char>& bytes) {
    MemoryFile file{.bytes = bytes};
    CDcmObject object;
    return ReadUpTo(object, file, kToTheEnd);
}

std::vector<unsigned char> Nested() {
    auto file = DicomBuilder::Part10(kExplicitUid);
    for (int level = 0; level <= kDeepestNesting; ++level)
        file.Sequence(tag::kReferencedImageSequence).Item();
    return file.Bytes();
}

int ReadWithFewParts(const DicomBuilder& dataSet, std::size_t most) {
    auto file = dataSet.File();
    dicom::StreamCallbackSource source(&file, MemoryFile::GiveStream);
    dicom::ByteFeed feed(source);
    dicom::ElementReader reader(feed, 0, most);
    return reader.ReadMain({true, false}, dicom::kNoStopTag) ? kDcmSuccess : kDcmFailure;
}

DicomBuilder SixParts() {
    DicomBuilder dataSet;
    dataSet.Sequence(tag::kReferencedImageSequence).Item(0).Item(8);
    dataSet.Add(tag::kPatientName, "PN", "").EndSequence();
    return std::move(dataSet.Fragments({}));
}

int SetLongValue() {
    unsigned char byte = 0;
    unsigned char* frames[] = {&byte};
    const unsigned long lengths[] = {kLongestValue + 1};
    return CDcmObject().SetValueEx(tag::kPixelData, 1, lengths, frames);
}

int ExpandPalette() {
    constexpr std::array<std::uint16_t, 6> kSelf = {0, 0, 2, 2, 0, 0};
    std::array<std::uint16_t, 16> table{};
    return ExpandPaletteSegments(kSelf, {}, table) ? 1 : 0;
}

int RleOfManySegments() {
    Bytes frame(64);
    frame[0] = kMostRleSegments + 1;
    return CodeOfFrame(ImageFile(kRleUid, {}).Fragments({frame}), 0);
}

int MakePolygonMask() {
    auto object = With("00280010=65535; 00280011=1; 00181600=POLYGONAL");
    std::string vertices = "1\\1";
    for (int i = 0; i < 600; ++i) vertices += "\\65535\\1\\1\\1";
    object.SetValue(tag::kVerticesOfThePolygonalShutter, vertices.c_str());
    CXGSPSInfo info;
    CXGSPSObject().GSPSApplier(&object, &info, "", -1);
    return info.shutterMask != nullptr ? 1 : 0;
}

TEST(Limits, AreEachRefusedByACodeAndNamed) {
    struct Case {
        Limit limit;
        int code;
        std::function<int()> run;
    };
    const ImageClaim huge{"65535", "65535", "4"};
    const ImageClaim many{.frames = "2147483647"};
    const Case cases[] = {
        {Limit::kLargestBlock, QVM_ERROR_FAILED_TO_GET_PIXEL_DATA,
         [&] { return CodeOfFrame(HostileImage(huge, kExplicitUid), 0); }},
        {Limit::kLargestPicture, QVM_ERROR_FAILED_TO_DECOMPRESS,
         [&] { return CodeOfFrame(HostileImage(kLarge, kRleUid), 0); }},
        {Limit::kLargestObject, QVM_ERROR_FAILED_TO_SET_PIXEL_DATA,
         [] { return Convert(ManyFrames()); }},
        {Limit::kDeepestNesting, kDcmFailure, [] { return Read(Nested()); }},
        {Limit::kMostParts, kDcmFailure, [] { return ReadWithFewParts(SixParts(), 5); }},
        {Limit::kMostFrames, QVM_ERROR_INVALID_FRAME_INDEX,
         [&] { return CodeOfFrame(HostileImage(many, kExplicitUid), kMostFrames); }},
        {Limit::kLongestValue, kDcmFailure, SetLongValue},
        {Limit::kMostInflated, kDcmFailure,
         [] { return Read(DeflatedZeros(kInflatedAllowance * 2)); }},
        {Limit::kMostSegments, QVM_ERROR_FAILED_TO_DECOMPRESS, RleOfManySegments},
        {Limit::kPolygonCrossings, 0, MakePolygonMask},
        {Limit::kPaletteSegments, 0, ExpandPalette},
    };
    for (const auto& c : cases) {
        ForgetLimit();
        EXPECT_EQ(c.run(), c.code) << LimitSentence(c.limit);
        EXPECT_EQ(LatestLimit(), c.limit) << LimitSentence(c.limit);
    }
    EXPECT_EQ(ReadWithFewParts(SixParts(), 6), kDcmSuccess);
    EXPECT_STREQ(LimitSentence(Limit::kNone), "");
}

/// Damaged ones among them are refused or shown for other reasons.
TEST(Limits, NoRealFileMeetsOne) {
    constexpr const char* kMadeToMeetOne = "2026-05-26-oob-monochrome-65535.dcm";
    for (const auto& path : RealFiles()) {
        CDcmApp app;
        CxDcmParser parser;
        ForgetLimit();
        if (parser.Initialize(&app, path.string(), 0) != QVM_SUCCESS) continue;
        for (int i = 0; i < std::min(parser.GetFrameCount(), 3); ++i) (void)FrameOf(parser, i);
        const bool isMade = path.filename() == kMadeToMeetOne;
        EXPECT_EQ(LatestLimit(), isMade ? Limit::kLargestBlock : Limit::kNone)
            << path << ": " << LimitSentence(LatestLimit());
    }
}

TEST(Limits, AreWrittenDownForHosts) {
    const auto written = ReadAll(QUORVEX_SOURCE_DIR "/SECURITY.md");
    for (int i = 1; LimitValue(static_cast<Limit>(i)) != 0; ++i) {
        const std::string sentence = LimitSentence(static_cast<Limit>(i));
        EXPECT_NE(written.find(sentence), std::string::npos) << sentence;
    }
}

TEST(Limits, AreNamedByTheCommandInASentence) {
    const ScratchFolder folder;
    const auto path = folder.Path("bad.dcm");
    const auto out = folder.Path("out");
    const Arguments convert = {"convert", path, "-o", out, "--to", "explicit"};
    const struct {
        Limit limit;
        Bytes bytes;
        Arguments command;
    } kCases[] = {{Limit::kDeepestNesting, Nested(), {"info", path}},
                  {Limit::kDeepestNesting, Nested(), convert},
                  {Limit::kLargestPicture,
                   HostileImage(kLarge, kRleUid).Bytes(),
                   {"render", path, "-o", out}},
                  {Limit::kLargestObject, ManyFrames().Bytes(), convert}};
    for (const auto& c : kCases) {
        folder.Write("bad.dcm", c.bytes);
        ExpectStatus(1, c.command, std::string("): ") + LimitSentence(c.limit) + "\n");
    }
}

}  // namespace
}  // namespace quorvex::test
