// Presentation states made from records, read back into records.
#include "quorvex/CxDcmMaker.h"
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <string>

namespace quorvex {
namespace {

using namespace test;

constexpr const char* kOtherImage = "1.2.3.5";

CDcmObject Image() {
    return With(
        "00080016=1.2.840.10008.5.1.4.1.1.2; 00080018=1.2.3.4; 00080060=CT; "
        "00100010=Doe^Jane; 0020000D=1.2.3; 00281052=-1024; 00281053=1; 00281054=HU");
}

/// A record that a state of one image can be made from.
struct StateRecord : Record {
    explicit StateRecord(const char* image = kImage) {
        objectKind = 1;
        referencedSOPClassUID = "1.2.840.10008.5.1.4.1.1.2";
        referencedSOPInstanceUID = image;
        referencedSeriesUID = "1.2.3.9";
        referencedFrameNumber = -1;
        shutterType = -1;
    }
};

std::unique_ptr<CDcmObject> MakeState(std::vector<CXGSPSInfo*> infos, CDcmObject image = Image()) {
    CDcmObject* state = nullptr;
    const int count = static_cast<int>(infos.size());
    EXPECT_EQ(CXGSPSObject().MakeGSPSObject(&image, infos.data(), count, state), 1);
    return std::unique_ptr<CDcmObject>(state);
}

/// What a state made of a record has for its image, of 64 x 48 pixels.
struct ReadBack : Record {
    explicit ReadBack(CXGSPSInfo& written) {
        imageColumns = 64;
        imageRows = 48;
        EXPECT_EQ(ReadState(*MakeState({&written}), *this), 1);
    }
};

int ItemsOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    int count = 0;
    object.GetValueCount(tag, count);
    return count;
}

/// The first item of a sequence.
CDcmItem ItemOf(const CDcmObjectCommon& object, std::uint32_t sequence) {
    CDcmItem item;
    EXPECT_EQ(object.GetValue(sequence, item), kDcmSuccess);
    return item;
}

/// A state with one of everything that is read and written back.
CDcmObject FullState() {
    const auto area = With<CDcmItem>(
        "DisplayedAreaTopLeftHandCorner=5\\6; DisplayedAreaBottomRightHandCorner=60\\40; "
        "PresentationSizeMode=MAGNIFY; PresentationPixelMagnificationRatio=1.5; "
        "PresentationPixelSpacing=0.5\\0.25; PresentationPixelAspectRatio=2\\3");
    const auto text = With<CDcmItem>(
        "UnformattedTextValue=Gr\xC3\xBC\xC3\x9F; BoundingBoxAnnotationUnits=DISPLAY; "
        "BoundingBoxTopLeftHandCorner=0.1\\0.2; BoundingBoxBottomRightHandCorner=0.5\\0.6; "
        "BoundingBoxTextHorizontalJustification=CENTER; AnchorPointAnnotationUnits=PIXEL; "
        "AnchorPoint=3.5\\4.25; AnchorPointVisibility=Y");
    const auto line = With<CDcmItem>(
        "GraphicAnnotationUnits=PIXEL; NumberOfGraphicPoints=3; GraphicType=POLYLINE; "
        "GraphicFilled=Y; GraphicData=0.5\\10\\1.5\\9\\2.5\\8");
    const auto annotation = With(With(CDcmItem(), tag::kTextObjectSequence, {text, CDcmItem()}),
                                 tag::kGraphicObjectSequence, {line});
    auto state = With("ImageRotation=270; ImageHorizontalFlip=Y; PresentationLUTShape=INVERSE");
    PutItems(state, tag::kSoftcopyVOILUTSequence,
             {With<CDcmItem>("WindowCenter=40; WindowWidth=400")});
    PutItems(state, tag::kDisplayedAreaSelectionSequence, {area});
    PutItems(state, tag::kGraphicAnnotationSequence, {annotation});
    return state;
}

TEST(StateWriting, GivesTheRecordBack) {
    StateRecord written;
    CDcmObject state = FullState();
    ReadState(state, written);
    const std::string expected = TextOf(written);
    const std::size_t reals = expected.find("spacing x");
    EXPECT_EQ(TextOf(ReadBack(written)),
              expected.substr(0, reals) + "slope 1; intercept -1024; " + expected.substr(reals))
        << "all of it, and the rescale of the image";
}

TEST(StateWriting, IsAnObjectOfItsOwn) {
    StateRecord info;
    info.contentLabel = "LABEL";
    info.contentDescription = "a description";
    info.contentCreatorName = "Doe^John";
    info.seriesNumber = "3";
    const auto state = MakeState({&info});
    ExpectAttributes(*state,
                     "00080016=1.2.840.10008.5.1.4.1.1.11.1; 00080060=PR; 00100010=Doe^Jane; "
                     "00200011=3; 00281054=HU; 00700080=LABEL; 00700081=a description; "
                     "00700084=Doe^John; 00181600; 00700082=" +
                         CxDcmMaker::GetDate().ToUtf8());
    EXPECT_EQ(ItemsOf(*state, tag::kGraphicLayerSequence), 1)
        << "the layer, without annotations too";
    EXPECT_EQ(ItemsOf(*state, tag::kGraphicAnnotationSequence), 0);
    EXPECT_EQ(TextOf(ItemOf(*state, tag::kReferencedSeriesSequence), tag::kSeriesInstanceUID),
              "1.2.3.9");
}

TEST(StateWriting, KeepsImagesApart) {
    StateRecord first;
    StateRecord second(kOtherImage);
    second.referencedFrameNumber = 2;
    first.windowWidth = 100;
    second.windowWidth = 200;
    auto line = std::make_unique<GSPSGraphicObject>();
    line->graphicType = 2;
    second.graphicObjects.Add(line.release());
    const auto state = MakeState({&first, &second});
    EXPECT_EQ(ItemsOf(*state, tag::kDisplayedAreaSelectionSequence), 2);
    EXPECT_EQ(ItemsOf(*state, tag::kGraphicAnnotationSequence), 1);
    EXPECT_EQ(
        ItemsOf(ItemOf(*state, tag::kReferencedSeriesSequence), tag::kReferencedImageSequence), 2);
    const auto windowAndGraphics = [&](const char* image, int frame) {
        Record info;
        CXGSPSObject().GSPSApplier(state.get(), &info, image, frame);
        return std::pair(info.windowWidth, info.graphicObjects.GetSize());
    };
    EXPECT_EQ(windowAndGraphics(kImage, -1), std::pair(100, 0));
    EXPECT_EQ(windowAndGraphics(kOtherImage, 2), std::pair(200, 1));
    EXPECT_EQ(windowAndGraphics(kOtherImage, 1), std::pair(0, 0));
}

TEST(StateWriting, GivesEveryShutterBack) {
    constexpr const char* kGeometry[] = {"left 10; upper 8; right 50; lower 40; value 77",
                                         "row 20; column 30; radius 12; value 77", "value 77"};
    for (int type = 0; type < 3; ++type) {
        StateRecord written;
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
        const ReadBack read(written);
        ASSERT_NE(read.shutterMask, nullptr) << type;
        EXPECT_EQ(read.shutterMask[20 * 64 + 30], 0) << type;
        EXPECT_NE(read.shutterMask[0], 0) << type;
        EXPECT_TRUE(TextOf(read).starts_with(kGeometry[type])) << TextOf(read);
        EXPECT_EQ(read.shutterVertices,
                  type == 2 ? written.shutterVertices : std::vector<CPoint>());
    }
}

TEST(StateWriting, GivesLookUpTablesOfEveryLengthBack) {
    for (const int count : {2, 40'000, 65'536}) {
        StateRecord written;
        const auto ramp = [count](std::uint16_t first) {
            auto* const entries = new std::uint16_t[static_cast<std::size_t>(count)];
            std::iota(entries, entries + count, first);
            return entries;
        };
        written.voiLUTData = ramp(0);
        written.presentationLUTData = ramp(9);
        written.voiLUTCount = written.presentationLUTCount = count % 65'536;
        written.voiLUTFirst = 64'512;
        written.voiLUTBits = written.presentationLUTBits = 16;
        const ReadBack read(written);
        EXPECT_EQ(TextOf(*MakeState({&written}), tag::kPresentationLUTShape), kAbsent);
        EXPECT_EQ(read.voiLUTCount, count % 65'536);
        EXPECT_EQ(read.voiLUTFirst, 64'512);
        EXPECT_EQ(Entries(read.voiLUTData, count), Entries(written.voiLUTData, count));
        EXPECT_EQ(Entries(read.presentationLUTData, count),
                  Entries(written.presentationLUTData, count));
    }
}

TEST(StateWriting, RefusesNothingButMissingInput) {
    CDcmObject image = Image();
    StateRecord info;
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
    const auto made = MakeState({&info}, image);
    EXPECT_EQ(TextOf(*made, tag::kPresentationLUTShape), "");
    const CDcmItem area = ItemOf(*made, tag::kDisplayedAreaSelectionSequence);
    EXPECT_EQ(TextOf(ItemOf(area, tag::kReferencedImageSequence), tag::kReferencedFrameNumber),
              "0");
}

}  // namespace
}  // namespace quorvex
