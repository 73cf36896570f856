// Which pixels lie in a shape.
#include "foundation/platform/region.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace quorvex {
namespace {

struct Picture {
    Picture(int columns, int rows)
        : bytes(static_cast<std::size_t>(columns * rows)), mask{bytes, columns, rows} {}
    bool operator()(int x, int y) const {
        return bytes[static_cast<std::size_t>(y * mask.columns + x)] != 0;
    }
    [[nodiscard]] std::string Drawing() const {
        std::string drawing;
        for (int y = 0; y < mask.rows; ++y) {
            for (int x = 0; x < mask.columns; ++x) drawing += (*this)(x, y) ? '#' : '.';
            drawing += '\n';
        }
        return drawing;
    }
    std::vector<std::uint8_t> bytes;
    ByteMask mask;
};

TEST(Region, RectanglesLeaveOutTheirRightAndLowerEdges) {
    Picture picture(6, 4);
    PaintRectangle(picture.mask, {1, 1, 4, 3}, {255, 0});
    EXPECT_EQ(picture.Drawing(), "......\n.###..\n.###..\n......\n");
}

TEST(Region, EllipsesAreSymmetric) {
    Picture picture(10, 9);
    PaintEllipse(picture.mask, {1, 1, 9, 9}, {1, 0});
    EXPECT_EQ(picture.Drawing(),
              "..........\n"
              "...###....\n"
              "..#####...\n"
              ".#######..\n"
              ".#######..\n"
              ".#######..\n"
              "..#####...\n"
              "...###....\n"
              "..........\n");
}

TEST(Region, APolygonThatCrossesItselfHasHoles) {
    constexpr CPoint kBowTie[] = {{0, 0}, {8, 0}, {0, 4}, {8, 4}};
    Picture picture(9, 5);
    PaintPolygon(picture.mask, kBowTie, {1, 0});
    EXPECT_EQ(picture.Drawing(), "########.\n..####...\n.........\n..####...\n.........\n");
    constexpr CPoint kTwiceRound[] = {{1, 1}, {5, 1}, {5, 4}, {1, 4},
                                      {1, 1}, {5, 1}, {5, 4}, {1, 4}};
    Picture empty(6, 5);
    PaintPolygon(empty.mask, kTwiceRound, {1, 0});
    EXPECT_EQ(empty.Drawing().find('#'), std::string::npos);
}

// A ray to the left from the pixel, nudged down so that it meets no vertex.
bool CrossesOddly(const std::vector<CPoint>& points, int x, int y) {
    const double ray = y + 1e-9;
    bool isInside = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CPoint& a = points[i];
        const CPoint& b = points[(i + 1) % points.size()];
        if ((a.y > ray) == (b.y > ray)) continue;
        const double crossing = a.x + (ray - a.y) * (b.x - a.x) / (b.y - a.y);
        if (crossing <= x + 1e-6) isInside = !isInside;
    }
    return isInside;
}

TEST(Region, PolygonsFollowTheRayRule) {
    std::mt19937 random(5);
    constexpr int kColumns = 150;  // not whole words of pixels
    std::uniform_int_distribution<int> row(-10, 40);
    std::uniform_int_distribution<int> column(-30, kColumns + 30);
    for (int round = 0; round < 200; ++round) {
        // Up to so many crossings in a row that they lie side by side.
        std::vector<CPoint> points(static_cast<std::size_t>(3 + round % 9 * (round % 10)));
        for (CPoint& point : points) point = {column(random), row(random)};
        Picture picture(kColumns, 30);
        PaintPolygon(picture.mask, points, {1, 0});
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < kColumns; ++x) {
                ASSERT_EQ(picture(x, y), CrossesOddly(points, x, y))
                    << "round " << round << " pixel " << x << "," << y;
            }
        }
    }
}

TEST(Region, AnyCoordinatesStayInThePicture) {
    constexpr int kEnds[] = {INT_MIN, -1, 0, 3, INT_MAX};
    for (int i = 0; i < 5 * 5 * 5 * 5; ++i) {
        const CRect box{kEnds[i % 5], kEnds[i / 5 % 5], kEnds[i / 25 % 5], kEnds[i / 125]};
        const CPoint points[] = {
            {box.left, box.top}, {box.right, box.bottom}, {box.right, box.top}, {0, 0}};
        Picture picture(5, 5);
        PaintRectangle(picture.mask, box, {1, 0});
        PaintEllipse(picture.mask, box, {1, 0});
        PaintPolygon(picture.mask, points, {1, 0});
    }
    Picture whole(5, 5);
    PaintEllipse(whole.mask, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {1, 0});
    EXPECT_TRUE(whole(0, 0));
    PaintPolygon(ByteMask{}, {}, {1, 0});
    PaintEllipse(ByteMask{}, {0, 0, 10, 10}, {1, 0});
}

}  // namespace
}  // namespace quorvex
