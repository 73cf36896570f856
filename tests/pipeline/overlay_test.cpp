// Overlay planes in an overlay image, against a look at every single pixel.
#include "pipeline/layers/bit_planes.h"
#include "pipeline/layers/embedded_overlay.h"
#include "tests/pipeline/overlay_objects.h"
#include "tests/pipeline/shown.h"

#include <algorithm>
#include <limits>

namespace quorvex::pipeline_test {
namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();
constexpr unsigned char kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 64;

enum Form { kFirst, kSecond };

/// The overlay image that one of the two operations makes, which must keep to its bytes.
Bytes Image(CDcmObject& object, CSize size, Form form, std::size_t pixelBytes = 1,
            CLData* data = nullptr) {
    const auto pixels = static_cast<std::size_t>(size.cx * size.cy);
    Bytes block(pixels * pixelBytes + 2 * kGuardBytes, kGuard);
    const auto begin = block.begin() + kGuardBytes;
    const auto end = block.end() - kGuardBytes;
    std::fill(begin, end, static_cast<unsigned char>(0));
    const CXDIPP dipp;
    unsigned long length = 0;
    unsigned short width = 0;
    const auto result =
        form == kSecond
            ? dipp.MakeOverlayImage2(&object, data, &*begin, length, width, 0, 0, 0, 0, 0, 0)
            : dipp.MakeOverlayImage(&object, nullptr, &*begin, length, width, 0);
    EXPECT_EQ(result, QVM_SUCCESS);
    EXPECT_EQ(length, pixels);
    EXPECT_EQ(std::count(block.begin(), begin, kGuard) + std::count(end, block.end(), kGuard),
              2 * kGuardBytes);
    return {begin, end};
}

using Planes = std::vector<TestOverlay>;

/// A grey overlay image in which the bits of some planes are set.
Bytes Marked(const Planes& planes, CSize size) {
    Bytes image;
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx; ++x) {
            const auto covers = [&](const TestOverlay& plane) { return plane.Covers(y, x); };
            image.push_back(std::ranges::any_of(planes, covers) ? 255 : 0);
        }
    }
    return image;
}

TestOverlay WithData(TestOverlay plane, unsigned seed, std::size_t bytes = 1000) {
    const std::size_t whole = (std::size_t{plane.rows} * plane.columns + 15) / 16 * 2;
    plane.data = RandomBytes(std::min(whole, bytes), seed);
    return plane;
}

struct PlacementCase {
    const char* what;
    CSize picture;
    TestOverlay overlay;       // without data
    std::size_t bytes = 1000;  // of Overlay Data at most
    unsigned short bits = 16;
};

const PlacementCase kPlacements[] = {
    {"size of the picture", {24, 16}, {16, 24}},
    {"8-bit picture whose bits fill no whole byte", {5, 3}, {3, 5}, 1000, 8},
    {"origin 0\\0 cuts the first row and column", {24, 16}, {16, 24, 0, 0}},
    {"a small plane inside", {512, 512}, {16, 32, 5, 9}},
    {"columns of the picture, fewer rows", {13, 40}, {7, 13, 20, 1}},
    {"over the right edge", {30, 20}, {10, 17, 4, 22}},
    {"over the top left corner", {30, 20}, {19, 27, -8, -11}},
    {"over the lower left corner", {30, 20}, {9, 11, 16, -3}},
    {"far above and left", {30, 20}, {9, 11, kLowest, kLowest}},
    {"far below and right", {30, 20}, {9, 11, kHighest, kHighest}},
    {"data shorter than rows and columns say", {30, 20}, {20, 30}, 21},
    {"data of one byte", {30, 20}, {20, 30}, 2},
    {"one row", {200, 3}, {1, 131, 2, 40}},
    {"one column", {7, 90}, {77, 1, 3, 7}},
    {"65535 rows and columns with little data", {30, 20}, {65535, 65535, -30000, -30000}, 64},
};

TEST(OverlayImage, PlacesPlanesAsTheirOriginSays) {
    unsigned seed = 0;
    for (const auto& c : kPlacements) {
        const TestOverlay plane = WithData(c.overlay, ++seed, c.bytes);
        CDcmObject object = Picture(c.picture, c.bits, {plane});
        const auto expected = Marked({plane}, c.picture);
        EXPECT_TRUE(Image(object, c.picture, kFirst) == expected) << c.what;
        EXPECT_TRUE(Image(object, c.picture, kSecond) == expected) << c.what;
    }
}

TEST(OverlayImage, FirstFormTakesOnePlaneAndSecondFormAll) {
    const CSize size{24, 16};
    const auto one = WithData({16, 24}, 1);
    const auto other = WithData({5, 6, 9, 11}, 2);
    CDcmObject object = Picture(size, 16, {{16, 24}, one});  // the first has no data
    AddOverlay(object, 0x601E, other);
    AddOverlay(object, 0x6020, WithData({16, 24}, 3));
    EXPECT_TRUE(Image(object, size, kFirst) == Marked({one}, size));
    EXPECT_TRUE(Image(object, size, kSecond) == Marked({one, other}, size));
}

TEST(OverlayImage, SkipsGroupsThatLackAnAttribute) {
    const CSize size{24, 16};
    const Bytes clear(24 * 16);
    for (const std::uint32_t missing :
         {tag::kOverlayRows, tag::kOverlayColumns, tag::kOverlayOrigin, tag::kOverlayBitsAllocated,
          tag::kOverlayBitPosition, tag::kOverlayData}) {
        CDcmObject object = Picture(size, 16, {WithData({16, 24}, 1)});
        object.RemoveValue(missing);
        EXPECT_TRUE(Image(object, size, kSecond) == clear) << std::hex << missing;
        EXPECT_EQ(Image(object, size, kFirst) == clear, missing != tag::kOverlayBitPosition);
    }
}

TEST(OverlayImage, ColourPlanesKeepTheirColours) {
    const CSize size{16, 4};
    const auto red = WithData({4, 16}, 1);
    const auto white = WithData({4, 16, 2, 1}, 2);
    CDcmObject object = test::With(Picture(size, 8, {red, white}, 3),
                                   "OverlaysRed=4863; OverlaysGreen=0; OverlaysBlue=7");  // 0x12FF
    Bytes expected;
    for (int i = 0; i < 64; ++i) {
        const auto pixel = white.Covers(i / 16, i % 16) ? Bytes{255, 255, 255}
                           : red.Covers(i / 16, i % 16) ? Bytes{255, 0, 7}
                                                        : Bytes{0, 0, 0};
        expected.insert(expected.end(), pixel.begin(), pixel.end());
    }
    EXPECT_EQ(Image(object, size, kSecond, 3), expected);
}

TEST(OverlayImage, LeavesTheFourthByteOfAPixelAlone) {
    CDcmObject object = Picture({8, 1}, 8, {{1, 8, 1, 1, 1, 0, {0x81, 0}}}, 4);
    Bytes expected(32);
    for (const std::size_t at : {0U, 1U, 2U, 28U, 29U, 30U}) expected[at] = 255;
    EXPECT_EQ(Image(object, {8, 1}, kSecond, 4), expected);
    EXPECT_EQ(Image(object, {8, 1}, kFirst, 4), expected);
}

TEST(OverlayImage, ALargerPlaneShowsOnlyWhatTheMergedOnesHave) {
    const CSize size{8, 2};
    const TestOverlay larger{4, 8, 1, 1, 1, 0, {0xFF, 0xFF, 0xFF, 0xFF}};
    const TestOverlay fitting{2, 8, 1, 1, 1, 0, {0x0F, 0x81}};
    CDcmObject alone = Picture(size, 8, {larger});
    EXPECT_EQ(Image(alone, size, kSecond), Bytes(16));
    CDcmObject both = Picture(size, 8, {fitting, larger});
    EXPECT_EQ(Image(both, size, kSecond), Marked({fitting}, size));
    EXPECT_EQ(Image(both, size, kFirst), Marked({fitting}, size));
}

TEST(OverlayImage, TakesPlanesInThePixelDataFromTheVolume) {
    const CSize size{16, 4};
    TestOverlay plane = WithData({4, 16, 1, 1, 16, 12}, 1);
    CDcmObject object = Picture(size, 16, {plane});
    CLData data;
    auto bits = RandomBytes(8, 2);
    data.overlayPlane = bits.data();
    for (const unsigned long given : {0UL, 3UL, 8UL}) {
        data.overlayPlaneSize = given;
        plane.data.assign(bits.begin(), bits.begin() + static_cast<std::ptrdiff_t>(given));
        EXPECT_EQ(Image(object, size, kSecond, 1, &data), Marked({plane}, size)) << given;
    }
    EXPECT_EQ(Image(object, size, kSecond, 1, nullptr), Bytes(64));
    EXPECT_EQ(Image(object, size, kFirst, 1, &data), Bytes(64));
}

TEST(OverlayImage, ArgumentsWinOverTheObject) {
    CDcmObject object = Picture({99, 99}, 16, {{1, 8, 1, 1, 1, 0, {0xFF, 0}}});
    Bytes image(4 * 2 * 3);
    unsigned long length = 0;
    unsigned short width = 0;
    const CXDIPP dipp;
    dipp.MakeOverlayImage2(&object, nullptr, image.data(), length, width, 0, 8, 3, 4, 2, 0);
    EXPECT_EQ(length, 8U);
    EXPECT_EQ(std::count(image.begin(), image.end(), 255), 12);
}

TEST(EmbeddedOverlays, GatherTheUnusedBitsOfTheFrame) {
    const Words words = {0xFFF, 0x8000, 0x4FFF, 0x1000, 0x2FFF, 0, 0, 0, 0xC000, 1};
    CDcmObject object = ImageOf({{5, 2}}, words);
    AddOverlay(object, 0x6000, {2, 5, 1, 1, 16, 15});
    AddOverlay(object, 0x6002, {2, 5, 1, 1, 16, 14});
    AddOverlay(object, 0x6004, {2, 4, 1, 1, 16, 13});   // not of the image's size
    AddOverlay(object, 0x6006, {2, 5, 1, 1, 16, 3});    // a bit of the image
    AddOverlay(object, 0x6008, {2, 5, 1, 1, 16, 200});  // no bit at all
    const auto* const frame = reinterpret_cast<const unsigned char*>(words.data());
    EXPECT_EQ(EmbeddedOverlays(object, {frame, 20}), (Bytes{0x06, 0x01}));
    EXPECT_EQ(EmbeddedOverlays(object, {frame, 3}), (Bytes{0x00, 0x00}));

    unsigned char* plane = nullptr;
    unsigned long size = 0;
    ASSERT_EQ(MakeEmbeddedOverlayPlane(&object, frame, 20, plane, size), QVM_SUCCESS);
    ASSERT_EQ(size, 2U);
    EXPECT_EQ(plane[0], 0x06);
    delete[] plane;
    EXPECT_EQ(MakeEmbeddedOverlayPlane(nullptr, frame, 20, plane, size),
              QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
}

TEST(BitPlanes, MaskOrderCountsFromTheMostSignificantBit) {
    unsigned char mask[2] = {};
    SetMask(mask, 0);
    SetMask(mask, 9);
    EXPECT_EQ(mask[0], 128);
    EXPECT_EQ(mask[1], 64);
    EXPECT_EQ(GetMask(mask, 9), 1);
    EXPECT_EQ(GetMask(mask, 8), 0);
    ClearMask(mask, 9);
    EXPECT_EQ(mask[1], 0);
}

TEST(BitPlanes, MergeIntoTheTopLeftCorner) {
    Bytes target(8);
    const Bytes plane = {0xB7, 0x55};
    MergeOverlay(target, plane, {4, 16}, {3, 5});
    EXPECT_EQ(target, (Bytes{0xB0, 0, 0xE8, 0, 0x50, 0, 0, 0}));
    MergeOverlay(target, plane, {1, 8}, {3, 5});  // too large for this target
    EXPECT_EQ(target[1], 0);
    Bytes same(2);
    MergeOverlay(same, plane, {3, 5}, {3, 5});  // 15 bits: the last 7 fill no byte
    EXPECT_EQ(same, (Bytes{0xB7, 0}));
    MergeOverlay(same, Bytes{0x08}, {65535, 65535}, {65535, 65535});
    MergeOverlay(same, Bytes{0x40}, {65535, 65535}, {65534, 65535});
    EXPECT_EQ(same, (Bytes{0xFF, 0}));
}

}  // namespace
}  // namespace quorvex::pipeline_test
