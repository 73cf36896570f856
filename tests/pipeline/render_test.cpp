#include "pipeline/pixel_block.h"
#include "pipeline/view/display_table.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"
#include "tests/pipeline/inspector.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::Rendered;
using pipeline_test::ShowBlank;
using pipeline_test::ShowBytes;

using Values = std::vector<int>;

/// A windowing whose display value is the value itself within the domain, which has to be narrow.
CXWindowing StraightThrough(int low, int high) {
    CXGSPSInfo record;
    record.windowCenter = 127;
    record.windowWidth = 255;
    CXWindowing windowing;
    windowing.PrepareGSPSProcessing2(&record, low, high);
    return windowing;
}

int DisplayOf(CXWindowing& windowing, int value, int low) {
    int count = 0;
    int first = 0;
    windowing.GetValue(CXWindowing::kDisplayTableCount, &count, &first);
    EXPECT_EQ(first, low);
    std::vector<unsigned char> table(static_cast<std::size_t>(count));
    windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
    return table[static_cast<std::size_t>(std::clamp(value - first, 0, count - 1))];
}

struct TableCase {
    const char* what;
    ValueRange range;
    ElementWidth width;
    int element;
    int value;  // that the element stands for
};

const TableCase kTables[] = {
    {"a plain word", {0, 200, 0, 200}, ElementWidth::kWord, 77, 77},
    {"a negative word", {-100, 200, -100, 200}, ElementWidth::kWord, 65536 - 50, -50},
    {"a word past 32767 beside negative ones",
     {-24, 40'200, -24, 200},
     ElementWidth::kWord,
     40'000,
     200},
    {"a word below the domain", {-24, 200, -24, 200}, ElementWidth::kWord, 65536 - 3000, -24},
    {"a word above the domain", {0, 200, 0, 200}, ElementWidth::kWord, 65535, 200},
    {"a signed byte", {-100, 100, -100, 100}, ElementWidth::kByte, 256 - 60, -60},
    {"a byte shifted down by a rescale", {-300, -45, -300, 0}, ElementWidth::kByte, 256 - 50, -50},
    {"the same, lowest", {-300, -45, -300, 0}, ElementWidth::kByte, 212, -300},
};

TEST(DisplayTable, KnowsWhatEachElementStandsFor) {
    for (const auto& c : kTables) {
        SCOPED_TRACE(c.what);
        CXWindowing windowing = StraightThrough(c.range.domainLow, c.range.domainHigh);
        const auto table = DisplayTable(windowing, c.range, c.width);
        ASSERT_EQ(table.size(), c.width == ElementWidth::kByte ? 256U : 65536U);
        EXPECT_EQ(table[static_cast<std::size_t>(c.element)],
                  DisplayOf(windowing, c.value, c.range.domainLow));
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
    const double kHuge[] = {std::nan(""), HUGE_VAL, 1e300, 1e5, -1.0};
    for (const double zoom : kHuge) {
        dipp.UpdateZoom_ABS(zoom);
        EXPECT_EQ(dipp.Render(), QVM_ERROR_INVALID_OUTPUT_SIZE) << zoom;
        EXPECT_EQ(dipp.GetResultImageInfo(size, pixelSize), QVM_SUCCESS);
        EXPECT_EQ(size, (CSize{8, 8}));
        EXPECT_EQ(dipp.Draw(nullptr), QVM_SUCCESS);
    }
    dipp.UpdateZoom_ABS(1.0);
    dipp.UpdateRotate_ABS(45);
    EXPECT_EQ(dipp.Render(), QVM_ERROR_INVALID_OUTPUT_SIZE);
    dipp.UpdateRotate_ABS(0);
    for (const double zoom : {0.0, 0.1}) {
        dipp.UpdateZoom_ABS(zoom);
        EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
        EXPECT_EQ(dipp.GetResultImageInfo(size, pixelSize), QVM_SUCCESS);
        EXPECT_EQ(size.cx, 0);
        EXPECT_EQ(dipp.Draw(nullptr), QVM_SUCCESS);
    }
}

Values Corners(const Values& rows, int width) {
    const auto at = [&](std::size_t i) { return rows[i]; };
    return {at(0), at(static_cast<std::size_t>(width - 1)),
            at(rows.size() - static_cast<std::size_t>(width)), at(rows.size() - 1)};
}

TEST(Render, TurnsClockwiseAndMirrorsBeforeItTurns) {
    std::vector<unsigned char> pixels(8 * 4);
    pixels[0] = 50;    // upper left
    pixels[7] = 100;   // upper right
    pixels[24] = 150;  // lower left
    pixels[31] = 200;  // lower right
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
    for (const auto& c : cases) {
        CXDIPP dipp;
        ShowBytes(dipp, pixels, {8, 4}, {8, 4});
        dipp.UpdateVOILUT_ABS(128, 255);
        dipp.UpdateRotate_ABS(c.rotation);
        if (c.flip) dipp.UpdateHFlip_Toggle();
        const Values result = Rendered(dipp);
        CSize size;
        int pixelSize = 0;
        dipp.GetResultImageInfo(size, pixelSize);
        EXPECT_EQ(size, (c.rotation % 180 == 0 ? CSize{8, 4} : CSize{4, 8}));
        EXPECT_EQ(Corners(result, size.cx), c.corners) << c.rotation << c.flip;
    }
}

TEST(Render, SwapsRedAndBlueAndKeepsTheLastResultsLayout) {
    std::vector<unsigned char> pixels(4 * 4 * 3);
    std::iota(pixels.begin(), pixels.end(), static_cast<unsigned char>(10));
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(pixels.data(), {4, 4}, {4, 4}, 3, 255, 0, 0), QVM_SUCCESS);
    dipp.UpdateVOILUT_ABS(127, 255);
    const Values result = Rendered(dipp);
    ASSERT_EQ(result.size(), 48U);
    EXPECT_EQ(Values(result.begin(), result.begin() + 3), (Values{13, 12, 11}));

    ShowBlank(dipp, {4, 4}, {4, 4});  // grey: the colour result is still there, and still colour
    CSize size;
    int pixelSize = 0;
    EXPECT_EQ(dipp.GetResultImageInfo(size, pixelSize), QVM_SUCCESS);
    EXPECT_EQ(pixelSize, 3);
    std::vector<unsigned char> all(1000, 1);
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
    dipp.Inverse();
    EXPECT_EQ(Rendered(dipp), complement);
    dipp.Inverse();
    EXPECT_EQ(Rendered(dipp), complement);
    ShowBytes(dipp, {0, 10, 200, 255}, {4, 1}, {4, 1});
    EXPECT_EQ(Rendered(dipp), complement);
}

TEST(Render, ReadsSignedWordsAndRangesGivenTheOtherWayRound) {
    const std::int16_t words[] = {-1000, 0, 500, 1000};
    std::vector<unsigned char> pixels(8);
    std::memcpy(pixels.data(), words, 8);
    CXDIPP dipp;
    ASSERT_EQ(dipp.Initialize(pixels.data(), {4, 1}, {4, 1}, 2, 1000, -1000, 1), QVM_SUCCESS);
    const Values result = Rendered(dipp);
    EXPECT_EQ(result[0], 0);
    EXPECT_NEAR(result[1], 127, 1);
    EXPECT_NEAR(result[2], 191, 1);
    EXPECT_GE(result[3], 254);
    ASSERT_EQ(dipp.Initialize(pixels.data(), {4, 1}, {4, 1}, 2, -1000, 1000, 1), QVM_SUCCESS);
    EXPECT_EQ(Rendered(dipp), result);
    // Far more values than a table has room for: clipped to what words can hold.
    ASSERT_EQ(dipp.Initialize(pixels.data(), {4, 1}, {4, 1}, 2, 2147483647, -2147483647, 1),
              QVM_SUCCESS);
    EXPECT_EQ(Rendered(dipp).size(), 4U);
}

PixelBlock Layer(std::size_t size, unsigned char value) {
    PixelBlock layer = NewPixelBlock(size);
    std::memset(layer.data.get(), value, size);
    return layer;
}

TEST(Render, LeavesOutALayerOfAnotherSize) {
    CXDIPP dipp;
    ShowBytes(dipp, std::vector<unsigned char>(16, 3), {4, 4}, {4, 4});
    const CXDIPPInspector look{dipp};
    const Values plain = Rendered(dipp);
    look.RenderMode() = kRenderOverlay;
    look.OverlayImage() = Layer(15, 255);
    EXPECT_EQ(Rendered(dipp), plain);
    look.OverlayImage() = Layer(16, 255);
    EXPECT_EQ(Rendered(dipp), Values(16, 255));

    look.RenderMode() = kRenderSupplementalPalette;
    look.PaletteImage() = Layer(48, 9);
    EXPECT_EQ(Rendered(dipp), Values(48, 9));
    look.PaletteImage() = Layer(47, 9);
    EXPECT_EQ(Rendered(dipp), Values(48, plain[0]));
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
        CSize size;
        int pixelSize = 0;
        EXPECT_EQ(each->GetResultImageInfo(size, pixelSize), QVM_SUCCESS);
        EXPECT_EQ(size, (CSize{4, 1}));
        EXPECT_EQ(Rendered(*each), plain);
        each->UpdateViewSize({8, 8});
        EXPECT_DOUBLE_EQ(each->GetZoomFactor(), 2.0);
    }
}

TEST(Initialize, RefusesPixelsThatAreNotThere) {
    CXDIPP dipp;
    ShowBytes(dipp, {0, 10, 200, 255}, {4, 1}, {4, 1});
    const Values before = Rendered(dipp);
    unsigned char pixel[4] = {};
    const auto refused = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
    EXPECT_EQ(dipp.Initialize(nullptr, {4, 4}, {4, 1}, 1, 255, 0, 0), refused);
    EXPECT_EQ(dipp.Initialize(pixel, {4, 4}, {0, 1}, 1, 255, 0, 0), refused);
    EXPECT_EQ(dipp.Initialize(pixel, {4, 4}, {4, -1}, 1, 255, 0, 0), refused);
    EXPECT_EQ(dipp.Initialize(pixel, {4, 4}, {4, 1}, 0, 255, 0, 0), refused);
    EXPECT_EQ(dipp.Initialize(pixel, {4, 4}, {2147483647, 2147483647}, 2, 255, 0, 0), refused);
    EXPECT_EQ(Rendered(dipp), before);
}

}  // namespace
}  // namespace quorvex
