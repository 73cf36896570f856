#include "pipeline/displayed_image.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/shown.h"

#include <algorithm>
#include <limits>

namespace quorvex::pipeline_test {
namespace {

struct LayoutCase {
    const char* what;
    CSize view;
    struct {
        CRect area;
        int sizeMode = 0;
        double magnification = 1.0;
        double aspect[2] = {1.0, 1.0};   // vertical over horizontal
        double spacing[2] = {0.0, 0.0};  // likewise
    } presentation;
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
        auto record = std::make_shared<CXGSPSInfo>();
        record->displayedAreaLeft = c.presentation.area.left;
        record->displayedAreaTop = c.presentation.area.top;
        record->displayedAreaRight = c.presentation.area.right;
        record->displayedAreaBottom = c.presentation.area.bottom;
        record->presentationSizeMode = c.presentation.sizeMode;
        record->presentationMagnification = c.presentation.magnification;
        record->pixelAspectVertical = c.presentation.aspect[0];
        record->pixelAspectHorizontal = c.presentation.aspect[1];
        record->pixelSpacingY = c.presentation.spacing[0];
        record->pixelSpacingX = c.presentation.spacing[1];
        DisplayedImage image;
        image.imageSize = {512, 512};
        image.viewSize = c.view;
        image.presentation = record;
        image.PrepareDisplayAreaTransform();
        EXPECT_DOUBLE_EQ(image.zoom, c.zoom);
        EXPECT_EQ(image.panOffset, c.pan);
        EXPECT_DOUBLE_EQ(image.aspectRatio, c.aspectRatio);
        EXPECT_EQ(image.roi, (CRect{0, 0, 512, 512}));
    }
}

TEST(ViewTransform, ZoomStepsStayBetweenATenthAndTen) {
    struct {
        double from;
        int percent;
        double zoom;
    } const cases[] = {{1.5, 10, 1.6},   {9.95, 10, 10.0},
                       {0.15, -10, 0.1}, {20.0, 0, 10.0},
                       {20.0, 1, 10.0},  {std::numeric_limits<double>::quiet_NaN(), 1, 0.1}};
    CXDIPP dipp;
    for (const auto& c : cases) {
        dipp.UpdateZoom_ABS(c.from);
        dipp.UpdateZoom_Offset(c.percent);
        EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), c.zoom) << c.from;
    }
    dipp.UpdateZoom_ABS(20.0);
    EXPECT_DOUBLE_EQ(dipp.GetZoomFactor(), 20.0);
}

// Rotations add up modulo 360, whatever their sign: seen where the lower right corner comes to lie.
TEST(ViewTransform, RotationsAddUpAndFlipsToggle) {
    const auto cornerAfter = [](auto... degrees) {
        CXDIPP dipp;
        ShowBytes(dipp, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255}, {4, 4}, {4, 4});
        dipp.UpdateHFlip_Toggle();
        dipp.UpdateHFlip_Toggle();
        (dipp.UpdateRotate_Offset(degrees), ...);
        const Values shown = Rendered(dipp);
        return std::ranges::max_element(shown) - shown.begin();
    };
    EXPECT_EQ(cornerAfter(90, 90, 90, 90), 15);
    EXPECT_EQ(cornerAfter(450), 12);
    EXPECT_EQ(cornerAfter(-90), 3);
    constexpr int kLowest = std::numeric_limits<int>::min();  // -128 modulo 360
    EXPECT_EQ(cornerAfter(-90, kLowest, 128), 3);
}

TEST(ViewTransform, ANewViewSizeStartsOverAndTheSameOneDoesNot) {
    CXDIPP dipp;
    dipp.UpdateViewSize({100, 100});  // nothing is open yet: only remembered
    ShowBlank(dipp, {64, 32}, {128, 128});
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
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    EXPECT_EQ(ResultSize(dipp), (CSize{32, 64})) << "still turned";
}

TEST(ViewTransform, PanTurnsIntoTheAxesOfTheImage) {
    struct {
        int rotation;
        CPoint plain, flipped;
    } const cases[] = {{0, {3, 5}, {-3, 5}},
                       {90, {5, -3}, {5, 3}},
                       {180, {-3, -5}, {3, -5}},
                       {-90, {-5, 3}, {-5, -3}}};
    for (const auto& c : cases) {
        DisplayedImage image;
        image.panOffset = {3, 5};
        image.rotation = c.rotation;
        EXPECT_EQ(image.CalcImagePanOffset(), c.plain) << c.rotation;
        image.horizontalFlip = 1;
        EXPECT_EQ(image.CalcImagePanOffset(), c.flipped) << c.rotation;
    }
}

TEST(ViewTransform, WindowUpdatesReachWindowing) {
    CXDIPP dipp;
    ShowBlank(dipp, {4, 4}, {4, 4});
    EXPECT_EQ(WindowOf(dipp), (CSize{255, 127})) << "from the range, not that of 8-bit images";
    dipp.UpdateVOILUT_ABS(40, 400);
    dipp.UpdateVOILUT_Offset(10, -20);
    EXPECT_EQ(WindowOf(dipp), (CSize{420, 30}));
}

}  // namespace
}  // namespace quorvex::pipeline_test
