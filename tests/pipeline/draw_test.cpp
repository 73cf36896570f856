#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "tests/pipeline/inspector.h"

#include <gtest/gtest.h>
#include <vector>

namespace quorvex {
namespace {

using pipeline_test::ShowBytes;

constexpr int kView = 40;

/// A view of 40 x 40 pixels; the test image is white on its black.
struct View {
    View() : pixels(kView * kView * 4), surface{pixels.data(), kView, kView, kView * 4, 4} {}
    /// The rectangle that holds all white pixels.
    [[nodiscard]] CRect White() const {
        CRect box{kView, kView, 0, 0};
        for (int y = 0; y < kView; ++y) {
            for (int x = 0; x < kView; ++x) {
                if (pixels[static_cast<std::size_t>((y * kView + x) * 4)] < 100) continue;
                box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                       std::max(box.bottom, y + 1)};
            }
        }
        return box;
    }
    std::vector<unsigned char> pixels;
    DrawingSurface surface;
};

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
        CXDIPP dipp;
        ShowBytes(
            dipp,
            std::vector<unsigned char>(static_cast<std::size_t>(c.image.cx * c.image.cy), 200),
            c.image, {kView, kView});
        CXDIPPInspector{dipp}.AspectRatio() = c.aspectRatio;
        dipp.UpdateZoom_ABS(c.zoom);
        dipp.UpdateRotate_ABS(c.rotation);
        EXPECT_EQ(dipp.Render(), QVM_SUCCESS);
        dipp.UpdatePan_Offset(c.pan);  // acts without another render
        View view;
        CDC dc(&view.surface);
        EXPECT_EQ(dipp.Draw(&dc), QVM_SUCCESS);
        const CRect white = view.White();
        EXPECT_EQ(white, c.white) << white.left << "," << white.top << "," << white.right << ","
                                  << white.bottom;
    }
}

TEST(Draw, ShowsTheTopOfTheImageAtTheTop) {
    std::vector<unsigned char> pixels(8 * 8);
    pixels[3] = 255;  // row 0
    CXDIPP dipp;
    ShowBytes(dipp, pixels, {8, 8}, {kView, kView});
    dipp.UpdateZoom_ABS(1.0);
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    View view;
    CDC dc(&view.surface);
    dipp.Draw(&dc);
    EXPECT_EQ(view.White(), (CRect{19, 16, 20, 17}));
}

TEST(Draw, NeedsNoSurfaceToSurvive) {
    CXDIPP dipp;
    ShowBytes(dipp, std::vector<unsigned char>(64, 255), {8, 8}, {8, 8});
    ASSERT_EQ(dipp.Render(), QVM_SUCCESS);
    CDC none;
    EXPECT_EQ(dipp.Draw(&none), QVM_SUCCESS);
    DrawingSurface empty;
    CDC onto(&empty);
    EXPECT_EQ(dipp.Draw(&onto), QVM_SUCCESS);
    dipp.UpdatePan_ABS({2147483647, -2147483647});
    dipp.UpdatePan_Offset({2147483647, -2147483647});
    dipp.UpdateZoom_ABS(1e300);
    View view;
    CDC dc(&view.surface);
    EXPECT_EQ(dipp.Draw(&dc), QVM_SUCCESS);
}

}  // namespace
}  // namespace quorvex
