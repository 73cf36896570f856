#include "pipeline/displayed_image.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <utility>

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
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct {
        double from;
        int percent;
        double zoom;
    } const cases[] = {{1.5, 10, 1.6},  {9.95, 10, 10.0}, {0.15, -10, 0.1},
                       {20.0, 0, 10.0}, {20.0, 1, 10.0},  {kNaN, 1, 0.1}};
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

// --- An object that has rendered before shows what one shows that renders for the first time ----

constexpr CSize kSmall{200, 200};
constexpr CSize kLarge{310, 230};  // enough pixels for every way to map them

/// Two frames of one range with a shutter, and a state.
struct Host {
    Host() {
        std::mt19937 engine(7);
        Words words(2 * std::size_t{310} * 230);
        for (auto& word : words) word = static_cast<std::uint16_t>(engine() & 0xFFFU);
        words[0] = words[words.size() / 2] = 0;
        words[1] = words[words.size() / 2 + 1] = 0xFFF;
        image = ImageOf({kLarge}, words,
                        "NumberOfFrames=2; RescaleIntercept=-1024; RescaleSlope=1; "
                        "ShutterShape=CIRCULAR; CenterOfCircularShutter=110\\150; "
                        "RadiusOfCircularShutter=90");
        auto voi = test::With<CDcmItem>("WindowCenter=300; WindowWidth=700");
        state.SetValue(tag::kSoftcopyVOILUTSequence, &voi);
    }
    CDcmApp app;
    CDcmObject image;
    CDcmObject state =
        test::With("ImageRotation=90; ImageHorizontalFlip=Y; PresentationLUTShape=INVERSE");
};

/// Something that a user does, with a number that says how much.
struct Act {
    const char* name;
    void (*perform)(CXDIPP&, Host&, int amount);
};

const Act kActs[] = {
    {"window", [](CXDIPP& d, Host&, int n) { d.UpdateVOILUT_ABS(n * 9 - 900, 1 + n * n / 5); }},
    {"window offset", [](CXDIPP& d, Host&, int n) { d.UpdateVOILUT_Offset(n - 50, 60 - n); }},
    {"zoom", [](CXDIPP& d, Host&, int n) { d.UpdateZoom_ABS(0.1 + n * 0.02); }},
    {"zoom 1", [](CXDIPP& d, Host&, int n) { d.UpdateZoom_ABS(n % 2 != 0 ? 1.0 : 0.5); }},
    {"pan",
     [](CXDIPP& d, Host&, int n) {
         d.UpdatePan_Offset(CPoint{n, -n});
     }},
    {"turn", [](CXDIPP& d, Host&, int n) { d.UpdateRotate_Offset(n % 4 * 90); }},
    {"flip", [](CXDIPP& d, Host&, int) { d.UpdateHFlip_Toggle(); }},
    {"toggle", [](CXDIPP& d, Host&, int) { d.UpdatePresentationLUT_Toggle(); }},
    {"view",
     [](CXDIPP& d, Host&, int n) {
         d.UpdateViewSize(CSize{100 + n, 300 - n});
     }},
    {"shutter", [](CXDIPP& d, Host&, int n) { d.ShowShutter(n % 2); }},
    {"state", [](CXDIPP& d, Host& h, int) { d.ApllyGSPSObject(&h.app, &h.state); }},
    {"frame", [](CXDIPP& d, Host& h, int n) { d.Initialize(&h.app, kSmall, n % 2); }},
    {"copy", [](CXDIPP& d, Host&, int) { d = CXDIPP(d); }},
    {"bytes",
     [](CXDIPP& d, Host&, int n) {
         Bytes grey(310 * 230);
         for (std::size_t i = 0; i < grey.size(); ++i)
             grey[i] = static_cast<unsigned char>(i * i >> n % 9);
         ShowBytes(d, grey, kLarge, kSmall);
     }},
};

TEST(ViewTransform, ShowsNothingOfEarlierRenders) {
    Host host;
    std::mt19937 engine(11);
    for (int sequence = 0; sequence < 6; ++sequence) {
        CXDIPP lasting;
        ASSERT_EQ(lasting.Initialize(&host.app, &host.image, {250, 200}, 0), QVM_SUCCESS);
        std::vector<std::pair<const Act*, int>> done;
        for (int i = 0; i < 25; ++i) {
            done.emplace_back(&kActs[engine() % std::size(kActs)],
                              static_cast<int>(engine() % 100));
            done.back().first->perform(lasting, host, done.back().second);
            CXDIPP fresh;
            fresh.Initialize(&host.app, &host.image, {250, 200}, 0);
            for (const auto& [act, amount] : done) act->perform(fresh, host, amount);
            ASSERT_EQ(Rendered(lasting), Rendered(fresh))
                << done.back().first->name << ' ' << done.back().second << ", act " << i
                << " of sequence " << sequence;
        }
    }
}

}  // namespace
}  // namespace quorvex::pipeline_test
