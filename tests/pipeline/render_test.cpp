#include "foundation/types/scratch_memory.h"
#include "pipeline/view/display_table.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "tests/pipeline/screen.h"
#include "tests/support/windowing_values.h"

#include <cmath>
#include <memory>
#include <numeric>

namespace quorvex::pipeline_test {
namespace {

struct TableCase {
    const char* what;
    ValueRange range;
    ElementWidth width;
    int element;
    int value;  // that the element stands for
};
constexpr auto kByte = ElementWidth::kByte;
constexpr auto kWord = ElementWidth::kWord;
const TableCase kTables[] = {
    {"a plain word", {0, 200, 0, 200}, kWord, 77, 77},
    {"a negative word", {-100, 200, -100, 200}, kWord, 65536 - 50, -50},
    {"a word past 32767 beside negative ones", {-24, 40'200, -24, 200}, kWord, 40'000, 200},
    {"a word below the domain", {-24, 200, -24, 200}, kWord, 65536 - 3000, -24},
    {"a word above the domain", {0, 200, 0, 200}, kWord, 65535, 200},
    {"a signed byte", {-100, 100, -100, 100}, kByte, 256 - 60, -60},
    {"a byte shifted down by a rescale", {-300, -45, -300, 0}, kByte, 256 - 50, -50},
    {"the same, lowest", {-300, -45, -300, 0}, kByte, 212, -300},
};

TEST(DisplayTable, KnowsWhatEachElementStandsFor) {
    for (const auto& c : kTables) {
        SCOPED_TRACE(c.what);
        CXGSPSInfo record;
        record.windowCenter = 127;
        record.windowWidth = 255;
        CXWindowing windowing;
        windowing.PrepareGSPSProcessing2(&record, c.range.domainLow, c.range.domainHigh);
        const auto ofValues = DisplayTableOf(windowing);
        ScratchMemory memory;
        const auto table = DisplayTable(windowing, c.range, c.width, memory);
        ASSERT_EQ(table.size(), c.width == kByte ? 256U : 65536U);
        EXPECT_EQ(table[static_cast<std::size_t>(c.element)],
                  ofValues.at(static_cast<std::size_t>(c.value - c.range.domainLow)));
    }
}

TEST(Render, NeedsAnImageAndAUsableZoom) {
    CXDIPP dipp;
    CSize size{-1, -1};
    int pixelSize = -1;
    EXPECT_EQ(dipp.Render(), QVM_ERROR_NO_IMAGE);
    EXPECT_EQ(dipp.Draw(nullptr), QVM_ERROR_NO_IMAGE);
    EXPECT_EQ(dipp.GetResultImageInfo(size, pixelSize), QVM_ERROR_NO_IMAGE);
    EXPECT_EQ(size, (CSize{-1, -1}));

    ShowBlank(dipp, {8, 8}, {8, 8});
    EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
    const auto expect = [&](double zoom, int rotation, QUORVEX_MESSAGE answer, int width) {
        dipp.UpdateZoom_ABS(zoom);
        dipp.UpdateRotate_ABS(rotation);
        EXPECT_EQ(dipp.Render(), answer) << zoom;
        EXPECT_EQ(dipp.GetResultImageInfo(size, pixelSize), QVM_SUCCESS);
        EXPECT_EQ(size.cx, width) << "of the result that is there afterwards, zoom " << zoom;
        EXPECT_EQ(dipp.Draw(nullptr), QVM_SUCCESS);
    };
    for (const double zoom : {std::nan(""), HUGE_VAL, 1e300, 1e5, -1.0})
        expect(zoom, 0, QVM_ERROR_INVALID_OUTPUT_SIZE, 8);
    expect(1.0, 45, QVM_ERROR_INVALID_OUTPUT_SIZE, 8);
    for (const double zoom : {0.0, 0.1}) expect(zoom, 0, QVM_SUCCESS, 0);
}

TEST(Render, TurnsClockwiseAndMirrorsBeforeItTurns) {
    struct {
        int rotation;
        bool flip;
        Values corners;  // upper left, upper right, lower left, lower right
    } const cases[] = {
        {0, false, {50, 100, 150, 200}},   {90, false, {150, 50, 200, 100}},
        {180, false, {200, 150, 100, 50}}, {270, false, {100, 200, 50, 150}},
        {-90, false, {100, 200, 50, 150}}, {0, true, {100, 50, 200, 150}},
        {90, true, {200, 100, 150, 50}},
    };
    Bytes pixels(8 * 4);
    pixels[0] = 50;
    pixels[7] = 100;
    pixels[24] = 150;
    pixels[31] = 200;
    for (const auto& c : cases) {
        CXDIPP dipp;
        ShowBytes(dipp, pixels, {8, 4}, {8, 4});
        dipp.UpdateVOILUT_ABS(128, 255);
        dipp.UpdateRotate_ABS(c.rotation);
        if (c.flip) dipp.UpdateHFlip_Toggle();
        const Values rows = Rendered(dipp);
        EXPECT_EQ(ResultSize(dipp), (c.rotation % 180 == 0 ? CSize{8, 4} : CSize{4, 8}));
        const auto width = static_cast<std::size_t>(ResultSize(dipp).cx);
        EXPECT_EQ((Values{rows[0], rows[width - 1], rows[32 - width], rows[31]}), c.corners)
            << c.rotation << c.flip;
    }
}

TEST(Render, SwapsRedAndBlueAndKeepsTheLastResultsLayout) {
    Bytes pixels(4 * 4 * 3);
    std::iota(pixels.begin(), pixels.end(), static_cast<unsigned char>(10));
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(pixels.data(), {4, 4}, {4, 4}, 3, 255, 0, 0), QVM_SUCCESS);
    dipp.UpdateVOILUT_ABS(127, 255);
    const Values result = Rendered(dipp);
    ASSERT_EQ(result.size(), 48U);
    EXPECT_EQ(Values(result.begin(), result.begin() + 3), (Values{13, 12, 11}));

    ShowBlank(dipp, {4, 4}, {4, 4});  // grey: the colour result is still there, and still colour
    EXPECT_EQ(test::ResultOf(dipp).pixelSize, 3);
    Bytes all(1000, 1);
    unsigned char* destination = all.data();
    EXPECT_EQ(dipp.GetResultImage(destination, 1000), QVM_SUCCESS);
    EXPECT_EQ(all[48], 1);
}

TEST(Render, InverseIsOneWayAndTheToggleIsNot) {
    CXDIPP dipp;
    ShowBytes(dipp, {0, 10, 200, 255}, {4, 1}, {4, 1});
    const Values plain = Rendered(dipp);
    Values complement;
    for (const int value : plain) complement.push_back(255 - value);
    dipp.UpdatePresentationLUT_Toggle();
    EXPECT_NE(Rendered(dipp), plain);
    dipp.UpdatePresentationLUT_Toggle();
    for (int i = 0; i < 2; ++i) {
        dipp.Inverse();
        EXPECT_EQ(Rendered(dipp), complement);
    }
    ShowBytes(dipp, {0, 10, 200, 255}, {4, 1}, {4, 1});
    EXPECT_EQ(Rendered(dipp), complement);
}

TEST(Render, ReadsSignedWordsAndRangesGivenTheOtherWayRound) {
    std::int16_t words[] = {-1000, 0, 500, 1000};
    auto* const pixels = reinterpret_cast<unsigned char*>(words);
    CXDIPP dipp;
    const auto shownOver = [&](int maxValue, int minValue) {
        EXPECT_EQ(dipp.Initialize(pixels, {4, 1}, {4, 1}, 2, maxValue, minValue, 1), QVM_SUCCESS);
        return Rendered(dipp);
    };
    const Values result = shownOver(1000, -1000);
    ExpectNear(result, Values{0, 127, 191, 255});
    EXPECT_EQ(result[0], 0);
    EXPECT_EQ(shownOver(-1000, 1000), result);
    // Far more values than a table has room for: cut to what words can hold.
    EXPECT_EQ(shownOver(2147483647, -2147483647).size(), 4U);
}

TEST(Copy, GoesItsOwnWay) {
    auto original = std::make_unique<CXDIPP>();
    ShowBytes(*original, {0, 10, 200, 255}, {4, 1}, {4, 1});
    const Values plain = Rendered(*original);
    CXDIPP copy(*original);
    CXDIPP assigned;
    ShowBlank(assigned, {9, 9}, {9, 9});
    assigned = *original;
    const CXDIPP& same = assigned;
    assigned = same;
    original->UpdateVOILUT_ABS(0, 2);
    original->UpdateZoom_ABS(2.0);
    original.reset();
    for (CXDIPP* each : {&copy, &assigned}) {
        EXPECT_EQ(ResultSize(*each), (CSize{4, 1}));
        EXPECT_EQ(Rendered(*each), plain);
        each->UpdateViewSize({8, 8});
        EXPECT_DOUBLE_EQ(each->GetZoomFactor(), 2.0);
    }
}

// --- Onto a surface -----------------------------------------------------------------------------

constexpr int kView = 40;

/// What encloses the white pixels on a black view of 40 x 40.
CRect White(CXDIPP& dipp) {
    Screen screen({kView, kView});
    screen.Draw(dipp);
    return screen.Bright(100);
}

struct PlaceCase {
    const char* what;
    CSize image;
    double zoom;
    CPoint pan;
    int rotation;
    double aspectRatio;
    CRect white;
};
const PlaceCase kPlaces[] = {
    {"centred", {16, 8}, 1, {0, 0}, 0, 1, {12, 16, 28, 24}},
    {"panned", {16, 8}, 1, {-10, 12}, 0, 1, {2, 28, 18, 36}},
    {"zoomed", {16, 8}, 2, {0, 0}, 0, 1, {4, 12, 36, 28}},
    {"wider than the view", {16, 8}, 4, {0, 0}, 0, 1, {0, 4, 40, 36}},
    {"partly outside", {16, 8}, 1, {-20, -20}, 0, 1, {0, 0, 8, 4}},
    {"wholly outside", {16, 8}, 1, {400, 0}, 0, 1, {40, 40, 0, 0}},
    {"width rounded down", {15, 8}, 1, {0, 0}, 0, 1, {12, 16, 24, 24}},
    {"quarter turn", {16, 8}, 1, {0, 0}, 90, 1, {16, 12, 24, 28}},
    {"quarter turn back", {16, 8}, 1, {0, 0}, -90, 1, {16, 12, 24, 28}},
    {"tall pixels", {16, 8}, 1, {0, 0}, 0, 2, {12, 12, 28, 28}},
    {"no aspect ratio", {16, 8}, 1, {0, 0}, 0, 0, {12, 16, 28, 24}},
};

TEST(Draw, PlacesTheResult) {
    for (const auto& c : kPlaces) {
        SCOPED_TRACE(c.what);
        TestVolume volume(c.image, 8, Repeated(c.image.cx * c.image.cy, 200));
        volume.data.aspectRatioVertical = c.aspectRatio;
        CXDIPP dipp;
        ASSERT_EQ(dipp.Initialize(&volume.data, {kView, kView}, 255, 0), QVM_SUCCESS);
        dipp.UpdateZoom_ABS(c.zoom);
        dipp.UpdateRotate_ABS(c.rotation);
        EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
        dipp.UpdatePan_Offset(c.pan);  // acts without another render
        const CRect white = White(dipp);
        EXPECT_EQ(white, c.white) << white.left << "," << white.top << "," << white.right << ","
                                  << white.bottom;
    }
}

TEST(Draw, ShowsTheTopOfTheImageAtTheTop) {
    Bytes pixels(8 * 8);
    pixels[3] = 255;  // row 0
    CXDIPP dipp;
    ShowBytes(dipp, pixels, {8, 8}, {kView, kView});
    Shown(dipp);
    EXPECT_EQ(White(dipp), (CRect{19, 16, 20, 17}));
}

TEST(Draw, NeedsNoSurfaceToSurvive) {
    CXDIPP dipp;
    ShowBytes(dipp, Repeated(64, 255), {8, 8}, {8, 8});
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    DrawingSurface empty;
    for (CDC onto : {CDC(), CDC(&empty)}) EXPECT_EQ(dipp.Draw(&onto), QVM_SUCCESS);
    dipp.UpdatePan_ABS({2147483647, -2147483647});
    dipp.UpdatePan_Offset({2147483647, -2147483647});
    dipp.UpdateZoom_ABS(1e300);
    White(dipp);
}

}  // namespace
}  // namespace quorvex::pipeline_test
