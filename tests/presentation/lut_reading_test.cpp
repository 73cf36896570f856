// Modality, VOI and presentation data of images and of presentation states.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

enum Module : unsigned int { kModality = 0, kVoi = 2, kPresentation = 3 };

constexpr std::uint32_t kModalityLUTs = tag::kModalityLUTSequence;
constexpr std::uint32_t kLUTs = tag::kVOILUTSequence;
constexpr std::uint32_t kSoftcopyLUTs = tag::kSoftcopyVOILUTSequence;
constexpr std::uint32_t kPresentationLUTs = tag::kPresentationLUTSequence;

CDcmItem Holding(const CDcmItem& lut, const char* attributes = "") {
    return With(With<CDcmItem>(attributes), kLUTs, {lut});
}

/// An object, and all that a module of it puts into a fresh record.
struct Case {
    const char* what;
    CDcmObject object;
    const char* read;
};

void Check(Module module, const char* imageUID, const std::vector<Case>& cases) {
    CXGSPSObject reader;
    reader.imageUID = imageUID;
    for (const Case& c : cases) {
        Record info;
        CDcmObject object = c.object;
        EXPECT_EQ(reader.GetGSPSModule(module, &object, &info), 1) << c.what;
        EXPECT_EQ(TextOf(info), c.read) << c.what;
    }
}

TEST(ModalityReading, PrefersTheRescale) {
    const auto table = With(With("00280100=16; 00280101=12; 00280103=1"), kModalityLUTs,
                            {LutItem(3, -2, 16, {5, 6, 65535})});
    Check(kModality, "",
          {{"a table", table, "depth 12; signed 1; modality 3,65534,0: 5 6 65535"},
           {"no slope is 1", With(table, "00281052=-1024"),
            "depth 12; signed 1; slope 1; intercept -1024"},
           {"a slope of 0", With(table, "00281052=-1024; 00281053=0"),
            "depth 12; signed 1; intercept -1024"},
           {"no Bits Allocated: no depth", With("00280101=12"), ""}});
}

TEST(VoiReading, OfImagesPrefersTheTable) {
    const auto window = With("00281050=-100.7\\50; 00281051=350.9");
    Check(
        kVoi, "",
        {{"the first window", window, "center -100; width 350"},
         {"both", With(window, kLUTs, {LutItem(4, 10, 12, {1, 2, 3, 4})}), "VOI 4,10,12: 1 2 3 4"},
         {"no width", With("00281050=40"), "center 40"}});
}

TEST(VoiReading, OfStatesPrefersTheWindowAndTheLastItem) {
    const auto other = Referring(With<CDcmItem>("00281050=1; 00281051=2"), {Reference("9.9")});
    const auto first = Holding(LutItem(2, 0, 8, {1, 2}));
    const auto second = Holding(LutItem(2, 0, 8, {3, 4}));
    const auto both = Holding(LutItem(2, 0, 8, {1, 2}), "00281050=-100.7; 00281051=350.9");
    const auto window = With<CDcmItem>("00281050=40; 00281051=400");
    const auto state = [](std::vector<CDcmItem> items) {
        return With(CDcmObject(), kSoftcopyLUTs, std::move(items));
    };
    Check(kVoi, kImage,
          {{"both", state({both}), "center -100; width 350"},
           {"two tables", state({first, second, other}), "VOI 2,0,8: 3 4"},
           {"a window behind them", state({first, second, window}), "center 40; width 400"},
           {"another image's", state({other}), ""},
           {"a wide one", state({With<CDcmItem>("00281050=40; 00281051=70000")}),
            "center 40; width 70000"},
           {"a width in powers of ten", state({With<CDcmItem>("00281050=40; 00281051=1.024E+05")}),
            "center 40; width 102400"},
           {"an image's attributes", With("00281050=40; 00281051=400"), ""}});
}

TEST(VoiReading, ForgetsTheWindowOfARecord) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"", "00280010=1"}, {"", "00281050=40"}, {kImage, "00280010=1"}};
    for (const auto& [image, attributes] : kCases) {
        auto object = With(attributes);
        Record info;
        info.windowWidth = 99;
        CXGSPSObject().GSPSApplier(&object, &info, image, -1);
        EXPECT_EQ(info.windowWidth, 0) << image << attributes;
    }
}

TEST(PresentationReading, TakesTheShape) {
    const auto table = With(CDcmObject(), kPresentationLUTs, {LutItem(2, 1, 16, {7, 8})});
    Check(kPresentation, "",
          {{"inverse", With("00280004=MONOCHROME1"), "shape 1"},
           {"identity", With("00280004=MONOCHROME2"), ""},
           {"text around the word", With("00280004=XMONOCHROME1Y"), "shape 1"},
           {"colour", With("00280004=RGB"), "shape 2"},
           {"a state's attribute", With("20500020=IDENTITY"), "shape 2"}});
    Check(kPresentation, kImage,
          {{"inverse", With("20500020=INVERSE"), "shape 1"},
           {"identity", With("20500020=IDENTITY"), ""},
           {"small letters", With("20500020=inverse"), "shape 2"},
           {"an image's attribute", With("00280004=MONOCHROME1"), ""},
           {"a table", table, "presentation 2,1,16: 7 8"}});
    CDcmObject state = table;
    Record info;
    info.presentationShape = 1;
    ReadState(state, info);
    EXPECT_EQ(info.presentationShape, 1) << "a table leaves the shape as it is";
}

TEST(LutReading, FillsShortTablesUpToTheDescriptor) {
    CDcmObject image = With(With(CDcmObject(), kLUTs, {LutItem(5, 0, 8, {1, 2, 3})}), kModalityLUTs,
                            {LutItem(0, 0, 16, {4, 9})});
    Check(kVoi, "", {{"5 entries", image, "VOI 5,0,8: 1 2 3 3 3"}});
    Check(kModality, "", {{"65536 entries", image, "modality 0,0,0: 4 9 9 9 9 9 9 9"}});
    Record info;
    ReadImage(image, info);
    EXPECT_EQ(Entries(info.modalityLUTData, 65536).back(), 9);
}

TEST(LutReading, LeavesTheRecordAloneWhereATableIsNotUsable) {
    auto noDescriptor = LutItem(2, 0, 8, {1, 2});
    noDescriptor.RemoveValue(tag::kLUTDescriptor);
    const auto sequence = With(LutItem(2, 0, 8, {}), tag::kLUTData, {CDcmItem()});
    for (const CDcmItem& lut : {noDescriptor, LutItem(2, 0, 8, {}), sequence, CDcmItem()}) {
        CDcmObject object = With(With(CDcmObject(), kLUTs, {lut}), kModalityLUTs, {lut});
        PutItems(object, kSoftcopyLUTs, {Holding(lut)});
        PutItems(object, kPresentationLUTs, {lut});
        Check(kVoi, "", {{"an image's VOI", object, ""}});
        Check(kVoi, kImage, {{"a state's VOI", object, ""}});
        Check(kModality, "", {{"modality", object, ""}});
        Check(kPresentation, kImage, {{"presentation", object, ""}});
    }
}

TEST(Modules, RunOneByOne) {
    auto image = With("00281052=5; 00281050=40; 00281051=400; 00700041=Y; 00700042=90");
    constexpr std::pair<unsigned int, const char*> kRead[] = {
        {0, "slope 1; intercept 5"},
        {1, ""},
        {2, "center 40; width 400"},
        {3, "shape 2"},
        {5, "rotation 90; flip 1"},
        {6, "aspect x 1; aspect y 1; magnification 1"},
        {4, ""},
        {7, ""},
        {9, ""},
        {0xFFFFFFFF, ""}};
    for (const auto& [selector, read] : kRead) {
        Record info;
        EXPECT_EQ(CXGSPSObject().GetGSPSModule(selector, &image, &info), 1) << selector;
        EXPECT_EQ(TextOf(info), read) << selector;
    }
}

TEST(Modules, NeedAnObjectAndARecord) {
    Record info;
    info.pixelValueOffset = 7;
    CXGSPSObject reader;
    CDcmObject object;
    EXPECT_EQ(reader.GSPSApplier(nullptr, &info, kImage, 3), 0);
    EXPECT_EQ(reader.GSPSApplier(&object, nullptr, kImage, 3), 0);
    EXPECT_EQ(reader.GetGSPSModule(0, nullptr, &info), 1);
    EXPECT_EQ(info.pixelValueOffset, 7);
    EXPECT_TRUE(reader.imageUID.IsEmpty());
    EXPECT_EQ(reader.GSPSApplier(&object, &info, kImage, 3), 1);
    EXPECT_EQ(info.pixelValueOffset, 0);
    EXPECT_EQ(reader.imageUID, CString(kImage));
    EXPECT_EQ(reader.frameNumber, 3);
}

}  // namespace
}  // namespace quorvex
