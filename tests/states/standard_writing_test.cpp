// Presentation states by the standard rules: valid, whatever the records lack.
#include "foundation/dicom/model/attributes.h"
#include "tests/states/standard_states.h"

#include <array>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

CDcmItem ItemOf(const CDcmObjectCommon& object, std::uint32_t sequence) {
    CDcmItem item;
    EXPECT_EQ(object.GetValue(sequence, item), kDcmSuccess) << std::hex << sequence;
    return item;
}

CDcmObject Rescaled(const std::string& rescale) {
    CDcmObject image = CtImage();
    for (const auto tag : {tag::kRescaleSlope, tag::kRescaleIntercept}) image.RemoveValue(tag);
    return With(std::move(image), rescale);
}

// One modality transform is for all images of a state (PS3.3 A.33.1.1).
TEST(StandardStateWriting, RefusesImagesOfSeveralRescales) {
    const struct {
        const char* first;
        const char* second;
        bool isOne;
    } kCases[] = {
        {"RescaleIntercept=0; RescaleSlope=2", "RescaleIntercept=0; RescaleSlope=2.0", true},
        {"RescaleIntercept=0; RescaleSlope=2", "RescaleIntercept=0; RescaleSlope=3", false},
        {"RescaleIntercept=-1024", "RescaleIntercept=-1000", false},
        {"Rows=48", "RescaleSlope=1; RescaleIntercept=0", true},
        {"Rows=48", "RescaleSlope=1; RescaleIntercept=1", false},
    };
    for (const auto& c : kCases) {
        StateRecord records[3];  // the last one says nothing
        CDcmObject images[] = {Rescaled(c.first), Rescaled(c.second)};
        for (CDcmObject& image : images) image.SetValue(tag::kBitsAllocated, 16);
        for (CDcmObject& image : images) image.SetValue(tag::kBitsStored, 12);
        ReadImage(images[0], records[0]);
        ReadImage(images[1], records[1]);
        records[1].referencedSOPInstanceUID = "1.2.3.5";
        records[2].referencedSOPInstanceUID = "1.2.3.6";
        CXGSPSObject maker;
        maker.SetRules(Rules::kStandard);
        for (const auto& order : {std::array{0, 1, 2}, std::array{2, 1, 0}}) {
            std::vector<CXGSPSInfo*> infos;
            for (const int i : order) infos.push_back(&records[i]);
            CDcmObject* made = nullptr;
            EXPECT_EQ(maker.MakeGSPSObject(&images[0], infos.data(), 3, made), c.isOne ? 1 : 0);
            const std::unique_ptr<CDcmObject> state(made);
            EXPECT_EQ(maker.GetOutcome(),
                      c.isOne ? QVM_SUCCESS : QVM_ERROR_INVALID_PIXEL_REPRESENTATION)
                << c.first << c.second;
        }
    }
}

CDcmItem Groups(const std::string& rescale, const std::string& window) {
    return With(With(CDcmItem(), tag::kPixelValueTransformationSequence,
                     {With<CDcmItem>(rescale + "; RescaleType=US")}),
                tag::kFrameVOILUTSequence, {With<CDcmItem>(window)});
}

TEST(StandardStateWriting, ReadsFramesOfMultiFrameImages) {
    const auto plain = "RescaleIntercept=5; RescaleSlope=2";
    const auto other = "RescaleIntercept=5; RescaleSlope=3";
    const auto image = [&](const char* second) {
        return With(Rescaled("NumberOfFrames=3; SOPClassUID=1.2.840.10008.5.1.4.1.1.2.1"),
                    tag::kPerFrameFunctionalGroupsSequence,
                    {Groups(plain, "WindowCenter=40; WindowWidth=80.5"),
                     Groups(second, "WindowCenter=40; WindowWidth=80.5"),
                     Groups(plain, "WindowCenter=41; WindowWidth=80.5")});
    };
    const struct {
        const char* second;
        std::vector<int> frames;
        const char* slope;  ///< null: no state can be
        const char* width;
    } kCases[] = {{plain, {0}, "2", kAbsent},   {plain, {2}, "2", "80.5"},
                  {other, {0}, nullptr, ""},    {other, {2}, "3", "80.5"},
                  {other, {1, 3}, "2", "80.5"}, {other, {1, 2}, nullptr, ""}};
    for (const auto& c : kCases) {
        CDcmObject source = image(c.second);
        StateRecord records[2];
        std::vector<CXGSPSInfo*> infos;
        for (const int frame : c.frames) {
            CXGSPSInfo& info = records[infos.size()];
            CXGSPSObject reader;
            reader.SetRules(Rules::kStandard);
            reader.GSPSApplier(&source, &info, "", frame);
            info.referencedFrameNumber = frame;
            infos.push_back(&info);
        }
        const auto state = MakeState(infos, source);
        ASSERT_EQ(state != nullptr, c.slope != nullptr) << c.frames[0];
        if (state == nullptr) continue;
        ExpectValid(*state, "of frames");
        EXPECT_EQ(test::TextOf(*state, tag::kRescaleSlope), c.slope) << c.frames[0];
        CDcmItem voi;
        state->GetValue(tag::kSoftcopyVOILUTSequence, voi);
        EXPECT_EQ(test::TextOf(voi, tag::kWindowWidth), c.width) << c.frames[0];
    }
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
            CDcmObject image = CtImage();
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
    EXPECT_NE(ElementsOf(item).find("28"), std::string::npos);
    short first = 0;
    item.GetValue(tag::kLUTDescriptor, first);
    EXPECT_EQ(item.GetNextValue(tag::kLUTDescriptor, first), kDcmSuccess);
    EXPECT_EQ(first, -1000);
}

}  // namespace
}  // namespace quorvex
