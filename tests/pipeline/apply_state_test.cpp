#include "quorvex/Tags.h"
#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>

namespace quorvex::pipeline_test {
namespace {

struct StateShape {
    const char* imageUID = kImageUID;
    std::initializer_list<int> frames = {};
    const char* center = "250";
    const char* width = "100";
    int rotation = 0;
    const char* flip = "N";
};

/// A state with a window and a displayed area for one image, and a spatial transform.
CDcmObject State(const StateShape& shape) {
    const auto forImage = [&shape](CDcmItem item) {
        return test::Referring(item, {test::Reference(shape.imageUID, shape.frames)});
    };
    CDcmItem voi;
    voi.SetValue(tag::kWindowCenter, shape.center);
    voi.SetValue(tag::kWindowWidth, shape.width);
    CDcmItem area;
    test::Put(area, tag::kDisplayedAreaTopLeftHandCorner, {1, 1});
    test::Put(area, tag::kDisplayedAreaBottomRightHandCorner, {2, 2});
    test::Put(area, tag::kPresentationPixelAspectRatio, {1, 1});
    area.SetValue(tag::kPresentationSizeMode, "SCALE TO FIT");
    CDcmObject state;
    test::PutItems(state, tag::kSoftcopyVOILUTSequence, {forImage(voi)});
    test::PutItems(state, tag::kDisplayedAreaSelectionSequence, {forImage(area)});
    state.SetValue(tag::kImageRotation, static_cast<unsigned short>(shape.rotation));
    state.SetValue(tag::kImageHorizontalFlip, shape.flip);
    state.SetValue(tag::kPresentationLUTShape, "IDENTITY");
    return state;
}

/// An image of 4 x 4 pixels, dark in the upper left corner only.
class ApplyState : public testing::Test {
protected:
    ApplyState() {
        Words pixels(16, 300);
        pixels[0] = 0;
        FillImage(image_, {{4, 4}, 1, 16, 12}, pixels);
        image_.SetValue(tag::kWindowCenter, "200");
        image_.SetValue(tag::kWindowWidth, "400");
        EXPECT_EQ(dipp_.Initialize(&app_, &image_, {8, 8}, 0), QVM_SUCCESS);
        EXPECT_EQ(WindowOf(dipp_), kOwnWindow);
    }
    void Apply(const StateShape& shape) {
        CDcmObject state = State(shape);
        EXPECT_EQ(dipp_.ApllyGSPSObject(&app_, &state), QVM_SUCCESS);
    }
    /// Where the dark corner is seen: 0 upper left, 1 upper right, 2 lower left, 3 lower right.
    int DarkCorner() {
        const Values shown = Rendered(dipp_);
        const auto result = test::ResultOf(dipp_);
        const auto width = static_cast<std::size_t>(result.size.cx * result.pixelSize);
        const int corners[] = {shown[0], shown[width - 1], shown[shown.size() - width],
                               shown.back()};
        return static_cast<int>(std::ranges::min_element(corners) - corners);
    }
    static constexpr CSize kOwnWindow{400, 200};
    static constexpr CSize kFullRange{300, 150};
    CDcmApp app_;
    CDcmObject image_;
    CXDIPP dipp_;
};

TEST_F(ApplyState, ReplacesWindowAndTurnAtOnceAndTheAreaWithTheNextView) {
    Apply({.rotation = 90, .flip = "Y"});
    EXPECT_EQ(WindowOf(dipp_), (CSize{100, 250}));
    EXPECT_EQ(DarkCorner(), 3);
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 2.0);
    EXPECT_EQ(std::ranges::count(Shown(dipp_), 255), 15) << "the window reaches the pixels";
    dipp_.UpdateViewSize({16, 16});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 8.0);  // 2 x 2 pixels fitted
}

TEST_F(ApplyState, ASecondStateReplacesTheFirstAndInitializeBoth) {
    Apply({.rotation = 90});
    Apply({.center = "50", .width = "60"});
    EXPECT_EQ(WindowOf(dipp_), (CSize{60, 50}));
    EXPECT_EQ(DarkCorner(), 0);
    EXPECT_EQ(dipp_.Initialize(&app_, {8, 8}, 0), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp_), kOwnWindow);
}

TEST_F(ApplyState, StatesForOtherImagesOrFramesLeaveDefaults) {
    Apply({.imageUID = "9.9.9", .rotation = 180});
    EXPECT_EQ(WindowOf(dipp_), kFullRange);
    EXPECT_EQ(DarkCorner(), 3);
    Apply({.frames = {1}});
    EXPECT_EQ(WindowOf(dipp_), kFullRange);
}

TEST_F(ApplyState, AnUnreadableStateLeavesAnImageThatCanBeShown) {
    EXPECT_EQ(dipp_.ApllyGSPSObject(&app_, CString("/no/such/state")), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp_), kFullRange);
    dipp_.UpdateViewSize({12, 12});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 3.0);
    EXPECT_EQ(Rendered(dipp_).size(), 144U);
}

TEST_F(ApplyState, WithoutAnImageNothingHappens) {
    CXDIPP empty;
    CDcmObject state = State({.rotation = 90});
    EXPECT_EQ(empty.ApllyGSPSObject(&app_, &state), QVM_SUCCESS);
    EXPECT_EQ(empty.Render(), QVM_ERROR_NO_IMAGE);
    TestVolume volume({8, 4}, 8, Repeated(32, 9));  // a volume leaves the rotation as it is
    ASSERT_EQ(empty.Initialize(&volume.data, {8, 4}, 255, 0), QVM_SUCCESS);
    EXPECT_EQ(empty.Render(), QVM_SUCCESS);
    EXPECT_EQ(ResultSize(empty), (CSize{8, 4}));
}

TEST_F(ApplyState, ColourTurnsAndKeepsItsWindow) {
    CDcmObject colour;
    Bytes pixels(48, 100);
    std::fill_n(pixels.begin(), 3, static_cast<unsigned char>(0));
    FillImage(colour, {{4, 4}, 3, 8, 8, 0, "RGB"}, pixels);
    ASSERT_EQ(dipp_.Initialize(&app_, &colour, {8, 8}, 0), QVM_SUCCESS);
    const CSize before = WindowOf(dipp_);
    Apply({.rotation = 270});
    EXPECT_EQ(WindowOf(dipp_), before);
    EXPECT_EQ(DarkCorner(), 2);
}

}  // namespace
}  // namespace quorvex::pipeline_test
