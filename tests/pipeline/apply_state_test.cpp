#include "tests/pipeline/shown.h"
#include "tests/pipeline/test_objects.h"
#include "tests/presentation/presentation_objects.h"

#include <algorithm>

namespace quorvex::pipeline_test {
namespace {

using test::With;

struct StateShape {
    const char* imageUID = kImageUID;
    std::initializer_list<int> frames = {};
    const char* window = "WindowCenter=250; WindowWidth=100";
    int rotation = 0;
    const char* flip = "N";
};

/// A state with a window and a displayed area for one image, and a spatial transform.
CDcmObject State(const StateShape& shape) {
    const auto put = [&shape](CDcmObject& state, std::uint32_t sequence, const std::string& item) {
        const auto reference = test::Reference(shape.imageUID, shape.frames);
        test::PutItems(state, sequence, {test::Referring(With<CDcmItem>(item), {reference})});
    };
    auto state =
        With("PresentationLUTShape=IDENTITY; ImageRotation=" + std::to_string(shape.rotation) +
             "; ImageHorizontalFlip=" + shape.flip);
    put(state, tag::kSoftcopyVOILUTSequence, shape.window);
    put(state, tag::kDisplayedAreaSelectionSequence,
        "DisplayedAreaTopLeftHandCorner=1\\1; DisplayedAreaBottomRightHandCorner=2\\2; "
        "PresentationPixelAspectRatio=1\\1; PresentationSizeMode=SCALE TO FIT");
    return state;
}

/// 4 x 4 pixels, dark in the upper left corner only.
template <class Sample>
CDcmObject Picture(const ImageShape& shape, Sample light) {
    std::vector<Sample> samples(std::size_t{16} * shape.samples, light);
    std::fill_n(samples.begin(), shape.samples, Sample{0});
    return ImageOf(shape, samples, "WindowCenter=200; WindowWidth=400");
}

class ApplyState : public testing::Test {
protected:
    ApplyState() {
        ShowObject(dipp_, image_, {8, 8});
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
    CDcmObject image_ = Picture<std::uint16_t>({{4, 4}}, 300);
    CXDIPP dipp_;
};

TEST_F(ApplyState, ReplacesTheOneBeforeAndInitializeReplacesAll) {
    const struct {
        const char* what;
        StateShape state;
        CSize window;
        int darkCorner;
    } cases[] = {
        {"a turn", {.rotation = 90}, {100, 250}, 1},
        {"a window", {.window = "WindowCenter=50; WindowWidth=60"}, {60, 50}, 0},
        {"a flip", {.rotation = 90, .flip = "Y"}, {100, 250}, 3},
        {"another image's", {.imageUID = "9.9.9", .rotation = 180}, kFullRange, 3},
        {"another frame's", {.frames = {1}}, kFullRange, 0},
    };
    for (const auto& c : cases) {
        Apply(c.state);
        EXPECT_EQ(WindowOf(dipp_), c.window) << c.what;
        EXPECT_EQ(DarkCorner(), c.darkCorner) << c.what;
    }
    EXPECT_EQ(dipp_.Initialize(&app_, {8, 8}, 0), QVM_SUCCESS);
    EXPECT_EQ(WindowOf(dipp_), kOwnWindow);
}

TEST_F(ApplyState, TheWindowReachesThePixelsAndTheAreaTheNextView) {
    Apply({});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 2.0);
    EXPECT_EQ(std::ranges::count(Shown(dipp_), 255), 15);
    dipp_.UpdateViewSize({16, 16});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 8.0);  // 2 x 2 pixels fitted
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
    auto colour = Picture<unsigned char>({{4, 4}, 3, 8, 8, 0, "RGB"}, 100);
    ShowObject(dipp_, colour, {8, 8});
    const CSize before = WindowOf(dipp_);
    Apply({.rotation = 270});
    EXPECT_EQ(WindowOf(dipp_), before);
    EXPECT_EQ(DarkCorner(), 2);
}

// Bits and values that are scaled stay so under a state: black and white, and its window in values.
TEST_F(ApplyState, KeepsTheScaleOfTheImage) {
    CDcmApp app;
    CDcmObject turn = test::With("ImageRotation=0; ImageHorizontalFlip=N");
    const ImageShape bits{.size = {4, 1}, .bitsAllocated = 1, .bitsStored = 1};
    CDcmObject bitImage = ImageOf(bits, Bytes{0b0101});
    CXDIPP dipp;
    ShowObject(dipp, bitImage, {4, 1});
    dipp.ApllyGSPSObject(&app, &turn);
    EXPECT_EQ(Shown(dipp), (Values{255, 0, 255, 0}));

    CDcmObject fine = ImageOf({}, Words{0, 10000, 20000, 30000},
                              "BitsStored=16; RescaleSlope=0.0001; RescaleIntercept=0");
    ShowObject(dipp, fine, {4, 1});
    CDcmItem window = test::With<CDcmItem>("WindowCenter=1; WindowWidth=3");
    CDcmObject state;
    state.SetValue(tag::kSoftcopyVOILUTSequence, &window);
    dipp.ApllyGSPSObject(&app, &state);
    const Values shown = Shown(dipp);
    EXPECT_LT(shown[0], shown[1]);
    EXPECT_LT(shown[1], shown[2]);
}

}  // namespace
}  // namespace quorvex::pipeline_test
