/// Presentation states made from records, read back into records.
#include "tests/presentation/presentation_objects.h"
#include "quorvex/CxDcmMaker.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace quorvex {
namespace {

using namespace test;

constexpr const char* kOtherImage = "1.2.3.5";

CDcmObject Image() {
    CDcmObject image;
    image.SetValue(0x00080016, "1.2.840.10008.5.1.4.1.1.2");
    image.SetValue(0x00080018, kImage);
    image.SetValue(0x00080060, "CT");
    image.SetValue(0x00100010, "Doe^Jane");
    image.SetValue(0x0020000D, "1.2.3");
    image.SetValue(0x00281052, "-1024");
    image.SetValue(0x00281053, "1");
    image.SetValue(0x00281054, "HU");
    return image;
}

void Refer(CXGSPSInfo& info, const char* image) {
    info.objectKind = 1;
    info.referencedSOPClassUID = "1.2.840.10008.5.1.4.1.1.2";
    info.referencedSOPInstanceUID = image;
    info.referencedSeriesUID = "1.2.3.9";
    info.referencedFrameNumber = -1;
    info.shutterType = -1;
    info.imageColumns = 64;
    info.imageRows = 48;
}

std::unique_ptr<CDcmObject> MakeState(std::vector<CXGSPSInfo*> infos, CDcmObject image = Image()) {
    CDcmObject* state = nullptr;
    const int count = static_cast<int>(infos.size());
    EXPECT_EQ(CXGSPSObject().MakeGSPSObject(&image, infos.data(), count, state), 1);
    return std::unique_ptr<CDcmObject>(state);
}

CString TextOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    CString text;
    return object.GetValue(tag, text) == kDcmSuccess ? text : CString("(absent)");
}

int ItemsOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    int count = 0;
    object.GetValueCount(tag, count);
    return count;
}

double* Place(double x, double y) {
    return new double[2]{x, y};
}

void AddText(CXGSPSInfo& info) {
    auto text = std::make_unique<GSPSTextObject>();
    text->textValue =
        "Gr\xC3\xBC\xC3\x9F"
        "e";
    text->hasAnchor = 1;
    text->anchorPoint = Place(3.5, 4.25);
    text->anchorVisible = 1;
    text->hasBoundingBox = 1;
    text->boundingBoxUnits = 1;
    text->boundingBoxTopLeft = Place(0.1, 0.2);
    text->boundingBoxBottomRight = Place(0.5, 0.6);
    text->horizontalJustification = 2;
    info.textObjects.Add(text.release());
}

void AddPolyline(CXGSPSInfo& info) {
    auto line = std::make_unique<GSPSGraphicObject>();
    line->graphicType = 2;
    line->pointCount = 3;
    line->filled = 1;
    for (int i = 0; i < 3; ++i) line->points.Add(new GSPSPoint{i + 0.5, 10.0 - i});
    info.graphicObjects.Add(line.release());
}

TEST(StateWriting, GivesTheRecordBack) {
    Record written;
    Refer(written, kImage);
    written.windowCenter = 40;
    written.windowWidth = 400;
    written.imageRotation = 270;
    written.imageHorizontalFlip = 1;
    written.displayedAreaLeft = 5;
    written.displayedAreaTop = 6;
    written.displayedAreaRight = 60;
    written.displayedAreaBottom = 40;
    written.presentationSizeMode = 2;
    written.presentationMagnification = 1.5;
    written.pixelSpacingX = 0.25;
    written.pixelSpacingY = 0.5;
    written.pixelAspectHorizontal = 3;
    written.pixelAspectVertical = 2;
    written.presentationShape = 1;
    AddText(written);
    AddPolyline(written);

    const auto state = MakeState({&written});
    Record read;
    EXPECT_EQ(ReadState(*state, read), 1);
    EXPECT_EQ(read.windowCenter, 40);
    EXPECT_EQ(read.windowWidth, 400);
    EXPECT_EQ(read.rescaleIntercept, -1024.0);
    EXPECT_EQ(read.imageRotation, 270);
    EXPECT_EQ(read.imageHorizontalFlip, 1);
    EXPECT_EQ(read.displayedAreaLeft, 5);
    EXPECT_EQ(read.displayedAreaBottom, 40);
    EXPECT_EQ(read.presentationSizeMode, 2);
    EXPECT_EQ(read.presentationMagnification, 1.5);
    EXPECT_EQ(read.pixelSpacingX, 0.25);
    EXPECT_EQ(read.pixelSpacingY, 0.5);
    EXPECT_EQ(read.pixelAspectHorizontal, 3);
    EXPECT_EQ(read.pixelAspectVertical, 2);
    EXPECT_EQ(read.presentationShape, 1);
    EXPECT_EQ(read.shutterMask, nullptr);

    ASSERT_EQ(read.textObjects.GetSize(), 1);
    const auto& text = *static_cast<GSPSTextObject*>(read.textObjects[0]);
    EXPECT_EQ(text.textValue, CString("Gr\xC3\xBC\xC3\x9F"
                                      "e"));
    EXPECT_EQ(text.anchorPoint[1], 4.25);
    EXPECT_EQ(text.anchorVisible, 1);
    EXPECT_EQ(text.boundingBoxUnits, 1);
    EXPECT_EQ(text.horizontalJustification, 2);
    EXPECT_FLOAT_EQ(static_cast<float>(text.boundingBoxBottomRight[0]), 0.5F);
    ASSERT_EQ(read.graphicObjects.GetSize(), 1);
    const auto& line = *static_cast<GSPSGraphicObject*>(read.graphicObjects[0]);
    EXPECT_EQ(line.pointCount, 3);
    ASSERT_EQ(line.points.GetSize(), 3);
    EXPECT_EQ(static_cast<GSPSPoint*>(line.points[2])->y, 8.0);
    EXPECT_EQ(line.graphicType, 2);
    EXPECT_EQ(line.filled, 1);
}

TEST(StateWriting, IsAnObjectOfItsOwn) {
    Record info;
    Refer(info, kImage);
    info.contentLabel = "LABEL";
    info.seriesNumber = "3";
    const auto state = MakeState({&info});
    EXPECT_EQ(TextOf(*state, 0x00080016), CString("1.2.840.10008.5.1.4.1.1.11.1"));
    EXPECT_EQ(TextOf(*state, 0x00080060), CString("PR"));
    EXPECT_EQ(TextOf(*state, 0x00100010), CString("Doe^Jane"));
    EXPECT_EQ(TextOf(*state, 0x00700080), CString("LABEL"));
    EXPECT_EQ(TextOf(*state, 0x00700082), CxDcmMaker::GetDate());
    EXPECT_EQ(TextOf(*state, 0x00281054), CString("HU"));
    EXPECT_EQ(ItemsOf(*state, 0x00700060), 1);
    EXPECT_EQ(ItemsOf(*state, 0x00700001), 0);
    CDcmItem series;
    ASSERT_EQ(state->GetValue(0x00081115, series), kDcmSuccess);
    EXPECT_EQ(TextOf(series, 0x0020000E), CString("1.2.3.9"));
}

TEST(StateWriting, KeepsImagesApart) {
    Record first;
    Record second;
    Refer(first, kImage);
    Refer(second, kOtherImage);
    second.referencedFrameNumber = 2;
    first.windowWidth = 100;
    second.windowWidth = 200;
    AddPolyline(second);
    const auto state = MakeState({&first, &second});
    EXPECT_EQ(ItemsOf(*state, 0x0070005A), 2);
    EXPECT_EQ(ItemsOf(*state, 0x00700001), 1);
    CDcmItem series;
    ASSERT_EQ(state->GetValue(0x00081115, series), kDcmSuccess);
    EXPECT_EQ(ItemsOf(series, 0x00081140), 2);
    Record ofFirst;
    Record ofSecond;
    CXGSPSObject().GSPSApplier(state.get(), &ofFirst, kImage, -1);
    CXGSPSObject().GSPSApplier(state.get(), &ofSecond, kOtherImage, 2);
    EXPECT_EQ(ofFirst.windowWidth, 100);
    EXPECT_EQ(ofSecond.windowWidth, 200);
    EXPECT_EQ(ofFirst.graphicObjects.GetSize(), 0);
    EXPECT_EQ(ofSecond.graphicObjects.GetSize(), 1);
}

TEST(StateWriting, GivesEveryShutterBack) {
    for (int type = 0; type < 3; ++type) {
        Record written;
        Refer(written, kImage);
        written.shutterType = type;
        written.shutterLeft = 10;
        written.shutterUpper = 8;
        written.shutterRight = 50;
        written.shutterLower = 40;
        written.shutterCenterColumn = 30;
        written.shutterCenterRow = 20;
        written.shutterRadius = 12;
        written.shutterPresentationValue = 77;
        written.shutterVertices = {{10, 5}, {50, 5}, {30, 40}};
        const auto state = MakeState({&written});
        Record read;
        read.imageColumns = 64;
        read.imageRows = 48;
        ReadState(*state, read);
        ASSERT_NE(read.shutterMask, nullptr) << type;
        EXPECT_EQ(read.shutterMask[20 * 64 + 30], 0) << type;
        EXPECT_NE(read.shutterMask[0], 0) << type;
        EXPECT_EQ(read.shutterPresentationValue, 77) << type;
        if (type == 0) {
            EXPECT_EQ(read.shutterRight, 50);
        }
        if (type == 1) {
            EXPECT_EQ(read.shutterCenterRow, 20);
        }
        if (type == 2) {
            EXPECT_EQ(read.shutterVertices, written.shutterVertices);
        }
    }
}

TEST(StateWriting, GivesLookUpTablesOfEveryLengthBack) {
    for (const int count : {2, 40'000, 65'536}) {
        Record written;
        Refer(written, kImage);
        written.voiLUTData = new std::uint16_t[static_cast<std::size_t>(count)];
        written.presentationLUTData = new std::uint16_t[static_cast<std::size_t>(count)];
        for (int i = 0; i < count; ++i) {
            written.voiLUTData[i] = static_cast<std::uint16_t>(i);
            written.presentationLUTData[i] = static_cast<std::uint16_t>(count - i);
        }
        written.voiLUTCount = written.presentationLUTCount = count % 65'536;
        written.voiLUTFirst = 64'512;
        written.voiLUTBits = written.presentationLUTBits = 16;
        const auto state = MakeState({&written});
        EXPECT_EQ(TextOf(*state, 0x20500020), CString("(absent)"));
        Record read;
        ReadState(*state, read);
        EXPECT_EQ(read.voiLUTCount, count % 65'536);
        EXPECT_EQ(read.voiLUTFirst, 64'512);
        EXPECT_EQ(Entries(read.voiLUTData, count), Entries(written.voiLUTData, count));
        EXPECT_EQ(Entries(read.presentationLUTData, count),
                  Entries(written.presentationLUTData, count));
    }
}

TEST(StateWriting, RefusesNothingButMissingInput) {
    CDcmObject image = Image();
    Record info;
    Refer(info, kImage);
    info.presentationShape = 2;
    info.referencedFrameNumber = 0;
    CXGSPSInfo* infos[] = {&info, nullptr};
    CDcmObject* state = nullptr;
    CXGSPSObject maker;
    EXPECT_EQ(maker.MakeGSPSObject(nullptr, infos, 1, state), 0);
    EXPECT_EQ(maker.MakeGSPSObject(&image, nullptr, 1, state), 0);
    EXPECT_EQ(maker.MakeGSPSObject(&image, infos, 0, state), 0);
    EXPECT_EQ(maker.MakeGSPSObject(&image, infos, 2, state), 0);
    EXPECT_EQ(state, nullptr);
    ASSERT_EQ(maker.MakeGSPSObject(&image, infos, 1, state), 1);
    const std::unique_ptr<CDcmObject> owner(state);
    EXPECT_EQ(TextOf(*state, 0x20500020), CString(""));
    CDcmItem area;
    CDcmItem reference;
    ASSERT_EQ(state->GetValue(0x0070005A, area), kDcmSuccess);
    ASSERT_EQ(area.GetValue(0x00081140, reference), kDcmSuccess);
    EXPECT_EQ(TextOf(reference, 0x00081160), CString("0"));
}

}  // namespace
}  // namespace quorvex
