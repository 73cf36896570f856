// What applies to which image, the displayed area, and the annotations.
#include "tests/presentation/presentation_objects.h"

#include <gtest/gtest.h>

namespace quorvex {
namespace {

using namespace test;

constexpr std::uint32_t kAreas = tag::kDisplayedAreaSelectionSequence;
constexpr std::uint32_t kAnnotations = tag::kGraphicAnnotationSequence;
constexpr std::uint32_t kTexts = tag::kTextObjectSequence;
constexpr std::uint32_t kGraphics = tag::kGraphicObjectSequence;
constexpr unsigned int kDisplay = 6;

CDcmItem Area() {
    return With<CDcmItem>(
        "00700052=10\\11; 00700053=110\\111; 00700100=TRUE SIZE; 00700101=0.5\\0.25; "
        "00700102=2\\1; 00700103=1.5");
}

std::string ReadDisplay(CDcmObject object, const char* imageUID, Record&& info = Record()) {
    CXGSPSObject reader;
    reader.imageUID = imageUID;
    EXPECT_EQ(reader.GetGSPSModule(kDisplay, &object, &info), 1);
    return TextOf(info);
}

/// The texts and graphics of a state, without the display that any state without an area has.
std::string ReadAnnotations(CDcmObject object, const char* imageUID) {
    Record info;
    CXGSPSObject().GSPSApplier(&object, &info, imageUID, -1);
    const std::string all = TextOf(info);
    const std::size_t behind = all.find("magnification 1; ");
    return behind == std::string::npos ? "" : all.substr(behind + 17);
}

TEST(References, ChooseImageAndFrame) {
    const CDcmItem frames = Reference(kImage, {1, 2, 3});
    const struct {
        const char* what;
        std::vector<CDcmItem> references;
        int frame;
        bool applies;
        const char* image = kImage;
    } cases[] = {
        {"no reference", {}, 4, true},
        {"another image", {Reference("1.2.3.5")}, -1, false},
        {"this among others", {Reference("9"), Reference(kImage)}, 7, true},
        {"listed frame", {frames}, 2, true},
        {"the last one listed", {frames}, 3, true},
        {"another frame", {frames}, 4, false},
        {"no frame in particular", {frames}, -1, false},
        {"a reference without a name", {CDcmItem()}, -1, false},
        {"letters of the other case", {Reference("1.2.ab")}, -1, true, "1.2.AB"},
    };
    for (const auto& c : cases) {
        CDcmObject state = With(CDcmObject(), kAreas, {Referring(Area(), c.references)});
        Record info;
        CXGSPSObject().GSPSApplier(&state, &info, c.image, c.frame);
        EXPECT_EQ(info.displayedAreaLeft, c.applies ? 10 : 0) << c.what;
    }
}

TEST(Display, OfImagesIsTheWholeImage) {
    const auto image = With(With("00280030=0.5\\0.25; 00280034=2\\1"), kAreas, {Area()});
    Record shown;
    shown.displayedAreaRight = 77;
    EXPECT_EQ(ReadDisplay(image, "", std::move(shown)),
              "spacing x 0.25; spacing y 0.5; aspect x 1; aspect y 2; magnification 1");
    Record spaced;
    spaced.pixelSpacingX = 0.25;
    spaced.pixelSpacingY = 0.5;
    EXPECT_EQ(ReadDisplay(CDcmObject(), "", std::move(spaced)),
              "spacing y 0.5; aspect x 1; aspect y 1; magnification 1");
}

TEST(Display, OfStatesIsTheLastAreaThatApplies) {
    const auto state = [](std::vector<CDcmItem> areas) {
        return With(CDcmObject(), kAreas, std::move(areas));
    };
    constexpr const char* kArea = "area left 10; top 11; right 110; bottom 111; mode 1; ";
    constexpr const char* kScale = "spacing y 0.5; aspect x 1; aspect y 2; magnification 1.5";
    const auto unknownMode = With<CDcmItem>("00700100=true size");
    EXPECT_EQ(ReadDisplay(state({Area()}), kImage),
              std::string(kArea) + "spacing x 0.25; " + kScale);
    EXPECT_EQ(ReadDisplay(state({Area(), unknownMode}), kImage), std::string(kArea) + kScale)
        << "the second item has no spacing";
    EXPECT_EQ(ReadDisplay(CDcmObject(), kImage), "aspect x 1; aspect y 1; magnification 1");
    EXPECT_EQ(ReadDisplay(state({Referring(Area(), {Reference("9")})}), kImage), "");
}

TEST(Display, RotatesOnlyWhereThereIsAFlip) {
    constexpr unsigned int kSpatial = 5;
    constexpr std::pair<const char*, const char*> kCases[] = {
        {nullptr, ""}, {"N", "rotation 90"}, {"Y", "rotation 90; flip 1"}, {"y", "rotation 90"}};
    for (const auto& [flip, read] : kCases) {
        auto state = With("00700042=90");
        if (flip != nullptr) state.SetValue(0x00700041, flip);
        Record info;
        CXGSPSObject().GetGSPSModule(kSpatial, &state, &info);
        EXPECT_EQ(TextOf(info), read);
    }
}

TEST(Annotations, HaveBoxAndAnchorAndThePairsOfGraphics) {
    const auto whole = With<CDcmItem>(
        "00700006=Mean; 00700010=1.5\\2.5; 00700011=10\\20; 00700003=PIXEL; 00700012=RIGHT; "
        "00700014=5\\6; 00700004=DISPLAY; 00700015=Y");
    const auto half =
        With<CDcmItem>("00700010=1.5\\2.5; 00700003=DISPLAY; 00700012=CENTER; 00700015=Y");
    const auto line = With<CDcmItem>(
        "00700005=PIXEL; 00700021=9; 00700023=POLYLINE; 00700024=Y; "
        "00700022=1\\2\\3\\4\\5");  // 5 has no partner
    const auto star = With<CDcmItem>("00700005=MATRIX; 00700023=STAR");
    const auto annotation = With(With(CDcmItem(), kTexts, {whole, half, CDcmItem()}), kGraphics,
                                 {line, star, CDcmItem()});
    EXPECT_EQ(ReadAnnotations(With(CDcmObject(), kAnnotations, {annotation}), kImage),
              "text Mean box 1.5,2.5 to 10,20 has 11 units 01 at 1 anchor 5,6 visible; "
              "text  has 00 units 10 at 2; "
              "text  has 00 units 00 at 0; "
              "graphic 2 of 9 units 0 filled 1,2 3,4; graphic 5 of 0 units 1; "
              "graphic 0 of 0 units 0");
}

TEST(Annotations, AddUpOverTheItemsThatApply) {
    const auto text = [](const char* words, std::vector<CDcmItem> references) {
        const auto item = With<CDcmItem>(std::string("UnformattedTextValue=") + words);
        const auto annotation = With(CDcmItem(), kTexts, {item});
        return references.empty() ? annotation : Referring(annotation, std::move(references));
    };
    const auto state = With(CDcmObject(), kAnnotations,
                            {text("all", {}), text("other", {Reference("9")}),
                             text("twice", {Reference(kImage), Reference(kImage)})});
    EXPECT_EQ(ReadAnnotations(state, kImage),
              "text all has 00 units 00 at 0; text twice has 00 units 00 at 0");
    EXPECT_EQ(ReadAnnotations(state, ""), "text all has 00 units 00 at 0") << "an image";
}

}  // namespace
}  // namespace quorvex
