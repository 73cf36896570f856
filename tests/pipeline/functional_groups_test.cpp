#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/corpus.h"

#include <array>

namespace quorvex::pipeline_test {
namespace {

using test::With;

constexpr std::size_t kFrames = 3;

/// What a frame is shown by, a macro each, and the sequences of the macros.
using Settings = std::array<std::string, 3>;
constexpr std::uint32_t kMacros[] = {tag::kPixelValueTransformationSequence,
                                     tag::kFrameVOILUTSequence, tag::kPixelMeasuresSequence};
const Settings kOfFrames[kFrames] = {
    {"RescaleIntercept=-1024; RescaleSlope=1", "WindowCenter=40; WindowWidth=400",
     "PixelSpacing=0.5\\0.75"},
    {"RescaleIntercept=0; RescaleSlope=2.5", "WindowCenter=300; WindowWidth=900.5",
     "PixelSpacing=0.5\\0.5"},
    {"RescaleIntercept=12.5; RescaleSlope=0.0625", "WindowCenter=20; WindowWidth=60",
     "PixelSpacing=1\\2"},
};
constexpr double kSpacingX[kFrames] = {0.75, 0.5, 2};

CDcmObject WithAll(CDcmObject object, const Settings& settings) {
    for (const auto& macro : settings) object = With(std::move(object), macro);
    return object;
}

CDcmItem AllGroups(const Settings& settings) {
    CDcmItem groups;
    for (std::size_t i = 0; i < settings.size(); ++i)
        test::PutItems(groups, kMacros[i], {With<CDcmItem>(settings[i])});
    return groups;
}

CDcmObject WithGroupsOfFrames(CDcmObject object) {
    return With(std::move(object), tag::kPerFrameFunctionalGroupsSequence,
                {AllGroups(kOfFrames[0]), AllGroups(kOfFrames[1]), AllGroups(kOfFrames[2])});
}

/// The frames from one number to another, 32 pixels each.
CDcmObject Frames(std::size_t from, std::size_t to) {
    Words pixels;
    for (std::size_t i = 32 * from; i < 32 * to; ++i)
        pixels.push_back(static_cast<unsigned short>((i % 32 * 131 + i / 32 * 977) % 4096));
    return ImageOf({{8, 4}}, pixels, "NumberOfFrames=" + std::to_string(to - from));
}
CDcmObject MultiFrame() {
    return Frames(0, kFrames);
}

/// All that a host sees of a frame.
struct Seen {
    Values pixels;
    double spacingX = 0.0;
    double spacingY = 0.0;
    CSize window;
    friend bool operator==(const Seen&, const Seen&) = default;
};

Seen See(CDcmObject object, std::size_t frame) {
    const bool hasRescale = test::TextOf(object, tag::kRescaleIntercept) != test::kAbsent;
    CXDIPP dipp;
    ShowObject(dipp, object, {8, 4}, static_cast<int>(frame));
    Seen seen{.pixels = Shown(dipp), .window = WindowOf(dipp)};
    dipp.GetPixelSpace(seen.spacingX, seen.spacingY);
    EXPECT_EQ(test::TextOf(object, tag::kRescaleIntercept) != test::kAbsent, hasRescale);
    return seen;
}

/// What a single-frame file with these settings shows.
Seen SeeTwin(std::size_t frame, const Settings& settings) {
    return See(WithAll(Frames(frame, frame + 1), settings), 0);
}

TEST(FunctionalGroups, EachFrameLooksLikeItsSingleFrameTwin) {
    const CDcmObject enhanced = WithGroupsOfFrames(MultiFrame());
    for (std::size_t frame = 0; frame < kFrames; ++frame) {
        const Seen seen = See(enhanced, frame);
        EXPECT_EQ(seen, SeeTwin(frame, kOfFrames[frame])) << frame;
        EXPECT_EQ(seen.spacingX, kSpacingX[frame]);
    }
}

TEST(FunctionalGroups, OfTheFrameWinOverSharedOnesMacroByMacro) {
    // The first frame has no macro, the second a window and a macro that says nothing, the third
    // no groups at all.
    const CDcmItem own = With(With(CDcmItem(), kMacros[1], {With<CDcmItem>(kOfFrames[1][1])}),
                              kMacros[2], {CDcmItem()});
    const CDcmObject enhanced =
        With(With(MultiFrame(), tag::kSharedFunctionalGroupsSequence, {AllGroups(kOfFrames[0])}),
             tag::kPerFrameFunctionalGroupsSequence, {CDcmItem(), own});
    Settings mixed = kOfFrames[0];
    mixed[1] = kOfFrames[1][1];
    for (std::size_t frame = 0; frame < kFrames; ++frame)
        EXPECT_EQ(See(enhanced, frame), SeeTwin(frame, frame == 1 ? mixed : kOfFrames[0])) << frame;
}

TEST(FunctionalGroups, GiveWayToTheTopLevel) {
    const CDcmObject plain = WithAll(MultiFrame(), kOfFrames[1]);
    for (std::size_t frame = 0; frame < kFrames; ++frame)
        EXPECT_EQ(See(WithGroupsOfFrames(plain), frame), See(plain, frame)) << frame;
}

TEST(FunctionalGroups, BringVOITables) {
    std::vector<int> entries;
    for (int i = 0; i < 4096; ++i) entries.push_back(255 - i / 16);
    const auto withTable = [&](auto object) {
        return With(std::move(object), tag::kVOILUTSequence, {test::LutItem(4096, 0, 8, entries)});
    };
    const CDcmItem groups = With(CDcmItem(), kMacros[1], {withTable(CDcmItem())});
    const Seen seen = See(With(MultiFrame(), tag::kSharedFunctionalGroupsSequence, {groups}), 2);
    EXPECT_EQ(seen, See(withTable(MultiFrame()), 2));
    EXPECT_NE(seen, See(MultiFrame(), 2));
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
