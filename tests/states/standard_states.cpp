#include "tests/states/standard_states.h"

#include "tests/support/checkers.h"
#include "tests/support/temporary_file.h"

#include <gtest/gtest.h>
#include <sstream>

namespace quorvex::test {

CDcmObject CtImage() {
    return With(
        "00080005=ISO_IR 100; 00080016=1.2.840.10008.5.1.4.1.1.2; 00080018=1.2.3.4; 00080060=CT; "
        "00100010=Doe^Jane; 0020000D=1.2.3; 0020000E=1.2.3.9; 00281052=-1024; 00281053=1; Rows=48; "
        "Columns=64; PhotometricInterpretation=MONOCHROME2; PixelRepresentation=0; "
        "PixelPaddingValue=63536; BodyPartExamined=CHEST");
}

StateRecord::StateRecord() {
    objectKind = 1;
    contentLabel = "left hand";
}

std::unique_ptr<CDcmObject> MakeState(std::vector<CXGSPSInfo*> infos, CDcmObject image) {
    CXGSPSObject maker;
    maker.SetRules(Rules::kStandard);
    CDcmObject* state = nullptr;
    maker.MakeGSPSObject(&image, infos.data(), static_cast<int>(infos.size()), state);
    return std::unique_ptr<CDcmObject>(state);
}

void ExpectValid(const CDcmObject& state, const std::string& what) {
    const TemporaryFile file;
    ASSERT_EQ(state.WriteFile(file.Path()), kDcmSuccess) << what;
    EXPECT_EQ(ErrorsIn(file.Path()), "") << what;
    EXPECT_EQ(ComplaintsAboutState(file.Path()), "") << what;
}

std::string ElementsOf(const CDcmObjectCommon& object) {
    std::ostringstream text;
    object.WalkElements(&text, [](const DcmElementView& element, void* user) -> MC_STATUS {
        auto& out = *static_cast<std::ostringstream*>(user);
        out << std::hex << element.tag << ':' << element.depth << '=';
        if (element.vr != MC_VR_SQ) {
            std::string value(static_cast<const char*>(static_cast<const void*>(element.data)),
                              element.length);
            while (value.ends_with(' ') || value.ends_with('\0')) value.pop_back();
            out << value;
        }
        out << ';';
        return kMcContinue;
    });
    return text.str();
}

namespace {

CDcmItem Annotation(const char* layer, std::vector<CDcmItem> texts,
                    std::vector<CDcmItem> graphics) {
    auto item = With<CDcmItem>(std::string("GraphicLayer=") + layer);
    PutItems(item, tag::kTextObjectSequence, std::move(texts));
    PutItems(item, tag::kGraphicObjectSequence, std::move(graphics));
    return item;
}

}  // namespace

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

}  // namespace quorvex::test
