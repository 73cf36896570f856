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
        {"no number", {{0, 0, 8, 8}, NAN, 1.0, 0}, {0, 0}},
    };
    for (auto c : kCases) {
        CSize size;
        EXPECT_EQ(CXImageCreator().GetOutputSize(c.info, size), 0);
        EXPECT_EQ(size.cx, c.size.cx) << c.what;
        EXPECT_EQ(size.cy, c.size.cy) << c.what;
    }
}

// View, columns, rows, rotation, flip, zoom, pan, aspect ratio.
TEST(RenderingRoi, ShowsWhatTheViewSees) {
    constexpr struct {
        const char* what;
        _ROI_INFO info;
        CRect rect;
    } kCases[] = {
        {"a view larger than the image",
         {{0, 0, 1000, 900}, 100, 80, 0, 0, 1.0, {0, 0}, 1.0},
         {0, 0, 100, 80}},
        {"the middle at zoom 2",
         {{0, 0, 100, 80}, 100, 80, 0, 0, 2.0, {0, 0}, 1.0},
         {25, 20, 75, 60}},
        {"pan right and down: lower columns, higher rows",
         {{0, 0, 100, 80}, 100, 80, 0, 0, 2.0, {20, 10}, 1.0},
         {15, 25, 65, 65}},
        {"the same, mirrored",
         {{0, 0, 100, 80}, 100, 80, 0, 1, 2.0, {20, 10}, 1.0},
         {15, 15, 65, 55}},
        {"a quarter turn swaps view and pan",
         {{0, 0, 80, 100}, 100, 80, 90, 0, 2.0, {20, 10}, 1.0},
         {20, 10, 70, 50}},
        {"the other quarter, mirrored",
         {{0, 0, 80, 100}, 100, 80, 270, 1, 2.0, {20, 10}, 1.0},
         {30, 10, 80, 50}},
        {"half a turn", {{0, 0, 100, 80}, 100, 80, 180, 0, 2.0, {20, 10}, 1.0}, {35, 15, 85, 55}},
        {"another rotation leaves the pan as it is",
         {{0, 0, 80, 100}, 100, 80, 45, 0, 2.0, {20, 10}, 1.0},
         {15, 25, 65, 65}},
        {"moved out to the right",
         {{0, 0, 100, 80}, 100, 80, 0, 0, 1.0, {500, 0}, 1.0},
         {0, 0, 0, 80}},
        {"moved out to the left",
         {{0, 0, 100, 80}, 100, 80, 0, 0, 1.0, {-500, 0}, 1.0},
         {100, 0, 100, 80}},
        {"tall pixels: rows are held by the image's height alone",
         {{0, 0, 100, 80}, 100, 80, 0, 0, 1.0, {0, 0}, 2.0},
         {0, 40, 100, 40}},
        {"a pan without an opposite",
         {{0, 0, 100, 80}, 100, 80, 180, 0, 1.0, {INT_MIN, INT_MIN}, 1.0},
         {0, 80, 0, 80}},
        {"no zoom", {{0, 0, 100, 80}, 100, 80, 0, 0, 0.0, {0, 0}, 1.0}, {0, 0, 0, 0}},
    };
    for (auto c : kCases) {
        CRect rect;
        EXPECT_EQ(CXImageCreator().GetRenderingROI(c.info, rect), 0);
        EXPECT_EQ(rect.left, c.rect.left) << c.what;
        EXPECT_EQ(rect.top, c.rect.top) << c.what;
        EXPECT_EQ(rect.right, c.rect.right) << c.what;
        EXPECT_EQ(rect.bottom, c.rect.bottom) << c.what;
    }
}

}  // namespace
}  // namespace quorvex
