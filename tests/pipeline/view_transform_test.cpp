#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/inspector.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quorvex {
namespace {

using pipeline_test::ShowBlank;

/// What a presentation says about the area to show; ratios as vertical over horizontal.
struct Presentation {
    CRect area;
    int sizeMode = 0;
    double magnification = 1.0;
    double aspect[2] = {1.0, 1.0};
    double spacing[2] = {0.0, 0.0};
};

struct LayoutCase {
    const char* what;
    CSize view;
    Presentation presentation;
    double zoom;
    CPoint pan;
    double aspectRatio;
};

const LayoutCase kLayouts[] = {
    {"whole image", {800, 600}, {}, 600.0 / 512, {0, 0}, 1.0},
    {"tall pixels", {800, 600}, {{}, 0, 1, {2, 1}}, 600.0 / 1024, {0, 0}, 2.0},
    {"spacing counts without a ratio", {512, 512}, {{}, 0, 1, {1, 0}, {0.5, 0.25}}, 0.5, {0, 0}, 2},
    {"no ratio at all is square", {256, 512}, {{}, 0, 1, {0, 0}}, 0.5, {0, 0}, 0},
    {"an area is fitted and centred", {400, 400}, {{101, 101, 200, 200}}, 4, {424, 424}, 1},
    {"true size is scale to fit", {400, 400}, {{101, 101, 200, 200}, 1}, 4, {424, 424}, 1},
    {"an area beyond the image", {400, 400}, {{-255, 1, 768, 1024}}, 400.0 / 1024, {0, -100}, 1},
    {"magnify", {400, 400}, {{1, 1, 512, 512}, 2, 2.0}, 2, {256, 256}, 1},
    {"corners of a mirrored state", {400, 400}, {{200, 101, 101, 200}}, 4, {424, 424}, 1},
};

TEST(ViewTransform, LaysTheImageOut) {
    for (const auto& c : kLayouts) {
        SCOPED_TRACE(c.what);
        CXDIPP dipp;
        ShowBlank(dipp, {512, 512}, c.view);
        const CXDIPPInspector look{dipp};
        auto& record = look.Record();
        record.displayedAreaLeft = c.presentation.area.left;
        record.displayedAreaTop = c.presentation.area.top;
        record.displayedAreaRight = c.presentation.area.right;
        record.displayedAreaBottom = c.presentation.area.bottom;
        record.presentationSizeMode = c.presentation.sizeMode;
        record.presentationMagnification = c.presentation.magnification;
        record.pixelAspectVertical = c.presentation.aspect[0];
        record.pixelAspectHorizontal = c.presentation.aspect[1];
        record.pixelSpacingY = c.presentation.spacing[0];
        record.pixelSpacingX = c.presentation.spacing[1];
        look.LayOut();
        EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), c.zoom);
        EXPECT_EQ(dipp.GetPanOffset(), c.pan);
        EXPECT_DOUBLE_EQ(look.AspectRatio(), c.aspectRatio);
        EXPECT_EQ(look.Roi(), (CRect{0, 0, 512, 512}));
    }
}

TEST(ViewTransform, ZoomStepsStayBetweenATenthAndTen) {
    CXDIPP dipp;
    const auto stepped = [&](double from, int percent) {
        dipp.UpdateZoom_ABS(from);
        dipp.UpdateZoom_Offset(percent);
        return dipp.GetZoomFactor();
    };
    EXPECT_DOUBLE_EQ(stepped(1.5, 10), 1.6);
    EXPECT_DOUBLE_EQ(stepped(9.95, 10), 10.0);
    EXPECT_DOUBLE_EQ(stepped(0.15, -10), 0.1);
    EXPECT_DOUBLE_EQ(stepped(20.0, 1), 10.0);
    EXPECT_DOUBLE_EQ(stepped(std::numeric_limits<double>::quiet_NaN(), 1), 0.1);
    dipp.UpdateZoom_ABS(20.0);
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 20.0);
}

TEST(ViewTransform, RotationKeepsTheSignAndFlipToggles) {
    CXDIPP dipp;
    const CXDIPPInspector look{dipp};
    for (int turn = 0; turn < 4; ++turn) dipp.UpdateRotate_Offset(90);
    EXPECT_EQ(look.Rotation(), 0);
    dipp.UpdateRotate_ABS(450);
    EXPECT_EQ(look.Rotation(), 90);
    dipp.UpdateRotate_ABS(-90);
    EXPECT_EQ(look.Rotation(), -90);
    dipp.UpdateRotate_Offset(std::numeric_limits<int>::min());
    EXPECT_GT(look.Rotation(), -360);

    look.HorizontalFlip() = 7;
    dipp.UpdateHFlip_Toggle();
    EXPECT_EQ(look.HorizontalFlip(), 0);
    dipp.UpdateHFlip_Toggle();
    EXPECT_EQ(look.HorizontalFlip(), 1);
}

TEST(ViewTransform, ANewViewSizeStartsOverAndTheSameOneDoesNot) {
    CXDIPP dipp;
    dipp.UpdateViewSize({100, 100});  // nothing is open yet: only remembered
    ShowBlank(dipp, {64, 64}, {128, 128});
    dipp.UpdateZoom_ABS(3.0);
    dipp.UpdatePan_ABS({5, 6});
    dipp.UpdatePan_Offset({1, -1});
    dipp.UpdateRotate_ABS(90);
    dipp.UpdateViewSize({128, 128});
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 3.0);
    EXPECT_EQ(dipp.GetPanOffset(), (CPoint{6, 5}));
    dipp.UpdateViewSize({64, 256});
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 1.0);
    EXPECT_EQ(dipp.GetPanOffset(), CPoint{});
    EXPECT_EQ(CXDIPPInspector{dipp}.Rotation(), 90);
}

TEST(ViewTransform, PanTurnsIntoTheAxesOfTheImage) {
    struct {
        int rotation;
        CPoint plain, flipped;
    } const cases[] = {
        {0, {3, 5}, {-3, 5}},
        {90, {5, -3}, {5, 3}},
        {180, {-3, -5}, {3, -5}},
        {-90, {-5, 3}, {-5, -3}},
    };
    for (const auto& c : cases) {
        CXDIPP dipp;
        dipp.UpdatePan_ABS({3, 5});
        dipp.UpdateRotate_ABS(c.rotation);
        EXPECT_EQ(CXDIPPInspector{dipp}.ImagePanOffset(), c.plain) << c.rotation;
        dipp.UpdateHFlip_Toggle();
        EXPECT_EQ(CXDIPPInspector{dipp}.ImagePanOffset(), c.flipped) << c.rotation;
    }
}

TEST(ViewTransform, WindowUpdatesReachWindowing) {
    CXDIPP dipp;
    ShowBlank(dipp, {4, 4}, {4, 4});
    int width = 0;
    int level = 0;
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(width, 255);  // from the range, not the fixed window of 8-bit images
    EXPECT_EQ(level, 127);
    dipp.UpdateVOILUT_ABS(40, 400);
    dipp.UpdateVOILUT_Offset(10, -20);
    dipp.GetWindowingFactor(width, level);
    EXPECT_EQ(level, 30);
    EXPECT_EQ(width, 420);
}

}  // namespace
}  // namespace quorvex
