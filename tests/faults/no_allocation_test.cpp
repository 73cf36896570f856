// Renders that take no memory: what one has left is there for the next.
#include "tests/faults/failing_memory.h"
#include "tests/faults/host.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace quorvex::test {
namespace {

struct Place {
    const char* what;
    double zoom;
    int rotation;
    bool isFlipped;
};
constexpr Place kPlaces[] = {
    {"enlarged", 2.0, 0, false},         {"eight times", 8.0, 0, true},
    {"as large as it is", 1.0, 0, true}, {"smaller", 0.6, 0, false},
    {"turned", 2.5, 90, false},          {"smaller, turned, flipped", 0.7, 270, true},
};

/// A picture of the host's, and how it is rendered.
class Shown {
public:
    Shown(Rules rules, const Kind& kind, const Place& place) : object_(kind.object), place_(place) {
        dipp_.SetRules(rules);
        EXPECT_EQ(dipp_.Initialize(&app_, &object_, kView, 0), QVM_SUCCESS) << kind.name;
        PutInPlace();
        target_ = {pixels_.data(), {640, 640}, 640 * 4, PixelFormat::kBgra32};
    }
    /// How many blocks a render takes, in both ways.
    long BlocksOfRender() {
        const long before = TakenBlocks();
        EXPECT_EQ(dipp_.Render(), QVM_SUCCESS);
        EXPECT_EQ(dipp_.RenderInto(target_), QVM_SUCCESS);
        return TakenBlocks() - before;
    }
    /// The same with a window of its own.
    long BlocksOfWindow(double level, double width) {
        const long before = TakenBlocks();
        dipp_.UpdateVOILUT_ABS(level, width);
        return TakenBlocks() - before + BlocksOfRender();
    }
    long BlocksOfPan(CPoint pan) {
        dipp_.UpdatePan_ABS(pan);
        return BlocksOfRender();
    }
    void ShowFrame(int frame) {
        EXPECT_EQ(dipp_.Initialize(&app_, kView, frame), QVM_SUCCESS);
        PutInPlace();
    }

private:
    void PutInPlace() {
        dipp_.UpdateZoom_ABS(place_.zoom);
        dipp_.UpdateRotate_ABS(place_.rotation);
        if (place_.isFlipped) dipp_.UpdateHFlip_Toggle();
    }

    CDcmApp app_;
    CDcmObject object_;
    const Place& place_;
    CXDIPP dipp_;
    std::vector<unsigned char> pixels_ = std::vector<unsigned char>(std::size_t{640} * 640 * 4);
    PixelTarget target_;
};

void ExpectNoBlocks(Rules rules, const Kind& kind, const Place& place) {
    const std::string what = kind.name + ", " + place.what;
    Shown shown(rules, kind, place);
    EXPECT_GT(shown.BlocksOfRender(), 0) << what;  // the counter counts
    shown.BlocksOfWindow(90, 120);
    EXPECT_EQ(shown.BlocksOfRender(), 0) << what;
    EXPECT_EQ(shown.BlocksOfWindow(60, 200), 0) << what << ", window";
    EXPECT_EQ(shown.BlocksOfWindow(61.5, 199.5), 0) << what << ", window of fractions";
    EXPECT_EQ(shown.BlocksOfPan({7, -5}), 0) << what << ", pan";
    EXPECT_EQ(shown.BlocksOfPan({-35, 30}), 0) << what << ", pan beyond an edge";
    EXPECT_EQ(shown.BlocksOfPan({0, 0}), 0) << what << ", pan back";
}

TEST(NoAllocation, OfWindowsAndPansByTheStandardRules) {
    for (const Kind& kind : AllKinds()) {
        if (kind.name == kStates) continue;
        for (const Place& place : kPlaces) ExpectNoBlocks(Rules::kStandard, kind, place);
    }
}

TEST(NoAllocation, OfWindowsAndPansByTheEstablishedRules) {
    for (const Kind& kind : AllKinds()) {
        if (kind.name == kStates) continue;
        for (const Place& place : kPlaces) ExpectNoBlocks(Rules::kEstablished, kind, place);
    }
}

TEST(NoAllocation, OfTheNextFrameOnceItIsThere) {
    for (const char* name : {"multi-frame", "big endian"}) {
        for (const Place& place : kPlaces) {
            Shown shown(Rules::kStandard, KindOf(name), place);
            shown.BlocksOfRender();
            for (const int frame : {1, 0, 1}) {
                shown.ShowFrame(frame);
                EXPECT_EQ(shown.BlocksOfRender(), 0) << name << ", " << place.what;
            }
        }
    }
}

}  // namespace
}  // namespace quorvex::test
