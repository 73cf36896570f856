#include "quorvex/CXDIPP.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/test_objects.h"
#include "tests/support/corpus.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::FillImage;
using pipeline_test::ImageShape;
using pipeline_test::Rendered;

constexpr ImageShape kShape{{8, 4}, 1, 16, 12, 0, "MONOCHROME2"};
constexpr std::size_t kFrames = 3;
constexpr std::uint32_t kShared = 0x52009229;
constexpr std::uint32_t kPerFrame = 0x52009230;

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

std::vector<unsigned short> FramePixels(std::size_t frame) {
    std::vector<unsigned short> pixels;
    for (std::size_t i = 0; i < 32; ++i) {
        pixels.push_back(static_cast<unsigned short>((i * 131 + frame * 977) % 4096));
    }
    return pixels;
}

void PutRescale(CDcmObjectCommon& to, const Settings& settings) {
    to.SetValue(0x00281052, settings.intercept);
    to.SetValue(0x00281053, settings.slope);
}
void PutWindow(CDcmObjectCommon& to, const Settings& settings) {
    to.SetValue(0x00281050, settings.center);
    to.SetValue(0x00281051, settings.width);
}
void PutSpacing(CDcmObjectCommon& to, const Settings& settings) {
    to.SetValue(0x00280030, settings.rowSpacing);
    to.SetNextValue(0x00280030, settings.columnSpacing);
}

/// A group of one macro whose item `put` fills.
template <class Put>
void PutMacro(CDcmItem& groups, std::uint32_t sequence, Put put, const Settings& settings) {
    CDcmItem macro;
    put(macro, settings);
    groups.SetValue(sequence, &macro);
}

CDcmItem AllGroups(const Settings& settings) {
    CDcmItem groups;
    PutMacro(groups, 0x00289145, PutRescale, settings);
    PutMacro(groups, 0x00289132, PutWindow, settings);
    PutMacro(groups, 0x00289110, PutSpacing, settings);
    return groups;
}

CDcmObject MultiFrame() {
    CDcmObject object;
    std::vector<unsigned short> pixels;
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        const auto more = FramePixels(frame);
        pixels.insert(pixels.end(), more.begin(), more.end());
    }
    FillImage(object, kShape, pixels);
    object.SetValue(0x00280008, std::to_string(kFrames).c_str());
    return object;
}

CDcmObject SingleFrame(std::size_t frame, const Settings& settings) {
    CDcmObject object;
    FillImage(object, kShape, FramePixels(frame));
    PutRescale(object, settings);
    PutWindow(object, settings);
    PutSpacing(object, settings);
    return object;
}

/// All that a host sees of a frame.
struct Seen {
    std::vector<int> pixels;
    double spacingX = 0.0;
    double spacingY = 0.0;
    int width = 0;
    int level = 0;
    friend bool operator==(const Seen&, const Seen&) = default;
};

Seen See(CDcmObject& object, std::size_t frame) {
    CDcmApp app;
    CXDIPP dipp;
    EXPECT_EQ(dipp.Initialize(&app, &object, {8, 4}, static_cast<int>(frame)), QVM_SUCCESS);
    dipp.UpdateZoom_ABS(1.0);
    Seen seen;
    seen.pixels = Rendered(dipp);
    dipp.GetPixelSpace(seen.spacingX, seen.spacingY);
    dipp.GetWindowingFactor(seen.width, seen.level);
    return seen;
}

TEST(FunctionalGroups, EachFrameLooksLikeItsSingleFrameTwin) {
    CDcmObject enhanced = MultiFrame();
    for (const Settings& settings : kOfFrames) {
        CDcmItem groups = AllGroups(settings);
        enhanced.SetNextValue(kPerFrame, &groups);
    }
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        CDcmObject twin = SingleFrame(frame, kOfFrames[frame]);
        const Seen seen = See(twin, 0);
        EXPECT_EQ(See(enhanced, frame), seen) << frame;
        EXPECT_EQ(seen.spacingX, std::stod(kOfFrames[frame].columnSpacing));
    }
    CString untouched;
    EXPECT_NE(enhanced.GetValue(0x00281052, untouched), kDcmSuccess);
}

TEST(FunctionalGroups, OfTheFrameWinOverSharedOnesMacroByMacro) {
    CDcmObject enhanced = MultiFrame();
    CDcmItem shared = AllGroups(kOfFrames[0]);
    enhanced.SetValue(kShared, &shared);
    CDcmItem empty;
    enhanced.SetValue(kPerFrame, &empty);
    CDcmItem own;
    PutMacro(own, 0x00289132, PutWindow, kOfFrames[1]);
    CDcmItem nothing;
    own.SetValue(0x00289110, &nothing);      // a macro that says nothing
    enhanced.SetNextValue(kPerFrame, &own);  // the third frame has no groups at all

    Settings mixed = kOfFrames[0];
    mixed.center = kOfFrames[1].center;
    mixed.width = kOfFrames[1].width;
    const Settings* const expected[kFrames] = {&kOfFrames[0], &mixed, &kOfFrames[0]};
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        CDcmObject twin = SingleFrame(frame, *expected[frame]);
        EXPECT_EQ(See(enhanced, frame), See(twin, 0)) << frame;
    }
}

TEST(FunctionalGroups, GiveWayToTheTopLevel) {
    CDcmObject plain = MultiFrame();
    PutRescale(plain, kOfFrames[1]);
    PutWindow(plain, kOfFrames[1]);
    PutSpacing(plain, kOfFrames[1]);
    CDcmObject grouped = plain;
    for (const Settings& settings : kOfFrames) {
        CDcmItem groups = AllGroups(settings);
        grouped.SetNextValue(kPerFrame, &groups);
    }
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        EXPECT_EQ(See(grouped, frame), See(plain, frame)) << frame;
    }
}

TEST(FunctionalGroups, BringVOITables) {
    CDcmItem table;
    table.SetValue(0x00283002, static_cast<unsigned short>(4096));
    table.SetNextValue(0x00283002, static_cast<unsigned short>(0));
    table.SetNextValue(0x00283002, static_cast<unsigned short>(8));
    for (int i = 0; i < 4096; ++i) {
        table.SetNextValue(0x00283006, static_cast<unsigned short>(255 - i / 16));
    }
    CDcmItem macro;
    macro.SetValue(0x00283010, &table);
    CDcmItem groups;
    groups.SetValue(0x00289132, &macro);
    CDcmObject enhanced = MultiFrame();
    enhanced.SetValue(kShared, &groups);
    CDcmObject plain = MultiFrame();
    CDcmObject twin = plain;
    twin.SetValue(0x00283010, &table);
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
    int width = 0;
    int level = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 102);
    EXPECT_EQ(level, 49);
    double x = 0.0;
    double y = 0.0;
    dipp.GetPixelSpace(x, y);
    EXPECT_EQ(x, 0.388672);
    EXPECT_EQ(y, 0.388672);
    EXPECT_LE(CXDIPPInspector{dipp}.MinValue(), -1000);  // air, in modality values
}

}  // namespace
}  // namespace quorvex
