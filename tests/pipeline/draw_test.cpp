#include "tests/pipeline/screen.h"

namespace quorvex::pipeline_test {
namespace {

constexpr int kView = 40;

/// What encloses the white pixels on a black view of 40 x 40.
CRect White(CXDIPP& dipp) {
    Screen screen({kView, kView});
    screen.Draw(dipp);
    return screen.Bright(100);
}

struct PlaceCase {
    const char* what;
    CSize image;
    double zoom;
    CPoint pan;
    int rotation;
    double aspectRatio;
    CRect white;
};
const PlaceCase kPlaces[] = {
    {"centred", {16, 8}, 1, {0, 0}, 0, 1, {12, 16, 28, 24}},
    {"panned", {16, 8}, 1, {-10, 12}, 0, 1, {2, 28, 18, 36}},
    {"zoomed", {16, 8}, 2, {0, 0}, 0, 1, {4, 12, 36, 28}},
    {"wider than the view", {16, 8}, 4, {0, 0}, 0, 1, {0, 4, 40, 36}},
    {"partly outside", {16, 8}, 1, {-20, -20}, 0, 1, {0, 0, 8, 4}},
    {"wholly outside", {16, 8}, 1, {400, 0}, 0, 1, {40, 40, 0, 0}},
    {"width rounded down", {15, 8}, 1, {0, 0}, 0, 1, {12, 16, 24, 24}},
    {"quarter turn", {16, 8}, 1, {0, 0}, 90, 1, {16, 12, 24, 28}},
    {"quarter turn back", {16, 8}, 1, {0, 0}, -90, 1, {16, 12, 24, 28}},
    {"tall pixels", {16, 8}, 1, {0, 0}, 0, 2, {12, 12, 28, 28}},
    {"no aspect ratio", {16, 8}, 1, {0, 0}, 0, 0, {12, 16, 28, 24}},
};

TEST(Draw, PlacesTheResult) {
    for (const auto& c : kPlaces) {
        SCOPED_TRACE(c.what);
        TestVolume volume(c.image, 8, Repeated(c.image.cx * c.image.cy, 200));
        volume.data.aspectRatioVertical = c.aspectRatio;
        CXDIPP dipp;
        ASSERT_EQ(dipp.Initialize(&volume.data, {kView, kView}, 255, 0), QVM_SUCCESS);
        dipp.UpdateZoom_ABS(c.zoom);
        dipp.UpdateRotate_ABS(c.rotation);
        EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
        dipp.UpdatePan_Offset(c.pan);  // acts without another render
        const CRect white = White(dipp);
        EXPECT_EQ(white, c.white) << white.left << "," << white.top << "," << white.right << ","
                                  << white.bottom;
    }
}

TEST(Draw, ShowsTheTopOfTheImageAtTheTop) {
    Bytes pixels(8 * 8);
    pixels[3] = 255;  // row 0
    CXDIPP dipp;
    ShowBytes(dipp, pixels, {8, 8}, {kView, kView});
    Shown(dipp);
    EXPECT_EQ(White(dipp), (CRect{19, 16, 20, 17}));
}

TEST(Draw, NeedsNoSurfaceToSurvive) {
    CXDIPP dipp;
    ShowBytes(dipp, Repeated(64, 255), {8, 8}, {8, 8});
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    DrawingSurface empty;
    for (CDC onto : {CDC(), CDC(&empty)}) EXPECT_EQ(dipp.Draw(&onto), QVM_SUCCESS);
    dipp.UpdatePan_ABS({2147483647, -2147483647});
    dipp.UpdatePan_Offset({2147483647, -2147483647});
    dipp.UpdateZoom_ABS(1e300);
    White(dipp);
}

}  // namespace
}  // namespace quorvex::pipeline_test
