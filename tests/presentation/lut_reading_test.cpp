// Modality, VOI and presentation data of images and of presentation states.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr std::uint32_t kModalityLUTs = 0x00283000;
constexpr std::uint32_t kLUTs = 0x00283010;
constexpr std::uint32_t kSoftcopyLUTs = 0x00283110;
constexpr std::uint32_t kPresentationLUTs = 0x20500010;
constexpr std::uint32_t kCenter = 0x00281050;
constexpr std::uint32_t kWidth = 0x00281051;

CDcmItem Window(const char* center, const char* width) {
    CDcmItem item;
    item.SetValue(kCenter, center);
    item.SetValue(kWidth, width);
    return item;
}

CDcmItem VoiLut(int count, int first, int bits, const std::vector<int>& entries) {
    CDcmItem item;
    PutItems(item, kLUTs, {LutItem(count, first, bits, entries)});
    return item;
}

TEST(ModalityReading, RescaleWinsOverTheLut) {
    CDcmObject image;
    image.SetValue(0x00280100, static_cast<unsigned short>(16));
    image.SetValue(0x00280101, static_cast<unsigned short>(12));
    image.SetValue(0x00280103, static_cast<unsigned short>(1));
    PutItems(image, kModalityLUTs, {LutItem(3, -2, 16, {5, 6, 65535})});
    {
        Record info;
        EXPECT_EQ(ReadImage(image, info), 1);
        EXPECT_EQ(Entries(info.modalityLUTData, 3), (std::vector<int>{5, 6, 65535}));
        EXPECT_EQ(info.modalityLUTCount, 3);
        EXPECT_EQ(info.modalityLUTFirst, 65534);
        EXPECT_EQ(info.pixelRepresentation, 1);
        EXPECT_EQ(info.pixelBitDepth, 12);
    }
    image.SetValue(0x00281052, "-1024");
    Record info;
    info.pixelValueOffset = 7;
    ReadImage(image, info);
    EXPECT_EQ(info.modalityLUTData, nullptr);
    EXPECT_EQ(info.rescaleIntercept, -1024.0);
    EXPECT_EQ(info.rescaleSlope, 1.0);
    EXPECT_EQ(info.pixelValueOffset, 0);
    image.SetValue(0x00281053, "0");
    ReadImage(image, info);
    EXPECT_EQ(info.rescaleSlope, 0.0);
}

TEST(ModalityReading, BitDepthNeedsBitsAllocated) {
    CDcmObject image;
    image.SetValue(0x00280101, static_cast<unsigned short>(12));
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(info.pixelBitDepth, 0);
    EXPECT_EQ(info.rescaleSlope, 0.0);
}

TEST(VoiReading, ImagesPreferTheLut) {
    CDcmObject image;
    image.SetValue(kCenter, "-100.7");
    image.SetNextValue(kCenter, "50");
    image.SetValue(kWidth, "350.9");
    {
        Record info;
        ReadImage(image, info);
        EXPECT_EQ(info.windowCenter, -100);
        EXPECT_EQ(info.windowWidth, 350);
    }
    PutItems(image, kLUTs, {LutItem(4, 10, 12, {1, 2, 3, 4})});
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(Entries(info.voiLUTData, 4), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(info.voiLUTFirst, 10);
    EXPECT_EQ(info.voiLUTBits, 12);
    EXPECT_EQ(info.windowWidth, 0);
}

TEST(VoiReading, ACenterWithoutAWidthIsNoWindow) {
    CDcmObject image;
    image.SetValue(kCenter, "40");
    Record info;
    info.windowWidth = 99;
    ReadImage(image, info);
    EXPECT_EQ(info.windowWidth, 0);
}

TEST(VoiReading, StatesPreferTheWindow) {
    CDcmItem both = VoiLut(2, 0, 8, {1, 2});
    both.SetValue(kCenter, "-100.7");
    both.SetValue(kWidth, "350.9");
    CDcmObject state;
    PutItems(state, kSoftcopyLUTs, {both});
    Record info;
    EXPECT_EQ(ReadState(state, info), 1);
    EXPECT_EQ(info.windowCenter, -100);
    EXPECT_EQ(info.windowWidth, 350);
    EXPECT_EQ(info.voiLUTData, nullptr);
}

TEST(VoiReading, TheLastItemThatAppliesStands) {
    CDcmObject state;
    PutItems(state, kSoftcopyLUTs,
             {VoiLut(2, 0, 8, {1, 2}), VoiLut(2, 0, 8, {3, 4}),
              Referring(Window("1", "2"), {Reference("9.9")})});
    {
        Record info;
        ReadState(state, info);  // the first LUT must not be left behind either
        EXPECT_EQ(Entries(info.voiLUTData, 2), (std::vector<int>{3, 4}));
    }
    CDcmItem window = Window("40", "400");
    state.SetNextValue(kSoftcopyLUTs, &window);
    Record info;
    ReadState(state, info);
    EXPECT_EQ(info.voiLUTData, nullptr);
    EXPECT_EQ(info.windowWidth, 400);
}

TEST(VoiReading, NothingThatAppliesIsNoWindow) {
    CDcmObject state;
    state.SetValue(kCenter, "40");  // an image's attribute means nothing here
    state.SetValue(kWidth, "400");
    Record info;
    ReadState(state, info);
    EXPECT_EQ(info.windowWidth, 0);
    PutItems(state, kSoftcopyLUTs, {Referring(Window("1", "2"), {Reference("9.9")})});
    ReadState(state, info);
    EXPECT_EQ(info.windowWidth, 0);
    EXPECT_EQ(info.voiLUTData, nullptr);
}

TEST(PresentationReading, TakesTheShape) {
    struct Case {
        bool isState;
        std::uint32_t tag;
        const char* word;
        int shape;
    };
    constexpr Case kCases[] = {
        {false, 0x00280004, "MONOCHROME1", 1},   {false, 0x00280004, "MONOCHROME2", 0},
        {false, 0x00280004, "XMONOCHROME1Y", 1}, {false, 0x00280004, "RGB", 2},
        {false, 0x20500020, "IDENTITY", 2},      {true, 0x20500020, "INVERSE", 1},
        {true, 0x20500020, "IDENTITY", 0},       {true, 0x20500020, "inverse", 2},
        {true, 0x00280004, "MONOCHROME1", 0},
    };
    for (const Case& c : kCases) {
        CDcmObject object;
        object.SetValue(c.tag, c.word);
        Record info;
        c.isState ? ReadState(object, info) : ReadImage(object, info);
        EXPECT_EQ(info.presentationShape, c.shape) << c.word << (c.isState ? " state" : " image");
    }
}

TEST(PresentationReading, TakesTheLutOfAState) {
    CDcmObject state;
    PutItems(state, kPresentationLUTs, {LutItem(2, 1, 16, {7, 8})});
    Record info;
    info.presentationShape = 1;
    ReadState(state, info);
    EXPECT_EQ(Entries(info.presentationLUTData, 2), (std::vector<int>{7, 8}));
    EXPECT_EQ(info.presentationLUTFirst, 1);
    EXPECT_EQ(info.presentationLUTBits, 16);
    EXPECT_EQ(info.presentationShape, 1);
}

TEST(LutReading, ShortDataIsFilledUpToTheDescriptor) {
    CDcmObject image;
    PutItems(image, kLUTs, {LutItem(5, 0, 8, {1, 2, 3})});
    PutItems(image, kModalityLUTs, {LutItem(0, 0, 16, {4, 9})});
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(info.voiLUTCount, 5);
    EXPECT_EQ(Entries(info.voiLUTData, 5), (std::vector<int>{1, 2, 3, 3, 3}));
    EXPECT_EQ(info.modalityLUTCount, 0);
    EXPECT_EQ(Entries(info.modalityLUTData, 65536).back(), 9);
}

TEST(LutReading, UnusableLutsLeaveTheRecordAlone) {
    CDcmItem noDescriptor = LutItem(2, 0, 8, {1, 2});
    noDescriptor.RemoveValue(0x00283002);
    CDcmItem nested;
    CDcmItem sequenceData = LutItem(2, 0, 8, {});
    sequenceData.SetValue(0x00283006, &nested);
    for (const CDcmItem& lut : {noDescriptor, LutItem(2, 0, 8, {}), sequenceData, CDcmItem()}) {
        CDcmObject image;
        for (const std::uint32_t tag : {kLUTs, kModalityLUTs}) PutItems(image, tag, {lut});
        CDcmObject state;
        CDcmItem softcopy;
        PutItems(softcopy, kLUTs, {lut});
        PutItems(state, kSoftcopyLUTs, {softcopy});
        PutItems(state, kPresentationLUTs, {lut});
        Record info;
        EXPECT_EQ(ReadImage(image, info), 1);
        EXPECT_EQ(ReadState(state, info), 1);
        EXPECT_EQ(info.voiLUTData, nullptr);
        EXPECT_EQ(info.modalityLUTData, nullptr);
        EXPECT_EQ(info.presentationLUTData, nullptr);
        EXPECT_EQ(info.voiLUTCount, 0);
    }
}

TEST(Modules, RunOneByOne) {
    CDcmObject image;
    image.SetValue(0x00281052, "5");
    image.SetValue(kCenter, "40");
    image.SetValue(kWidth, "400");
    image.SetValue(0x00700041, "Y");
    CXGSPSObject reader;
    Record info;
    for (const unsigned int selector : {4U, 7U, 9U, 0xFFFFFFFFU}) {
        EXPECT_EQ(reader.GetGSPSModule(selector, &image, &info), 1);
    }
    EXPECT_EQ(info.rescaleSlope, 0.0);
    EXPECT_EQ(reader.GetGSPSModule(0, &image, &info), 1);
    EXPECT_EQ(info.rescaleIntercept, 5.0);
    EXPECT_EQ(info.windowWidth, 0);
    EXPECT_EQ(reader.GetGSPSModule(2, &image, &info), 1);
    EXPECT_EQ(info.windowWidth, 400);
    EXPECT_EQ(reader.GetGSPSModule(5, &image, &info), 1);
    EXPECT_EQ(info.imageHorizontalFlip, 1);
}

TEST(Modules, ANullObjectChangesNothing) {
    Record info;
    info.pixelValueOffset = 7;
    CXGSPSObject reader;
    EXPECT_EQ(reader.GSPSApplier(nullptr, &info, kImage, 3), 0);
    EXPECT_EQ(info.pixelValueOffset, 7);
    EXPECT_TRUE(reader.imageUID.IsEmpty());
    CDcmObject object;
    EXPECT_EQ(reader.GSPSApplier(&object, nullptr, kImage, 3), 0);
    EXPECT_EQ(reader.GetGSPSModule(0, nullptr, &info), 1);
}

}  // namespace
}  // namespace quorvex
