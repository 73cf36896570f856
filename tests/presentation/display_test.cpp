// What applies to which image, the displayed area, and the annotations.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr std::uint32_t kAreas = 0x0070005A;
constexpr std::uint32_t kAnnotations = 0x00700001;

CDcmItem Area(int left) {
    CDcmItem item;
    Put(item, 0x00700052, {left, left + 1});
    Put(item, 0x00700053, {left + 100, left + 101});
    item.SetValue(0x00700100, "TRUE SIZE");
    Put(item, 0x00700101, {"0.5", "0.25"});
    Put(item, 0x00700102, {2, 1});
    item.SetValue(0x00700103, 1.5);
    return item;
}

CDcmItem Annotation(const char* text) {
    CDcmItem textItem;
    textItem.SetValue(0x00700006, text);
    CDcmItem item;
    item.SetValue(0x00700008, &textItem);
    return item;
}

const GSPSTextObject& Text(const CXGSPSInfo& info, int index) {
    return *static_cast<const GSPSTextObject*>(info.textObjects[index]);
}

const GSPSGraphicObject& Graphic(const CXGSPSInfo& info, int index) {
    return *static_cast<const GSPSGraphicObject*>(info.graphicObjects[index]);
}

TEST(References, ChooseImageAndFrame) {
    struct Case {
        const char* what;
        std::vector<CDcmItem> references;
        int frame;
        bool applies;
    };
    const Case cases[] = {
        {"no reference", {}, 4, true},
        {"another image", {Reference("1.2.3.5")}, -1, false},
        {"this image", {Reference("1.2.3.4")}, 7, true},
        {"this among others", {Reference("9"), Reference("1.2.3.4")}, -1, true},
        {"listed frame", {Reference("1.2.3.4", {1, 2, 3})}, 2, true},
        {"the last one listed", {Reference("1.2.3.4", {1, 2, 3})}, 3, true},
        {"another frame", {Reference("1.2.3.4", {1, 2, 3})}, 4, false},
        {"no frame in particular", {Reference("1.2.3.4", {1, 2, 3})}, -1, false},
        {"a reference without a name", {CDcmItem()}, -1, false},
    };
    for (const Case& c : cases) {
        CDcmObject state;
        PutItems(state, kAreas, {Referring(Area(10), c.references)});
        Record info;
        ReadState(state, info, c.frame);
        EXPECT_EQ(info.displayedAreaLeft, c.applies ? 10 : 0) << c.what;
    }
}

TEST(References, CompareWithoutRegardToCase) {
    CDcmObject state;
    PutItems(state, kAreas, {Referring(Area(10), {Reference("1.2.ab")})});
    Record info;
    CXGSPSObject().GSPSApplier(&state, &info, "1.2.AB", -1);
    EXPECT_EQ(info.displayedAreaLeft, 10);
}

TEST(Display, ImagesShowThemselvesWhole) {
    CDcmObject image;
    PutItems(image, kAreas, {Area(10)});
    Put(image, 0x00280030, {"0.5", "0.25"});
    Put(image, 0x00280034, {2, 1});
    Record info;
    info.displayedAreaRight = 77;
    ReadImage(image, info);
    EXPECT_EQ(info.displayedAreaRight, 0);
    EXPECT_EQ(info.pixelSpacingX, 0.25);
    EXPECT_EQ(info.pixelSpacingY, 0.5);
    EXPECT_EQ(info.pixelAspectHorizontal, 1.0);
    EXPECT_EQ(info.pixelAspectVertical, 2.0);
    EXPECT_EQ(info.presentationMagnification, 1.0);

    CDcmObject bare;
    ReadImage(bare, info);
    EXPECT_EQ(info.pixelSpacingX, 0.0);
    EXPECT_EQ(info.pixelSpacingY, 0.5);
    EXPECT_EQ(info.pixelAspectVertical, 1.0);
}

TEST(Display, StatesChooseTheArea) {
    CDcmItem unknownMode;
    unknownMode.SetValue(0x00700100, "true size");
    CDcmObject state;
    PutItems(state, kAreas, {Area(10), unknownMode});
    Record info;
    ReadState(state, info);
    EXPECT_EQ(info.displayedAreaLeft, 10);
    EXPECT_EQ(info.displayedAreaTop, 11);
    EXPECT_EQ(info.displayedAreaRight, 110);
    EXPECT_EQ(info.displayedAreaBottom, 111);
    EXPECT_EQ(info.presentationSizeMode, 1);
    EXPECT_EQ(info.pixelSpacingX, 0.0);  // the second item has none
    EXPECT_EQ(info.pixelSpacingY, 0.5);
    EXPECT_EQ(info.pixelAspectVertical, 2.0);
    EXPECT_EQ(info.presentationMagnification, 1.5);
}

TEST(Display, AStateWithoutAnAreaShowsAllAndOneThatNamesAnotherImageSaysNothing) {
    CDcmObject state;
    Record none;
    ReadState(state, none);
    EXPECT_EQ(none.pixelAspectVertical, 1.0);
    EXPECT_EQ(none.presentationMagnification, 1.0);
    PutItems(state, kAreas, {Referring(Area(10), {Reference("9")})});
    Record other;
    ReadState(state, other);
    EXPECT_EQ(other.pixelAspectVertical, 0.0);
    EXPECT_EQ(other.presentationMagnification, 0.0);
}

TEST(Display, RotationNeedsTheFlip) {
    CDcmObject state;
    state.SetValue(0x00700042, static_cast<unsigned short>(90));
    Record info;
    ReadState(state, info);
    EXPECT_EQ(info.imageRotation, 0);
    state.SetValue(0x00700041, "N");
    ReadState(state, info);
    EXPECT_EQ(info.imageRotation, 90);
    EXPECT_EQ(info.imageHorizontalFlip, 0);
}

TEST(Annotations, TextHasBoxAndAnchor) {
    CDcmItem text;
    text.SetValue(0x00700006, "Mean");
    Put(text, 0x00700010, {1.5, 2.5});
    Put(text, 0x00700011, {10.0, 20.0});
    text.SetValue(0x00700003, "PIXEL");
    text.SetValue(0x00700012, "RIGHT");
    Put(text, 0x00700014, {5.0, 6.0});
    text.SetValue(0x00700004, "DISPLAY");
    text.SetValue(0x00700015, "Y");
    CDcmItem half;
    Put(half, 0x00700010, {1.5, 2.5});
    half.SetValue(0x00700003, "DISPLAY");
    half.SetValue(0x00700012, "CENTER");
    half.SetValue(0x00700015, "Y");
    CDcmItem annotation;
    PutItems(annotation, 0x00700008, {text, half});
    CDcmObject state;
    PutItems(state, kAnnotations, {annotation});
    Record info;
    ReadState(state, info);
    ASSERT_EQ(info.textObjects.GetSize(), 2);
    const GSPSTextObject& first = Text(info, 0);
    EXPECT_EQ(first.textValue, CString("Mean"));
    ASSERT_EQ(first.hasBoundingBox, 1);
    EXPECT_EQ(first.boundingBoxTopLeft[1], 2.5);
    EXPECT_EQ(first.boundingBoxBottomRight[0], 10.0);
    EXPECT_EQ(first.boundingBoxUnits, 0);
    EXPECT_EQ(first.horizontalJustification, 1);
    ASSERT_EQ(first.hasAnchor, 1);
    EXPECT_EQ(first.anchorPoint[0], 5.0);
    EXPECT_EQ(first.anchorUnits, 1);
    EXPECT_EQ(first.anchorVisible, 1);
    const GSPSTextObject& second = Text(info, 1);
    EXPECT_EQ(second.hasBoundingBox, 0);
    EXPECT_EQ(second.boundingBoxTopLeft, nullptr);
    EXPECT_EQ(second.boundingBoxUnits, 1);
    EXPECT_EQ(second.horizontalJustification, 2);
    EXPECT_EQ(second.hasAnchor, 0);
    EXPECT_EQ(second.anchorVisible, 0);
}

TEST(Annotations, GraphicsKeepTheirPairs) {
    CDcmItem line;
    line.SetValue(0x00700005, "PIXEL");
    line.SetValue(0x00700021, static_cast<unsigned short>(9));
    line.SetValue(0x00700023, "POLYLINE");
    line.SetValue(0x00700024, "Y");
    Put(line, 0x00700022, {1.0, 2.0, 3.0, 4.0, 5.0});
    CDcmItem annotation;
    PutItems(annotation, 0x00700009, {line, CDcmItem()});
    CDcmObject state;
    PutItems(state, kAnnotations, {annotation});
    Record info;
    ReadState(state, info);
    ASSERT_EQ(info.graphicObjects.GetSize(), 2);
    const GSPSGraphicObject& graphic = Graphic(info, 0);
    EXPECT_EQ(graphic.graphicType, 2);
    EXPECT_EQ(graphic.pointCount, 9);
    EXPECT_EQ(graphic.filled, 1);
    ASSERT_EQ(graphic.points.GetSize(), 2);  // the fifth value has no partner
    EXPECT_EQ(static_cast<const GSPSPoint*>(graphic.points[1])->x, 3.0);
    EXPECT_EQ(static_cast<const GSPSPoint*>(graphic.points[1])->y, 4.0);
    EXPECT_EQ(Graphic(info, 1).points.GetSize(), 0);
    EXPECT_EQ(Graphic(info, 1).graphicType, 0);
}

TEST(Annotations, AddUpOverTheItemsThatApply) {
    CDcmObject state;
    PutItems(state, kAnnotations,
             {Annotation("all"), Referring(Annotation("other"), {Reference("9")}),
              Referring(Annotation("twice"), {Reference(kImage), Reference(kImage)})});
    Record info;
    ReadState(state, info);
    ASSERT_EQ(info.textObjects.GetSize(), 2);
    EXPECT_EQ(Text(info, 0).textValue, CString("all"));
    EXPECT_EQ(Text(info, 1).textValue, CString("twice"));
    Record asImage;
    ReadImage(state, asImage);
    EXPECT_EQ(asImage.textObjects.GetSize(), 1);
}

}  // namespace
}  // namespace quorvex
