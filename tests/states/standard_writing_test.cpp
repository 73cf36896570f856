// Presentation states by the standard rules: valid, and the same when they are read and written.
#include "foundation/dicom/model/attributes.h"
#include "tests/presentation/presentation_objects.h"
#include "tests/support/checkers.h"
#include "tests/support/corpus.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <memory>
#include <numeric>
#include <sstream>

namespace quorvex {
namespace {

using namespace test;

CDcmObject Image() {
    return With(
        "00080005=ISO_IR 100; 00080016=1.2.840.10008.5.1.4.1.1.2; 00080018=1.2.3.4; 00080060=CT; "
        "00100010=Doe^Jane; 0020000D=1.2.3; 0020000E=1.2.3.9; 00281052=-1024; 00281053=1; Rows=48; "
        "Columns=64; PhotometricInterpretation=MONOCHROME2; PixelRepresentation=0; "
        "PixelPaddingValue=63536; BodyPartExamined=CHEST");
}

struct StateRecord : Record {
    StateRecord() {
        objectKind = 1;
        contentLabel = "left hand";
    }
};

std::unique_ptr<CDcmObject> MakeState(std::vector<CXGSPSInfo*> infos, CDcmObject image = Image()) {
    CXGSPSObject maker;
    maker.SetRules(Rules::kStandard);
    CDcmObject* state = nullptr;
    maker.MakeGSPSObject(&image, infos.data(), static_cast<int>(infos.size()), state);
    return std::unique_ptr<CDcmObject>(state);
}

/// No complaint of an independent checker about the state as it is.
void ExpectValid(const CDcmObject& state, const std::string& what) {
    const TemporaryFile file;
    ASSERT_EQ(state.WriteFile(file.Path()), kDcmSuccess) << what;
    EXPECT_EQ(ErrorsIn(file.Path()), "") << what;
    EXPECT_EQ(ComplaintsAboutState(file.Path()), "") << what;
}

CDcmItem ItemOf(const CDcmObjectCommon& object, std::uint32_t sequence) {
    CDcmItem item;
    EXPECT_EQ(object.GetValue(sequence, item), kDcmSuccess) << std::hex << sequence;
    return item;
}

/// Elements of an item, and of items in it, as text.
std::string TextOf(const CDcmObjectCommon& item) {
    std::ostringstream text;
    item.WalkElements(&text, [](const DcmElementView& element, void* user) -> MC_STATUS {
        auto& out = *static_cast<std::ostringstream*>(user);
        out << std::hex << element.tag << ':' << element.depth << '=';
        if (element.vr != MC_VR_SQ)
            out << std::string_view(
                static_cast<const char*>(static_cast<const void*>(element.data)), element.length);
        out << ';';
        return kMcContinue;
    });
    return text.str();
}

/// All that a reading of a state gives.
std::string AllOf(const CXGSPSInfo& info) {
    std::ostringstream all;
    all << test::TextOf(info) << "; window " << info.exactWindowCenter << ' '
        << info.exactWindowWidth << info.windowFunction.ToUtf8() << info.windowExplanation.ToUtf8()
        << "; shapes " << info.shutterShapes;
    for (const auto& vertex : info.shutterVertices) all << ' ' << vertex.x << ',' << vertex.y;
    if (info.shutterMask != nullptr)
        all << " mask " << std::accumulate(info.shutterMask, info.shutterMask + 64 * 48, 0);
    for (const auto& layer : info.graphicLayers)
        all << "; layer " << layer.name.ToUtf8() << layer.order << ' ' << layer.greyValue << ' '
            << layer.hasColour << layer.cieLab[0] << layer.description.ToUtf8();
    for (int i = 0; i < info.textObjects.GetSize(); ++i) {
        const auto& text = *static_cast<const GSPSTextObject*>(info.textObjects[i]);
        all << "; " << text.graphicLayer.ToUtf8();
        for (const auto& others : text.otherAttributes) all << TextOf(others);
    }
    for (int i = 0; i < info.graphicObjects.GetSize(); ++i) {
        const auto& graphic = *static_cast<const GSPSGraphicObject*>(info.graphicObjects[i]);
        all << "; " << graphic.graphicLayer.ToUtf8();
        for (const auto& others : graphic.otherAttributes) all << TextOf(others);
    }
    for (const auto& compound : info.compoundGraphics)
        all << "; " << compound.graphicLayer.ToUtf8() << TextOf(compound.item);
    for (const auto& group : info.graphicGroups) all << "; group " << TextOf(group);
    return all.str();
}

CDcmItem Annotation(const char* layer, std::vector<CDcmItem> texts,
                    std::vector<CDcmItem> graphics) {
    auto item = With<CDcmItem>(std::string("GraphicLayer=") + layer);
    PutItems(item, tag::kTextObjectSequence, std::move(texts));
    PutItems(item, tag::kGraphicObjectSequence, std::move(graphics));
    return item;
}

/// A state with one of everything that is kept.
CDcmObject FullState() {
    const auto style = With<CDcmItem>("00700227=Arial; 00700229=Arial; 00700242=LEFT");
    const auto text = With(
        With<CDcmItem>("UnformattedTextValue=Gr\xC3\xBC\xC3\x9F; AnchorPointAnnotationUnits=PIXEL; "
                       "AnchorPoint=3.5\\4.25; AnchorPointVisibility=Y; 00700295=7"),
        0x00700231, {style});
    const auto line = With(With<CDcmItem>("GraphicAnnotationUnits=PIXEL; GraphicDimensions=2; "
                                          "NumberOfGraphicPoints=3; GraphicType=POLYLINE; "
                                          "GraphicData=0.5\\10\\1.5\\9\\2.5\\8"),
                           0x00700232, {With<CDcmItem>("00700254=SOLID")});
    const auto ring = With<CDcmItem>(
        "GraphicAnnotationUnits=DISPLAY; GraphicDimensions=2; NumberOfGraphicPoints=2; "
        "GraphicType=CIRCLE; GraphicFilled=Y; GraphicData=0.5\\0.5\\0.6\\0.5");
    auto lower = Annotation("LOWER", {text, text}, {line});
    PutItems(lower, tag::kCompoundGraphicSequence,
             {With<CDcmItem>("00700294=RULER; 00700282=PIXEL")});
    auto state = With("ImageRotation=90; ImageHorizontalFlip=Y; PresentationLUTShape=INVERSE");
    PutItems(state, tag::kGraphicAnnotationSequence,
             {lower, Annotation("UPPER", {text}, {ring, ring}), Annotation("LOWER", {text}, {})});
    PutItems(
        state, tag::kGraphicLayerSequence,
        {With<CDcmItem>("GraphicLayer=LOWER; GraphicLayerOrder=1; 00700066=300; 00700068=first"),
         With<CDcmItem>("GraphicLayer=UPPER; GraphicLayerOrder=2; 00700401=1\\2\\3")});
    PutItems(state, tag::kGraphicGroupSequence, {With<CDcmItem>("00700207=A; 00700295=7")});
    PutItems(state, tag::kSoftcopyVOILUTSequence,
             {With<CDcmItem>("WindowCenter=40.25; WindowWidth=127.5; VOILUTFunction=SIGMOID; "
                             "WindowCenterWidthExplanation=SOFT")});
    PutItems(state, tag::kDisplayedAreaSelectionSequence,
             {With<CDcmItem>("DisplayedAreaTopLeftHandCorner=5\\6; PresentationSizeMode=MAGNIFY; "
                             "DisplayedAreaBottomRightHandCorner=60\\40; "
                             "PresentationPixelMagnificationRatio=1.5; "
                             "PresentationPixelAspectRatio=2\\3")});
    return With(state,
                "ShutterShape=RECTANGULAR\\CIRCULAR; ShutterLeftVerticalEdge=3; "
                "ShutterRightVerticalEdge=40; ShutterUpperHorizontalEdge=4; "
                "ShutterLowerHorizontalEdge=30; CenterOfCircularShutter=20\\30; "
                "RadiusOfCircularShutter=12; ShutterPresentationValue=77");
}

/// What the state made of a record gives when it is read.
std::string ReadBack(CXGSPSInfo& info) {
    const auto state = MakeState({&info});
    if (state == nullptr) return "nothing";
    Record again;
    again.imageColumns = 64;
    again.imageRows = 48;
    ReadState(*state, again);
    return AllOf(again);
}

TEST(StandardStateWriting, GivesTheRecordBack) {
    StateRecord first;
    CDcmObject state = With(FullState(), "RescaleIntercept=-1024; RescaleSlope=1");
    ReadState(state, first);
    EXPECT_EQ(ReadBack(first), AllOf(first));
}

TEST(StandardStateWriting, GivesBitmapsBack) {
    StateRecord info;
    info.shutterType = 3;
    info.imageColumns = 64;
    info.imageRows = 48;
    info.shutterPresentationValue = 9;
    info.shutterMask = new std::uint8_t[std::size_t{64} * 48]();
    for (std::size_t i = 0; i < 1000; ++i) info.shutterMask[i * 3] = 255;
    const auto state = MakeState({&info});
    ASSERT_NE(state, nullptr);
    ExpectValid(*state, "bitmap");
    Record again;
    again.imageColumns = 64;
    again.imageRows = 48;
    ReadState(*state, again);
    EXPECT_EQ(again.shutterShapes, 8);
    ASSERT_NE(again.shutterMask, nullptr);
    for (std::size_t i = 0; i < 64U * 48; ++i)
        ASSERT_EQ(again.shutterMask[i] != 0, info.shutterMask[i] != 0) << i;
}

TEST(StandardStateWriting, NamesTheCornersAsTheyAreSeen) {
    const struct {
        int rotation;
        bool isFlipped;
        const char* topLeft;
        const char* bottomRight;
    } kCases[] = {
        {0, false, "5\\6", "60\\40"},   {90, false, "5\\40", "60\\6"},
        {180, false, "60\\40", "5\\6"}, {270, false, "60\\6", "5\\40"},
        {0, true, "60\\6", "5\\40"},    {90, true, "5\\6", "60\\40"},
        {180, true, "5\\40", "60\\6"},  {-90, true, "60\\40", "5\\6"},
    };
    for (const auto& c : kCases) {
        StateRecord info;
        info.imageRotation = c.rotation;
        info.imageHorizontalFlip = c.isFlipped ? 1 : 0;
        info.displayedAreaLeft = 5;
        info.displayedAreaTop = 6;
        info.displayedAreaRight = 60;
        info.displayedAreaBottom = 40;
        const auto state = MakeState({&info});
        ASSERT_NE(state, nullptr);
        const CDcmItem area = ItemOf(*state, tag::kDisplayedAreaSelectionSequence);
        EXPECT_EQ(test::TextOf(area, tag::kDisplayedAreaTopLeftHandCorner), c.topLeft)
            << c.rotation;
        EXPECT_EQ(test::TextOf(area, tag::kDisplayedAreaBottomRightHandCorner), c.bottomRight)
            << c.rotation << c.isFlipped;
        ExpectValid(*state, std::to_string(c.rotation));
    }
    StateRecord askew;
    askew.imageRotation = 45;
    EXPECT_EQ(MakeState({&askew}), nullptr);
}

TEST(StandardStateWriting, FillsWhatARecordLacks) {
    StateRecord info;
    info.presentationShape = 2;
    const auto state = MakeState({&info});
    ASSERT_NE(state, nullptr);
    ExpectValid(*state, "an empty record");
    ExpectAttributes(*state,
                     "RescaleType=HU; PresentationLUTShape=IDENTITY; ContentLabel=LEFT HAND; "
                     "InstanceNumber=1; PixelPaddingValue; ShutterShape; SoftcopyVOILUTSequence; "
                     "GraphicLayerSequence; ShutterPresentationValue");
    const CDcmItem area = ItemOf(*state, tag::kDisplayedAreaSelectionSequence);
    ExpectAttributes(
        area,
        "DisplayedAreaTopLeftHandCorner=1\\1; DisplayedAreaBottomRightHandCorner=64\\48; "
        "PresentationSizeMode=SCALE TO FIT; PresentationPixelAspectRatio=1\\1; "
        "PresentationPixelSpacing; PresentationPixelMagnificationRatio");
    const CDcmItem reference =
        ItemOf(ItemOf(*state, tag::kReferencedSeriesSequence), tag::kReferencedImageSequence);
    ExpectAttributes(reference, "ReferencedSOPInstanceUID=1.2.3.4; ReferencedFrameNumber");
}

TEST(StandardStateWriting, GroupsImagesBySeriesAndFramesByImage) {
    StateRecord records[4];
    const std::tuple<const char*, const char*, int> images[] = {{"1.2.3.9", "1.2.3.4", 1},
                                                                {"1.2.3.9", "1.2.3.4", 3},
                                                                {"1.2.3.8", "1.2.3.5", 0},
                                                                {"", "", 2}};
    std::vector<CXGSPSInfo*> infos;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto& [series, image, frame] = images[i];
        records[i].referencedSOPClassUID = "1.2.840.10008.5.1.4.1.1.2.1";
        records[i].referencedSeriesUID = series;
        records[i].referencedSOPInstanceUID = image;
        records[i].referencedFrameNumber = frame;
        infos.push_back(&records[i]);
    }
    const auto state = MakeState(infos);
    ASSERT_NE(state, nullptr);
    ExpectValid(*state, "two series");
    std::string text;
    ForEachItem(*state, tag::kReferencedSeriesSequence, [&](const CDcmItem& series) {
        text += test::TextOf(series, tag::kSeriesInstanceUID) + ":";
        ForEachItem(series, tag::kReferencedImageSequence, [&](const CDcmItem& image) {
            text += test::TextOf(image, tag::kReferencedSOPInstanceUID) + "," +
                    test::TextOf(image, tag::kReferencedFrameNumber) + ";";
        });
    });
    EXPECT_EQ(text, std::string("1.2.3.9:1.2.3.4,1\\3\\2;1.2.3.8:1.2.3.5,") + kAbsent + ";");
}

/// By both rules the table begins at -1000, whatever says that values may be negative.
TEST(StateWriting, MarksTablesThatBeginBelowZero) {
    for (const Rules rules : {Rules::kEstablished, Rules::kStandard}) {
        for (const bool isSignedImage : {true, false}) {
            StateRecord info;
            info.pixelRepresentation = isSignedImage ? 1 : 0;
            info.rescaleSlope = isSignedImage ? 0.0 : 1.0;
            info.rescaleIntercept = -1024;
            info.pixelBitDepth = 12;
            info.voiLUTData = new std::uint16_t[2]{0, 1};
            info.voiLUTCount = 2;
            info.voiLUTFirst = static_cast<std::uint16_t>(-1000);
            info.voiLUTBits = 8;
            CXGSPSObject maker;
            maker.SetRules(rules);
            CXGSPSInfo* infos[] = {&info};
            CDcmObject image = Image();
            CDcmObject* made = nullptr;
            ASSERT_EQ(maker.MakeGSPSObject(&image, infos, 1, made), 1);
            const std::unique_ptr<CDcmObject> state(made);
            const CDcmItem lut =
                ItemOf(ItemOf(*state, tag::kSoftcopyVOILUTSequence), tag::kVOILUTSequence);
            MC_VR vr = MC_VR_UN;
            lut.WalkElements(&vr, [](const DcmElementView& element, void* user) -> MC_STATUS {
                if (element.tag == tag::kLUTDescriptor) *static_cast<MC_VR*>(user) = element.vr;
                return kMcContinue;
            });
            EXPECT_EQ(vr, MC_VR_SS);
        }
    }
    CDcmItem item;  // as a host writes it
    for (const int word : {2, -1000, 16}) item.SetNextValue(tag::kLUTDescriptor, word);
    EXPECT_NE(TextOf(item).find("28"), std::string::npos);
    short first = 0;
    item.GetValue(tag::kLUTDescriptor, first);
    EXPECT_EQ(item.GetNextValue(tag::kLUTDescriptor, first), kDcmSuccess);
    EXPECT_EQ(first, -1000);
}

}  // namespace
}  // namespace quorvex
