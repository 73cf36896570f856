#include "quorvex/CXDIPP.h"
#include "tests/pipeline/inspector.h"
#include "tests/pipeline/test_objects.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::FillImage;
using pipeline_test::kImageUID;
using pipeline_test::Rendered;

using Values = std::vector<int>;

struct StateShape {
    const char* imageUID = kImageUID;
    const char* frame = nullptr;
    const char* center = "250";
    const char* width = "100";
    int rotation = 0;
    const char* flip = "N";
};

/// A state with a window and a displayed area for one image, and a spatial transform.
void FillState(CDcmObject& state, const StateShape& shape) {
    CDcmItem reference;
    reference.SetValue(0x00081155, shape.imageUID);
    if (shape.frame != nullptr) reference.SetValue(0x00081160, shape.frame);
    CDcmItem voi;
    voi.SetValue(0x00081140, &reference);
    voi.SetValue(0x00281050, shape.center);
    voi.SetValue(0x00281051, shape.width);
    state.SetValue(0x00283110, &voi);
    CDcmItem area;
    area.SetValue(0x00081140, &reference);
    area.SetValue(0x00700052, 1);
    area.SetNextValue(0x00700052, 1);
    area.SetValue(0x00700053, 2);
    area.SetNextValue(0x00700053, 2);
    area.SetValue(0x00700100, "SCALE TO FIT");
    area.SetValue(0x00700102, 1);
    area.SetNextValue(0x00700102, 1);
    state.SetValue(0x0070005A, &area);
    state.SetValue(0x00700042, static_cast<unsigned short>(shape.rotation));
    state.SetValue(0x00700041, shape.flip);
    state.SetValue(0x20500020, "IDENTITY");
}

class ApplyState : public testing::Test {
protected:
    ApplyState() {
        FillImage(image_, {{4, 4}, 1, 16, 12}, std::vector<std::uint16_t>(16, 300));
        image_.SetValue(0x00281050, "200");
        image_.SetValue(0x00281051, "400");
        EXPECT_EQ(dipp_.Initialize(&app_, &image_, {8, 8}, 0), QVM_SUCCESS);
    }
    void Apply(const StateShape& shape) {
        CDcmObject state;
        FillState(state, shape);
        EXPECT_EQ(dipp_.ApllyGSPSObject(&app_, &state), QVM_SUCCESS);
    }
    [[nodiscard]] CSize Window() {
        CSize window;
        dipp_.GetWindowingFactor(window.cx, window.cy);
        return window;
    }
    CDcmApp app_;
    CDcmObject image_;
    CXDIPP dipp_;
};

TEST_F(ApplyState, ReplacesWindowAndTurnAtOnceAndTheAreaWithTheNextView) {
    const CXDIPPInspector look{dipp_};
    EXPECT_EQ(Window(), (CSize{400, 200}));
    Apply({.rotation = 90, .flip = "Y"});
    EXPECT_EQ(Window(), (CSize{100, 250}));
    EXPECT_EQ(look.Rotation(), 90);
    EXPECT_EQ(look.HorizontalFlip(), 1);
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 2.0);
    EXPECT_EQ(Rendered(dipp_), Values(64, 255));
    dipp_.UpdateViewSize({16, 16});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 8.0);  // 2 x 2 pixels fitted
}

TEST_F(ApplyState, ASecondStateReplacesTheFirstAndInitializeBoth) {
    Apply({.rotation = 90});
    Apply({.center = "50", .width = "60"});
    EXPECT_EQ(Window(), (CSize{60, 50}));
    EXPECT_EQ(CXDIPPInspector{dipp_}.Rotation(), 0);
    EXPECT_EQ(dipp_.Initialize(&app_, {8, 8}, 0), QVM_SUCCESS);
    EXPECT_EQ(Window(), (CSize{400, 200}));
}

TEST_F(ApplyState, StatesForOtherImagesOrFramesLeaveDefaults) {
    Apply({.imageUID = "9.9.9", .rotation = 180});
    EXPECT_EQ(Window(), (CSize{300, 150}));  // the full range
    EXPECT_EQ(CXDIPPInspector{dipp_}.Rotation(), 180);
    Apply({.frame = "1"});
    EXPECT_EQ(Window(), (CSize{300, 150}));
}

TEST_F(ApplyState, AnUnreadableStateLeavesAnImageThatCanBeShown) {
    EXPECT_EQ(dipp_.ApllyGSPSObject(&app_, CString("/no/such/state")), QVM_SUCCESS);
    EXPECT_EQ(Window(), (CSize{300, 150}));
    dipp_.UpdateViewSize({12, 12});
    EXPECT_DOUBLE_EQ(dipp_.GetZoomFactor(), 3.0);
    EXPECT_EQ(Rendered(dipp_).size(), 144U);
}

TEST_F(ApplyState, WithoutAnImageNothingHappens) {
    CXDIPP empty;
    CDcmObject state;
    FillState(state, {.rotation = 90});
    EXPECT_EQ(empty.ApllyGSPSObject(&app_, &state), QVM_SUCCESS);
    EXPECT_EQ(CXDIPPInspector{empty}.Rotation(), 0);
    EXPECT_EQ(empty.Render(), QVM_ERROR_NO_IMAGE);
}

TEST_F(ApplyState, ColourTurnsAndKeepsItsWindow) {
    CDcmObject colour;
    FillImage(colour, {{4, 4}, 3, 8, 8, 0, "RGB"}, std::vector<std::uint8_t>(48, 100));
    ASSERT_EQ(dipp_.Initialize(&app_, &colour, {8, 8}, 0), QVM_SUCCESS);
    const CSize before = Window();
    Apply({.rotation = 270});
    EXPECT_EQ(Window(), before);
    EXPECT_EQ(CXDIPPInspector{dipp_}.Rotation(), 270);
}

}  // namespace
}  // namespace quorvex
