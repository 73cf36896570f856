#include "foundation/platform/canvas.h"
#include "pipeline/layers/annotation_geometry.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/inspector.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::ShowBytes;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kPixel = 0;
constexpr int kDisplay = 1;
enum Type { kPoint = 1, kPolyline, kInterpolated, kCircle, kEllipse };

using Coordinates = std::vector<GSPSPoint>;

std::unique_ptr<GSPSGraphicObject> Graphic(int type, const Coordinates& points, int units = kPixel,
                                           int filled = 0) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    graphic->graphicType = type;
    graphic->annotationUnits = units;
    graphic->filled = filled;
    for (const auto& point : points) graphic->points.Add(new GSPSPoint(point));
    return graphic;
}

void Annotate(CXDIPP& dipp, std::unique_ptr<GSPSGraphicObject> graphic) {
    CXDIPPInspector{dipp}.Record().graphicObjects.Add(graphic.release());
    dipp.ShowAnnotations(1);
}

/// A surface with a rim around it that nobody may write to.
class Screen {
public:
    static constexpr int kWidth = 160;
    static constexpr int kHeight = 120;
    static constexpr int kGround = 2;  ///< black images are no lighter

    explicit Screen(int pixelBytes = 4)
        : pixelBytes_(pixelBytes), bytes_(static_cast<std::size_t>(kStep * (kHeight + 2)), kRim) {
        for (int y = 0; y < kHeight; ++y) {
            std::fill_n(Row(y), kWidth * pixelBytes_, static_cast<unsigned char>(0));
        }
        surface_ = {Row(0), kWidth, kHeight, kStep, pixelBytes};
    }

    void Draw(CXDIPP& dipp) {
        CDC dc(&surface_);
        EXPECT_EQ(dipp.Draw(&dc), QVM_SUCCESS);
    }
    [[nodiscard]] int Blue(int x, int y) const {
        return bytes_[static_cast<std::size_t>(kStep * (y + 1) + kMargin + x * pixelBytes_)];
    }
    [[nodiscard]] bool IsRimWhole() const {
        for (int i = 0; i < kStep; ++i) {
            if (At(i) != kRim || At(kStep * (kHeight + 1) + i) != kRim) return false;
        }
        for (int y = 1; y <= kHeight; ++y) {
            if (At(y * kStep + kMargin - 1) != kRim) return false;
            if (At(y * kStep + kMargin + kWidth * pixelBytes_) != kRim) return false;
        }
        return true;
    }
    /// Middle of the light on the surface, in the coordinates of a canvas.
    [[nodiscard]] CanvasPoint Middle() const {
        double x = 0.0;
        double y = 0.0;
        double sum = 0.0;
        ForEachPixel([&](int column, int row, double light) {
            if (light <= kGround) return;
            x += (column + 0.5) * light;
            y += (row + 0.5) * light;
            sum += light;
        });
        return {x / sum, y / sum};
    }
    /// What holds all pixels that are brighter than half.
    [[nodiscard]] CRect Bright() const {
        CRect box{kWidth, kHeight, 0, 0};
        ForEachPixel([&](int x, int y, double light) {
            if (light < 128) return;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                   std::max(box.bottom, y + 1)};
        });
        return box;
    }
    [[nodiscard]] bool IsBlack() const { return Bright() == CRect{kWidth, kHeight, 0, 0}; }
    [[nodiscard]] const std::vector<unsigned char>& Bytes() const { return bytes_; }

private:
    static constexpr int kMargin = 8;
    static constexpr int kStep = kWidth * 4 + 2 * kMargin;
    static constexpr unsigned char kRim = 0x5A;

    unsigned char* Row(int y) { return bytes_.data() + kStep * (y + 1) + kMargin; }
    [[nodiscard]] int At(int index) const { return bytes_[static_cast<std::size_t>(index)]; }
    template <class Work>
    void ForEachPixel(Work work) const {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) work(x, y, Blue(x, y));
        }
    }

    int pixelBytes_;
    std::vector<unsigned char> bytes_;
    DrawingSurface surface_;
};

class ShownAnnotations : public testing::Test {
protected:
    void SetUp() override {
        if (!Canvas::IsAvailable()) GTEST_SKIP() << "built without the drawing library";
    }
};

struct LayCase {
    const char* what;
    CSize image;
    double zoom;
    double aspectRatio;
    CPoint pan;
};
constexpr LayCase kLays[] = {
    {"as it is", {40, 24}, 1.0, 1.0, {0, 0}},
    {"zoomed and panned", {40, 24}, 2.5, 1.0, {-11, 7}},
    {"small", {40, 24}, 0.8, 1.0, {0, 0}},
    {"a width that is cut", {39, 23}, 2.0, 1.0, {3, 0}},
    {"tall pixels", {40, 24}, 1.5, 1.5, {0, 0}},
};

void Lay(CXDIPP& dipp, const LayCase& lay, int turn) {
    CXDIPPInspector{dipp}.AspectRatio() = lay.aspectRatio;
    dipp.UpdateZoom_ABS(lay.zoom);
    dipp.UpdateRotate_ABS(turn % 4 * 90);
    if (turn > 3) dipp.UpdateHFlip_Toggle();
    dipp.UpdatePan_ABS(lay.pan);
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
}

// The picture itself tells where a pixel lies: one white pixel on black, its middle of light.
TEST_F(ShownAnnotations, LieOnThePixelThatTheyName) {
    for (const LayCase& lay : kLays) {
        for (int turn = 0; turn < 8; ++turn) {
            if (lay.aspectRatio != 1.0 && turn % 2 == 1) continue;  // cut by its own height
            SCOPED_TRACE(std::string(lay.what) + ", turn " + std::to_string(turn));
            std::vector<unsigned char> pixels(
                static_cast<std::size_t>(lay.image.cx * lay.image.cy));
            CXDIPP annotated;
            ShowBytes(annotated, pixels, lay.image, {Screen::kWidth, Screen::kHeight});
            pixels[static_cast<std::size_t>(6 * lay.image.cx + 11)] = 255;
            CXDIPP picture;
            ShowBytes(picture, pixels, lay.image, {Screen::kWidth, Screen::kHeight});
            Annotate(annotated, Graphic(kPoint, {{11.5, 6.5}}));
            Lay(annotated, lay, turn);
            Lay(picture, lay, turn);
            Screen drawn;
            Screen expected(3);
            drawn.Draw(annotated);
            expected.Draw(picture);
            EXPECT_NEAR(drawn.Middle().x, expected.Middle().x, 0.3);
            EXPECT_NEAR(drawn.Middle().y, expected.Middle().y, 0.3);
            EXPECT_TRUE(drawn.IsRimWhole());
        }
    }
}

/// A black image of 80 x 60 that fills half of the screen each way.
void ShowBlack(CXDIPP& dipp) {
    pipeline_test::ShowBlank(dipp, {80, 60}, {Screen::kWidth, Screen::kHeight});
    dipp.UpdateZoom_ABS(1.0);
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
}

TEST_F(ShownAnnotations, AreDrawnOnlyWhileAskedFor) {
    CXDIPP dipp;
    ShowBlack(dipp);
    Screen before;
    before.Draw(dipp);
    Annotate(dipp, Graphic(kPolyline, {{10, 10}, {70, 50}}));
    Screen drawn;
    drawn.Draw(dipp);
    EXPECT_FALSE(drawn.IsBlack());
    CSize size;
    int channels = 0;
    for (const auto value : pipeline_test::ResultFromTop(dipp, size, channels)) {
        ASSERT_LE(value, Screen::kGround);
    }
    dipp.ShowAnnotations(0);
    Screen after;
    after.Draw(dipp);
    EXPECT_EQ(after.Bytes(), before.Bytes());
}

TEST_F(ShownAnnotations, InDisplayUnitsStayWithTheDisplayedArea) {
    CXDIPP dipp;
    ShowBlack(dipp);  // whole image: laid out to fill the screen
    Annotate(dipp, Graphic(kPolyline, {{0.25, 0.5}, {0.75, 0.5}}, kDisplay));
    const auto bright = [&] {
        Screen screen;
        screen.Draw(dipp);
        return screen.Bright();
    };
    const CRect line = bright();
    EXPECT_NEAR(line.left, 40, 1);
    EXPECT_NEAR(line.right, 120, 1);
    EXPECT_NEAR(line.top, 59, 1);
    dipp.UpdateZoom_ABS(0.5);
    dipp.UpdatePan_ABS({13, 5});
    dipp.UpdateHFlip_Toggle();
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    EXPECT_EQ(bright(), line);

    CXGSPSInfo& record = CXDIPPInspector{dipp}.Record();
    record.displayedAreaLeft = 1;  // 20 x 60 pixels: 40 x 120 of the screen, in its middle
    record.displayedAreaTop = 1;
    record.displayedAreaRight = 20;
    record.displayedAreaBottom = 60;
    EXPECT_NEAR(bright().left, 70, 1);
    EXPECT_NEAR(bright().right, 90, 1);
    dipp.UpdateRotate_ABS(90);  // on its side: 160 wide
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    EXPECT_NEAR(bright().left, 40, 1);
    EXPECT_NEAR(bright().right, 120, 1);
}

std::unique_ptr<GSPSTextObject> BoxedText(const char* text, int justification) {
    auto object = std::make_unique<GSPSTextObject>();
    object->textValue = text;
    object->horizontalJustification = justification;
    object->boundingBoxUnits = kDisplay;
    object->boundingBoxTopLeft = new double[2]{0.1, 0.2};
    object->boundingBoxBottomRight = new double[2]{0.9, 0.4};
    return object;
}

TEST_F(ShownAnnotations, TextStandsInItsBox) {
    const auto brightOf = [](std::unique_ptr<GSPSTextObject> text) {
        CXDIPP dipp;
        ShowBlack(dipp);
        CXDIPPInspector{dipp}.Record().textObjects.Add(text.release());
        dipp.ShowAnnotations(1);
        Screen screen;
        screen.Draw(dipp);
        EXPECT_TRUE(screen.IsRimWhole());
        return screen.Bright();
    };
    const CRect left = brightOf(BoxedText("HIM", 0));
    const CRect right = brightOf(BoxedText("HIM", 1));
    const CRect centre = brightOf(BoxedText("HIM", 2));
    EXPECT_NEAR(left.left, 16, 3);
    EXPECT_NEAR(right.right, 144, 3);
    EXPECT_NEAR((centre.left + centre.right) / 2.0, 80, 2);
    EXPECT_GT(left.top, 23);
    EXPECT_LT(left.bottom, 49);
    EXPECT_GT(brightOf(BoxedText("HIM\r\nHIM\nHIM", 0)).Height(), left.Height());

    auto anchored = BoxedText("HIM", 0);
    anchored->anchorUnits = kDisplay;
    anchored->anchorPoint = new double[2]{0.5, 0.9};
    EXPECT_LT(brightOf(std::move(anchored)).bottom, 49);
    auto withLine = BoxedText("HIM", 0);
    withLine->anchorUnits = kDisplay;
    withLine->anchorPoint = new double[2]{0.5, 0.9};
    withLine->anchorVisible = 1;
    EXPECT_NEAR(brightOf(std::move(withLine)).bottom, 108, 2);
}

struct BadGraphic {
    const char* what;
    int type;
    Coordinates points;
};
const BadGraphic kBadGraphics[] = {
    {"no point", kPoint, {}},
    {"no polyline", kPolyline, {}},
    {"no number", kPolyline, {{kNaN, 1}, {2, kNaN}, {kInfinity, -kInfinity}}},
    {"a circle of one point", kCircle, {{4, 4}}},
    {"an ellipse of three points", kEllipse, {{4, 4}, {8, 4}, {6, 2}}},
    {"a curve of no number", kInterpolated, {{kNaN, kNaN}}},
    {"no type", 0, {{1, 1}, {2, 2}}},
};
const BadGraphic kFarGraphics[] = {
    {"far", kPolyline, {{-1e300, 5}, {1e300, 5}, {3e38, -3e38}}},
    {"a far circle", kCircle, {{1e9, 1e9}, {-1e9, 0}}},
    {"a far ellipse", kEllipse, {{-1e38, 0}, {1e38, 0}, {0, 1e38}, {0, -1e38}}},
    {"a far curve", kInterpolated, {{-1e9, 5}, {1e9, 5}, {-1e9, 8}, {-1e9, 5}}},
    {"a curve of one place", kInterpolated, {{5, 5}, {5, 5}, {5, 5}, {5, 5}}},
    {"a circle without radius", kCircle, {{5, 5}, {5, 5}}},
};

TEST_F(ShownAnnotations, SurviveBadGraphics) {
    for (const auto& bad : kBadGraphics) {
        SCOPED_TRACE(bad.what);
        CXDIPP dipp;
        ShowBlack(dipp);
        Annotate(dipp, Graphic(bad.type, bad.points, kPixel, 1));
        Screen screen;
        screen.Draw(dipp);
        EXPECT_TRUE(screen.IsBlack());
    }
    for (const auto& far : kFarGraphics) {
        SCOPED_TRACE(far.what);
        for (const int units : {kPixel, kDisplay}) {
            CXDIPP dipp;
            ShowBlack(dipp);
            Annotate(dipp, Graphic(far.type, far.points, units, 1));
            Screen screen;
            screen.Draw(dipp);
            EXPECT_TRUE(screen.IsRimWhole());
        }
    }
}

// What crosses itself everywhere would take minutes to draw, and is left out past a limit.
TEST_F(ShownAnnotations, KeepNobodyWaiting) {
    Coordinates tangle;
    for (unsigned i = 0; i < 65535; ++i) {
        tangle.push_back(
            {static_cast<double>(i * 7919 % 83), static_cast<double>(i * 104729 % 61)});
    }
    tangle.push_back(tangle.front());
    for (const int type : {kPolyline, kInterpolated}) {
        CXDIPP dipp;
        ShowBlack(dipp);
        for (int i = 0; i < 20; ++i) Annotate(dipp, Graphic(type, tangle, kPixel, 1));
        Screen screen;
        const auto begin = std::chrono::steady_clock::now();
        screen.Draw(dipp);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
        EXPECT_FALSE(screen.IsBlack());
    }
}

TEST_F(ShownAnnotations, SurviveBadTexts) {
    CXDIPP dipp;
    ShowBlack(dipp);
    const CString texts[] = {"", "\x01\x02\x7F", CString(std::u16string(1, char16_t{0xD800})),
                             CString(std::string(100000, 'W')), CString(std::string(5000, '\n'))};
    for (const double place : {0.5, 1e30, kNaN, kInfinity}) {
        for (const auto& text : texts) {
            for (const bool hasBox : {false, true}) {
                auto object = hasBox ? BoxedText("", 2) : std::make_unique<GSPSTextObject>();
                object->textValue = text;
                object->anchorVisible = 1;
                object->anchorPoint = new double[2]{place, 4};
                if (hasBox) object->boundingBoxBottomRight[0] = place;
                CXDIPPInspector{dipp}.Record().textObjects.Add(object.release());
            }
        }
    }
    CXDIPPInspector{dipp}.Record().textObjects.Add(new GSPSTextObject);
    dipp.ShowAnnotations(1);
    Screen screen;
    screen.Draw(dipp);
    EXPECT_TRUE(screen.IsRimWhole());
    CDC none;
    EXPECT_EQ(dipp.Draw(&none), QVM_SUCCESS);
}

// On a surface that shows a 100 x 100 image as it is.
AnnotationPlace PlainPlace() {
    const RenderedView view{{100, 100}, 1.0, 0, false};
    return {ImageToSurface(view, {100, 100}, {0, 0}), {0, 0, 100, 100}};
}

std::vector<CanvasPoint> Outline(int type, const Coordinates& points) {
    return ShapeOf(*Graphic(type, points), PlainPlace()).outline;
}

double NearestTo(const std::vector<CanvasPoint>& outline, GSPSPoint place) {
    double nearest = kInfinity;
    for (const auto& point : outline) {
        nearest = std::min(nearest, std::hypot(point.x - place.x, point.y - place.y));
    }
    return nearest;
}

TEST(AnnotationShapes, AreRoundAndSmooth) {
    for (const auto& point : Outline(kCircle, {{50, 40}, {53, 44}})) {
        EXPECT_NEAR(std::hypot(point.x - 50, point.y - 40), 5.0, 1e-9);
    }
    const Coordinates ends = {{20, 50}, {80, 50}, {50, 35}, {50, 65}};
    const auto ellipse = Outline(kEllipse, ends);
    for (const auto& point : ellipse) {
        EXPECT_NEAR(std::hypot((point.x - 50) / 30, (point.y - 50) / 15), 1.0, 1e-9);
    }
    for (const auto& end : ends) EXPECT_LT(NearestTo(ellipse, end), 1e-9);

    const Coordinates bends = {{10, 10}, {40, 60}, {70, 10}, {90, 80}};
    const auto curve = Outline(kInterpolated, bends);
    EXPECT_GT(curve.size(), 20U);
    for (const auto& bend : bends) EXPECT_LT(NearestTo(curve, bend), 1e-9);
    for (std::size_t i = 2; i < curve.size(); ++i) {  // no corner anywhere
        const double before =
            std::atan2(curve[i - 1].y - curve[i - 2].y, curve[i - 1].x - curve[i - 2].x);
        const double after = std::atan2(curve[i].y - curve[i - 1].y, curve[i].x - curve[i - 1].x);
        EXPECT_LT(std::abs(std::remainder(after - before, 6.2831853)), 0.9) << i;
    }
}

TEST(AnnotationShapes, AreFilledWhereTheyClose) {
    const Coordinates open = {{10, 10}, {40, 10}, {40, 40}};
    Coordinates closed = open;
    closed.push_back(open.front());
    EXPECT_FALSE(ShapeOf(*Graphic(kPolyline, open, kPixel, 1), PlainPlace()).isFilled);
    EXPECT_TRUE(ShapeOf(*Graphic(kPolyline, closed, kPixel, 1), PlainPlace()).isFilled);
    EXPECT_FALSE(ShapeOf(*Graphic(kPolyline, closed), PlainPlace()).isFilled);
    EXPECT_TRUE(ShapeOf(*Graphic(kCircle, {{9, 9}, {9, 4}}, kPixel, 1), PlainPlace()).isFilled);
    EXPECT_LE(Outline(kInterpolated, Coordinates(100000, {5, 5})).size(), 65535U);
}

}  // namespace
}  // namespace quorvex
