#include "quorvex/CXImageCreator.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>

namespace quorvex {
namespace {

TEST(OutputSize, FollowsRegionZoomAndTurn) {
    constexpr struct {
        const char* what;
        _OUTSIZE_INFO info;
        CSize size;
    } kCases[] = {
        {"width down to a multiple of 4", {{0, 0, 511, 511}, 1.0, 1.0, 0}, {508, 511}},
        {"both down for a quarter turn", {{0, 0, 511, 511}, 1.0, 1.0, 90}, {508, 508}},
        {"45 degrees swap the sides as 90 do", {{0, 0, 100, 200}, 1.0, 1.0, 45}, {200, 100}},
        {"minus 90 too", {{0, 0, 100, 200}, 1.0, 1.0, -90}, {200, 100}},
        {"tall pixels", {{0, 0, 100, 100}, 1.0, 2.0, 0}, {100, 200}},
        {"the aspect stays with the width", {{0, 0, 100, 100}, 1.0, 2.0, 90}, {100, 200}},
        {"a region, half up", {{10, 20, 30, 25}, 0.5, 1.0, 180}, {8, 3}},
        {"too small to see", {{0, 0, 100, 100}, 0.01, 1.0, 0}, {0, 1}},
        {"no aspect ratio is that of square pixels", {{0, 0, 8, 8}, 1.0, 0.0, 0}, {8, 8}},
        {"beyond any size", {{0, 0, 8, 8}, 1e300, 1.0, 0}, {INT_MAX - 3, INT_MAX}},
        {"NaN", {{0, 0, 8, 8}, NAN, 1.0, 0}, {0, 0}},
    };
    for (auto c : kCases) {
        CSize size;
        EXPECT_EQ(CXImageCreator().GetOutputSize(c.info, size), 0);
        EXPECT_EQ(size, c.size) << c.what << ": " << size.cx << " x " << size.cy;
    }
}

TEST(RenderingRoi, ShowsWhatTheViewSees) {
    constexpr struct {  // of an image of 100 x 80 pixels
        const char* what;
        CSize view;
        int rotation, flip;
        double zoom;
        CPoint pan;
        double aspectRatio;
        CRect rect;
    } kCases[] = {
        {"a view larger than the image", {1000, 900}, 0, 0, 1.0, {0, 0}, 1.0, {0, 0, 100, 80}},
        {"the middle at zoom 2", {100, 80}, 0, 0, 2.0, {0, 0}, 1.0, {25, 20, 75, 60}},
        {"to lower columns, higher rows", {100, 80}, 0, 0, 2.0, {20, 10}, 1.0, {15, 25, 65, 65}},
        {"the same, mirrored", {100, 80}, 0, 1, 2.0, {20, 10}, 1.0, {15, 15, 65, 55}},
        {"a quarter turn swaps both", {80, 100}, 90, 0, 2.0, {20, 10}, 1.0, {20, 10, 70, 50}},
        {"the same, mirrored", {80, 100}, 90, 1, 2.0, {20, 10}, 1.0, {20, 30, 70, 70}},
        {"three quarters", {80, 100}, 270, 0, 2.0, {20, 10}, 1.0, {30, 30, 80, 70}},
        {"the same, mirrored", {80, 100}, 270, 1, 2.0, {20, 10}, 1.0, {30, 10, 80, 50}},
        {"half a turn", {100, 80}, 180, 0, 2.0, {20, 10}, 1.0, {35, 15, 85, 55}},
        {"the same, mirrored", {100, 80}, 180, 1, 2.0, {20, 10}, 1.0, {35, 25, 85, 65}},
        {"another rotation keeps the pan", {80, 100}, 45, 0, 2.0, {20, 10}, 1.0, {15, 25, 65, 65}},
        {"moved out to the right", {100, 80}, 0, 0, 1.0, {500, 0}, 1.0, {0, 0, 0, 80}},
        {"moved out to the left", {100, 80}, 0, 0, 1.0, {-500, 0}, 1.0, {100, 0, 100, 80}},
        {"tall pixels: clamped to the height", {100, 80}, 0, 0, 1.0, {0, 0}, 2.0, {0, 40, 100, 40}},
        {"no aspect ratio is that of square pixels",
         {100, 80},
         0,
         0,
         2.0,
         {0, 0},
         0.0,
         {25, 20, 75, 60}},
        {"no opposite", {100, 80}, 180, 0, 1.0, {INT_MIN, INT_MIN}, 1.0, {0, 80, 0, 80}},
        {"no zoom", {100, 80}, 0, 0, 0.0, {0, 0}, 1.0, {0, 0, 0, 0}},
    };
    for (const auto& c : kCases) {
        const CRect view{0, 0, c.view.cx, c.view.cy};
        _ROI_INFO info{view, 100, 80, c.rotation, c.flip, c.zoom, c.pan, c.aspectRatio};
        CRect rect;
        EXPECT_EQ(CXImageCreator().GetRenderingROI(info, rect), 0);
        EXPECT_EQ(rect, c.rect) << c.what << ", " << c.rotation << ": " << rect.left << ", "
                                << rect.top << ", " << rect.right << ", " << rect.bottom;
    }
}

}  // namespace
}  // namespace quorvex
