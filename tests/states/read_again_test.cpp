// Presentation states by the standard rules: the same when they are read and written.
#include "states/attribute_writing.h"
#include "tests/states/standard_states.h"
#include "tests/support/temporary_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <sstream>

namespace quorvex {
namespace {

using namespace test;

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
        for (const auto& others : text.otherAttributes) all << ElementsOf(others);
    }
    for (int i = 0; i < info.graphicObjects.GetSize(); ++i) {
        const auto& graphic = *static_cast<const GSPSGraphicObject*>(info.graphicObjects[i]);
        all << "; " << graphic.graphicLayer.ToUtf8();
        for (const auto& others : graphic.otherAttributes) all << ElementsOf(others);
    }
    for (const auto& compound : info.compoundGraphics)
        all << "; " << compound.graphicLayer.ToUtf8() << ElementsOf(compound.item);
    for (const auto& group : info.graphicGroups) all << "; group " << ElementsOf(group);
    return all.str();
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

TEST(StandardStateReadAgain, GivesTheRecordBack) {
    StateRecord first;
    CDcmObject state = With(FullState(), "RescaleIntercept=-1024; RescaleSlope=1");
    ReadState(state, first);
    EXPECT_EQ(ReadBack(first), AllOf(first));
}

/// An overlay of 16 x 2 bits.
CDcmObject WithOverlay(CDcmObject state, std::uint32_t group, const std::string& more) {
    const auto at = [&](std::uint32_t tag) { return tag::InGroup(group, tag); };
    for (const auto& [tag, number] : {std::pair(tag::kOverlayRows, 2),
                                      {tag::kOverlayColumns, 16},
                                      {tag::kOverlayBitsAllocated, 1},
                                      {tag::kOverlayBitPosition, 0}})
        state.SetValue(at(tag), number);
    Put(state, at(tag::kOverlayOrigin), {5, 9});
    state.SetValue(at(tag::kOverlayType), "G");
    const unsigned char bits[] = {0x21, 0x84, 0xFF, 0x01};
    SetWords(state, at(tag::kOverlayData), bits);
    return With(std::move(state), more);
}

/// What no field of a record holds, in characters that the image has not.
CDcmObject WithMore(CDcmObject state) {
    state = With(std::move(state),
                 "00080005=ISO_IR 192; RecommendedViewingMode=SUB; "
                 "00700080=LABEL; 00700081=Gr\xC3\xBC\xC3\x9F; "
                 "00700084=M\xC3\xBCller^A; 60041001=UPPER");
    state = WithOverlay(std::move(state), 0x6000, "60001001=LOWER; 60000022=Mark\xC3\xBCng");
    const auto code = With<CDcmItem>("00080100=A; 00080102=99X; 00080104=M\xC3\xBCller");
    PutItems(state, tag::kContentCreatorIdentificationCodeSequence,
             {With(With<CDcmItem>("00080080=Hospital"), 0x00401101, {code})});
    PutItems(state, tag::kMaskSubtractionSequence,
             {With<CDcmItem>("MaskOperation=AVG_SUB; MaskFrameNumbers=1\\2; 00286112=2; "
                             "MaskSubPixelShift=0.5\\1.25; 00286190=M\xC3\xBCsk")});
    PutItems(state, tag::kModalityLUTSequence,
             {With(LutItem(4, 0, 16, {0, 10, 20, 65535}), "00283004=OD; 00283003=\xC3\xBC")});
    return state;
}

/// Elements of a text as above that another one lacks.
std::string Missing(const std::string& wanted, const std::string& text) {
    std::string missing;
    std::istringstream lines(wanted);
    for (std::string line; std::getline(lines, line, ';');)
        if (text.find(line + ';') == std::string::npos) missing += line + ';';
    return missing;
}

CDcmObject LatinImage() {
    return With(CtImage(), "00080005=ISO_IR 100");
}

TEST(StandardStateReadAgain, KeepsWhatNoFieldHolds) {
    CDcmObject state = WithMore(FullState());
    StateRecord info;
    ReadState(state, info);
    info.contentLabel = CString();
    const auto again = MakeState({&info}, LatinImage());
    ASSERT_NE(again, nullptr);
    const TemporaryFile file;
    ASSERT_EQ(With(*again, "00080005=ISO_IR 192").WriteFile(file.Path()), kDcmSuccess);
    CDcmObject read;
    CDcmApp app;
    read.Open(CString(file.Path()));
    ASSERT_EQ(read.ReadFile(&app, nullptr, nullptr), kDcmSuccess);
    EXPECT_EQ(Missing(ElementsOf(state), ElementsOf(read)), "");
    // One checker knows no masks; the styles of the full state are not whole.
    CDcmObject valid = WithMore(With("ImageHorizontalFlip=N"));
    valid.RemoveValue(tag::kMaskSubtractionSequence);
    valid.RemoveValue(tag::kRecommendedViewingMode);
    StateRecord validInfo;
    ReadState(valid, validInfo);
    const auto validAgain = MakeState({&validInfo}, LatinImage());
    ASSERT_NE(validAgain, nullptr);
    ExpectValid(*validAgain, "a state with overlays");
    ExpectAttributes(*again, "RescaleSlope; 00280005; 60021001");
}

// A table whose 8-bit entries lie two to a word has half as many words as entries.
TEST(StandardStateReadAgain, KeepsTablesAsTheyAreStored) {
    for (const bool isChanged : {false, true}) {
        CDcmObject state = With("ImageHorizontalFlip=N");
        const auto table = With(LutItem(6, 0, 8, {0x0100, 0x0302, 0x0504}), "00283003=MINE");
        PutItems(state, tag::kPresentationLUTSequence, {table});
        PutItems(state, tag::kSoftcopyVOILUTSequence,
                 {With(CDcmItem(), tag::kVOILUTSequence, {table})});
        StateRecord info;
        ReadState(state, info);
        if (isChanged) {
            ++info.voiLUTData[1];
            ++info.presentationLUTData[1];
        }
        const auto again = MakeState({&info});
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(Missing(ElementsOf(state), ElementsOf(*again)).empty(), !isChanged);
        CDcmItem written;
        again->GetValue(tag::kPresentationLUTSequence, written);
        int words = 0;
        written.GetValueCount(tag::kLUTData, words);
        EXPECT_EQ(words, 3);
        Record read;
        ReadState(*again, read);
        EXPECT_EQ(Entries(read.voiLUTData, 6), Entries(info.voiLUTData, 6));
        EXPECT_EQ(Entries(read.presentationLUTData, 6), Entries(info.presentationLUTData, 6));
    }
}

// The shutter stands in the second group, over half of the image.
TEST(StandardStateReadAgain, KeepsBitmapsThatAreNoLargerThanTheyMust) {
    for (const bool isChanged : {false, true}) {
        CDcmObject state =
            WithOverlay(WithOverlay(With("ShutterShape=BITMAP; ShutterPresentationValue=3; "
                                         "ImageHorizontalFlip=N"),
                                    0x6000, "60001001=MARKS"),
                        0x6002, "60020022=shutter");
        state.SetValue(tag::kShutterOverlayGroup, 0x6002);
        PutItems(state, tag::kGraphicLayerSequence,
                 {With<CDcmItem>("GraphicLayer=MARKS; GraphicLayerOrder=1")});
        StateRecord info;
        info.imageColumns = 64;
        info.imageRows = 48;
        ReadState(state, info);
        if (isChanged) info.shutterMask[100] = 1;
        const auto again = MakeState({&info});
        ASSERT_NE(again, nullptr);
        ExpectValid(*again, "bitmap");
        EXPECT_EQ(Missing(ElementsOf(state), ElementsOf(*again)).empty(), !isChanged);
        ExpectAttributes(*again, isChanged ? "60020010=48; 60020011=64; 60000010=2; 60001001=MARKS"
                                           : "60020010=2; 60020011=16; 60000010=2; 60001001=MARKS");
        Record read;
        read.imageColumns = 64;
        read.imageRows = 48;
        ReadState(*again, read);
        EXPECT_TRUE(std::equal(read.shutterMask, read.shutterMask + 64 * 48, info.shutterMask));
    }
}

TEST(StandardStateReadAgain, GivesBitmapsBack) {
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

}  // namespace
}  // namespace quorvex
