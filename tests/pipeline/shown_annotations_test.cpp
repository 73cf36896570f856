#include "foundation/platform/canvas.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/annotation_drawing.h"
#include "tests/pipeline/screen.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <string>

namespace quorvex::pipeline_test {
namespace {

enum Type { kPoint = 1, kPolyline, kInterpolated, kCircle, kEllipse };
constexpr int kPixel = 0;
constexpr int kDisplay = 1;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Coordinates = std::vector<GSPSPoint>;

/// A graphic object of a record.
std::unique_ptr<GSPSGraphicObject> Graphic(int type, const Coordinates& points, int units,
                                           int filled) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    graphic->graphicType = type;
    graphic->annotationUnits = units;
    graphic->filled = filled;
    for (const auto& point : points) graphic->points.Add(new GSPSPoint(point));
    return graphic;
}

// On a surface that shows a 100 x 100 image as it is.
DrawnShape Shape(int type, const Coordinates& points, int filled = 0) {
    const RenderedView view{{100, 100}, 1.0, 0, false};
    const AnnotationPlace place{ImageToSurface(view, {100, 100}, {0, 0}), {0, 0, 100, 100}};
    return ShapeOf(*Graphic(type, points, kPixel, filled), place);
}

double NearestTo(const std::vector<CanvasPoint>& outline, GSPSPoint place) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const auto& point : outline)
        nearest = std::min(nearest, std::hypot(point.x - place.x, point.y - place.y));
    return nearest;
}

TEST(AnnotationShapes, AreRoundAndSmooth) {
    for (const auto& point : Shape(kCircle, {{50, 40}, {53, 44}}).outline)
        EXPECT_NEAR(std::hypot(point.x - 50, point.y - 40), 5.0, 1e-9);
    const Coordinates ends = {{20, 50}, {80, 50}, {50, 35}, {50, 65}};
    const auto ellipse = Shape(kEllipse, ends).outline;
    for (const auto& point : ellipse)
        EXPECT_NEAR(std::hypot((point.x - 50) / 30, (point.y - 50) / 15), 1.0, 1e-9);
    for (const auto& end : ends) EXPECT_LT(NearestTo(ellipse, end), 1e-9);

    const Coordinates bends = {{10, 10}, {40, 60}, {70, 10}, {90, 80}};
    const auto curve = Shape(kInterpolated, bends).outline;
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
    EXPECT_FALSE(Shape(kPolyline, open, 1).isFilled);
    EXPECT_TRUE(Shape(kPolyline, closed, 1).isFilled);
    EXPECT_FALSE(Shape(kPolyline, closed, 0).isFilled);
    EXPECT_TRUE(Shape(kCircle, {{9, 9}, {9, 4}}, 1).isFilled);
    EXPECT_LE(Shape(kInterpolated, Coordinates(100000, {5, 5})).outline.size(), 65535U);
}

/// An annotation of an object that has one graphic.
CDcmItem Annotation(const std::string& graphic) {
    return test::With(CDcmItem(), tag::kGraphicObjectSequence,
                      {test::With<CDcmItem>("GraphicFilled=N; " + graphic)});
}

double* NewPair(double x, double y) {
    return new double[2]{x, y};
}

std::unique_ptr<GSPSTextObject> BoxedText(const CString& text, int justification) {
    auto object = std::make_unique<GSPSTextObject>();
    object->textValue = text;
    object->horizontalJustification = justification;
    object->boundingBoxUnits = kDisplay;
    object->boundingBoxTopLeft = NewPair(0.1, 0.2);
    object->boundingBoxBottomRight = NewPair(0.9, 0.4);
    return object;
}

constexpr CSize kScreen{160, 120};

/// Draws over an image of 80 x 60 that fills half of the screen each way.
Screen Drawn(const CXGSPSInfo& record) {
    const RenderedView view{{80, 60}, 1.0, 0, false};
    const AnnotationPlace place{ImageToSurface(view, {80, 60}, {40, 30}),
                                DisplayedArea(record, view, kScreen)};
    Screen screen(kScreen);
    screen.DrawBy([&](DrawingSurface& surface) { DrawAnnotations(record, place, surface); });
    return screen;
}
Screen Drawn(CXDIPP& dipp, int pixelBytes = 4) {
    Screen screen(kScreen, pixelBytes);
    screen.Draw(dipp);
    return screen;
}

/// A wide dot in the middle of the screen, in a layer.
CDcmItem DotIn(const char* layer) {
    const std::string graphic =
        "GraphicType=POINT; GraphicAnnotationUnits=DISPLAY; GraphicData=0.5\\0.5";
    CDcmItem item = Annotation(graphic);
    item.SetValue(tag::kGraphicLayer, layer);
    return item;
}

CDcmItem Layer(const char* name, int order, std::initializer_list<int> lab, int grey = 65535) {
    CDcmItem layer;
    layer.SetValue(tag::kGraphicLayer, name);
    layer.SetValue(tag::kGraphicLayerOrder, order);
    layer.SetValue(tag::kGraphicLayerRecommendedDisplayGrayscaleValue, grey);
    test::Put(layer, tag::kGraphicLayerRecommendedDisplayCIELabValue, lab);
    return layer;
}

class ShownAnnotations : public testing::Test {
protected:
    void SetUp() override {
        if (!Canvas::IsAvailable()) GTEST_SKIP() << "built without the drawing library";
    }
    /// Shows an image with one annotation.
    void Show(CXDIPP& dipp, CSize size, const Bytes& pixels, const CDcmItem& annotation,
              std::initializer_list<int> aspect = {1, 1}) {
        CDcmObject& object = images_.emplace_back(
            ImageOf({size, 1, 8, 8}, pixels, "WindowCenter=128; WindowWidth=256"));
        test::Put(object, tag::kPixelAspectRatio, aspect);
        test::PutItems(object, tag::kGraphicAnnotationSequence, {annotation});
        ShowObject(dipp, object, kScreen);
        dipp.ShowAnnotations(1);
    }
    /// A black image of 80 x 60 that fills half of the screen each way.
    void ShowBlack(CXDIPP& dipp, const CDcmItem& annotation) {
        Show(dipp, {80, 60}, Repeated(80 * 60, 0), annotation);
        Shown(dipp);
    }
    CDcmApp app_;

private:
    std::deque<CDcmObject> images_;  // the object on show is read again for a state
};

struct LayCase {
    const char* what;
    CSize image;
    double zoom;
    std::initializer_list<int> aspect;  // height over width
    CPoint pan;
};
const LayCase kLays[] = {
    {"as it is", {40, 24}, 1.0, {1, 1}, {0, 0}},
    {"zoomed and panned", {40, 24}, 2.5, {1, 1}, {-11, 7}},
    {"small", {40, 24}, 0.8, {1, 1}, {0, 0}},
    {"a width that is cut", {39, 23}, 2.0, {1, 1}, {3, 0}},
    {"tall pixels", {40, 24}, 1.5, {3, 2}, {0, 0}},
};

// The picture itself shows where a pixel lies: one white pixel on black, its middle of light.
TEST_F(ShownAnnotations, LieOnThePixelThatTheyName) {
    const CDcmItem point =
        Annotation("GraphicType=POINT; GraphicAnnotationUnits=PIXEL; GraphicData=11.5\\6.5");
    for (const LayCase& lay : kLays) {
        for (int turn = 0; turn < 8; ++turn) {
            if (*lay.aspect.begin() != 1 && turn % 2 == 1) continue;  // cut by its own height
            SCOPED_TRACE(std::string(lay.what) + ", turn " + std::to_string(turn));
            const auto middleOf = [&](const Bytes& pixels, const CDcmItem& annotation, int bytes) {
                CXDIPP dipp;
                Show(dipp, lay.image, pixels, annotation, lay.aspect);
                dipp.UpdateZoom_ABS(lay.zoom);
                dipp.UpdateRotate_ABS(turn % 4 * 90);
                if (turn > 3) dipp.UpdateHFlip_Toggle();
                dipp.UpdatePan_ABS(lay.pan);
                EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
                return Drawn(dipp, bytes).Middle();
            };
            Bytes pixels = Repeated(lay.image.cx * lay.image.cy, 0);
            const CanvasPoint drawn = middleOf(pixels, point, 4);
            pixels[static_cast<std::size_t>(6 * lay.image.cx + 11)] = 255;
            const CanvasPoint expected = middleOf(pixels, CDcmItem(), 3);
            EXPECT_NEAR(drawn.x, expected.x, 0.3);
            EXPECT_NEAR(drawn.y, expected.y, 0.3);
        }
    }
}

// Red lies in the upper layer, though the state lists it first; grey is what has no colour.
TEST_F(ShownAnnotations, LieInTheOrderAndColourOfTheirLayers) {
    struct Row {
        const char* what;
        std::vector<CDcmItem> annotations;
        std::array<int, 3> bgr;
    };
    const Row rows[] = {
        {"upper", {DotIn("RED"), DotIn("GREY")}, {0, 0, 255}},
        {"lower", {DotIn("GREY")}, {128, 128, 128}},
        {"black, with a light rim", {DotIn("RED"), DotIn("BLACK")}, {0, 0, 0}},
        {"in no layer", {DotIn("OTHER"), DotIn("RED")}, {255, 255, 255}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        CDcmObject state;
        test::PutItems(state, tag::kGraphicLayerSequence,
                       {Layer("RED", 2, {34881, 53485, 50538}), Layer("GREY", 1, {}, 32896),
                        Layer("BLACK", 3, {}, 0)});
        test::PutItems(state, tag::kGraphicAnnotationSequence, row.annotations);
        const auto record = ReadViewRecord(state, {80, 60}, CString(), 1);
        const RenderedView view{{80, 60}, 1.0, 0, false};
        const AnnotationPlace place{ImageToSurface(view, {80, 60}, {40, 30}),
                                    DisplayedArea(*record, view, kScreen)};
        Screen screen(kScreen);
        screen.DrawBy([&](auto& surface) { DrawAnnotationLayers(*record, place, surface); });
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(screen.At(80, 60, i), row.bgr[static_cast<std::size_t>(i)], 5) << i;
        }
    }
}

TEST_F(ShownAnnotations, AreDrawnOnlyWhileAskedFor) {
    const CDcmItem line = Annotation(
        "GraphicType=POLYLINE; GraphicAnnotationUnits=PIXEL; GraphicData=10\\10\\70\\50");
    CXDIPP dipp;
    ShowBlack(dipp, line);
    EXPECT_FALSE(Drawn(dipp).IsBlack());
    EXPECT_LE(std::ranges::max(Rendered(dipp)), 2) << "the result has none";
    dipp.ShowAnnotations(0);
    CXDIPP bare;
    ShowBlack(bare, CDcmItem());
    EXPECT_EQ(Drawn(dipp).All(), Drawn(bare).All());
    CDC none;
    EXPECT_EQ(dipp.Draw(&none), QVM_SUCCESS);
}

TEST_F(ShownAnnotations, InDisplayUnitsStayWithTheDisplayedArea) {
    const CDcmItem line = Annotation(
        "GraphicType=POLYLINE; GraphicAnnotationUnits=DISPLAY; GraphicData=0.25\\0.5\\0.75\\0.5");
    CXDIPP dipp;
    ShowBlack(dipp, line);  // whole image: laid out to fill the screen
    const CRect bright = Drawn(dipp).Bright();
    EXPECT_NEAR(bright.top, 59, 1);
    const auto expectAcross = [&dipp](int left, int right) {
        EXPECT_NEAR(Drawn(dipp).Bright().left, left, 1);
        EXPECT_NEAR(Drawn(dipp).Bright().right, right, 1);
    };
    expectAcross(40, 120);
    dipp.UpdateZoom_ABS(0.5);
    dipp.UpdatePan_ABS({13, 5});
    dipp.UpdateHFlip_Toggle();
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    EXPECT_EQ(Drawn(dipp).Bright(), bright);

    // 20 x 60 pixels: 40 x 120 of the screen, in its middle
    const auto area = test::With<CDcmItem>(
        "DisplayedAreaTopLeftHandCorner=1\\1; DisplayedAreaBottomRightHandCorner=20\\60");
    CDcmObject state;
    test::PutItems(state, tag::kDisplayedAreaSelectionSequence, {area});
    test::PutItems(state, tag::kGraphicAnnotationSequence, {line});
    dipp.ApllyGSPSObject(&app_, &state);
    expectAcross(70, 90);
    dipp.UpdateRotate_ABS(90);  // on its side: 160 wide
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    expectAcross(40, 120);
}

TEST_F(ShownAnnotations, TextStandsInItsBox) {
    const auto brightOf = [](std::unique_ptr<GSPSTextObject> text) {
        CXGSPSInfo record;
        record.textObjects.Add(text.release());
        return Drawn(record).Bright();
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

    for (const int isVisible : {0, 1}) {  // a line leads to the anchor
        auto anchored = BoxedText("HIM", 0);
        anchored->anchorUnits = kDisplay;
        anchored->anchorPoint = NewPair(0.5, 0.9);
        anchored->anchorVisible = isVisible;
        EXPECT_NEAR(brightOf(std::move(anchored)).bottom, isVisible != 0 ? 108 : left.bottom, 2);
    }
}

struct BadGraphic {
    const char* what;
    bool isDrawn;  ///< perhaps, but inside the surface
    int type;
    Coordinates points;
};
const BadGraphic kBadGraphics[] = {
    {"no point", false, kPoint, {}},
    {"no polyline", false, kPolyline, {}},
    {"NaN and infinity", false, kPolyline, {{kNaN, 1}, {2, kNaN}, {kInfinity, -kInfinity}}},
    {"a circle of one point", false, kCircle, {{4, 4}}},
    {"an ellipse of three points", false, kEllipse, {{4, 4}, {8, 4}, {6, 2}}},
    {"a curve of NaN", false, kInterpolated, {{kNaN, kNaN}}},
    {"no type", false, 0, {{1, 1}, {2, 2}}},
    {"far", true, kPolyline, {{-1e300, 5}, {1e300, 5}, {3e38, -3e38}}},
    {"a far circle", true, kCircle, {{1e9, 1e9}, {-1e9, 0}}},
    {"a far ellipse", true, kEllipse, {{-1e38, 0}, {1e38, 0}, {0, 1e38}, {0, -1e38}}},
    {"a far curve", true, kInterpolated, {{-1e9, 5}, {1e9, 5}, {-1e9, 8}, {-1e9, 5}}},
    {"a curve of one place", true, kInterpolated, {{5, 5}, {5, 5}, {5, 5}, {5, 5}}},
    {"a circle without radius", true, kCircle, {{5, 5}, {5, 5}}},
};

TEST_F(ShownAnnotations, SurviveBadGraphics) {
    for (const auto& bad : kBadGraphics) {
        SCOPED_TRACE(bad.what);
        for (const int units : {kPixel, kDisplay}) {
            CXGSPSInfo record;
            record.graphicObjects.Add(Graphic(bad.type, bad.points, units, 1).release());
            EXPECT_TRUE(Drawn(record).IsBlack() || bad.isDrawn);
        }
    }
}

// What crosses itself everywhere would take minutes to draw, and is left out past a limit.
TEST_F(ShownAnnotations, KeepNobodyWaiting) {
    Coordinates tangle;
    for (unsigned i = 0; i < 65535; ++i)
        tangle.push_back({double(i * 7919 % 83), double(i * 104729 % 61)});
    tangle.push_back(tangle.front());
    for (const int type : {kPolyline, kInterpolated}) {
        CXGSPSInfo record;
        for (int i = 0; i < 20; ++i)
            record.graphicObjects.Add(Graphic(type, tangle, kPixel, 1).release());
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_FALSE(Drawn(record).IsBlack());
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    }
}

TEST_F(ShownAnnotations, SurviveBadTexts) {
    const CString texts[] = {"", "\x01\x02\x7F", CString(std::u16string(1, char16_t{0xD800})),
                             CString(std::string(100000, 'W')), CString(std::string(5000, '\n'))};
    CXGSPSInfo record;
    for (const double place : {0.5, 1e30, kNaN, kInfinity}) {
        for (const auto& text : texts) {
            for (const bool hasBox : {false, true}) {
                auto object = hasBox ? BoxedText(text, 2) : std::make_unique<GSPSTextObject>();
                object->textValue = text;
                object->anchorVisible = 1;
                object->anchorPoint = NewPair(place, 4);
                if (hasBox) object->boundingBoxBottomRight[0] = place;
                record.textObjects.Add(object.release());
            }
        }
    }
    record.textObjects.Add(new GSPSTextObject);
    Drawn(record);  // within the surface
}

}  // namespace
}  // namespace quorvex::pipeline_test
