#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/corpus.h"

#include <filesystem>
#include <string>

namespace quorvex::pipeline_test {
namespace {

constexpr ImageShape kShape{{8, 4}, 1, 16, 12, 0, "MONOCHROME2"};
constexpr std::size_t kFrames = 3;

/// What a frame is shown by, as the texts of a file have it.
struct Settings {
    const char* intercept;
    const char* slope;
    const char* center;
    const char* width;
    const char* rowSpacing;
    const char* columnSpacing;
};
constexpr Settings kOfFrames[kFrames] = {
    {"-1024", "1", "40", "400", "0.5", "0.75"},
    {"0", "2.5", "300", "900.5", "0.5", "0.5"},
    {"12.5", "0.0625", "20", "60", "1", "2"},
};

void PutRescale(CDcmObjectCommon& to, const Settings& settings) {
    to.SetValue(tag::kRescaleIntercept, settings.intercept);
    to.SetValue(tag::kRescaleSlope, settings.slope);
}
void PutWindow(CDcmObjectCommon& to, const Settings& settings) {
    to.SetValue(tag::kWindowCenter, settings.center);
    to.SetValue(tag::kWindowWidth, settings.width);
}
void PutSpacing(CDcmObjectCommon& to, const Settings& settings) {
    test::Put(to, tag::kPixelSpacing, {settings.rowSpacing, settings.columnSpacing});
}
void PutAll(CDcmObjectCommon& to, const Settings& settings) {
    PutRescale(to, settings);
    PutWindow(to, settings);
    PutSpacing(to, settings);
}

/// A group of one macro whose item `put` fills.
template <class Put>
void PutMacro(CDcmItem& groups, std::uint32_t sequence, Put put, const Settings& settings) {
    CDcmItem macro;
    put(macro, settings);
    test::PutItems(groups, sequence, {macro});
}

CDcmItem AllGroups(const Settings& settings) {
    CDcmItem groups;
    PutMacro(groups, tag::kPixelValueTransformationSequence, PutRescale, settings);
    PutMacro(groups, tag::kFrameVOILUTSequence, PutWindow, settings);
    PutMacro(groups, tag::kPixelMeasuresSequence, PutSpacing, settings);
    return groups;
}

void PutGroupsOfFrames(CDcmObject& object) {
    test::PutItems(object, tag::kPerFrameFunctionalGroupsSequence,
                   {AllGroups(kOfFrames[0]), AllGroups(kOfFrames[1]), AllGroups(kOfFrames[2])});
}

Words FramePixels(std::size_t frame) {
    Words pixels;
    for (std::size_t i = 0; i < 32; ++i) {
        pixels.push_back(static_cast<unsigned short>((i * 131 + frame * 977) % 4096));
    }
    return pixels;
}

CDcmObject MultiFrame() {
    CDcmObject object;
    Words pixels;
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        const auto more = FramePixels(frame);
        pixels.insert(pixels.end(), more.begin(), more.end());
    }
    FillImage(object, kShape, pixels);
    object.SetValue(tag::kNumberOfFrames, std::to_string(kFrames).c_str());
    return object;
}

/// All that a host sees of a frame.
struct Seen {
    Values pixels;
    double spacingX = 0.0;
    double spacingY = 0.0;
    CSize window;
    friend bool operator==(const Seen&, const Seen&) = default;
};

Seen See(CDcmObject& object, std::size_t frame) {
    CDcmApp app;
    CXDIPP dipp;
    EXPECT_EQ(dipp.Initialize(&app, &object, {8, 4}, static_cast<int>(frame)), QVM_SUCCESS);
    Seen seen{.pixels = Shown(dipp), .window = WindowOf(dipp)};
    dipp.GetPixelSpace(seen.spacingX, seen.spacingY);
    return seen;
}

/// What a single-frame file with these settings shows.
Seen SeeTwin(std::size_t frame, const Settings& settings) {
    CDcmObject twin;
    FillImage(twin, kShape, FramePixels(frame));
    PutAll(twin, settings);
    return See(twin, 0);
}

TEST(FunctionalGroups, EachFrameLooksLikeItsSingleFrameTwin) {
    CDcmObject enhanced = MultiFrame();
    PutGroupsOfFrames(enhanced);
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        const Seen seen = See(enhanced, frame);
        EXPECT_EQ(seen, SeeTwin(frame, kOfFrames[frame])) << frame;
        EXPECT_EQ(seen.spacingX, std::stod(kOfFrames[frame].columnSpacing));
    }
    CString untouched;
    EXPECT_NE(enhanced.GetValue(tag::kRescaleIntercept, untouched), kDcmSuccess);
}

TEST(FunctionalGroups, OfTheFrameWinOverSharedOnesMacroByMacro) {
    CDcmItem own;  // of the second frame; the first has no macro, the third no groups at all
    PutMacro(own, tag::kFrameVOILUTSequence, PutWindow, kOfFrames[1]);
    test::PutItems(own, tag::kPixelMeasuresSequence, {CDcmItem()});  // a macro that says nothing
    CDcmObject enhanced = MultiFrame();
    test::PutItems(enhanced, tag::kSharedFunctionalGroupsSequence, {AllGroups(kOfFrames[0])});
    test::PutItems(enhanced, tag::kPerFrameFunctionalGroupsSequence, {CDcmItem(), own});

    Settings mixed = kOfFrames[0];
    mixed.center = kOfFrames[1].center;
    mixed.width = kOfFrames[1].width;
    const Settings* const expected[kFrames] = {&kOfFrames[0], &mixed, &kOfFrames[0]};
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        EXPECT_EQ(See(enhanced, frame), SeeTwin(frame, *expected[frame])) << frame;
    }
}

TEST(FunctionalGroups, GiveWayToTheTopLevel) {
    CDcmObject plain = MultiFrame();
    PutAll(plain, kOfFrames[1]);
    CDcmObject grouped = plain;
    PutGroupsOfFrames(grouped);
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        EXPECT_EQ(See(grouped, frame), See(plain, frame)) << frame;
    }
}

TEST(FunctionalGroups, BringVOITables) {
    std::vector<int> entries;
    for (int i = 0; i < 4096; ++i) entries.push_back(255 - i / 16);
    const CDcmItem table = test::LutItem(4096, 0, 8, entries);
    CDcmItem macro;
    test::PutItems(macro, tag::kVOILUTSequence, {table});
    CDcmItem groups;
    test::PutItems(groups, tag::kFrameVOILUTSequence, {macro});
    CDcmObject enhanced = MultiFrame();
    test::PutItems(enhanced, tag::kSharedFunctionalGroupsSequence, {groups});
    CDcmObject plain = MultiFrame();
    CDcmObject twin = plain;
    test::PutItems(twin, tag::kVOILUTSequence, {table});
    EXPECT_EQ(See(enhanced, 2), See(twin, 2));
    EXPECT_NE(See(enhanced, 2), See(plain, 2));
}

// Shared groups of a real enhanced CT: rescale -1024, window 49 and 102, spacing 0.388672.
TEST(FunctionalGroups, OfARealFile) {
    const auto file =
        test::CorpusFolder() / "files" / "CT0012.fragmented_no_bot_jpeg_lossless.70.dcm";
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "QUORVEX_CORPUS does not have it";
    CDcmApp app;
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(&app, file.string(), {512, 512}, 1), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp), (CSize{102, 49}));
    double x = 0.0;
    double y = 0.0;
    dipp.GetPixelSpace(x, y);
    EXPECT_EQ(x, 0.388672);
    EXPECT_EQ(y, 0.388672);
    dipp.UpdateVOILUT_ABS(-500, 10);
    EXPECT_EQ(Shown(dipp)[0], 0) << "air, in modality values";
}

}  // namespace
}  // namespace quorvex::pipeline_test
